#include "QuillmereCore/Util/RNG.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace quillmere {
namespace {

// The golden-ratio increment of SplitMix64.
constexpr std::uint64_t gamma64 = 0x9E3779B97F4A7C15;

constexpr std::uint64_t splitMixOutput(std::uint64_t z) {
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
}

}  // namespace

SeededRNG::SeededRNG(std::uint64_t seed) noexcept : s{} {
    // The first SplitMix64 output, at seed + gamma, is skipped on purpose: stored models and seeds depend on
    // it.
    for (std::uint64_t k = 0; k < 4; ++k)
        s[k] = splitMixOutput(seed + (k + 2) * gamma64);
}

std::uint64_t SeededRNG::next() noexcept {
    const std::uint64_t result = std::rotl(s[1] * 5, 7) * 9;
    const std::uint64_t t = s[1] << 17;
    s[2] ^= s[0];
    s[3] ^= s[1];
    s[1] ^= s[2];
    s[0] ^= s[3];
    s[2] ^= t;
    s[3] = std::rotl(s[3], 45);
    return result;
}

float SeededRNG::uniform() noexcept {
    return static_cast<float>(next() >> 40) * 0x1p-24F;
}

float SeededRNG::signedUniform() noexcept {
    const float u = uniform();
    return u + u - 1.0F;
}

std::int64_t SeededRNG::intBelow(std::int64_t n) noexcept {
    if (n < 2) return 0;
    return static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(n));
}

float SeededRNG::gaussian() noexcept {
    // Keeps the logarithm finite; one draw in about 16 million is affected.
    const float u1 = std::max(uniform(), 1.0e-7F);
    const float u2 = uniform();
    return std::sqrt(-2.0F * std::log(u1)) * std::cos(6.2831855F * u2);
}

}  // namespace quillmere
