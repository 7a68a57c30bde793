#include "QuillmereCore/Util/Parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace quillmere {
namespace {

TEST(Parallel, EveryIndexIsVisitedOnce) {
    std::vector<std::atomic<int>> visits(1000);
    parallelFor(visits.size(), [&](std::size_t i) { ++visits[i]; });
    for (std::size_t i = 0; i < visits.size(); ++i)
        EXPECT_EQ(visits[i], 1) << "index " << i;
}

TEST(Parallel, NothingRunsForACountOfZero) {
    WorkerTeam().run(0, [](std::size_t, int) { FAIL(); });
}

TEST(Parallel, ResultsAreVisibleAfterTheLoop) {
    WorkerTeam team;
    std::vector<std::size_t> squares(500);
    for (std::size_t round = 0; round < 20; ++round) {
        team.run(squares.size(), [&](std::size_t i, int) { squares[i] = i * i + round; });
        for (std::size_t i = 0; i < squares.size(); ++i)
            ASSERT_EQ(squares[i], i * i + round) << "index " << i;
    }
}

TEST(Parallel, WorkerNumbersIdentifyThreads) {
    WorkerTeam team;
    ASSERT_GE(team.threads(), 1);
    std::vector<std::atomic<int>> busy(static_cast<std::size_t>(team.threads()));
    std::atomic<bool> shared = false;
    team.run(200, [&](std::size_t, int worker) {
        std::atomic<int>& mine = busy.at(static_cast<std::size_t>(worker));
        if (++mine != 1) shared = true;
        std::this_thread::yield();
        --mine;
    });
    EXPECT_FALSE(shared) << "two threads had the same worker number at the same time";
}

TEST(Parallel, AThreadLimitOfOneStaysOnTheCallingThread) {
    const ThreadLimit limit(1);
    WorkerTeam team;
    EXPECT_EQ(team.threads(), 1);
    const std::thread::id caller = std::this_thread::get_id();
    team.run(50, [&](std::size_t, int worker) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_EQ(worker, 0);
    });
}

TEST(Parallel, AThreadLimitEndsWithItsScope) {
    const int before = WorkerTeam().threads();
    {
        const ThreadLimit limit(1);
        EXPECT_EQ(WorkerTeam().threads(), 1);
    }
    EXPECT_EQ(WorkerTeam().threads(), before);
}

TEST(Parallel, ATeamMayRunInsideABodyOfAnother) {
    std::atomic<int> calls = 0;
    parallelFor(4, [&](std::size_t) { parallelFor(8, [&](std::size_t) { ++calls; }); });
    EXPECT_EQ(calls, 32);
}

TEST(Parallel, AnExceptionOfABodyReachesTheCaller) {
    const auto fail = [](std::size_t i) {
        if (i == 7) throw std::runtime_error("index 7");
    };
    try {
        parallelFor(20, fail);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "index 7");
    }
}

TEST(Parallel, ATeamCanBeUsedAfterAnException) {
    WorkerTeam team;
    EXPECT_THROW(team.run(3, [](std::size_t, int) { throw std::runtime_error("all"); }), std::runtime_error);
    std::atomic<int> calls = 0;
    team.run(10, [&](std::size_t, int) { ++calls; });
    EXPECT_EQ(calls, 10);
}

TEST(ParallelDeathTest, AThreadLimitBelowOneIsRefused) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(ThreadLimit(0), "thread limit");
}

#if defined(__SSE2__) || defined(__aarch64__)

// volatile: computed when the program runs, not by the compiler.
float halfOfTheSmallestNormal() {
    volatile float value = 0x1p-126F;
    volatile const float half = 0.5F;
    value = value * half;
    return value;
}

TEST(FlushDenormals, DenormalResultsAreZeroWhileItLives) {
    EXPECT_NE(halfOfTheSmallestNormal(), 0.0F);
    {
        const FlushDenormals flush;
        EXPECT_EQ(halfOfTheSmallestNormal(), 0.0F);
    }
    EXPECT_NE(halfOfTheSmallestNormal(), 0.0F);
}

TEST(FlushDenormals, AnInnerOneLeavesTheOuterInForce) {
    const FlushDenormals outer;
    { const FlushDenormals inner; }
    EXPECT_EQ(halfOfTheSmallestNormal(), 0.0F);
}

TEST(FlushDenormals, AnotherThreadsSettingDoesNotReachThisOne) {
    float there = 1;
    float here = 0;
    std::atomic<bool> flushed = false;
    std::atomic<bool> measured = false;
    std::thread other([&] {
        const FlushDenormals flush;
        there = halfOfTheSmallestNormal();
        flushed = true;
        flushed.notify_one();
        measured.wait(false);
    });
    flushed.wait(false);
    here = halfOfTheSmallestNormal();
    measured = true;
    measured.notify_one();
    other.join();
    EXPECT_EQ(there, 0.0F);
    EXPECT_NE(here, 0.0F);
}

#endif

}  // namespace
}  // namespace quillmere
