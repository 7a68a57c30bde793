// Files with holes and missing ends: what is kept, what is refused, and what is said of it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "Support/AudioFixtures.h"
#include "Support/FLACBytes.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::audioFixture;
using testing::audioFixtures;
using testing::constantFLAC;
using testing::littleEndian;
using testing::noise;
using testing::readText;
using testing::TempFolder;
using testing::wavBytes;
using testing::writeText;

AudioIO::MonoAudio readBytes(const std::string& name, const std::string& bytes) {
    const TempFolder folder;
    writeText(folder / name, bytes);
    return AudioIO::readMono(folder / name);
}

double framesByInfo(const std::string& name, const std::string& bytes) {
    const TempFolder folder;
    writeText(folder / name, bytes);
    const auto info = AudioIO::info(folder / name);
    return info ? info->duration * info->sampleRate : -1;
}

std::string failureOf(const std::string& name, const std::string& bytes) {
    try {
        (void)readBytes(name, bytes);
    } catch (const AudioIOError& error) {
        return error.what();
    }
    return "none";
}

std::string overwritten(const char* fixture, std::size_t begin, std::size_t end, char value) {
    std::string bytes = readText(audioFixture(fixture));
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
              bytes.begin() + static_cast<std::ptrdiff_t>(end), value);
    return bytes;
}

// Decoders fill bands with noise that depends on all that came before.
float greatestDifference(std::size_t begin, const std::vector<float>& one, const std::vector<float>& other) {
    float greatest = 0;
    for (std::size_t i = begin; i < std::min(one.size(), other.size()); ++i)
        greatest = std::max(greatest, std::abs(one[i] - other[i]));
    return greatest;
}

bool isEqualUpTo(std::size_t end, const std::vector<float>& one, const std::vector<float>& other) {
    return end <= std::min(one.size(), other.size()) &&
           std::equal(one.begin(), one.begin() + static_cast<std::ptrdiff_t>(end), other.begin());
}

TEST(DamagedAudio, SoundFilesAreNotSaidToBeDamaged) {
    for (const fs::path& file : audioFixtures()) {
        const AudioIO::Damage damage = AudioIO::readMono(file).damage;
        EXPECT_FALSE(damage.isTruncated) << file;
        EXPECT_EQ(damage.silentSeconds, 0) << file;
    }
}

// ---- Lossless files

// The frames of this file begin at bytes 60, 337, 603, 856, 1123, 1396, 1661 and 1936.
TEST(DamagedAudio, ALosslessFileWithAHoleIsUnreadable) {
    const std::string whole = readText(audioFixture("flac16-mono.flac"));
    const std::string reason = "Could not read x.flac: it is damaged in the middle";
    EXPECT_EQ(failureOf("x.flac", overwritten("flac16-mono.flac", 900, 901, '\x55')), reason) << "a byte";
    EXPECT_EQ(failureOf("x.flac", overwritten("flac16-mono.flac", 856, 1123, '\0')), reason) << "a frame";
    EXPECT_EQ(failureOf("x.flac", overwritten("flac16-mono.flac", 900, 1500, '\0')), reason) << "some frames";
    EXPECT_EQ(failureOf("x.flac", overwritten("flac16-mono.flac", 60, 337, '\0')), reason) << "the first";
    EXPECT_EQ(failureOf("x.flac", whole.substr(0, 603) + whole.substr(856)), reason) << "a frame taken out";
    EXPECT_EQ(failureOf("x.flac", whole.substr(0, 700) + whole.substr(1300)), reason) << "bytes taken out";
}

TEST(DamagedAudio, AnALACFileWithADamagedPacketIsUnreadable) {
    // The second of three packets
    constexpr std::size_t begin = 7724;
    constexpr std::size_t end = 15564;
    for (const char value : {'\0', '\x55', '\xFF'})
        EXPECT_EQ(failureOf("x.m4a", overwritten("packets-mono.m4a", begin, end, value)),
                  "Could not read x.m4a: it is damaged in the middle");
    EXPECT_EQ(AudioIO::readMono(audioFixture("packets-mono.m4a")).samples.size(), 8292U);
}

TEST(DamagedAudio, ALosslessFileWithoutItsEndIsReadAndSaidToBeTruncated) {
    const std::vector<float> whole = AudioIO::readMono(audioFixture("flac16-mono.flac")).samples;
    const std::string bytes = readText(audioFixture("flac16-mono.flac"));
    for (const std::size_t length : {1123U, 1200U, 2000U}) {
        const AudioIO::MonoAudio audio = readBytes("x.flac", bytes.substr(0, length));
        EXPECT_TRUE(audio.damage.isTruncated) << length;
        EXPECT_TRUE(isEqualUpTo(4 * 128, whole, audio.samples)) << length;
        EXPECT_LT(audio.samples.size(), whole.size()) << length;
    }
    const AudioIO::MonoAudio zeros = readBytes("x.flac", overwritten("flac16-mono.flac", 1396, 2170, '\0'));
    EXPECT_TRUE(zeros.damage.isTruncated);
    EXPECT_EQ(zeros.samples.size(), 5U * 128);
}

TEST(DamagedAudio, ATagBehindALosslessFileIsNoDamage) {
    const std::string tag = "TAG" + std::string(125, 'x');
    const AudioIO::MonoAudio audio = readBytes("x.flac", readText(audioFixture("flac16-mono.flac")) + tag);
    EXPECT_EQ(audio.samples, AudioIO::readMono(audioFixture("flac16-mono.flac")).samples);
    EXPECT_FALSE(audio.damage.any());
}

TEST(DamagedAudio, APieceOfALongerLosslessStreamIsSound) {
    // As recorders write it that were started late: without a length, the first frame is number 7.
    std::string bytes = constantFLAC(44100, 0);
    for (std::uint32_t number = 7; number < 10; ++number)
        bytes += testing::constantFLACFrame(number, 65535, 1000);
    const AudioIO::MonoAudio audio = readBytes("x.flac", bytes);
    EXPECT_EQ(audio.samples.size(), 3U * 65535);
    EXPECT_FALSE(audio.damage.any());
}

TEST(DamagedAudio, TruncatedPCMFilesSaySo) {
    for (const char* name :
         {"pcm16-mono.wav", "rf64-mono.wav", "pcm16-stereo.aif", "pcm16be-mono.caf", "mp3-mono.wav"}) {
        const std::string bytes = readText(audioFixture(name));
        EXPECT_TRUE(readBytes(name, bytes.substr(0, bytes.size() * 2 / 3)).damage.isTruncated) << name;
    }
}

TEST(DamagedAudio, ATruncatedMPEG4FileSaysSo) {
    const std::string bytes = readText(audioFixture("edit-list-stereo.m4a"));  // described before its sound
    const AudioIO::MonoAudio audio = readBytes("x.m4a", bytes.substr(0, bytes.size() - 1000));
    EXPECT_TRUE(audio.damage.isTruncated);
    EXPECT_GT(audio.samples.size(), 4000U);
}

// ---- Lossy streams

struct Stream {
    const char* file;
    std::size_t begin, end;  // of one frame, or some, in bytes
    std::size_t lost;        // frames in the sense of samples
    std::size_t first;       // sample that is lost at the earliest
};

// Of MP3: a frame may begin in the bytes of up to 511 before its header, here two and a half frames, and
// overlaps the one before.
constexpr std::size_t longestLean = 4 * 1152;

class LossyStream : public ::testing::TestWithParam<Stream> {};

// What follows the frames after a hole, which lean on what is lost, is what it was and where it was.
TEST_P(LossyStream, KeepsItsTimeAcrossAHole) {
    const auto& [file, begin, end, lost, first] = GetParam();
    const std::vector<float> whole = AudioIO::readMono(audioFixture(file)).samples;
    for (const char value : {'\0', '\x55', '\xFF'}) {
        const std::string bytes = overwritten(file, begin, end, value);
        const AudioIO::MonoAudio audio = readBytes(file, bytes);
        EXPECT_EQ(audio.samples.size(), whole.size()) << static_cast<int>(value);
        EXPECT_TRUE(isEqualUpTo(first, whole, audio.samples)) << static_cast<int>(value);
        EXPECT_LT(greatestDifference(first + lost + longestLean, whole, audio.samples), 0.01F)
            << static_cast<int>(value);
        EXPECT_FALSE(audio.damage.isTruncated) << static_cast<int>(value);
        EXPECT_NEAR(audio.damage.silentSeconds * 44100, static_cast<double>(lost), 0.5)
            << static_cast<int>(value);
        EXPECT_EQ(framesByInfo(file, bytes), static_cast<double>(whole.size())) << static_cast<int>(value);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, LossyStream,
    ::testing::Values(
        // One frame, and two with the end of one before. Of the first 1152 frames 1105 are left out.
        Stream{"cbr-mono.mp3", 854, 1063, 1152, 47 + 2 * 1152 - 1152},
        Stream{"cbr-mono.mp3", 640, 1000, 2 * 1152, 47 + 1152 - 1152 + 100},
        Stream{"adts-mono.aac", 1168, 1466, 1024, 3 * 1024}),
    [](const auto& test) {
        std::string name = test.param.file;
        std::replace_if(
            name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
        return name + std::to_string(test.param.begin);
    });

TEST(DamagedAudio, APacketThatCannotBeDecodedBecomesSilence) {
    const std::vector<float> whole = AudioIO::readMono(audioFixture("edit-list-mono.m4a")).samples;
    const AudioIO::MonoAudio audio = readBytes("x.m4a", overwritten("edit-list-mono.m4a", 914, 1184, '\x55'));
    EXPECT_EQ(audio.samples.size(), whole.size());
    EXPECT_LT(greatestDifference(5 * 1024, whole, audio.samples), 0.01F);
    EXPECT_NEAR(audio.damage.silentSeconds * 44100, 1024, 0.5);
    EXPECT_FALSE(audio.damage.isTruncated);
}

TEST(DamagedAudio, ALossyStreamWithoutItsEndSaysSo) {
    for (const char* name : {"cbr-mono.mp3", "cbr-no-xing-mono.mp3", "vbr-stereo.mp3", "adts-mono.aac"}) {
        const std::string bytes = readText(audioFixture(name));
        const AudioIO::MonoAudio cut = readBytes(name, bytes.substr(0, bytes.size() * 3 / 5 + 7));
        EXPECT_TRUE(cut.damage.isTruncated) << name;
        EXPECT_EQ(cut.damage.silentSeconds, 0) << name;
        std::string zeros = bytes;
        std::fill(zeros.begin() + static_cast<std::ptrdiff_t>(bytes.size() * 2 / 3), zeros.end(), '\0');
        EXPECT_TRUE(readBytes(name, zeros).damage.isTruncated) << name;
    }
    // An encoder's count of frames tells even where the cut falls between two of them.
    EXPECT_TRUE(
        readBytes("x.mp3", readText(audioFixture("cbr-mono.mp3")).substr(0, 1063)).damage.isTruncated);
}

TEST(DamagedAudio, TagsAroundAndBetweenFramesAreNoDamage) {
    const std::string tag = "TAG" + std::string(125, 'x');
    const std::string stream = readText(audioFixture("cbr-no-xing-mono.mp3"));
    const AudioIO::MonoAudio audio = readBytes("x.mp3", stream + tag + stream + tag);
    EXPECT_FALSE(audio.damage.any());
    EXPECT_EQ(audio.samples.size(), 2U * 9216);
}

TEST(DamagedAudio, AStreamThatIsMostlyDamagedIsUnreadable) {
    EXPECT_EQ(failureOf("x.mp3", overwritten("cbr-no-xing-mono.mp3", 300, 1450, '\x55')),
              "Could not read x.mp3: more of it is damaged than sound");
}

TEST(DamagedAudio, AChangeOfChannelsIsATruncation) {
    const std::string mono = readText(audioFixture("adts-mono.aac"));
    const std::string stereo = readText(audioFixture("adts-stereo.aac"));
    const AudioIO::MonoAudio audio = readBytes("x.aac", mono + stereo);
    EXPECT_EQ(audio.samples.size(), 9216U);
    EXPECT_TRUE(audio.damage.isTruncated);
}

// ---- WAV files without a length

const std::string listTag = "LIST" + littleEndian(12, 4) + "INFOISFT" + littleEndian(0, 4);

TEST(DamagedAudio, AnEmptyDataChunkBeforeTagsIsEmpty) {
    const std::string text(602, 't');
    for (const std::uint32_t size : {0U, 0xFFFFFFFFU}) {
        for (const std::string& tags :
             {listTag, "id3 " + littleEndian(text.size(), 4) + text,
              "bext" + littleEndian(text.size(), 4) + text, listTag + "bext" + littleEndian(601, 4) + text,
              listTag + std::string(4096, '\0'), listTag + std::string(5, '\0')}) {
            const std::string bytes = wavBytes({.dataSize = size}, tags);
            EXPECT_EQ(failureOf("x.wav", bytes), "x.wav contains no audio") << tags.substr(0, 4);
            EXPECT_EQ(framesByInfo("x.wav", bytes), 0) << tags.substr(0, 4);
        }
    }
}

TEST(DamagedAudio, AnUnfinishedRecordingGivesItsSound) {
    const std::vector<float> signal = noise(1, 3000, 0.5F);
    const std::string bytes =
        wavBytes({.tag = 3, .bits = 32, .dataSize = 0, .riffSize = 0}, testing::floatBytes(signal));
    EXPECT_EQ(readBytes("x.wav", bytes).samples, signal);
    for (const std::uint32_t size : {0U, 0xFFFFFFFFU, 0xFFFFFFF0U, 0x7FFFFFFFU}) {
        // Silence first, and letters that are no tag because they lead nowhere.
        for (const std::string& data :
             {std::string(2000, '\0'), "LIST" + littleEndian(70000, 4) + "abcdefgh"}) {
            const AudioIO::MonoAudio audio = readBytes("x.wav", wavBytes({.dataSize = size}, data));
            EXPECT_EQ(audio.samples.size(), data.size() / 2) << size;
            EXPECT_FALSE(audio.damage.any()) << size;
        }
    }
}

TEST(DamagedAudio, TagsBehindTheSoundAreNotSound) {
    const std::string sound(2000, '\1');
    for (const std::string& behind :
         {listTag, std::string(8192, '\0'), std::string("data"), listTag + listTag}) {
        const AudioIO::MonoAudio audio =
            readBytes("x.wav", wavBytes({.dataSize = 2000, .riffSize = 0}, sound + behind));
        EXPECT_EQ(audio.samples.size(), 1000U);
        EXPECT_FALSE(audio.damage.any());
    }
}

// ---- Sound without compression in MPEG-4 files

TEST(DamagedAudio, ATruncatedMPEG4FileIsMeasuredByWhatItHolds) {
    // The description of the fixture, which stands behind its sound, moves to the front: the place of the
    // sound moves by as much.
    const std::string bytes = readText(audioFixture("pcm16-mono.m4a"));
    const std::size_t begin = bytes.find("mdat") - 4;
    const std::size_t end = bytes.find("moov") - 4;
    std::string description = bytes.substr(end);
    const auto place = static_cast<std::uint32_t>(begin + 8 + description.size());
    const std::string number = testing::bigEndianBytes(place, 4);
    description.replace(description.find("stco") + 12, 4, number);
    const std::string swapped = bytes.substr(0, begin) + description + bytes.substr(begin, end - begin);
    EXPECT_EQ(readBytes("x.m4a", swapped).samples.size(), testing::rampFrames);
    const std::string cut = swapped.substr(0, swapped.size() - 1000);
    EXPECT_EQ(framesByInfo("x.m4a", cut), testing::rampFrames - 500.0);
    EXPECT_EQ(readBytes("x.m4a", cut).samples.size(), testing::rampFrames - 500);
    EXPECT_TRUE(readBytes("x.m4a", cut).damage.isTruncated);
}

}  // namespace
}  // namespace quillmere
