#include "QuillmereCore/Audio/AudioIO.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::entriesIn;
using testing::floatWAV;
using testing::int16Bytes;
using testing::noise;
using testing::sine;
using testing::TempFolder;
using testing::wavBytes;
using testing::writeText;

std::string failureOfReading(const fs::path& file) {
    try {
        (void)AudioIO::readMono(file);
    } catch (const AudioIOError& error) {
        EXPECT_EQ(error.file(), file);
        return error.what();
    }
    return "none";
}

// Equal bit for bit, which tells -0 from 0 and holds for NaN.
void expectSameBits(const std::vector<float>& actual, const std::vector<float>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(actual[i]), std::bit_cast<std::uint32_t>(expected[i]))
            << "sample " << i;
    }
}

TEST(OutputFormat, HasRawValuesLabelsAndBitDepths) {
    EXPECT_EQ(rawValue(OutputFormat::wav16), "wav16");
    EXPECT_EQ(rawValue(OutputFormat::wav24), "wav24");
    EXPECT_EQ(rawValue(OutputFormat::wav32float), "wav32float");
    EXPECT_EQ(label(OutputFormat::wav16), "WAV 16-bit");
    EXPECT_EQ(label(OutputFormat::wav24), "WAV 24-bit");
    EXPECT_EQ(label(OutputFormat::wav32float), "WAV 32-bit float");
    EXPECT_EQ(bitDepth(OutputFormat::wav16), 16);
    EXPECT_EQ(bitDepth(OutputFormat::wav24), 24);
    EXPECT_EQ(bitDepth(OutputFormat::wav32float), 32);
}

TEST(OutputFormat, IsFoundByItsExactRawValueOnly) {
    for (const OutputFormat format : allOutputFormats)
        EXPECT_EQ(outputFormat(rawValue(format)), format);
    EXPECT_EQ(outputFormat("wav32float"), OutputFormat::wav32float);
    EXPECT_EQ(outputFormat("WAV32FLOAT"), std::nullopt);
    EXPECT_EQ(outputFormat("wav8"), std::nullopt);
    EXPECT_EQ(outputFormat(""), std::nullopt);
}

TEST(AudioIOError, NamesTheFileButNotItsFolder) {
    EXPECT_STREQ(AudioIOError::unreadable("/some/folder/kick.wav", Message("out of memory")).what(),
                 "Could not read kick.wav: out of memory");
    EXPECT_STREQ(AudioIOError::empty("/some/folder/kick.wav").what(), "kick.wav contains no audio");
}

TEST(AudioIO, SupportsTenExtensions) {
    EXPECT_THAT(AudioIO::supportedExtensions(),
                ::testing::UnorderedElementsAre("wav", "wave", "aif", "aiff", "aifc", "flac", "mp3", "m4a",
                                                "caf", "aac"));
}

TEST(ReadMono, GivesAMonoFloatFileBitForBit) {
    const TempFolder folder;
    std::vector<float> samples = noise(1, 5000, 1.5F);
    samples.insert(samples.end(), {1.0F, -1.0F, 1e-30F, 3.0e38F, std::numeric_limits<float>::infinity()});
    writeText(folder / "x.wav", floatWAV({samples}, 22050));
    const AudioIO::MonoAudio audio = AudioIO::readMono(folder / "x.wav");
    expectSameBits(audio.samples, samples);
    EXPECT_EQ(audio.sampleRate, 22050.0);
}

TEST(ReadMono, OppositeChannelsGiveZeros) {
    const TempFolder folder;
    const std::vector<float> left = noise(2, 3000);
    std::vector<float> right = left;
    for (float& sample : right)
        sample = -sample;
    writeText(folder / "x.wav", floatWAV({left, right}));
    EXPECT_EQ(AudioIO::readMono(folder / "x.wav").samples, std::vector<float>(3000, 0.0F));
}

TEST(ReadMono, AveragesSixChannelsInOrder) {
    const TempFolder folder;
    std::vector<std::vector<float>> channels;
    for (std::uint64_t c = 0; c < 6; ++c)
        channels.push_back(noise(c, 2000));
    writeText(folder / "x.wav", floatWAV(channels, 48000));
    expectSameBits(AudioIO::readMono(folder / "x.wav").samples, AudioIO::mixToMono(channels, 2000));
}

TEST(ReadMono, ScalesIntegersByAPowerOfTwo) {
    const TempFolder folder;
    writeText(folder / "x.wav", wavBytes({}, int16Bytes(std::vector{-32768, -1, 0, 1, 32767})));
    EXPECT_EQ(AudioIO::readMono(folder / "x.wav").samples,
              (std::vector{-1.0F, -0x1p-15F, 0.0F, 0x1p-15F, 32767.0F / 32768.0F}));
}

TEST(ReadMono, AFileWithoutBytesContainsNoAudio) {
    const TempFolder folder;
    for (const std::string& extension : AudioIO::supportedExtensions()) {
        writeText(folder / ("nothing." + extension), "");
        EXPECT_EQ(failureOfReading(folder / ("nothing." + extension)),
                  "nothing." + extension + " contains no audio");
    }
}

TEST(ReadMono, AFileWithoutFramesContainsNoAudio) {
    const TempFolder folder;
    writeText(folder / "nothing.wav", wavBytes({}, ""));
    EXPECT_EQ(failureOfReading(folder / "nothing.wav"), "nothing.wav contains no audio");
}

TEST(ReadMono, AMissingFileIsUnreadable) {
    EXPECT_EQ(failureOfReading("/nowhere/kick.wav"), "Could not read kick.wav: No such file or directory");
}

TEST(ReadMono, MayRunOnSeveralThreadsAtOnce) {
    const TempFolder folder;
    const std::vector<float> samples = noise(3, 20000);
    writeText(folder / "x.wav", floatWAV({samples}));
    std::vector<std::thread> threads;
    std::vector<std::vector<float>> results(4);
    for (std::vector<float>& result : results)
        threads.emplace_back([&] { result = AudioIO::readMono(folder / "x.wav").samples; });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<float>& result : results)
        expectSameBits(result, samples);
}

TEST(Info, GivesLengthAndRateOfTheHeader) {
    const TempFolder folder;
    writeText(folder / "x.wav", floatWAV({noise(4, 11025), noise(5, 11025)}, 22050));
    const auto info = AudioIO::info(folder / "x.wav");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->duration, 0.5);
    EXPECT_EQ(info->sampleRate, 22050.0);
}

TEST(Info, AFileWithoutFramesLastsZeroSeconds) {
    const TempFolder folder;
    writeText(folder / "nothing.wav", wavBytes({.rate = 48000}, ""));
    const auto info = AudioIO::info(folder / "nothing.wav");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->duration, 0.0);
    EXPECT_EQ(info->sampleRate, 48000.0);
}

TEST(Info, IsNothingForAFileThatCannotBeOpened) {
    const TempFolder folder;
    writeText(folder / "text.wav", "not audio at all\n");
    EXPECT_FALSE(AudioIO::info(folder / "text.wav"));
    EXPECT_FALSE(AudioIO::info(folder / "missing.wav"));
    EXPECT_FALSE(AudioIO::info(folder.path()));
}

TEST(MixToMono, MultipliesTheSumByTheReciprocal) {
    const std::vector<std::vector<float>> channels{{0.1F, 1.0F}, {0.2F, 1.0F}, {0.7F, 1.0F}};
    const float third = 1.0F / 3.0F;
    expectSameBits(AudioIO::mixToMono(channels, 2), {((0.1F + 0.2F) + 0.7F) * third, 3.0F * third});
}

TEST(MixToMono, NoChannelsGiveZeros) {
    EXPECT_EQ(AudioIO::mixToMono({}, 3), std::vector<float>(3, 0.0F));
}

TEST(Resample, RatesCloserThanHalfAHertzAreTheSame) {
    const std::vector<float> samples = noise(6, 1000);
    expectSameBits(AudioIO::resample(samples, 44100, 44100), samples);
    expectSameBits(AudioIO::resample(samples, 44100, 44100.4), samples);
    EXPECT_NE(AudioIO::resample(samples, 44100, 44101), samples);
}

TEST(Resample, AnEmptySignalStaysEmpty) {
    EXPECT_TRUE(AudioIO::resample({}, 44100, 22050).empty());
}

TEST(Resample, RatesThatMakeNoSenseLeaveTheSignalUnchanged) {
    const std::vector<float> samples = noise(7, 100);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double rate : {0.0, -44100.0, infinity, std::nan("")}) {
        expectSameBits(AudioIO::resample(samples, 44100, rate), samples);
        expectSameBits(AudioIO::resample(samples, rate, 44100), samples);
    }
    // Four thousand million samples and more.
    expectSameBits(AudioIO::resample(samples, 1, 1e9), samples);
}

struct Rates {
    double from, to;
};

class ResampleRates : public ::testing::TestWithParam<Rates> {};

TEST_P(ResampleRates, GivesCountTimesRatioSamples) {
    const auto [from, to] = GetParam();
    const std::vector<float> samples = noise(8, 30011);
    const double expected = 30011 * to / from;
    EXPECT_NEAR(static_cast<double>(AudioIO::resample(samples, from, to).size()), expected, 1.0);
}

// Half a second of a 1 kHz sine against the same sine sampled at the new rate; 20 ms at either end, where
// the signal starts and stops abruptly, are left out.
TEST_P(ResampleRates, KeepsASineInPlaceAndAtItsLevel) {
    const auto [from, to] = GetParam();
    const auto count = static_cast<std::size_t>(from / 2);
    const std::vector<float> converted = AudioIO::resample(sine(1000, from, count, 0.9), from, to);
    const std::vector<float> expected = sine(1000, to, converted.size(), 0.9);
    const auto margin = static_cast<std::size_t>(to / 50);
    for (std::size_t i = margin; i + margin < converted.size(); ++i)
        ASSERT_NEAR(converted[i], expected[i], 2e-6) << "sample " << i;
}

INSTANTIATE_TEST_SUITE_P(Rates, ResampleRates,
                         ::testing::Values(Rates{44100, 48000}, Rates{48000, 44100}, Rates{22050, 44100},
                                           Rates{96000, 44100}, Rates{8000, 192000}, Rates{44100, 44101}),
                         [](const auto& test) {
                             return std::to_string(static_cast<int>(test.param.from)) + "To" +
                                    std::to_string(static_cast<int>(test.param.to));
                         });

TEST(Resample, VeryShortSignalsKeepTheirLength) {
    for (std::size_t count = 1; count <= 30; ++count) {
        for (const auto& [from, to] : {Rates{44100, 48000}, Rates{48000, 22050}, Rates{8000, 44100}}) {
            const std::vector<float> converted = AudioIO::resample(noise(count, count), from, to);
            EXPECT_NEAR(static_cast<double>(converted.size()), static_cast<double>(count) * to / from, 1.0);
        }
    }
}

TEST(Resample, ManagesTheLargestRatioOfReadableFiles) {
    EXPECT_NEAR(static_cast<double>(AudioIO::resample(noise(1, 1000), 1000, 768000).size()), 768000, 1000);
    EXPECT_NEAR(static_cast<double>(AudioIO::resample(noise(1, 768000), 768000, 1000).size()), 1000, 2);
}

TEST(Resample, RemovesWhatTheNewRateCannotHold) {
    const std::vector<float> converted = AudioIO::resample(sine(15000, 44100, 22050, 0.9), 44100, 22050);
    const auto middle = std::span(converted).subspan(1000, converted.size() - 2000);
    for (const float sample : middle)
        ASSERT_NEAR(sample, 0.0F, 1e-6F);
}

class WriteFormat : public ::testing::TestWithParam<OutputFormat> {};

TEST_P(WriteFormat, WhatIsWrittenIsReadBack) {
    const TempFolder folder;
    const std::vector<float> samples = noise(9, 4001, 0.99F);  // an odd number: 24 bits need a pad byte
    AudioIO::write(samples, folder / "x.wav", 32000, GetParam());
    const AudioIO::MonoAudio audio = AudioIO::readMono(folder / "x.wav");
    EXPECT_EQ(audio.sampleRate, 32000.0);
    ASSERT_EQ(audio.samples.size(), samples.size());
    const float step = GetParam() == OutputFormat::wav16 ? 0x1p-15F : 0x1p-23F;
    const float error = GetParam() == OutputFormat::wav32float ? 0.0F : step / 2;
    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_NEAR(audio.samples[i], samples[i], error) << "sample " << i;
}

TEST_P(WriteFormat, NoSamplesMakeAValidFileWithoutFrames) {
    const TempFolder folder;
    AudioIO::write({}, folder / "x.wav", 44100, GetParam());
    const auto info = AudioIO::info(folder / "x.wav");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->duration, 0.0);
    EXPECT_EQ(failureOfReading(folder / "x.wav"), "x.wav contains no audio");
}

TEST_P(WriteFormat, MoreThanFourGibibytesAreRefused) {
    const TempFolder folder;
    // Address space only: the samples are never touched.
    constexpr std::size_t bytes = std::size_t{10} << 30;
    void* const memory =
        ::mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    const std::span samples(static_cast<const float*>(memory), bytes / sizeof(float));
    try {
        AudioIO::write(samples, folder / "x.wav", 44100, GetParam());
        ADD_FAILURE() << "was written";
    } catch (const FileError& error) {
        EXPECT_EQ(error.file(), folder / "x.wav");
        EXPECT_THAT(error.what(), ::testing::HasSubstr("x.wav: too long for a WAV file"));
    }
    EXPECT_EQ(entriesIn(folder.path()), 0U);
    ::munmap(memory, bytes);
}

INSTANTIATE_TEST_SUITE_P(Formats, WriteFormat, ::testing::ValuesIn(allOutputFormats),
                         [](const auto& test) { return std::string(rawValue(test.param)); });

TEST(Write, ReplacesAnExistingFile) {
    const TempFolder folder;
    AudioIO::write(noise(10, 1000), folder / "x.wav", 44100, OutputFormat::wav16);
    AudioIO::write(noise(11, 10), folder / "x.wav", 8000, OutputFormat::wav32float);
    const AudioIO::MonoAudio audio = AudioIO::readMono(folder / "x.wav");
    expectSameBits(audio.samples, noise(11, 10));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(Write, AMissingFolderIsAFileError) {
    const TempFolder folder;
    try {
        AudioIO::write(noise(12, 10), folder / "missing/x.wav", 44100, OutputFormat::wav16);
        ADD_FAILURE() << "was written";
    } catch (const FileError& error) {
        EXPECT_EQ(error.reason(), std::errc::no_such_file_or_directory);
    }
}

TEST(WriteDeathTest, ASampleRateOfZeroIsAProgrammingError) {
    const TempFolder folder;
    EXPECT_DEATH(AudioIO::write({}, folder / "x.wav", 0, OutputFormat::wav16), "positive sample rate");
}

}  // namespace
}  // namespace quillmere
