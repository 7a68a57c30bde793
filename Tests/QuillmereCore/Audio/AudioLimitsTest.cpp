// What no file may take: time without end, memory out of proportion, a thread that waits.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Audio/ByteSource.h"
#include "Support/AudioFixtures.h"
#include "Support/FLACBytes.h"
#include "Support/PeakMemory.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::audioFixture;
using testing::audioFixtures;
using testing::constantFLAC;
using testing::floatWAV;
using testing::megabytesHere;
using testing::noise;
using testing::peakMegabytes;
using testing::readText;
using testing::TempFolder;
using testing::wavBytes;
using testing::writeText;

constexpr std::uintmax_t manyZeros = std::uintmax_t{64} << 30;  // takes no room on the disk

std::string failureOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const AudioIOError& error) {
        return error.what();
    }
    return "none";
}

std::string failureOfReading(const fs::path& file) {
    return failureOf([&] { (void)AudioIO::readMono(file); });
}

AudioIO::SampleSink ignore() {
    return [](std::span<const float>) {};
}

std::vector<float> streamed(const fs::path& file, double rate) {
    std::vector<float> samples;
    AudioIO::stream(file, rate, [&](std::span<const float> piece) {
        samples.insert(samples.end(), piece.begin(), piece.end());
    });
    return samples;
}

// ---- Zeros without end

TEST(AudioLimits, ZerosBehindTheSoundAreNotLookedAt) {
    const TempFolder folder;
    for (const char* name : {"pcm16-mono.wav", "rf64-mono.wav", "float32-stereo.wav", "pcm16-stereo.aif"}) {
        fs::copy_file(audioFixture(name), folder / name);
        fs::resize_file(folder / name, manyZeros);
        EXPECT_EQ(AudioIO::readMono(folder / name).samples, AudioIO::readMono(audioFixture(name)).samples);
        EXPECT_TRUE(AudioIO::info(folder / name)) << name;
    }
}

TEST(AudioLimits, AStreamThatEndsInZerosWithoutEndIsUnreadable) {
    const TempFolder folder;
    for (const char* name : {"cbr-mono.mp3", "adts-mono.aac"}) {
        fs::copy_file(audioFixture(name), folder / name);
        fs::resize_file(folder / name, manyZeros);
        EXPECT_EQ(failureOfReading(folder / name), "Could not read " + std::string(name) +
                                                       ": it holds more than 64 MiB in a row without sound");
    }
}

TEST(AudioLimits, ZerosFromTheStartAreUnreadable) {
    const TempFolder folder;
    for (const std::string& extension : AudioIO::supportedExtensions()) {
        writeText(folder / ("x." + extension), std::string(1, '\0'));
        fs::resize_file(folder / ("x." + extension), manyZeros);
        EXPECT_NE(failureOfReading(folder / ("x." + extension)), "none") << extension;
    }
}

TEST(ByteSource, EndsWhereNothingComesOfMuchReading) {
    const TempFolder folder;
    writeText(folder / "x", std::string(10000, 'x'));
    ByteSource bytes(folder / "x", true, {}, {.bytes = 4000});
    std::vector<std::byte> piece(1000);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(bytes.readAt(0, piece), 1000U);
    EXPECT_THROW(bytes.readAt(0, piece), ReadError);
    bytes.progress();
    EXPECT_EQ(bytes.readAt(0, piece), 1000U);
}

TEST(ByteSource, EndsWhereItTakesTooLong) {
    const TempFolder folder;
    writeText(folder / "x", "text");
    ByteSource bytes(folder / "x", true, {}, {.time = std::chrono::milliseconds(-1)});
    std::vector<std::byte> piece(1);
    EXPECT_THROW(bytes.readAt(0, piece), ReadError);
}

TEST(ByteSource, KeepsWhatCannotBeThrown) {
    const TempFolder folder;
    writeText(folder / "x", "text");
    std::stop_source stop;
    ByteSource bytes(folder / "x", true, stop.get_token(), {});
    std::vector<std::byte> piece(4);
    EXPECT_EQ(bytes.tryReadAt(0, piece), 4);
    EXPECT_NO_THROW(bytes.check());
    stop.request_stop();
    EXPECT_LT(bytes.tryReadAt(0, piece), 0);
    EXPECT_THROW(bytes.check(), CancellationError);
}

TEST(ByteSource, ShowsPartsAsOne) {
    const TempFolder folder;
    writeText(folder / "x", "0123456789");
    ByteSource bytes(folder / "x", true, {}, {});
    bytes.show({{1, 3}, {5, 6}, {8, 10}});
    EXPECT_EQ(bytes.size(), 5);
    std::string text(10, '.');
    EXPECT_EQ(bytes.readAt(1, std::as_writable_bytes(std::span(text))), 4U);
    EXPECT_EQ(text, "2589......");
}

// ---- Files that are none

TEST(ByteSource, DoesNotWaitForAPipe) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    EXPECT_THROW(ByteSource(folder / "pipe.wav", true, {}, {}), ReadError);
    EXPECT_THROW(ByteSource("/dev/zero", true, {}, {}), ReadError);
    EXPECT_THROW(ByteSource(folder.path(), true, {}, {}), ReadError);
}

TEST(AudioLimits, LinksAreFollowedUnlessTheCallerDoesNotWantTo) {
    const TempFolder folder;
    fs::create_symlink(audioFixture("pcm16-mono.wav"), folder / "x.wav");
    EXPECT_EQ(AudioIO::readMono(folder / "x.wav").samples.size(), testing::rampFrames);
    AudioIO::ReadOptions options;
    options.followsLinks = false;
    EXPECT_THAT(failureOf([&] { (void)AudioIO::readMono(folder / "x.wav", options); }),
                ::testing::StartsWith("Could not read x.wav: "));
    EXPECT_THROW((void)AudioIO::measure(folder / "x.wav", options), AudioIOError);
}

TEST(AudioLimits, AShortageOfDescriptorsIsNoFaultOfTheFile) {
    // First, because a sanitizer that meets a class for the first time looks at it through a pipe.
    try {
        (void)AudioIO::measure("/nowhere/kick.wav");
        ADD_FAILURE() << "was measured";
    } catch (const AudioIOError& error) {
        EXPECT_FALSE(error.isSystemTrouble());
    }
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    bool isSystemTrouble = false;
    try {
        (void)AudioIO::measure(audioFixture("pcm16-mono.wav"));
    } catch (const AudioIOError& error) {
        isSystemTrouble = error.isSystemTrouble();
    }
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(isSystemTrouble);
}

// ---- Cancellation

TEST(AudioLimits, ReadingEndsWhenItIsCancelled) {
    std::stop_source stop;
    stop.request_stop();
    AudioIO::ReadOptions options;
    options.stop = stop.get_token();
    for (const fs::path& file : audioFixtures()) {
        EXPECT_THROW((void)AudioIO::readMono(file, options), CancellationError) << file;
        EXPECT_THROW((void)AudioIO::measure(file, options), CancellationError) << file;
        EXPECT_THROW(AudioIO::stream(file, 44100, ignore(), options), CancellationError) << file;
    }
}

// A file of 20 kilobytes that holds 100 million frames, of which FFmpeg has read all at the first frame.
TEST(AudioLimits, DecodingEndsWhenItIsCancelled) {
    const TempFolder folder;
    writeText(folder / "x.flac", constantFLAC(44100, 100'000'000));
    std::stop_source stop;
    AudioIO::ReadOptions options;
    options.stop = stop.get_token();
    std::size_t samples = 0;
    const auto stopAtOnce = [&](std::span<const float> piece) {
        samples += piece.size();
        stop.request_stop();
    };
    EXPECT_THROW(AudioIO::stream(folder / "x.flac", 44100, stopAtOnce, options), CancellationError);
    EXPECT_LT(samples, 1'000'000U);
}

// ---- Memory

TEST(AudioLimits, AStreamTakesLittleMemory) {
    const TempFolder folder;
    writeText(folder / "long.flac", constantFLAC(44100, 50'000'000));
    writeText(folder / "slow.flac", constantFLAC(1000, 300'000));
    AudioIO::stream(audioFixture("flac16-mono.flac"), 48000, ignore());
    const long before = peakMegabytes();
    std::size_t samples = 0;
    const auto count = [&](std::span<const float> piece) { samples += piece.size(); };
    EXPECT_EQ(AudioIO::stream(folder / "long.flac", 44100, count).frames, 50'000'000);
    EXPECT_EQ(samples, 50'000'000U);
    samples = 0;
    AudioIO::stream(folder / "slow.flac", 96000, count);
    EXPECT_NEAR(static_cast<double>(samples), 300'000 * 96.0, 96);
    EXPECT_LT(peakMegabytes() - before, megabytesHere(48));
}

TEST(AudioLimits, RatesAndLengthsThatNoSampleHasAreRefused) {
    const TempFolder folder;
    writeText(folder / "slow.flac", constantFLAC(1000, 3000));
    writeText(folder / "long.flac", constantFLAC(1000, 6 * 3600 * 1000 + 1));
    writeText(folder / "fast.wav", floatWAV({noise(1, 1000)}, 768000));
    EXPECT_EQ(failureOf([&] { AudioIO::stream(folder / "slow.flac", 768000, ignore()); }),
              "Could not read slow.flac: its sample rate of 1000 Hz is too far from 768000 Hz");
    EXPECT_EQ(failureOf([&] { AudioIO::stream(folder / "fast.wav", 1000, ignore()); }),
              "Could not read fast.wav: its sample rate of 768000 Hz is too far from 1000 Hz");
    EXPECT_EQ(failureOf([&] { AudioIO::stream(folder / "long.flac", 1000, ignore()); }),
              "Could not read long.flac: it lasts more than 6 hours");
    EXPECT_EQ(AudioIO::stream(folder / "slow.flac", 100000, ignore()).sampleRate, 1000);
    EXPECT_EQ(AudioIO::stream(folder / "fast.wav", 8000, ignore()).frames, 1000);
}

// An index of millions of packets that the file cannot hold.
TEST(AudioLimits, AnIndexThatNoFileCanHoldIsRefused) {
    const TempFolder folder;
    std::string bytes = readText(audioFixture("pcm16-mono.m4a"));
    const std::size_t sizes = bytes.find("stsz");
    bytes.replace(sizes + 8, 8, testing::bigEndianBytes(1, 4) + testing::bigEndianBytes(50'000'000, 4));
    bytes.replace(bytes.find("stsc") + 16, 4, testing::bigEndianBytes(50'000'000, 4));
    writeText(folder / "x.m4a", bytes);
    const long before = peakMegabytes();
    (void)failureOfReading(folder / "x.m4a");
    EXPECT_LT(peakMegabytes() - before, megabytesHere(64));
}

TEST(AudioLimits, AStreamIsTheFileReadAndConverted) {
    for (const fs::path& file : audioFixtures()) {
        const AudioIO::MonoAudio audio = AudioIO::readMono(file);
        for (const double rate : {audio.sampleRate, 48000.0, 11025.0}) {
            EXPECT_EQ(streamed(file, rate), AudioIO::resample(audio.samples, audio.sampleRate, rate))
                << file << " at " << rate << " Hz";
        }
    }
}

TEST(AudioLimits, AStreamTellsWhatWasRead) {
    const AudioIO::StreamedAudio read = AudioIO::stream(audioFixture("cbr-mono.mp3"), 22050, ignore());
    EXPECT_EQ(read.frames, 8011);
    EXPECT_EQ(read.sampleRate, 44100);
    EXPECT_FALSE(read.damage.any());
    const TempFolder folder;
    writeText(folder / "empty.wav", wavBytes({}, ""));
    EXPECT_EQ(failureOf([&] { AudioIO::stream(folder / "empty.wav", 44100, ignore()); }),
              "empty.wav contains no audio");
}

}  // namespace
}  // namespace quillmere
