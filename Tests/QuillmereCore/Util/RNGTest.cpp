#include "QuillmereCore/Util/RNG.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace quillmere {
namespace {

using State = std::array<std::uint64_t, 4>;

SeededRNG withState(const State& state) {
    SeededRNG rng(0);
    rng.s = state;
    return rng;
}

// x with a * x = 1 modulo 2^64, for odd a (Newton's iteration doubles the number of right bits).
std::uint64_t inverseModulo2To64(std::uint64_t a) {
    std::uint64_t x = a;
    for (int i = 0; i < 6; ++i)
        x *= 2 - a * x;
    return x;
}

// The word s1 for which the next output is `output`.
std::uint64_t wordGiving(std::uint64_t output) {
    return std::rotr(output * inverseModulo2To64(9), 7) * inverseModulo2To64(5);
}

std::vector<std::uint64_t> draws(SeededRNG rng, int count) {
    std::vector<std::uint64_t> values;
    for (int i = 0; i < count; ++i)
        values.push_back(rng.next());
    return values;
}

TEST(SeededRNG, SameSeedGivesTheSameSequence) {
    EXPECT_EQ(draws(SeededRNG(42), 100), draws(SeededRNG(42), 100));
}

TEST(SeededRNG, SeedsZeroAndOneDifferInTheFirstOutput) {
    EXPECT_NE(SeededRNG(0).next(), SeededRNG(1).next());
}

TEST(SeededRNG, CopyRepeatsTheSequence) {
    SeededRNG rng(7);
    rng.next();
    SeededRNG copy = rng;
    EXPECT_EQ(draws(rng, 10), draws(copy, 10));
    rng.next();
    EXPECT_NE(rng, copy);
}

// The second to fifth outputs of the published SplitMix64 sequence for seed 1234567.
TEST(SeededRNG, SeedingSkipsTheFirstSplitMixOutput) {
    const State expected{3203168211198807973U, 9817491932198370423U, 4593380528125082431U,
                         16408922859458223821U};
    EXPECT_EQ(SeededRNG(1234567).s, expected);
}

TEST(SeededRNG, SeedingOfZeroStartsFromTwiceTheIncrement) {
    std::uint64_t z = 0x3C6EF372FE94F82A;  // 2 * 0x9E3779B97F4A7C15 modulo 2^64
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    EXPECT_EQ(SeededRNG(0).s[0], z ^ (z >> 31));
}

// Outputs of the published xoshiro256** for the state 1, 2, 3, 4.
TEST(SeededRNG, NextIsXoshiro256StarStar) {
    const std::vector<std::uint64_t> expected{11520, 0, 1509978240, 1215971899390074240U,
                                              1216172134540287360U};
    EXPECT_EQ(draws(withState({1, 2, 3, 4}), 5), expected);
}

TEST(SeededRNG, UniformIsZeroExactlyWhenTheTop24BitsAreZero) {
    EXPECT_EQ(withState({1, wordGiving(0), 3, 4}).uniform(), 0.0F);
    EXPECT_EQ(withState({1, wordGiving((std::uint64_t{1} << 40) - 1), 3, 4}).uniform(), 0.0F);
    EXPECT_EQ(withState({1, wordGiving(std::uint64_t{1} << 40), 3, 4}).uniform(), 0x1p-24F);
}

TEST(SeededRNG, UniformIsAtMostOneLessItsResolution) {
    EXPECT_EQ(withState({1, wordGiving(~std::uint64_t{0}), 3, 4}).uniform(), 1.0F - 0x1p-24F);
}

TEST(SeededRNG, UniformConsumesOneDraw) {
    SeededRNG rng(3);
    SeededRNG reference(3);
    (void)rng.uniform();
    reference.next();
    EXPECT_EQ(rng, reference);
}

TEST(SeededRNG, SignedUniformCoversMinusOneToOne) {
    EXPECT_EQ(withState({1, wordGiving(0), 3, 4}).signedUniform(), -1.0F);
    EXPECT_EQ(withState({1, wordGiving(~std::uint64_t{0}), 3, 4}).signedUniform(), 1.0F - 0x1p-23F);
    EXPECT_EQ(withState({1, wordGiving(std::uint64_t{1} << 63), 3, 4}).signedUniform(), 0.0F);
}

TEST(SeededRNG, SignedUniformIsTwiceUniformLessOne) {
    SeededRNG rng(11);
    SeededRNG reference(11);
    for (int i = 0; i < 1000; ++i) {
        const float u = reference.uniform();
        ASSERT_EQ(rng.signedUniform(), 2.0F * u - 1.0F) << "draw " << i;
    }
}

TEST(SeededRNG, IntBelowOneOrLessIsZeroAndDrawsNothing) {
    for (const std::int64_t n : {std::int64_t{1}, std::int64_t{0}, std::int64_t{-1}, INT64_MIN}) {
        SeededRNG rng(5);
        EXPECT_EQ(rng.intBelow(n), 0) << n;
        EXPECT_EQ(rng, SeededRNG(5)) << n;
    }
}

TEST(SeededRNG, IntBelowTwoConsumesOneDraw) {
    SeededRNG rng(5);
    SeededRNG reference(5);
    const std::int64_t value = rng.intBelow(2);
    EXPECT_EQ(static_cast<std::uint64_t>(value), reference.next() % 2);
    EXPECT_EQ(rng, reference);
}

TEST(SeededRNG, IntBelowKeepsTheModuloBias) {
    const std::int64_t n = 3;
    EXPECT_EQ(withState({1, wordGiving(~std::uint64_t{0}), 3, 4}).intBelow(n), 0);
    EXPECT_EQ(withState({1, wordGiving(~std::uint64_t{0} - 1), 3, 4}).intBelow(n), 2);
    // A draw with the top bit set is unsigned before the remainder is taken.
    EXPECT_EQ(withState({1, wordGiving(std::uint64_t{1} << 63), 3, 4}).intBelow(INT64_MAX), 1);
}

TEST(SeededRNG, GaussianConsumesTwoDraws) {
    SeededRNG rng(9);
    SeededRNG reference(9);
    (void)rng.gaussian();
    reference.next();
    reference.next();
    EXPECT_EQ(rng, reference);
}

// The state gives two outputs of 0: the logarithm is clamped and the cosine is 1, the largest value of all.
TEST(SeededRNG, GaussianStaysFiniteWhenTheFirstDrawIsZero) {
    const float largest = withState({1, 0, 1, 0}).gaussian();
    EXPECT_NEAR(largest, 5.678F, 1e-3F);
    EXPECT_EQ(largest, std::sqrt(-2.0F * std::log(1.0e-7F)));
}

TEST(SeededRNG, GaussianIsTheCosineBranchInSinglePrecision) {
    SeededRNG rng(13);
    SeededRNG reference(13);
    for (int i = 0; i < 1000; ++i) {
        const double u1 = std::max(reference.uniform(), 1.0e-7F);
        const double u2 = reference.uniform();
        const double expected = std::sqrt(-2 * std::log(u1)) * std::cos(6.283185307179586 * u2);
        ASSERT_NEAR(rng.gaussian(), expected, 4e-6) << "draw " << i;
    }
}

TEST(SeededRNG, GaussianHasUnitVariance) {
    SeededRNG rng(17);
    const int count = 100000;
    double sum = 0;
    double squares = 0;
    for (int i = 0; i < count; ++i) {
        const double value = rng.gaussian();
        sum += value;
        squares += value * value;
    }
    // Five standard errors: 1 / sqrt(n) for the mean, sqrt(2 / n) for the variance.
    EXPECT_NEAR(sum / count, 0, 0.016);
    EXPECT_NEAR(squares / count, 1, 0.023);
}

TEST(SeededRNG, StateIsNeverAllZeroAfterSeeding) {
    // Includes the seed whose first state word is 0.
    for (const std::uint64_t seed : {std::uint64_t{0}, 0 - 2 * 0x9E3779B97F4A7C15U, ~std::uint64_t{0}}) {
        const SeededRNG rng(seed);
        EXPECT_NE(rng.s, State{}) << seed;
    }
    EXPECT_EQ(SeededRNG(0 - 2 * 0x9E3779B97F4A7C15U).s[0], 0U);
}

}  // namespace
}  // namespace quillmere
