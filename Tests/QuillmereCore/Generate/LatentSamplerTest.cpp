#include "QuillmereCore/Generate/LatentSampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <vector>

#include "Support/SmallModel.h"

namespace quillmere {
namespace {

using Latent = std::vector<float>;
using Latents = std::vector<Latent>;
using testing::randomLatents;

constexpr Aesthetics plain{.sources = 1, .drift = 0};

// Unit vectors: without departures, a sample is the list of blend weights.
Latents unitLatents(std::size_t count) {
    Latents latents(count, Latent(count));
    for (std::size_t i = 0; i < count; ++i)
        latents[i][i] = 1;
    return latents;
}

Latent sampled(const Latents& latents, const Aesthetics& aesthetics, std::uint64_t seed = 1) {
    SeededRNG rng(seed);
    return LatentSampler(latents, std::ssize(latents.front())).sample(rng, aesthetics);
}

std::size_t blendedCount(std::size_t corpus, double sources) {
    const Latent weights = sampled(unitLatents(corpus), {.sources = sources, .drift = 0});
    return corpus - static_cast<std::size_t>(std::ranges::count(weights, 0.0F));
}

TEST(LatentStatistics, DescribeTheCorpus) {
    const LatentSampler sampler(Latents{{1, 2}, {3, -2}}, 2);
    EXPECT_EQ(sampler.centroid(), (Latent{2, 0}));
    EXPECT_EQ(sampler.deviations(), (Latents{{-1, 2}, {1, -2}}));
    EXPECT_EQ(sampler.sigma(), (Latent{1, 2}));
}

TEST(LatentStatistics, DivideEachLatentBeforeAdding) {
    const Latents latents = randomLatents(7, 3, 4);
    Latent expected(3);
    for (const Latent& latent : latents) {
        for (std::size_t j = 0; j < 3; ++j)
            expected[j] += latent[j] / 7.0F;
    }
    EXPECT_EQ(LatentSampler(latents, 3).centroid(), expected);
}

TEST(LatentStatistics, SpreadIsAtLeastATwoHundredth) {
    EXPECT_EQ(LatentSampler(Latents(5, Latent{0.4F, -1}), 2).sigma(), (Latent{0.02F, 0.02F}));
}

TEST(LatentStatistics, ASingleLatentHasASpreadOfThreeTenths) {
    EXPECT_EQ(LatentSampler(Latents{{5, -7}}, 2).sigma(), (Latent{0.3F, 0.3F}));
}

TEST(LatentStatistics, ValuesBeyondTheLatentSizeDoNotCount) {
    const LatentSampler sampler(Latents{{1, 2, 99}, {3, -2, 99}}, 2);
    EXPECT_EQ(sampler.centroid(), (Latent{2, 0}));
    SeededRNG rng(1);
    EXPECT_EQ(sampler.sample(rng, plain).size(), 2U);
}

TEST(LatentStatisticsDeathTest, LatentsThatAreTooShortStopTheProgram) {
    EXPECT_DEATH(LatentSampler(Latents{{1, 2}, {3}}, 2), "too short");
    EXPECT_DEATH(LatentSampler(Latents{{1, 2}}, -1), "negative");
}

TEST(LatentSampling, OneLatentIsReturnedForAnyNumberOfSources) {
    const Latents corpus{{0.5F, -2, 3}};
    for (const double sources : {-4.0, 0.0, 1.0, 2.0, 8.0, 1e15}) {
        EXPECT_EQ(sampled(corpus, {.sources = sources, .drift = 4}), corpus.front()) << sources;
    }
}

TEST(LatentSampling, OneLatentMutatesWithASpreadOfThreeTenths) {
    SeededRNG rng(1);
    SeededRNG expected(1);
    const Latent z = LatentSampler(Latents{{0.5F, -2, 3}}, 3).sample(rng, {.drift = 4, .mutation = 2});
    (void)expected.uniform();  // the blend weight; neither pick nor drift draw
    EXPECT_FLOAT_EQ(z[0], 0.5F + expected.gaussian() * 0.6F);
    EXPECT_FLOAT_EQ(z[1], -2 + expected.gaussian() * 0.6F);
    EXPECT_FLOAT_EQ(z[2], 3 + expected.gaussian() * 0.6F);
    EXPECT_EQ(rng, expected);
}

TEST(LatentSampling, BlendsAtMostEight) {
    EXPECT_EQ(blendedCount(30, 20), 8U);
}

TEST(LatentSampling, BlendsNoMoreThanThereAre) {
    EXPECT_EQ(blendedCount(3, 20), 3U);
}

TEST(LatentSampling, BlendsAtLeastOne) {
    EXPECT_EQ(blendedCount(30, 0), 1U);
    EXPECT_EQ(blendedCount(30, -3), 1U);
}

TEST(LatentSampling, TheNumberOfSourcesRoundsHalvesUp) {
    EXPECT_EQ(blendedCount(30, 2.5), 3U);
    EXPECT_EQ(blendedCount(30, 2.49), 2U);
}

TEST(LatentSampling, WithoutDeparturesOneSourceIsExactlyOneLatent) {
    const Latents corpus = randomLatents(13, 5, 3);
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        SeededRNG rng(seed);
        SeededRNG expected(seed);
        const Latent z = LatentSampler(corpus, 5).sample(rng, plain);
        EXPECT_EQ(z, corpus[static_cast<std::size_t>(expected.intBelow(13))]) << seed;
        (void)expected.uniform();
        EXPECT_EQ(rng, expected) << seed;
    }
}

TEST(LatentSampling, PicksWithoutReplacementInShrinkingLists) {
    SeededRNG rng(9);
    SeededRNG expected(9);
    const Latent weights = LatentSampler(unitLatents(3), 3).sample(rng, {.sources = 3, .drift = 0});
    std::vector<std::size_t> remaining{0, 1, 2};
    std::vector<std::size_t> chosen;
    for (std::int64_t size = 3; size > 0; --size) {
        const auto pick = remaining.begin() + expected.intBelow(size);  // the last takes no draw
        chosen.push_back(*pick);
        remaining.erase(pick);
    }
    Latent draws;
    for (int i = 0; i < 3; ++i)
        draws.push_back(-std::log(std::max(expected.uniform(), 1e-6F)));
    const float sum = draws[0] + draws[1] + draws[2];
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(weights[chosen[i]], draws[i] / sum) << i;
    EXPECT_EQ(rng, expected);
}

TEST(LatentSampling, BlendWeightsSumToOne) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        const Latent weights = sampled(unitLatents(10), {.sources = 5, .drift = 0}, seed);
        EXPECT_NEAR(std::accumulate(weights.begin(), weights.end(), 0.0F), 1, 1e-6F) << seed;
        EXPECT_GE(std::ranges::min(weights), 0) << seed;
    }
}

TEST(LatentSampling, DriftWalksAlongTheDeviations) {
    const Latents corpus = randomLatents(4, 3, 8);
    const LatentSampler sampler(corpus, 3);
    SeededRNG rng(2);
    SeededRNG expected(2);
    const Latent z = sampler.sample(rng, {.sources = 1, .drift = 1.6});
    Latent walk = sampler.sample(expected, plain);
    for (const Latent& deviation : sampler.deviations()) {
        const float step = expected.gaussian() * (1.6F / std::sqrt(4.0F));
        for (std::size_t j = 0; j < 3; ++j)
            walk[j] += deviation[j] * step;
    }
    EXPECT_EQ(z, walk);
    EXPECT_EQ(rng, expected);
}

// The third dimension is the same in all clips, so drift leaves it alone.
TEST(LatentSampling, DriftKeepsToTheDirectionsOfTheCorpus) {
    const Latents corpus{{1, 2, 0.5F}, {-3, 1, 0.5F}, {0, -1, 0.5F}};
    for (std::uint64_t seed = 0; seed < 20; ++seed)
        EXPECT_NEAR(sampled(corpus, {.sources = 3, .drift = 4}, seed)[2], 0.5F, 1e-6F) << seed;
}

TEST(LatentSampling, MutationFollowsTheSpreadOfEachDimension) {
    const Latents corpus = randomLatents(4, 3, 8);
    const LatentSampler sampler(corpus, 3);
    SeededRNG rng(2);
    SeededRNG expected(2);
    const Latent z = sampler.sample(rng, {.sources = 1, .drift = 0, .mutation = 0.6});
    Latent mutated = sampler.sample(expected, plain);
    for (std::size_t j = 0; j < 3; ++j)
        mutated[j] += expected.gaussian() * (sampler.sigma()[j] * 0.6F);
    EXPECT_EQ(z, mutated);
    EXPECT_EQ(rng, expected);
}

TEST(LatentSampling, NegativeDriftAndMutationAreOff) {
    const Latents corpus = randomLatents(4, 3, 8);
    EXPECT_EQ(sampled(corpus, {.sources = 1, .drift = -1, .mutation = -1}), sampled(corpus, plain));
}

TEST(LatentSampling, ExtrapolationOfMinusNineTenthsLeavesATenthOfTheOffset) {
    const Latents corpus = randomLatents(6, 4, 12);
    const LatentSampler sampler(corpus, 4);
    const Latent plainZ = sampled(corpus, {.sources = 2, .drift = 0});
    const Latent pulled = sampled(corpus, {.sources = 2, .drift = 0, .extrapolation = -0.9});
    for (std::size_t j = 0; j < 4; ++j) {
        const float offset = plainZ[j] - sampler.centroid()[j];
        EXPECT_NEAR(pulled[j] - sampler.centroid()[j], 0.1F * offset, 1e-6F) << j;
    }
}

TEST(LatentSampling, ExtrapolationPushesAwayFromTheCentroid) {
    const Latents corpus = randomLatents(6, 4, 12);
    const LatentSampler sampler(corpus, 4);
    const Latent plainZ = sampled(corpus, {.sources = 2, .drift = 0});
    const Latent pushed = sampled(corpus, {.sources = 2, .drift = 0, .extrapolation = 2});
    for (std::size_t j = 0; j < 4; ++j) {
        const float offset = plainZ[j] - sampler.centroid()[j];
        EXPECT_NEAR(pushed[j] - sampler.centroid()[j], 3 * offset, 1e-5F) << j;
    }
}

TEST(LatentSampling, EqualSeedsGiveEqualVectors) {
    const Latents corpus = randomLatents(9, 6, 12);
    const Aesthetics wild = Preset::named("Wild")->aesthetics;
    EXPECT_EQ(sampled(corpus, wild, 77), sampled(corpus, wild, 77));
    EXPECT_NE(sampled(corpus, wild, 77), sampled(corpus, wild, 78));
}

TEST(LatentSampling, ADrawTellsItsSourcesAndTakesTheSameRandomNumbers) {
    const Latents corpus = randomLatents(9, 6, 12);
    const LatentSampler sampler(corpus, 6);
    for (const char* preset : {"Faithful", "Balanced", "Wild", "Extreme"}) {
        SeededRNG one(5);
        SeededRNG other(5);
        const LatentDraw draw = sampler.draw(one, Preset::named(preset)->aesthetics);
        EXPECT_EQ(draw.latent, sampler.sample(other, Preset::named(preset)->aesthetics)) << preset;
        EXPECT_EQ(one, other) << preset;
    }
}

TEST(LatentSampling, TheSourcesOfADrawAreItsBlend) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        SeededRNG rng(seed);
        const Latents corpus = unitLatents(7);
        const LatentDraw draw = LatentSampler(corpus, 7).draw(rng, {.sources = 3, .drift = 0});
        ASSERT_EQ(draw.sources.size(), 3U);
        Latent blend(7);
        for (const auto& [clip, weight] : draw.sources)
            blend.at(clip) += weight;
        EXPECT_EQ(blend, draw.latent);
        EXPECT_EQ(std::ranges::count(blend, 0.0F), 4) << "no clip twice";
    }
}

TEST(LatentSamplingDeathTest, AnEmptyCorpusStopsTheProgram) {
    SeededRNG rng(1);
    EXPECT_DEATH((void)LatentSampler({}, 4).sample(rng, {}), "no latents");
}

TEST(LatentSampling, SurroundingsAreABlendOfAllThatAreNamed) {
    const LatentSampler sampler(Latents{{1, 2, 3}, {3, 4, 5}}, 3);
    SeededRNG rng(5);
    const auto place = sampler.around(unitLatents(3), 0, rng);
    EXPECT_EQ(place.latent, place.weights);
    EXPECT_NEAR(place.weights[0] + place.weights[1] + place.weights[2], 1, 1e-6F);
    EXPECT_EQ(std::ranges::count(place.weights, 0.0F), 0);
    EXPECT_EQ(sampler.around(Latents{{4, 5, 6}}, 0, rng).latent, (Latent{4, 5, 6}));
}

TEST(LatentSamplingDeathTest, SurroundingsThatAreNoneStopTheProgram) {
    const LatentSampler sampler(Latents{{1, 2}, {3, 4}}, 2);
    SeededRNG rng(1);
    EXPECT_DEATH((void)sampler.around({}, 0, rng), "nothing to sample around");
    EXPECT_DEATH((void)sampler.around(Latents{{1}}, 0, rng), "another size");
}

TEST(LatentSamplingDeathTest, ANumberOfSourcesThatIsNoCountStopsTheProgram) {
    EXPECT_DEATH((void)sampled({{1}}, {.sources = std::numeric_limits<double>::quiet_NaN()}), "count");
    EXPECT_DEATH((void)sampled({{1}}, {.sources = 1e30}), "count");
}

}  // namespace
}  // namespace quillmere
