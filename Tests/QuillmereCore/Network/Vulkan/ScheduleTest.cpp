#include "QuillmereCore/Network/Vulkan/Schedule.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "QuillmereCore/Util/RNG.h"

namespace quillmere::network::vulkan {
namespace {

using Levels = std::vector<std::vector<std::size_t>>;

Access reads(std::uint32_t buffer, std::uint64_t begin, std::uint64_t end) {
    return {buffer, begin, end, false};
}
Access writes(std::uint32_t buffer, std::uint64_t begin, std::uint64_t end) {
    return {buffer, begin, end, true};
}

TEST(Schedule, NothingNeedsNoLevel) {
    EXPECT_TRUE(levelsOf({}).empty());
}

TEST(Schedule, ReadingTogetherNeedsNoBarrier) {
    const std::vector<std::vector<Access>> operations{{reads(0, 0, 8), writes(1, 0, 8)},
                                                      {reads(0, 0, 8), writes(2, 0, 8)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0, 1}}));
}

TEST(Schedule, AReadAfterAWriteNeedsABarrier) {
    const std::vector<std::vector<Access>> operations{{writes(0, 0, 8)}, {reads(0, 4, 12)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0}, {1}}));
}

TEST(Schedule, AWriteAfterAReadNeedsABarrier) {
    const std::vector<std::vector<Access>> operations{{reads(0, 0, 8)}, {writes(0, 0, 4)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0}, {1}}));
}

TEST(Schedule, AWriteAfterAWriteNeedsABarrier) {
    const std::vector<std::vector<Access>> operations{{writes(0, 0, 8)}, {writes(0, 7, 9)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0}, {1}}));
}

TEST(Schedule, NeighbouringRangesOfOneBufferNeedNoBarrier) {
    const std::vector<std::vector<Access>> operations{
        {writes(0, 0, 8)}, {writes(0, 8, 16)}, {reads(0, 16, 24)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0, 1, 2}}));
}

TEST(Schedule, EqualRangesOfDifferentBuffersNeedNoBarrier) {
    const std::vector<std::vector<Access>> operations{{writes(0, 0, 8)}, {reads(1, 0, 8)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0, 1}}));
}

// A greedy pass over the stated order would put barriers before 1, 2 and 3.
TEST(Schedule, IndependentWorkMovesUpInsteadOfTakingABarrierOfItsOwn) {
    const std::vector<std::vector<Access>> operations{{writes(0, 0, 8)},
                                                      {reads(0, 0, 8), writes(1, 0, 8)},
                                                      {writes(2, 0, 8)},
                                                      {reads(2, 0, 8), writes(3, 0, 8)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0, 2}, {1, 3}}));
}

TEST(Schedule, OneBarrierServesAllThatWaitForIt) {
    const std::vector<std::vector<Access>> operations{
        {writes(0, 0, 8)}, {writes(1, 0, 8)}, {reads(0, 0, 8)}, {reads(1, 0, 8)}};
    EXPECT_EQ(levelsOf(operations), (Levels{{0, 1}, {2, 3}}));
}

std::vector<std::vector<Access>> randomOperations(std::uint64_t seed) {
    SeededRNG rng(seed);
    std::vector<std::vector<Access>> operations(40);
    for (auto& accesses : operations) {
        for (int i = 0; i < 3; ++i) {
            const auto begin = static_cast<std::uint64_t>(rng.intBelow(20));
            accesses.push_back({static_cast<std::uint32_t>(rng.intBelow(4)), begin,
                                begin + 1 + static_cast<std::uint64_t>(rng.intBelow(8)),
                                rng.uniform() < 0.3F});
        }
    }
    return operations;
}

TEST(Schedule, EveryConflictIsSeparatedInTheStatedOrder) {
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const auto operations = randomOperations(seed);
        std::vector<std::size_t> levelOf(operations.size(), SIZE_MAX);
        const Levels levels = levelsOf(operations);
        for (std::size_t level = 0; level < levels.size(); ++level) {
            EXPECT_FALSE(levels[level].empty());
            for (const std::size_t i : levels[level])
                levelOf[i] = level;
        }
        for (std::size_t a = 0; a < operations.size(); ++a) {
            ASSERT_NE(levelOf[a], SIZE_MAX);
            for (std::size_t b = a + 1; b < operations.size(); ++b) {
                if (!conflict(operations[a], operations[b])) continue;
                EXPECT_LT(levelOf[a], levelOf[b]);
            }
        }
    }
}

// No order can have fewer barriers than its longest chain of conflicts has links.
TEST(Schedule, ThereAreNoMoreLevelsThanTheLongestChain) {
    for (std::uint64_t seed = 100; seed < 150; ++seed) {
        const auto operations = randomOperations(seed);
        std::vector<std::size_t> chain(operations.size(), 1);
        std::size_t longest = 0;
        for (std::size_t b = 0; b < operations.size(); ++b) {
            for (std::size_t a = 0; a < b; ++a) {
                if (conflict(operations[a], operations[b])) chain[b] = std::max(chain[b], chain[a] + 1);
            }
            longest = std::max(longest, chain[b]);
        }
        EXPECT_EQ(levelsOf(operations).size(), longest);
    }
}

}  // namespace
}  // namespace quillmere::network::vulkan
