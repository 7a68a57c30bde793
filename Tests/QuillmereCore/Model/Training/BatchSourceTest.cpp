#include "QuillmereCore/Model/Training/BatchSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "QuillmereCore/Model/Training/Augmentation.h"
#include "QuillmereCore/Model/Training/TrainingTestData.h"

namespace quillmere {
namespace {

using ModelTrainer::BatchSource;
using ModelTrainer::Deck;
using ::testing::ElementsAre;
using testing::randomImages;
using testing::smallest;

TEST(BoundedInteger, StaysBelowItsBound) {
    SeededRNG rng(1);
    std::set<std::uint64_t> seen;
    for (int i = 0; i < 200; ++i)
        seen.insert(ModelTrainer::boundedInteger(rng, 5));
    EXPECT_THAT(seen, ElementsAre(0, 1, 2, 3, 4));
}

TEST(BoundedInteger, TakesTheHighWordOfTheProduct) {
    SeededRNG rng(121);
    SeededRNG copy = rng;
    EXPECT_EQ(ModelTrainer::boundedInteger(rng, std::uint64_t{1} << 32), copy.next() >> 32);
    EXPECT_EQ(rng, copy);
}

TEST(BoundedInteger, OfOneIsZeroAndStillDraws) {
    SeededRNG rng(3);
    SeededRNG copy = rng;
    EXPECT_EQ(ModelTrainer::boundedInteger(rng, 1), 0U);
    (void)copy.next();
    EXPECT_EQ(rng, copy);
}

TEST(BoundedInteger, RejectsDrawsThatWouldFavourSomeValues) {
    // 2^64 mod 3 * 2^62 is 2^62: a quarter of all draws is rejected.
    const std::uint64_t bound = 3ULL << 62;
    SeededRNG rng(121);
    SeededRNG counting = rng;
    for (int i = 0; i < 400; ++i)
        (void)ModelTrainer::boundedInteger(rng, bound);
    int draws = 0;
    while (counting != rng) {
        (void)counting.next();
        ++draws;
    }
    EXPECT_NEAR(draws, 400.0 / 0.75, 60);
}

TEST(BoundedIntegerDeathTest, ABoundOfZeroStopsTheProgram) {
    SeededRNG rng(1);
    EXPECT_DEATH((void)ModelTrainer::boundedInteger(rng, 0), "bound");
}

TEST(Deck, DrawsEveryClipOnceBeforeAnyAgain) {
    SeededRNG rng(4);
    Deck deck(7);
    std::set<std::vector<std::size_t>> rounds;
    for (int round = 0; round < 20; ++round) {
        std::vector<std::size_t> order(7);
        std::ranges::generate(order, [&] { return deck.draw(rng); });
        rounds.insert(order);
        std::ranges::sort(order);
        EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4, 5, 6));
    }
    EXPECT_GT(rounds.size(), 15U) << "the order changes";
}

TEST(Deck, ShufflesFromTheFrontAndDrawsFromTheBack) {
    SeededRNG rng(8);
    SeededRNG copy = rng;
    std::vector<std::size_t> cards{0, 1, 2, 3};
    for (std::size_t i = 0; i < 3; ++i)
        std::swap(cards[i], cards[i + ModelTrainer::boundedInteger(copy, 4 - i)]);
    Deck deck(4);
    for (int i = 3; i >= 0; --i)
        EXPECT_EQ(deck.draw(rng), cards[static_cast<std::size_t>(i)]);
    EXPECT_EQ(rng, copy);
}

TEST(Deck, OfOneClipDrawsNoRandomNumbers) {
    SeededRNG rng(5);
    const SeededRNG copy = rng;
    Deck deck(1);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(deck.draw(rng), 0U);
    EXPECT_EQ(rng, copy);
}

TEST(DeckDeathTest, WithoutClipsStopsTheProgram) {
    EXPECT_DEATH(Deck(0), "at least one clip");
}

// ---- Batches

TEST(BatchSource, DrawsClipsAugmentationsAndNoiseInOrderFromTheSeedPlus24301) {
    const auto images = randomImages(3);
    BatchSource source(smallest, images, 2, 11);
    SeededRNG rng(11 + 24301);
    Deck deck(3);
    std::vector<float> x(2 * 32 * 32), eps(2 * 4);
    for (int step = 0; step < 5; ++step) {
        source.next(x, eps);
        std::vector<float> expectedX, expectedEps;
        std::vector<std::size_t> expectedIndices;
        for (int b = 0; b < 2; ++b) {
            expectedIndices.push_back(deck.draw(rng));
            const auto image = ModelTrainer::augment(images[expectedIndices.back()], smallest, rng);
            expectedX.insert(expectedX.end(), image.begin(), image.end());
        }
        for (int i = 0; i < 8; ++i)
            expectedEps.push_back(rng.gaussian());
        EXPECT_EQ(x, expectedX) << "step " << step;
        EXPECT_EQ(eps, expectedEps) << "step " << step;
        EXPECT_TRUE(std::ranges::equal(source.indices(), expectedIndices)) << "step " << step;
        EXPECT_EQ(source.rng(), rng) << "step " << step;
    }
}

TEST(BatchSource, WrapsTheSeedAround) {
    const auto images = randomImages(1);
    const BatchSource source(smallest, images, 1, ~std::uint64_t{0});
    EXPECT_EQ(source.rng(), SeededRNG(24300));
}

TEST(BatchSource, FillsEveryBatchFromASingleClip) {
    const auto images = randomImages(1);
    BatchSource source(smallest, images, 4, 1);
    std::vector<float> x(4 * 32 * 32), eps(4 * 4);
    source.next(x, eps);
    EXPECT_THAT(std::vector<std::size_t>(source.indices().begin(), source.indices().end()),
                ElementsAre(0, 0, 0, 0));
    EXPECT_FALSE(std::equal(x.begin(), x.begin() + 1024, x.begin() + 1024)) << "augmented anew each time";
}

TEST(BatchSourceDeathTest, RefusesBuffersOfAnotherSize) {
    const auto images = randomImages(1);
    BatchSource source(smallest, images, 2, 1);
    std::vector<float> x(2 * 32 * 32), eps(2 * 4 - 1);
    EXPECT_DEATH(source.next(x, eps), "wrong size");
}

}  // namespace
}  // namespace quillmere
