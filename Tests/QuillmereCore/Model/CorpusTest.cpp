#include "QuillmereCore/Model/Corpus.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/OtherUser.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::OtherUser;
using testing::TempFolder;
using testing::wavBytes;
using testing::writeText;

// A silent 16-bit mono file.
std::string wav(double seconds, std::uint32_t rate = 8000) {
    const auto frames = static_cast<std::size_t>(seconds * rate);
    return wavBytes({.rate = rate}, std::string(2 * frames, '\0'));
}

std::vector<std::string> paths(const CorpusSummary& summary) {
    std::vector<std::string> names;
    for (const CorpusFile& file : summary.files)
        names.push_back(file.relativePath);
    return names;
}

std::vector<std::string> sorted(const std::vector<std::string>& names) {
    CorpusSummary summary;
    for (const std::string& name : names)
        summary.files.push_back({name, name, 0, 0});
    Corpus::sortNaturally(summary.files);
    return paths(summary);
}

TEST(CorpusScan, ListsFilesInNaturalOrder) {
    const TempFolder folder;
    for (const char* name : {"b.wav", "A.wav", "a10.wav", "a2.wav"})
        writeText(folder / name, wav(0.1));
    EXPECT_THAT(paths(Corpus::scan(folder.path())), ElementsAre("A.wav", "a2.wav", "a10.wav", "b.wav"));
}

TEST(CorpusScan, TellsOfEachMeasuredFileOnceTheFilesAreCounted) {
    const TempFolder folder;
    for (const char* name : {"a.wav", "b.wav", "c.wav"})
        writeText(folder / name, wav(0.1));
    std::vector<std::pair<std::size_t, std::size_t>> reports;
    const CorpusSummary watched = Corpus::scan(
        folder.path(), [&](std::size_t done, std::size_t total) { reports.emplace_back(done, total); }, {});
    EXPECT_THAT(reports, ElementsAre(std::pair(0, 3), std::pair(1, 3), std::pair(2, 3), std::pair(3, 3)));
    EXPECT_EQ(watched.fingerprint(), Corpus::scan(folder.path()).fingerprint());
}

TEST(CorpusScan, StopsWhenCancelled) {
    const TempFolder folder;
    writeText(folder / "a.wav", wav(0.1));
    writeText(folder / "b.wav", wav(0.1));
    const ThreadLimit oneThread(1);
    std::stop_source stop;
    std::size_t measured = 0;
    const auto cancelAfterTheFirst = [&](std::size_t done, std::size_t) {
        measured = done;
        if (done == 1) stop.request_stop();
    };
    EXPECT_THROW((void)Corpus::scan(folder.path(), cancelAfterTheFirst, stop.get_token()), CancellationError);
    EXPECT_EQ(measured, 1U);
}

TEST(CorpusScan, ReportsPathSizeAndLocation) {
    const TempFolder folder;
    writeText(folder / "sub/deeper/x.wav", wav(0.1));
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_EQ(summary.directory, folder.path());
    ASSERT_EQ(summary.fileCount(), 1);
    EXPECT_EQ(summary.files[0].relativePath, "sub/deeper/x.wav");
    EXPECT_EQ(summary.files[0].url, folder / "sub/deeper/x.wav");
    EXPECT_EQ(summary.files[0].size, 44 + 1600);
}

TEST(CorpusScan, AFileInASubfolderIsListedWithItsFolder) {
    const TempFolder folder;
    writeText(folder / "sub/x.flac", "not audio");
    EXPECT_THAT(paths(Corpus::scan(folder.path())), ElementsAre("sub/x.flac"));
}

TEST(CorpusScan, HiddenFilesAndFoldersAreNotListed) {
    const TempFolder folder;
    writeText(folder / ".hidden.wav", wav(0.1));
    writeText(folder / ".folder/x.wav", wav(0.1));
    writeText(folder / "sub/.x.wav", wav(0.1));
    EXPECT_THAT(paths(Corpus::scan(folder.path())), IsEmpty());
}

TEST(CorpusScan, AHiddenFolderMayBeTheCorpusItself) {
    const TempFolder folder;
    writeText(folder / ".samples.app/x.wav", wav(0.1));
    EXPECT_THAT(paths(Corpus::scan(folder / ".samples.app")), ElementsAre("x.wav"));
}

TEST(CorpusScan, PackagesAreNotDescendedInto) {
    const TempFolder folder;
    for (const char* package : {"Player.app", "x.bundle", "Y.VST3", "z.component", "song.logicx", "k.pkg"})
        writeText(folder / package / "Contents/x.wav", wav(0.1));
    writeText(folder / "drum.kit/x.wav", wav(0.1));
    EXPECT_THAT(paths(Corpus::scan(folder.path())), ElementsAre("drum.kit/x.wav"));
}

TEST(CorpusScan, ExtensionsCountInAnyCase) {
    const TempFolder folder;
    for (const char* name : {"1.WAV", "2.Wave", "3.aif", "4.AIFF", "5.aifc", "6.Flac", "7.mp3", "8.m4a",
                             "9.caf", "10.aac", "x.ogg", "x.txt", "x.wav.txt", "wav", "x.", "x"})
        writeText(folder / name, "no audio");
    EXPECT_THAT(paths(Corpus::scan(folder.path())),
                ElementsAre("1.WAV", "2.Wave", "3.aif", "4.AIFF", "5.aifc", "6.Flac", "7.mp3", "8.m4a",
                            "9.caf", "10.aac"));
}

TEST(CorpusScan, SymbolicLinksAreSkipped) {
    const TempFolder folder;
    writeText(folder / "corpus/x.wav", wav(0.1));
    writeText(folder / "elsewhere/y.wav", wav(0.1));
    fs::create_symlink("x.wav", folder / "corpus/link.wav");
    fs::create_symlink("../elsewhere", folder / "corpus/folder");
    fs::create_symlink("nowhere", folder / "corpus/dangling.wav");
    fs::create_symlink("..", folder / "corpus/loop");
    fs::create_symlink("itself.wav", folder / "corpus/itself.wav");
    EXPECT_THAT(paths(Corpus::scan(folder / "corpus")), ElementsAre("x.wav"));
}

TEST(CorpusScan, TheCorpusMayBeALinkToAFolder) {
    const TempFolder folder;
    writeText(folder / "real/x.wav", wav(0.1));
    fs::create_symlink("real", folder / "link");
    const CorpusSummary summary = Corpus::scan(folder / "link");
    EXPECT_EQ(summary.directory, folder / "link");
    EXPECT_THAT(paths(summary), ElementsAre("x.wav"));
}

TEST(CorpusScan, SpecialFilesAndFoldersWithAudioNamesAreSkipped) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    writeText(folder / "folder.wav/x.wav", wav(0.1));
    EXPECT_THAT(paths(Corpus::scan(folder.path())), ElementsAre("folder.wav/x.wav"));
}

TEST(CorpusScan, RelativePathsDoNotDependOnHowTheFolderIsWritten) {
    const TempFolder folder;
    writeText(folder / "sub/x.wav", wav(0.1));
    for (const char* spelling : {"sub", "sub/", "./sub//.", "sub/../sub/"}) {
        const CorpusSummary summary = Corpus::scan(folder / spelling);
        EXPECT_THAT(paths(summary), ElementsAre("x.wav")) << spelling;
        EXPECT_EQ(summary.directory, folder / spelling);
    }
}

// Behind a link, ".." is the folder that holds what the link leads to.
TEST(CorpusScan, TheFolderAboveALinkIsTheOneThatThePathNames) {
    const TempFolder folder;
    writeText(folder / "elsewhere/y.wav", wav(0.1));
    fs::create_directory(folder / "elsewhere/inner");
    writeText(folder / "corpus/x.wav", wav(0.1));
    fs::create_directory_symlink(folder / "elsewhere/inner", folder / "corpus/link");
    const CorpusSummary summary = Corpus::scan(folder / "corpus/link/..");
    EXPECT_THAT(paths(summary), ElementsAre("y.wav"));
    EXPECT_EQ(summary.unreadable, 0);
    EXPECT_EQ(summary.durations.size(), 1U);
}

TEST(CorpusScan, NamesMayHoldAnyBytes) {
    const TempFolder folder;
    const std::vector<std::string> names{"Größe 🥁.wav", "two words.wav",    "a\nline.wav",
                                         "\"quoted'.wav",    "\xff\xfe\x80.wav", "sub\xc3(/x.wav"};
    for (const std::string& name : names)
        writeText(folder / name, wav(0.5));
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_THAT(paths(summary), ::testing::UnorderedElementsAreArray(names));
    EXPECT_EQ(summary.totalSeconds, 3.0);
    EXPECT_EQ(summary.unreadable, 0);
}

TEST(CorpusScan, UnreadableSubfoldersArePassedOver) {
    const TempFolder folder;
    writeText(folder / "x.wav", wav(0.1));
    writeText(folder / "closed/y.wav", wav(0.1));
    writeText(folder / "unsearchable/z.wav", wav(0.1));
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder / "closed", fs::perms::none);
    fs::permissions(folder / "unsearchable", fs::perms(0444));  // names can be listed, but not looked up
    {
        const OtherUser user;
        const ThreadLimit ownThreadOnly(1);
        const CorpusSummary summary = Corpus::scan(folder.path());
        EXPECT_THAT(paths(summary), ElementsAre("x.wav"));
        ASSERT_EQ(summary.passedOver.size(), 2U);
        EXPECT_EQ(summary.passedOver[0].folder, "closed");
        EXPECT_EQ(summary.passedOver[0].reason, "Permission denied");
        EXPECT_EQ(summary.passedOver[1].folder, "unsearchable");
        EXPECT_EQ(summary.passedOver[1].reason, "Permission denied");
    }
    fs::permissions(folder / "closed", fs::perms::owner_all);
    fs::permissions(folder / "unsearchable", fs::perms::owner_all);
}

// Deeper than a path can say, one level at a time.
TEST(CorpusScan, FoldersThatAreNestedTooDeepAreNamed) {
    const TempFolder folder;
    writeText(folder / "x.wav", wav(0.1));
    const std::string name(200, 'd');
    const fs::path before = fs::current_path();
    fs::current_path(folder.path());
    for (int level = 0; level < 25; ++level) {
        fs::create_directory(name);
        fs::current_path(name);
    }
    writeText("./y.wav", wav(0.1));
    fs::current_path(before);
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_THAT(paths(summary), ElementsAre("x.wav"));
    ASSERT_EQ(summary.passedOver.size(), 1U);
    EXPECT_EQ(summary.passedOver[0].reason, "File name too long");
    EXPECT_GT(summary.passedOver[0].folder.size(), 3000U);
}

TEST(CorpusScan, AFolderThatMayNotBeListedIsAFailure) {
    const TempFolder folder;
    fs::permissions(folder.path(), fs::perms(0755));
    fs::create_directory(folder / "closed");
    fs::permissions(folder / "closed", fs::perms::none);
    const OtherUser user;
    EXPECT_THROW((void)Corpus::scan(folder / "closed"), FileError);
}

TEST(CorpusScan, AFileInsteadOfAFolderIsAFailure) {
    const TempFolder folder;
    writeText(folder / "x.wav", wav(0.1));
    try {
        (void)Corpus::scan(folder / "x.wav");
        ADD_FAILURE() << "was scanned";
    } catch (const FileError& error) {
        EXPECT_EQ(error.what(), (folder / "x.wav").string() + " is not a folder");
        EXPECT_EQ(error.reason(), std::errc::no_such_file_or_directory);
    }
}

TEST(CorpusScan, AMissingFolderIsAFailure) {
    try {
        (void)Corpus::scan("/nowhere/samples");
        ADD_FAILURE() << "was scanned";
    } catch (const FileError& error) {
        EXPECT_STREQ(error.what(), "/nowhere/samples is not a folder");
    }
}

TEST(CorpusScan, AFolderWithoutAudioGivesAnEmptySummary) {
    const TempFolder folder;
    writeText(folder / "readme.txt", "text");
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_EQ(summary.fileCount(), 0);
    EXPECT_EQ(summary.dominantSampleRate(), 44100);
    EXPECT_EQ(summary.suggestedClipSeconds(), 1.0);
    EXPECT_EQ(summary.totalSeconds, 0.0);
    EXPECT_EQ(summary.fingerprint(), "cbf29ce484222325");
}

TEST(CorpusScan, ATextFileWithAnAudioNameIsListedAsUnreadable) {
    const TempFolder folder;
    writeText(folder / "a.wav", wav(0.5));
    writeText(folder / "x.wav", "hello, this is a text file\n");
    writeText(folder / "z.wav", wav(0.25));
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_THAT(paths(summary), ElementsAre("a.wav", "x.wav", "z.wav"));
    EXPECT_EQ(summary.unreadable, 1);
    EXPECT_THAT(summary.durations, ElementsAre(0.5, 0.25));
}

TEST(CorpusScan, AddsUpDurationsAndCountsRates) {
    const TempFolder folder;
    writeText(folder / "1.wav", wav(0.5, 48000));
    writeText(folder / "2.wav", wav(0.25, 44100));
    writeText(folder / "3.wav", wav(1.0, 48000));
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_THAT(summary.durations, ElementsAre(0.5, 0.25, 1.0));
    EXPECT_EQ(summary.totalSeconds, 1.75);
    EXPECT_THAT(summary.sampleRates, ElementsAre(::testing::Pair(44100, 1), ::testing::Pair(48000, 2)));
    EXPECT_EQ(summary.dominantSampleRate(), 48000);
}

TEST(CorpusScan, AFileWithoutFramesIsReadableAndLastsZeroSeconds) {
    const TempFolder folder;
    writeText(folder / "x.wav", wav(0));
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_EQ(summary.unreadable, 0);
    EXPECT_THAT(summary.durations, ElementsAre(0.0));
}

TEST(CorpusScan, DurationsFollowTheOrderOfFilesForAnyThreadCount) {
    const TempFolder folder;
    std::vector<double> seconds;
    for (int i = 0; i < 50; ++i) {
        seconds.push_back((50 - i) * 0.125);
        writeText(folder / (std::to_string(i) + ".wav"), wav(seconds.back()));
    }
    for (const int threads : {1, 2, 7}) {
        const ThreadLimit limit(threads);
        EXPECT_EQ(Corpus::scan(folder.path()).durations, seconds);
    }
}

TEST(CorpusScan, ModificationTimesAreCutTowardZero) {
    const TempFolder folder;
    struct Case {
        const char* name;
        timespec time;
        std::int64_t expected;
    };
    for (const Case& c : {Case{"a.wav", {1700000000, 999999999}, 1700000000}, Case{"b.wav", {0, 0}, 0},
                          Case{"c.wav", {-2, 250000000}, -1},  // -1.75 s
                          Case{"d.wav", {-1, 500000000}, 0},   // -0.5 s
                          Case{"e.wav", {-86400, 0}, -86400}}) {
        writeText(folder / c.name, wav(0.1));
        const timespec times[2] = {c.time, c.time};
        ASSERT_EQ(::utimensat(AT_FDCWD, (folder / c.name).c_str(), times, 0), 0);
        const CorpusSummary summary = Corpus::scan(folder.path());
        EXPECT_EQ(summary.files.back().modified, c.expected) << c.name;
    }
}

TEST(NaturalOrder, ComparesDigitsByValueAndIgnoresCase) {
    EXPECT_THAT(sorted({"kick100.wav", "kick9.wav", "kick20.wav", "Kick1.wav"}),
                ElementsAre("Kick1.wav", "kick9.wav", "kick20.wav", "kick100.wav"));
    EXPECT_THAT(sorted({"v2 take10", "v2 take9", "v10 take1", "V1 take3"}),
                ElementsAre("V1 take3", "v2 take9", "v2 take10", "v10 take1"));
}

TEST(NaturalOrder, DoesNotDependOnTheOrderOfDiscovery) {
    std::vector<std::string> names{"kick2", "kick02", "kick002",   "Kick2", "\xff",
                                   "\xfe",  "é",      "e\xcc\x81", ""};
    const std::vector<std::string> expected = sorted(names);
    std::mt19937 generator(1);
    for (int round = 0; round < 50; ++round) {
        std::shuffle(names.begin(), names.end(), generator);
        ASSERT_EQ(sorted(names), expected);
    }
}

TEST(NaturalOrder, NumbersMayBeLongerThanAnyInteger) {
    const std::string nines(100, '9');
    EXPECT_THAT(sorted({"a1" + nines, "a" + nines, "a2"}), ElementsAre("a2", "a" + nines, "a1" + nines));
}

TEST(CorpusSummary, SuggestsTheNinetiethPercentileWithinLimits) {
    const auto suggestion = [](std::vector<double> durations) {
        CorpusSummary summary;
        summary.durations = std::move(durations);
        return summary.suggestedClipSeconds();
    };
    EXPECT_EQ(suggestion({}), 1.0);
    EXPECT_EQ(suggestion({0.1}), 0.3);
    EXPECT_EQ(suggestion({10, 10}), 4.0);
    EXPECT_EQ(suggestion({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}), 4.0);
    EXPECT_EQ(suggestion({0.5, 1.0, 2.0}), 2.0);
    // Eleven values: index trunc(9.9) = 9, the second largest, whatever the order.
    EXPECT_EQ(suggestion({1.1, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0, 3.5, 2.5, 0.4, 0.3}), 2.5);
}

TEST(CorpusSummary, TheDominantRateIsTheMostFrequentAndTheLowestOfEquals) {
    CorpusSummary summary;
    EXPECT_EQ(summary.dominantSampleRate(), 44100);
    summary.sampleRates = {{44100, 1}, {48000, 2}};
    EXPECT_EQ(summary.dominantSampleRate(), 48000);
    summary.sampleRates = {{22050, 2}, {44100, 2}, {96000, 1}};
    EXPECT_EQ(summary.dominantSampleRate(), 22050);
}

CorpusSummary summaryOf(std::vector<CorpusFile> files) {
    CorpusSummary summary;
    summary.files = std::move(files);
    return summary;
}

TEST(Fingerprint, HashesPathSizeAndTimeOfEveryFile) {
    EXPECT_EQ(summaryOf({}).fingerprint(), "cbf29ce484222325");
    EXPECT_EQ(summaryOf({{"", "kick.wav", 1234, 1700000000}}).fingerprint(), "58bd599bbda8628b");
    EXPECT_EQ(
        summaryOf({{"", "A.wav", 10, 1}, {"", "sub/x.flac", 99999999999, 1600000000}, {"", "z 9.aif", 0, 0}})
            .fingerprint(),
        "d14bd3635270aa2e");
    EXPECT_EQ(summaryOf({{"", "old.wav", 44, -1}, {"", "old2.wav", 44, 0}, {"", "old3.wav", 44, -86400}})
                  .fingerprint(),
              "6142d6d70c9757f6");
}

TEST(Fingerprint, HasNoLeadingZeros) {
    EXPECT_EQ(summaryOf({{"", "f16.wav", 16, 16}}).fingerprint(), "29c7bd358215246");
}

TEST(Fingerprint, DoesNotDependOnTheFolderOrOnContents) {
    const TempFolder folder;
    for (const char* name : {"one", "two"}) {
        writeText(folder / name / "x.wav", std::string(100, name[0]));
        const timespec times[2] = {{1000, 0}, {1000, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, (folder / name / "x.wav").c_str(), times, 0), 0);
    }
    EXPECT_EQ(Corpus::scan(folder / "one").fingerprint(), Corpus::scan(folder / "two").fingerprint());
}

TEST(Fingerprint, ChangesWhenAFileIsAddedRenamedResizedOrTouched) {
    const CorpusFile file{"", "x.wav", 100, 1000};
    const std::string original = summaryOf({file}).fingerprint();
    EXPECT_NE(summaryOf({file, {"", "y.wav", 100, 1000}}).fingerprint(), original);
    EXPECT_NE(summaryOf({{"", "sub/x.wav", 100, 1000}}).fingerprint(), original);
    EXPECT_NE(summaryOf({{"", "x.wav", 101, 1000}}).fingerprint(), original);
    EXPECT_NE(summaryOf({{"", "x.wav", 100, 1001}}).fingerprint(), original);
}

}  // namespace
}  // namespace quillmere
