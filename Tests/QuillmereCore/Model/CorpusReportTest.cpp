#include "QuillmereCore/Model/CorpusReport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <atomic>
#include <string>
#include <vector>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

using testing::floatWAV;
using testing::noise;
using testing::sine;
using testing::TempFolder;
using testing::writeText;
using Use = FileFate::Use;

constexpr std::uint32_t rate = 8000;

std::string hiss(std::uint64_t seed, double seconds) {
    return floatWAV({noise(seed, static_cast<std::size_t>(seconds * rate), 0.5F)}, rate);
}

CorpusReport inspected(const TempFolder& folder) {
    return Corpus::inspect(Corpus::scan(folder.path()));
}

TEST(CorpusReport, SaysNothingOfFilesThatAreUsedAsTheyAre) {
    const TempFolder folder;
    for (std::uint64_t i = 0; i < 5; ++i)
        writeText(folder / (std::to_string(i) + ".wav"), hiss(i, 0.5));
    const CorpusReport report = inspected(folder);
    ASSERT_EQ(report.files.size(), 5U);
    for (const FileFate& file : report.files) {
        EXPECT_TRUE(file.isUsedAsItIs()) << file.name;
        EXPECT_EQ(file.seconds, 0.5) << file.name;
    }
}

TEST(CorpusReport, NamesTheReasonWhyAFileIsUnreadable) {
    const TempFolder folder;
    writeText(folder / "a.wav", hiss(1, 0.5));
    writeText(folder / "sub/empty.wav", floatWAV({{}}, rate));
    writeText(folder / "text.wav", "text");
    const CorpusReport report = inspected(folder);
    ASSERT_EQ(report.files.size(), 3U);
    EXPECT_EQ(report.files[1].name, "sub/empty.wav");
    EXPECT_EQ(report.files[1].use, Use::unreadable);
    EXPECT_EQ(report.files[1].reason, "empty.wav contains no audio");
    EXPECT_EQ(report.files[2].use, Use::unreadable);
    EXPECT_THAT(report.files[2].reason, ::testing::StartsWith("Could not read text.wav: "));
    EXPECT_FALSE(report.files[2].isUsedAsItIs());
}

TEST(CorpusReport, FindsSilentFiles) {
    const TempFolder folder;
    writeText(folder / "a.wav", hiss(1, 0.5));
    writeText(folder / "b.wav", floatWAV({std::vector(1000, 0.00005F)}, rate));
    const CorpusReport report = inspected(folder);
    EXPECT_EQ(report.files[0].use, Use::whole);
    EXPECT_EQ(report.files[1].use, Use::silent);
}

TEST(CorpusReport, FindsFilesLongerThanTheClipThatTrainingChooses) {
    const TempFolder folder;
    // Among twenty short files the 90th percentile is a short one. 0.5 s suggests 0.575 s, which
    // is 18 frames of 256 samples and rounds up to 32: 1.024 s.
    for (std::uint64_t i = 0; i < 20; ++i)
        writeText(folder / (std::to_string(i) + ".wav"), hiss(i, 0.5));
    writeText(folder / "long.wav", hiss(30, 3.0));
    writeText(folder / "fits.wav", hiss(31, 1.02));
    const CorpusReport report = inspected(folder);
    EXPECT_EQ(report.profile, AnalysisProfile::percussive);
    EXPECT_DOUBLE_EQ(report.clipSeconds, 32 * 256 / 8000.0);
    EXPECT_EQ(report.files[20].name, "fits.wav");
    EXPECT_EQ(report.files[20].use, Use::whole);
    EXPECT_EQ(report.files[21].use, Use::cut);
    EXPECT_EQ(report.files[21].seconds, 3.0);
}

TEST(CorpusReport, NoClipIsMuchLongerThanFourSeconds) {
    const TempFolder folder;
    for (std::uint64_t i = 0; i < 3; ++i)
        writeText(folder / (std::to_string(i) + ".wav"), hiss(i, 6.0));
    const CorpusReport report = inspected(folder);
    EXPECT_DOUBLE_EQ(report.clipSeconds, 128 * 256 / 8000.0);  // 125 frames rounded up
    for (const FileFate& file : report.files)
        EXPECT_EQ(file.use, Use::cut);
}

TEST(CorpusReport, SustainedTonesAreCutByTheTonalAnalysis) {
    const TempFolder folder;
    for (int i = 0; i < 3; ++i)
        writeText(folder / (std::to_string(i) + ".wav"),
                  floatWAV({sine(500 + 100 * i, rate, 2 * rate)}, rate));
    const CorpusReport report = inspected(folder);
    EXPECT_EQ(report.profile, AnalysisProfile::tonal);
    EXPECT_DOUBLE_EQ(report.clipSeconds, 32 * 1024 / 8000.0);
}

TEST(CorpusReport, PointsFromADuplicateToTheFirstFileLikeIt) {
    const TempFolder folder;
    writeText(folder / "a.wav", hiss(1, 0.5));
    writeText(folder / "b.wav", hiss(2, 0.5));  // the same size, but other bytes
    writeText(folder / "c.wav", hiss(1, 0.5));
    writeText(folder / "sub/d.wav", hiss(1, 0.5));
    writeText(folder / "sub/e.wav", hiss(2, 0.5));
    const CorpusReport report = inspected(folder);
    EXPECT_EQ(report.files[0].duplicateOf, std::nullopt);
    EXPECT_EQ(report.files[1].duplicateOf, std::nullopt);
    EXPECT_EQ(report.files[2].duplicateOf, "a.wav");
    EXPECT_EQ(report.files[3].duplicateOf, "a.wav");
    EXPECT_EQ(report.files[4].duplicateOf, "b.wav");
    EXPECT_FALSE(report.files[4].isUsedAsItIs());
}

// Longer than one piece of the comparison, and different in the last byte only.
TEST(CorpusReport, AlmostEqualFilesAreNoDuplicates) {
    const TempFolder folder;
    std::string bytes = hiss(1, 5.0);
    writeText(folder / "a.wav", bytes);
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    writeText(folder / "b.wav", bytes);
    EXPECT_EQ(inspected(folder).files[1].duplicateOf, std::nullopt);
}

TEST(CorpusReport, FilesThatAreLeftOutAreNoDuplicates) {
    const TempFolder folder;
    for (const char* name : {"a.wav", "b.wav"})
        writeText(folder / name, "text");
    for (const char* name : {"c.wav", "d.wav"})
        writeText(folder / name, floatWAV({std::vector(1000, 0.0F)}, rate));
    for (const FileFate& file : inspected(folder).files)
        EXPECT_EQ(file.duplicateOf, std::nullopt) << file.name;
}

TEST(CorpusReport, ACorpusWithoutUsableFilesHasNoClipLength) {
    const TempFolder folder;
    writeText(folder / "a.wav", "text");
    const CorpusReport report = inspected(folder);
    EXPECT_EQ(report.profile, AnalysisProfile::automatic);
    EXPECT_EQ(report.clipSeconds, 0.0);
    EXPECT_TRUE(Corpus::inspect({}).files.empty());
}

TEST(CorpusReport, AFileThatVanishedSinceTheScanIsUnreadable) {
    const TempFolder folder;
    writeText(folder / "a.wav", hiss(1, 0.5));
    writeText(folder / "b.wav", hiss(2, 0.5));
    const CorpusSummary corpus = Corpus::scan(folder.path());
    std::filesystem::remove(folder / "b.wav");
    const CorpusReport report = Corpus::inspect(corpus);
    EXPECT_TRUE(report.files[0].isUsedAsItIs());
    EXPECT_EQ(report.files[1].reason, "Could not read b.wav: No such file or directory");
}

// Nor is it waited for when its bytes are compared with those of a file of the same size.
TEST(CorpusReport, AFileThatBecameAPipeSinceTheScanIsUnreadable) {
    const TempFolder folder;
    writeText(folder / "a.wav", hiss(1, 0.5));
    writeText(folder / "b.wav", hiss(2, 0.5));
    const CorpusSummary corpus = Corpus::scan(folder.path());
    std::filesystem::remove(folder / "b.wav");
    ASSERT_EQ(::mkfifo((folder / "b.wav").c_str(), 0600), 0);
    const CorpusReport report = Corpus::inspect(corpus);
    EXPECT_TRUE(report.files[0].isUsedAsItIs());
    EXPECT_EQ(report.files[1].reason, "Could not read b.wav: it is not a regular file");
}

TEST(CorpusReport, AFileThatBecameALinkSinceTheScanIsUnreadable) {
    const TempFolder folder;
    writeText(folder / "a.wav", hiss(1, 0.5));
    writeText(folder / "b.wav", hiss(2, 0.5));
    const CorpusSummary corpus = Corpus::scan(folder.path());
    std::filesystem::remove(folder / "b.wav");
    std::filesystem::create_symlink("a.wav", folder / "b.wav");
    EXPECT_EQ(Corpus::inspect(corpus).files[1].use, Use::unreadable);
}

TEST(CorpusReport, TellsOfDamage) {
    const TempFolder folder;
    const std::string bytes = hiss(1, 0.5);
    writeText(folder / "a.wav", bytes.substr(0, bytes.size() / 2));
    const CorpusReport report = inspected(folder);
    EXPECT_EQ(report.files[0].use, Use::whole);
    EXPECT_TRUE(report.files[0].damage.isTruncated);
    EXPECT_FALSE(report.files[0].isUsedAsItIs());
}

TEST(CorpusReport, EndsWhenCancelled) {
    const TempFolder folder;
    writeText(folder / "a.wav", hiss(1, 0.1));
    const CorpusSummary corpus = Corpus::scan(folder.path());
    std::stop_source stop;
    EXPECT_EQ(Corpus::inspect(corpus, stop.get_token()).files.size(), 1U);
    stop.request_stop();
    EXPECT_THROW((void)Corpus::inspect(corpus, stop.get_token()), CancellationError);
}

}  // namespace
}  // namespace quillmere
