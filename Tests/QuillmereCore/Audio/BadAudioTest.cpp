// Files that are not what they claim to be: each is refused with a reason, or read as far as it is sound.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "Support/AudioFixtures.h"
#include "Support/OtherUser.h"
#include "Support/PeakMemory.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::audioFixture;
using testing::audioFixtures;
using testing::megabytesHere;
using testing::OtherUser;
using testing::peakMegabytes;
using testing::readText;
using ::testing::StartsWith;
using testing::sweepFrames;
using testing::TempFolder;
using testing::wavBytes;
using testing::WAVHeader;
using testing::writeText;

// What is read from a file with these bytes, and what the reader says of them.
struct Outcome {
    std::vector<float> samples;
    std::string failure;
    std::optional<double> seconds;  // by info
};

Outcome outcomeOf(const std::string& name, const std::string& bytes) {
    const TempFolder folder;
    writeText(folder / name, bytes);
    Outcome outcome;
    if (const auto info = AudioIO::info(folder / name)) outcome.seconds = info->duration;
    try {
        outcome.samples = AudioIO::readMono(folder / name).samples;
    } catch (const AudioIOError& error) {
        outcome.failure = error.what();
    }
    return outcome;
}

std::string randomBytes(std::uint32_t seed, std::size_t count) {
    std::mt19937 generator(seed);
    std::string bytes(count, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(generator());
    return bytes;
}

TEST(BadAudio, TextIsRefusedUnderEveryExtension) {
    std::string text;
    for (int i = 0; i < 200; ++i)
        text += "hello, this is a text file and not audio\n";
    for (const std::string& extension : AudioIO::supportedExtensions()) {
        const Outcome outcome = outcomeOf("x." + extension, text);
        EXPECT_THAT(outcome.failure, StartsWith("Could not read x." + extension + ": "));
        EXPECT_FALSE(outcome.seconds) << extension;
    }
}

// Random bytes may hold what looks like a packet, so being read is no mistake. Being long is.
TEST(BadAudio, RandomBytesYieldLittleOrNothing) {
    for (const std::string& extension : AudioIO::supportedExtensions()) {
        const Outcome outcome = outcomeOf("x." + extension, randomBytes(1, 60000));
        EXPECT_LT(outcome.samples.size(), 100000U) << extension;
    }
}

TEST(BadAudio, OtherMediaAndPlaylistsAreRefused) {
    const std::string png("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x10\0\0\0\x10\x08\2\0\0\0", 29);
    const std::string target = audioFixture("pcm16-mono.wav").string();
    for (const std::string& bytes :
         {png + randomBytes(2, 1000),
          "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\nfile://" + target + "\n",
          "ffconcat version 1.0\nfile '" + target + "'\n",
          std::string("1\n00:00:01,000 --> 00:00:04,000\nhello\n\n2\n00:00:05,000 --> 00:00:06,000\nx\n"),
          "OggS" + randomBytes(3, 1000)}) {
        EXPECT_THAT(outcomeOf("x.wav", bytes).failure, StartsWith("Could not read x.wav: "));
    }
}

TEST(BadAudio, FoldersAndPipesAreRefused) {
    const TempFolder folder;
    fs::create_directory(folder / "folder.wav");
    ASSERT_EQ(::mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    for (const char* name : {"folder.wav", "pipe.wav"}) {
        EXPECT_FALSE(AudioIO::info(folder / name));
        EXPECT_THROW((void)AudioIO::readMono(folder / name), AudioIOError) << name;
    }
}

TEST(BadAudio, AFileThatMayNotBeReadSaysSo) {
    const TempFolder folder;
    fs::permissions(folder.path(), fs::perms(0755));
    fs::copy_file(audioFixture("pcm16-mono.wav"), folder / "x.wav");
    fs::permissions(folder / "x.wav", fs::perms::none);
    const OtherUser user;
    EXPECT_FALSE(AudioIO::info(folder / "x.wav"));
    try {
        (void)AudioIO::readMono(folder / "x.wav");
        ADD_FAILURE() << "was read";
    } catch (const AudioIOError& error) {
        EXPECT_STREQ(error.what(), "Could not read x.wav: Permission denied");
    }
}

TEST(BadAudio, NamesMayHoldAnyBytes) {
    const TempFolder folder;
    for (const std::string name : {"Größe 🥁.wav", "two words.wav", "a\nline.wav", "\"quoted'.wav",
                                   "\xff\xfe.wav", "http:host.wav", "100%s%n.wav", "-f.wav"}) {
        fs::copy_file(audioFixture("pcm16-mono.wav"), folder / name);
        EXPECT_EQ(AudioIO::readMono(folder / name).samples.size(), testing::rampFrames) << name;
        EXPECT_TRUE(AudioIO::info(folder / name)) << name;
    }
}

TEST(BadAudio, AHeaderWithoutABodyIsNoAudio) {
    for (const fs::path& file : audioFixtures()) {
        const std::string bytes = readText(file);
        for (const std::size_t length : {1U, 8U, 30U, 60U}) {
            if (length > bytes.size() / 2) continue;
            const Outcome outcome = outcomeOf(file.filename(), bytes.substr(0, length));
            EXPECT_LT(outcome.samples.size(), 100U) << file << " cut to " << length << " bytes";
        }
    }
}

TEST(BadAudio, ATruncatedFileIsReadAsFarAsItGoes) {
    for (const char* name : {"pcm16-mono.wav", "pcm24-stereo.wav", "pcm16-stereo.aif", "pcm16be-mono.caf",
                             "flac16-mono.flac", "cbr-no-xing-mono.mp3", "adts-mono.aac"}) {
        const std::string bytes = readText(audioFixture(name));
        const std::vector<float> whole = AudioIO::readMono(audioFixture(name)).samples;
        const Outcome outcome = outcomeOf(name, bytes.substr(0, bytes.size() * 3 / 4));
        EXPECT_GT(outcome.samples.size(), whole.size() / 2) << name;
        EXPECT_LT(outcome.samples.size(), whole.size()) << name;
        // The last piece is not whole and may differ.
        const std::size_t sound = outcome.samples.size() / 2;
        EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(sound),
                               outcome.samples.begin()))
            << name;
    }
}

TEST(BadAudio, ATruncatedPCMFileIsMeasuredByWhatItHolds) {
    for (const char* name : {"pcm16-mono.wav", "pcm24-stereo.wav", "pcm16-stereo.aif", "pcm16be-mono.caf"}) {
        const std::string bytes = readText(audioFixture(name));
        const Outcome outcome = outcomeOf(name, bytes.substr(0, bytes.size() * 2 / 3));
        ASSERT_TRUE(outcome.seconds) << name;
        EXPECT_NEAR(*outcome.seconds * testing::rampRate, static_cast<double>(outcome.samples.size()), 1e-6)
            << name;
    }
}

TEST(BadAudio, DamageInTheMiddleLeavesTheRest) {
    for (const char* name : {"cbr-mono.mp3", "adts-mono.aac", "edit-list-mono.m4a"}) {
        std::string bytes = readText(audioFixture(name));
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 100, '\x55');
        const Outcome outcome = outcomeOf(name, bytes);
        EXPECT_EQ(outcome.failure, "") << name;
        EXPECT_GT(outcome.samples.size(), sweepFrames / 2) << name;
    }
}

TEST(BadAudio, ClaimsOfGigabytesAreNotBelieved) {
    const std::string data(2000, '\1');
    for (const std::uint32_t claim : {0xFFFFFFFFU, 0xFFFFFFF0U, 0x7FFFFFF0U, 100000U}) {
        const Outcome outcome =
            outcomeOf("x.wav", wavBytes({.dataSize = claim, .riffSize = 0xFFFFFFFF}, data));
        EXPECT_EQ(outcome.samples.size(), 1000U) << claim;
        ASSERT_TRUE(outcome.seconds) << claim;
        EXPECT_NEAR(*outcome.seconds, 1000 / 44100.0, 1e-9) << claim;
    }
}

// The bytes of a fixture with some of them replaced: those at offset from where marker stands.
std::string patched(const char* fixture, const std::string& marker, std::size_t offset,
                    const std::string& bytes) {
    std::string text = readText(audioFixture(fixture));
    return text.replace(text.find(marker) + offset, bytes.size(), bytes);
}

TEST(BadAudio, ClaimsOfOtherContainersAreNotBelieved) {
    const std::string most = "\x7f\xff\xff\xff\xff\xff\xff\xff";
    // AIFF: frames in "COMM", bytes in "SSND". FLAC: 36 bits of frames in STREAMINFO. CAF: bytes in "data".
    const std::array<std::pair<const char*, std::string>, 4> files{
        {{"pcm16-stereo.aif", patched("pcm16-stereo.aif", "COMM", 10, most.substr(0, 4))},
         {"pcm16-stereo.aif", patched("pcm16-stereo.aif", "SSND", 4, most.substr(0, 4))},
         {"flac16-mono.flac", patched("flac16-mono.flac", "fLaC", 22, "\xff\xff\xff\xff")},
         {"pcm16be-mono.caf", patched("pcm16be-mono.caf", "data", 6, most.substr(0, 6))}}};
    for (const auto& [name, bytes] : files) {
        const Outcome outcome = outcomeOf(name, bytes);
        EXPECT_EQ(outcome.samples.size(), testing::rampFrames) << name;
        ASSERT_TRUE(outcome.seconds) << name;
        EXPECT_LT(*outcome.seconds, 600) << name;
    }
}

TEST(BadAudio, APacketTableThatClaimsTooMuchIsNotBelieved) {
    const Outcome frames =
        outcomeOf("x.caf", patched("aac-mono.caf", "pakt", 20, "\x7f\xff\xff\xff\xff\xff\xff\xff"));
    EXPECT_EQ(frames.samples.size(), 9216U - 1024U);  // all but the priming
    ASSERT_TRUE(frames.seconds);
    EXPECT_LT(*frames.seconds, 1);
    const Outcome priming = outcomeOf("x.caf", patched("aac-mono.caf", "pakt", 28, "\x7f\xff\xff\xff"));
    EXPECT_EQ(priming.failure, "x.caf contains no audio");
}

TEST(BadAudio, AbsurdSampleRatesAreRefused) {
    for (const std::uint32_t rate : {0U, 1U, 999U, 768001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        const Outcome outcome = outcomeOf("x.wav", wavBytes({.rate = rate}, std::string(2000, '\1')));
        EXPECT_THAT(outcome.failure, StartsWith("Could not read x.wav: ")) << rate;
        EXPECT_FALSE(outcome.seconds) << rate;
    }
    const Outcome outcome = outcomeOf("x.wav", wavBytes({.rate = 999}, std::string(2000, '\1')));
    EXPECT_EQ(outcome.failure, "Could not read x.wav: its sample rate of 999 Hz is not supported");
}

TEST(BadAudio, UnusualSampleRatesAreRead) {
    for (const std::uint32_t rate : {1000U, 4000U, 44056U, 352800U, 768000U})
        EXPECT_EQ(outcomeOf("x.wav", wavBytes({.rate = rate}, std::string(2000, '\1'))).samples.size(),
                  1000U);
}

TEST(BadAudio, AbsurdFormatsAreRefused) {
    const std::string data(2000, '\1');
    for (const WAVHeader& header :
         {WAVHeader{.channels = 0}, WAVHeader{.channels = 65535}, WAVHeader{.bits = 0},
          WAVHeader{.bits = 65535}, WAVHeader{.tag = 0x9999}, WAVHeader{.tag = 0}}) {
        const Outcome outcome = outcomeOf("x.wav", wavBytes(header, data));
        EXPECT_THAT(outcome.failure, StartsWith("Could not read x.wav: "))
            << "tag " << header.tag << ", " << header.channels << " channels, " << header.bits << " bits";
    }
}

// Streams may change their format from one packet to the next.
TEST(BadAudio, AChangeOfChannelsEndsTheRead) {
    const std::string mono = readText(audioFixture("adts-mono.aac"));
    const std::string stereo = readText(audioFixture("adts-stereo.aac"));
    EXPECT_EQ(outcomeOf("x.aac", mono + stereo).samples.size(), 9216U);
}

// Seeded damage of three kinds. Nothing may crash, hang, print, or take memory that the file does not hold.
TEST(BadAudio, DamagedFilesAreHarmless) {
    const long before = peakMegabytes();
    std::mt19937 generator(7);
    const auto below = [&generator](std::size_t bound) { return generator() % bound; };
    std::size_t read = 0;
    ::testing::internal::CaptureStderr();
    for (const fs::path& file : audioFixtures()) {
        const std::string sound = readText(file);
        for (int round = 0; round < 30; ++round) {
            std::string bytes = sound;
            const std::size_t reach =
                round % 3 == 0 ? bytes.size() : std::min<std::size_t>(bytes.size(), 200);
            for (std::size_t hits = 1 + below(20); hits > 0; --hits) {
                char& byte = bytes[below(reach)];
                byte =
                    round % 2 == 0 ? static_cast<char>(generator()) : static_cast<char>(byte ^ 1 << below(8));
            }
            if (round % 5 == 4) bytes.resize(below(bytes.size()));
            const Outcome outcome = outcomeOf(file.filename(), bytes);
            read += outcome.samples.empty() ? 0 : 1;
            EXPECT_LT(outcome.samples.size(), 1000000U) << file << " round " << round;
        }
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_GT(read, 100U);  // else nothing but headers was tried
    EXPECT_LT(peakMegabytes() - before, megabytesHere(256));
}

TEST(BadAudio, NothingIsPrintedAboutBadFiles) {
    ::testing::internal::CaptureStderr();
    ::testing::internal::CaptureStdout();
    for (const fs::path& file : audioFixtures()) {
        const std::string bytes = readText(file);
        (void)outcomeOf(file.filename(), bytes.substr(0, bytes.size() / 2));
        (void)outcomeOf(file.filename(), bytes + bytes);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace quillmere
