#include "QuillmereCore/Generate/SoundFile.h"

#include <gtest/gtest.h>

#include <array>

#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::TempFolder;

TEST(SoundFile, IsWrittenWithItsChunkAndTheHooksHearOfIt) {
    const TempFolder folder;
    const std::vector<float> samples = testing::noise(1, 800, 0.5F);
    std::vector<fs::path> told;
    GenerationHooks hooks;
    hooks.chunk = [](const SampleOrigin& origin) {
        return GenerationHooks::Chunk{"test", std::to_string(origin.index)};
    };
    hooks.written = [&](const GenerationHooks::WrittenFile& file) {
        EXPECT_EQ(file.samples.size(), 800U);
        EXPECT_EQ(file.bytes.size(), fs::file_size(file.sample.url));
        told.push_back(file.sample.url);
    };
    SoundFile::FinishedSound sound{samples, 8000, OutputFormat::wav16, {}};
    sound.origin.index = 7;
    const GeneratedSample sample = SoundFile::writeNew(sound, folder / "a.wav", hooks);
    EXPECT_EQ(sample.url, folder / "a.wav");
    EXPECT_EQ(sample.seconds, 0.1);
    EXPECT_EQ(told, std::vector<fs::path>{folder / "a.wav"});
    EXPECT_EQ(RIFFChunk::find(folder / "a.wav", "test"), "7");
    EXPECT_EQ(AudioIO::readMono(folder / "a.wav").samples, AudioIO::asWritten(samples, OutputFormat::wav16));
}

TEST(SoundFile, ReplacesAFileWhereItIsToldTo) {
    const TempFolder folder;
    testing::writeText(folder / "a.wav", "old");
    const std::vector<float> samples = testing::noise(1, 800, 0.5F);
    int told = 0;
    GenerationHooks hooks;
    hooks.written = [&](const GenerationHooks::WrittenFile& file) {
        EXPECT_EQ(file.bytes.size(), fs::file_size(file.sample.url));
        ++told;
    };
    EXPECT_EQ(
        SoundFile::replace({samples, 8000, OutputFormat::wav32float, {}}, folder / "a.wav", hooks).seconds,
        0.1);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(AudioIO::readMono(folder / "a.wav").samples, samples);
}

TEST(SoundFile, NeverTakesANameThatIsTaken) {
    const TempFolder folder;
    testing::writeText(folder / "b.wav", "mine");
    const std::vector<float> samples(10);
    EXPECT_THROW((void)SoundFile::writeNew({samples, 8000, OutputFormat::wav16, {}}, folder / "b.wav", {}),
                 FileError);
    EXPECT_EQ(testing::readText(folder / "b.wav"), "mine");
    const std::array<fs::path, 2> names{folder / "a.wav", folder / "b.wav"};
    EXPECT_THROW(SoundFile::requireFree(names), FileError);
    EXPECT_NO_THROW(SoundFile::requireFree(std::span(names).first(1)));
}

TEST(SoundFile, TakesTheNextNumberOfAGeneration) {
    const TempFolder folder;
    const std::vector<float> samples = testing::noise(1, 80, 0.5F);
    const SoundFile::FinishedSound sound{samples, 8000, OutputFormat::wav24, {}};
    int told = 0;
    GenerationHooks hooks;
    hooks.written = [&](const GenerationHooks::WrittenFile&) { ++told; };
    const fs::path into = folder / "a" / "b";  // is created
    EXPECT_EQ(SoundFile::writeNumbered(sound, into, "My Kicks", hooks).url, into / "My_Kicks_var_0001.wav");
    testing::writeText(into / "My_Kicks_var_0041.wav", "mine");
    const GeneratedSample next = SoundFile::writeNumbered(sound, into, "My Kicks", hooks);
    EXPECT_EQ(next.url, into / "My_Kicks_var_0042.wav");
    EXPECT_EQ(next.seconds, 0.01);
    EXPECT_EQ(testing::readText(into / "My_Kicks_var_0041.wav"), "mine");
    EXPECT_EQ(AudioIO::readMono(next.url).samples, AudioIO::asWritten(samples, OutputFormat::wav24));
    EXPECT_EQ(told, 2);
}

TEST(SoundFile, ANumberThatSomebodyTakesMeanwhileIsSkipped) {
    const TempFolder folder;
    const std::vector<float> samples(8, 0.25F);
    GenerationHooks hooks;
    // Between the look for a number and the writing.
    hooks.chunk = [&](const SampleOrigin&) {
        testing::writeText(folder / "x_var_0001.wav", "mine");
        return GenerationHooks::Chunk{"test", "text"};
    };
    const SoundFile::FinishedSound sound{samples, 8000, OutputFormat::wav16, {}};
    EXPECT_EQ(SoundFile::writeNumbered(sound, folder.path(), "x", hooks).url, folder / "x_var_0002.wav");
    EXPECT_EQ(testing::readText(folder / "x_var_0001.wav"), "mine");
}

TEST(SoundFile, SaysWhereItCannotWrite) {
    const TempFolder folder;
    testing::writeText(folder / "file", "no folder");
    const std::vector<float> samples(8);
    EXPECT_THROW(
        (void)SoundFile::writeNumbered({samples, 8000, OutputFormat::wav16, {}}, folder / "file", "x", {}),
        FileError);
}

}  // namespace
}  // namespace quillmere
