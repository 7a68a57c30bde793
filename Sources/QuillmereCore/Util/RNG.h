#pragma once

#include <array>
#include <cstdint>

namespace quillmere {

// The only source of randomness: xoshiro256** (Blackman and Vigna, 2018) seeded through SplitMix64.
//
// A small value type. The same seed gives the same sequence on every machine; a copy repeats the sequence
// of the generator it was copied from.
// Threads: none of its own; one thread at a time.
class SeededRNG {
public:
    explicit SeededRNG(std::uint64_t seed) noexcept;

    // The next 64 random bits. Advances the state once.
    std::uint64_t next() noexcept;

    // Uniform in [0, 1): a multiple of 2^-24. One draw.
    float uniform() noexcept;

    // Uniform in [-1, 1): 2 * uniform() - 1 in single precision. One draw.
    float signedUniform() noexcept;

    // Uniform integer in [0, n) by plain modulo; the bias is kept because sequences depend on it.
    // n < 2 gives 0 and draws nothing, otherwise one draw.
    std::int64_t intBelow(std::int64_t n) noexcept;

    // Standard normal, cosine branch of Box and Muller (1958) in single precision. Always two draws;
    // |value| is at most about 5.68.
    float gaussian() noexcept;

    // The state words s0..s3; never all zero after seeding.
    std::array<std::uint64_t, 4> s;

    friend bool operator==(const SeededRNG&, const SeededRNG&) = default;
};

}  // namespace quillmere
