// Real files of every supported format, compared with the signal they were made from.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "Support/AudioFixtures.h"

namespace quillmere {
namespace {

using testing::audioFixture;
using testing::rampFrames;
using testing::rampRate;
using testing::ramps;
using testing::sweep;
using testing::sweepRate;

// "pcm16-mono.wav" as a test name: "pcm16_mono_wav".
template <typename Case>
std::string caseName(const ::testing::TestParamInfo<Case>& test) {
    std::string name = test.param.file;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

double framesByInfo(const std::string& file) {
    const auto info = AudioIO::info(audioFixture(file));
    return info ? info->duration * info->sampleRate : -1;
}

struct Lossless {
    const char* file;
    std::size_t channels;
    int bits;
    std::size_t frames = rampFrames;
    double framesByInfo = static_cast<double>(rampFrames);
};

class LosslessFormat : public ::testing::TestWithParam<Lossless> {};

TEST_P(LosslessFormat, IsDecodedExactly) {
    const auto& [file, channels, bits, frames, ignored] = GetParam();
    const AudioIO::MonoAudio audio = AudioIO::readMono(audioFixture(file));
    EXPECT_EQ(audio.sampleRate, rampRate);
    EXPECT_EQ(audio.samples, AudioIO::mixToMono(ramps(channels, bits, frames), frames));
}

TEST_P(LosslessFormat, IsMeasuredExactly) {
    EXPECT_NEAR(framesByInfo(GetParam().file), GetParam().framesByInfo, 1e-6);
}

INSTANTIATE_TEST_SUITE_P(
    Files, LosslessFormat,
    ::testing::Values(Lossless{"pcm8-mono.wav", 1, 8}, Lossless{"pcm16-mono.wav", 1, 16},
                      Lossless{"pcm16-stereo.wave", 2, 16}, Lossless{"pcm16-surround.wav", 6, 16},
                      Lossless{"pcm24-stereo.wav", 2, 24}, Lossless{"pcm32-mono.wav", 1, 32},
                      Lossless{"rf64-mono.wav", 1, 16}, Lossless{"float32-stereo.wav", 2, 24},
                      Lossless{"float64-mono.wav", 1, 24}, Lossless{"unknown-length-mono.wav", 1, 16},
                      Lossless{"frames1-mono.wav", 1, 16, 1, 1}, Lossless{"frames10-mono.wav", 1, 16, 10, 10},
                      Lossless{"pcm16-stereo.aif", 2, 16}, Lossless{"pcm24-mono.aiff", 1, 24},
                      Lossless{"sowt-mono.aifc", 1, 16}, Lossless{"float32-mono.aifc", 1, 24},
                      Lossless{"float64-stereo.aifc", 2, 24}, Lossless{"frames1-mono.aif", 1, 16, 1, 1},
                      Lossless{"frames10-mono.aif", 1, 16, 10, 10}, Lossless{"flac16-mono.flac", 1, 16},
                      Lossless{"flac16-stereo.flac", 2, 16}, Lossless{"flac24-stereo.flac", 2, 24},
                      Lossless{"unknown-length-mono.flac", 1, 16}, Lossless{"cover-mono.flac", 1, 16},
                      Lossless{"frames1-mono.flac", 1, 16, 1, 1},
                      Lossless{"frames10-mono.flac", 1, 16, 10, 10}, Lossless{"pcm16-mono.m4a", 1, 16},
                      Lossless{"pcm16-stereo.m4a", 2, 16}, Lossless{"alac16-mono.m4a", 1, 16},
                      Lossless{"alac24-stereo.m4a", 2, 24}, Lossless{"pcm16be-mono.caf", 1, 16},
                      Lossless{"pcm16le-stereo.caf", 2, 16}, Lossless{"pcm24-mono.caf", 1, 24},
                      Lossless{"float32-mono.caf", 1, 24},
                      // The encoder states whole packets of 4096 frames; the packet itself knows better.
                      Lossless{"alac16-stereo.caf", 2, 16, rampFrames, 4096}),
    caseName<Lossless>);

// What codecs add around the signal, in frames.
constexpr std::size_t aacPriming = 1024;
constexpr std::size_t mp3Delay = 1105;  // 576 of the encoder, 529 of the decoder

struct Lossy {
    const char* file;
    std::size_t channels;
    std::size_t frames;   // all that is decoded
    std::size_t offset;   // where the signal begins
    double maximumError;  // the largest over the signal, full scale being 1
};

class LossyFormat : public ::testing::TestWithParam<Lossy> {};

TEST_P(LossyFormat, IsDecodedInPlaceAndCloseToTheSource) {
    const auto& [file, channels, frames, offset, maximumError] = GetParam();
    const AudioIO::MonoAudio audio = AudioIO::readMono(audioFixture(file));
    EXPECT_EQ(audio.sampleRate, sweepRate);
    ASSERT_EQ(audio.samples.size(), frames);
    const std::vector<double> expected = sweep(channels);
    for (std::size_t i = 0; i < expected.size() && offset + i < frames; ++i)
        ASSERT_NEAR(static_cast<double>(audio.samples[offset + i]), expected[i], maximumError)
            << "frame " << i;
}

TEST_P(LossyFormat, IsMeasuredExactlyWithoutDecoding) {
    EXPECT_NEAR(framesByInfo(GetParam().file), static_cast<double>(GetParam().frames), 1e-6);
}

// Bounds are a little above what these files show: logarithmic and differential codes err by the step of
// loud passages, AAC and MP3 by what they take to be masked.
INSTANTIATE_TEST_SUITE_P(
    Files, LossyFormat,
    ::testing::Values(
        Lossy{"alaw-mono.wav", 1, 8011, 0, 0.02}, Lossy{"ulaw-stereo.wav", 2, 8011, 0, 0.02},
        Lossy{"alaw-mono.aifc", 1, 8011, 0, 0.02},
        // Whole blocks.
        Lossy{"adpcm-ms-mono.wav", 1, 8144, 0, 0.02}, Lossy{"adpcm-ima-mono.wav", 1, 8164, 0, 0.02},
        Lossy{"ima4-mono.aifc", 1, 8064, 0, 0.02}, Lossy{"ima4-stereo.caf", 2, 8064, 0, 0.02},
        // Xing headers say what to leave out at both ends.
        Lossy{"cbr-mono.mp3", 1, 8011, 0, 0.04}, Lossy{"cbr-stereo.mp3", 2, 8011, 0, 0.04},
        Lossy{"vbr-stereo.mp3", 2, 8011, 0, 0.01}, Lossy{"cover-mono.mp3", 1, 8011, 0, 0.04},
        Lossy{"cbr-no-xing-mono.mp3", 1, 9216, mp3Delay, 0.04},
        Lossy{"vbr-no-xing-mono.mp3", 1, 9216, mp3Delay, 0.01},
        Lossy{"mp3-mono.wav", 1, 9216, mp3Delay, 0.04},
        // Edit lists count in milliseconds: 7982 frames are 181 ms, 29 frames short.
        Lossy{"edit-list-mono.m4a", 1, 7982, 0, 0.02}, Lossy{"edit-list-stereo.m4a", 2, 7982, 0, 0.02},
        Lossy{"cover-mono.m4a", 1, 7982, 0, 0.02}, Lossy{"no-edit-list-mono.m4a", 1, 9035, aacPriming, 0.02},
        Lossy{"fragmented-mono.m4a", 1, 9035, aacPriming, 0.02},
        Lossy{"adts-mono.aac", 1, 9216, aacPriming, 0.02},
        Lossy{"adts-stereo.aac", 2, 9216, aacPriming, 0.02},
        // A packet table says what to leave out at both ends.
        Lossy{"aac-mono.caf", 1, 8011, 0, 0.02}, Lossy{"aac-stereo.caf", 2, 8011, 0, 0.02}),
    caseName<Lossy>);

}  // namespace
}  // namespace quillmere
