#include "QuillmereCore/Audio/Resampler.h"

#include <gtest/gtest.h>
#include <soxr.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "Support/Signals.h"

namespace quillmere {
namespace {

using testing::noise;

// The whole signal in a single call of the library.
std::vector<float> inOneCall(const std::vector<float>& samples, double from, double to) {
    const soxr_io_spec_t floats = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t oneThread = soxr_runtime_spec(1);
    std::vector<float> converted(static_cast<std::size_t>(to * static_cast<double>(samples.size()) / from) +
                                 4096);
    std::size_t produced = 0;
    EXPECT_EQ(soxr_oneshot(from, to, 1, samples.data(), samples.size(), nullptr, converted.data(),
                           converted.size(), &produced, &floats, &quality, &oneThread),
              nullptr);
    converted.resize(produced);
    return converted;
}

std::vector<float> inPieces(const std::vector<float>& samples, double from, double to, std::size_t piece) {
    std::vector<float> converted;
    const auto append = [&](std::span<const float> part) {
        converted.insert(converted.end(), part.begin(), part.end());
    };
    Resampler resampler(from, to);
    for (std::size_t i = 0; i < samples.size(); i += piece)
        resampler.add(std::span(samples).subspan(i, std::min(piece, samples.size() - i)), append);
    resampler.finish(append);
    return converted;
}

struct Rates {
    double from, to;
};

class ResamplerPieces : public ::testing::TestWithParam<Rates> {};

TEST_P(ResamplerPieces, GiveTheSamplesOfOneCall) {
    const auto [from, to] = GetParam();
    for (const std::size_t count : {1U, 20U, 40009U}) {
        const std::vector<float> samples = noise(count, count);
        const std::vector<float> expected = inOneCall(samples, from, to);
        for (const std::size_t piece : {std::size_t{1}, std::size_t{17}, std::size_t{4096}, count})
            EXPECT_EQ(inPieces(samples, from, to, piece), expected) << count << " in pieces of " << piece;
    }
}

INSTANTIATE_TEST_SUITE_P(Rates, ResamplerPieces,
                         ::testing::Values(Rates{44100, 48000}, Rates{48000, 44100}, Rates{22050, 44100},
                                           Rates{96000, 44100}, Rates{8000, 192000}, Rates{44100, 44101},
                                           Rates{44100, 22050}, Rates{192000, 8000}, Rates{11025, 48000}),
                         [](const auto& test) {
                             return std::to_string(static_cast<int>(test.param.from)) + "To" +
                                    std::to_string(static_cast<int>(test.param.to));
                         });

TEST(Resampler, ARatioThatIsNoneIsAnError) {
    EXPECT_THROW(Resampler(-44100, 48000), Resampler::Error);
}

}  // namespace
}  // namespace quillmere
