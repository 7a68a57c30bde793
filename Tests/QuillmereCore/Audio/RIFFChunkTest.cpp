#include "QuillmereCore/Audio/RIFFChunk.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::littleEndian;
using testing::littleEndianAt;
using testing::TempFolder;
using testing::wavBytes;
using testing::writeText;

constexpr std::string_view kind = "qrcp";
const std::vector<float> samples{0, 0.5F, -0.5F};  // an odd number of bytes in 24 bits

class RIFFChunks : public ::testing::Test {
protected:
    // A written file with a chunk of that content.
    [[nodiscard]] std::string withChunk(std::string_view content, OutputFormat format) const {
        std::vector<std::byte> bytes = AudioIO::encode(samples, file, 8000, format);
        EXPECT_TRUE(RIFFChunk::append(bytes, kind, content));
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    [[nodiscard]] std::string plain(OutputFormat format) const {
        const std::vector<std::byte> bytes = AudioIO::encode(samples, file, 8000, format);
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    [[nodiscard]] std::optional<std::string> findIn(const std::string& bytes) const {
        writeText(file, bytes);
        return RIFFChunk::find(file, kind);
    }

    const TempFolder folder;
    const fs::path file = folder / "a.wav";
};

TEST_F(RIFFChunks, ContentComesBackFromEveryFormatAndLength) {
    for (const OutputFormat format : allOutputFormats) {
        for (const std::string& content : {std::string(), std::string("1"), std::string("22"),
                                           std::string("\0{}\n", 4), std::string(70'001, 'x')})
            EXPECT_EQ(findIn(withChunk(content, format)), content) << rawValue(format);
    }
}

TEST_F(RIFFChunks, OnlyTheLengthOfTheWholeChangesInFrontOfIt) {
    for (const OutputFormat format : allOutputFormats) {
        const std::string before = plain(format);
        for (const std::string content : {"odd", "even"}) {
            std::string after = withChunk(content, format);
            EXPECT_EQ(littleEndianAt(after, 4, 4), after.size() - 8);
            EXPECT_EQ(after.size(), before.size() + 8 + 4) << "padded";
            EXPECT_EQ(littleEndianAt(after, before.size() + 4, 4), content.size());
            after.replace(4, 4, before.substr(4, 4));
            EXPECT_EQ(after.substr(0, before.size()), before);
        }
    }
}

TEST_F(RIFFChunks, TheSoundReadsAsBefore) {
    for (const OutputFormat format : allOutputFormats) {
        writeText(file, withChunk("odd", format));
        const AudioIO::MonoAudio audio = AudioIO::readMono(file);
        EXPECT_EQ(audio.samples, AudioIO::asWritten(samples, format)) << rawValue(format);
        EXPECT_FALSE(audio.damage.any());
        EXPECT_NEAR(AudioIO::info(file)->duration, 3.0 / 8000, 1e-9);
    }
}

TEST_F(RIFFChunks, IsFoundBehindAndBeforeOtherChunks) {
    const std::string other = "LIST" + littleEndian(3, 4) + "abc" + std::string(1, '\0');
    const std::string ours = "qrcp" + littleEndian(2, 4) + "{}";
    EXPECT_EQ(findIn(wavBytes({}, "") + other + ours), "{}");
    EXPECT_EQ(findIn(wavBytes({}, "") + ours + other), "{}");
    EXPECT_EQ(findIn(wavBytes({}, "") + ours + "qrcp" + littleEndian(1, 4) + "2"), "{}") << "the first";
}

TEST_F(RIFFChunks, NoChunkIsNothing) {
    EXPECT_EQ(findIn(plain(OutputFormat::wav24)), std::nullopt);
    EXPECT_EQ(findIn(""), std::nullopt);
    EXPECT_EQ(findIn("RIFF"), std::nullopt);
    EXPECT_EQ(findIn("fLaC and so on, and on qrcp"), std::nullopt);
    std::string other = withChunk("{}", OutputFormat::wav16);
    other.replace(8, 4, "AVI ");
    EXPECT_EQ(findIn(other), std::nullopt);
    // As a recording that was never finished: nobody knows where its sound ends.
    EXPECT_EQ(findIn(wavBytes({.dataSize = 0xFFFFFFFF}, "abcd")), std::nullopt);
}

TEST_F(RIFFChunks, OneThatIsCutOffOrTooLongIsUnreadable) {
    const std::string whole = withChunk("0123456789", OutputFormat::wav16);
    EXPECT_THROW((void)findIn(whole.substr(0, whole.size() - 1)), AudioIOError);
    EXPECT_THROW((void)findIn(wavBytes({}, "") + "qrcp" + littleEndian(0xFFFFFFFF, 4)), AudioIOError);
    const std::string tooLong(RIFFChunk::mostBytes + 2, 'x');
    EXPECT_THROW((void)findIn(withChunk(tooLong, OutputFormat::wav16)), AudioIOError);
}

TEST_F(RIFFChunks, AFileThatCannotBeReadIsNamed) {
    try {
        (void)RIFFChunk::find(folder / "missing.wav", kind);
        FAIL();
    } catch (const AudioIOError& error) {
        EXPECT_NE(std::string(error.what()).find("missing.wav"), std::string::npos);
    }
    ASSERT_EQ(::mkfifo((folder / "pipe.wav").c_str(), 0600), 0);
    EXPECT_THROW((void)RIFFChunk::find(folder / "pipe.wav", kind), AudioIOError) << "at once";
}

TEST(AsWritten, IsWhatReadingGivesBack) {
    const TempFolder folder;
    std::vector<float> signal{0,
                              -0.0F,
                              1,
                              -1,
                              2,
                              -2,
                              0.99999F,
                              1.0F / 3,
                              -1.0F / 3,
                              1e-9F,
                              1e-5F,
                              0.5F / 32768,
                              1.5F / 32768,
                              2.5F / 32768};
    for (int i = -50; i < 50; ++i)
        signal.push_back(static_cast<float>(i) / 49.7F);
    for (const OutputFormat format : allOutputFormats) {
        const fs::path file = folder / "a.wav";
        AudioIO::write(signal, file, 8000, format);
        EXPECT_EQ(AudioIO::readMono(file).samples, AudioIO::asWritten(signal, format)) << rawValue(format);
    }
}

}  // namespace
}  // namespace quillmere
