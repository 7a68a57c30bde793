#include "QuillmereCore/Util/ThreadSafety.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <thread>
#include <vector>

namespace quillmere {
namespace {

class Counter {
public:
    void add() {
        const MutexLock lock(mutex_);
        ++value_;
        changed_.notify_all();
    }
    int waitFor(int value) {
        const MutexLock lock(mutex_);
        changed_.wait(mutex_, [&]() QUILLMERE_REQUIRES(mutex_) { return value_ >= value; });
        return value_;
    }

private:
    Mutex mutex_;
    std::condition_variable_any changed_;
    int value_ QUILLMERE_GUARDED_BY(mutex_) = 0;
};

TEST(ThreadSafety, ALockKeepsOtherThreadsOut) {
    Counter counter;
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 10000; ++j)
                counter.add();
        });
    }
    threads.clear();
    EXPECT_EQ(counter.waitFor(0), 40000);
}

TEST(ThreadSafety, AWaitGivesTheLockAwayMeanwhile) {
    Counter counter;
    const std::jthread other([&] { counter.add(); });
    EXPECT_EQ(counter.waitFor(1), 1);
}

}  // namespace
}  // namespace quillmere
