#include "QuillmereCore/Util/Parallel.h"

#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "QuillmereCore/Util/Failure.h"

#if defined(QUILLMERE_THREAD_SANITIZER)
extern "C" void __tsan_acquire(void* address);  // NOLINT(bugprone-reserved-identifier)
extern "C" void __tsan_release(void* address);  // NOLINT(bugprone-reserved-identifier)
#endif

namespace quillmere {
namespace {

// States, for the thread sanitizer, the order that the task queues impose: what was written before the
// loop is visible to every body, and what bodies wrote is visible after the loop.
class LoopOrder {
public:
#if defined(QUILLMERE_THREAD_SANITIZER)
    void publish() {
        __tsan_release(this);
    }
    void observe() {
        __tsan_acquire(this);
    }
#else
    void publish() {}
    void observe() {}
#endif
};

// States it when the scope is left, by an exception too.
class PublishAtEnd {
public:
    explicit PublishAtEnd(LoopOrder& order) : order_(order) {}
    ~PublishAtEnd() { order_.publish(); }
    PublishAtEnd(const PublishAtEnd&) = delete;
    PublishAtEnd& operator=(const PublishAtEnd&) = delete;

private:
    LoopOrder& order_;
};

class ObserveAtEnd {
public:
    explicit ObserveAtEnd(LoopOrder& order) : order_(order) {}
    ~ObserveAtEnd() { order_.observe(); }
    ObserveAtEnd(const ObserveAtEnd&) = delete;
    ObserveAtEnd& operator=(const ObserveAtEnd&) = delete;

private:
    LoopOrder& order_;
};

}  // namespace

struct ThreadLimit::Control {
    explicit Control(int threads)
        : control(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(threads)) {}
    tbb::global_control control;
};

ThreadLimit::ThreadLimit(int threads) {
    require(threads >= 1, "a thread limit must be at least 1");
    control_ = std::make_unique<Control>(threads);
}

ThreadLimit::~ThreadLimit() = default;

struct WorkerTeam::Arena {
    explicit Arena(int threads) : arena(threads) {}
    tbb::task_arena arena;
};

WorkerTeam::WorkerTeam()
    : threads_(
          static_cast<int>(tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism))),
      arena_(std::make_unique<Arena>(threads_)) {}

WorkerTeam::~WorkerTeam() = default;

void WorkerTeam::run(std::size_t count, const std::function<void(std::size_t, int)>& body) {
    if (count == 0) return;
    LoopOrder before;
    LoopOrder after;
    before.publish();
    const ObserveAtEnd observed(after);
    const auto runRange = [&](const tbb::blocked_range<std::size_t>& range) {
        before.observe();
        const PublishAtEnd published(after);
        const int worker = tbb::this_task_arena::current_thread_index();
        for (std::size_t i = range.begin(); i != range.end(); ++i)
            body(i, worker);
    };
    arena_->arena.execute([&] {
        tbb::parallel_for(tbb::blocked_range<std::size_t>(0, count, 1), runRange, tbb::simple_partitioner());
    });
}

void parallelFor(std::size_t count, const std::function<void(std::size_t)>& body) {
    WorkerTeam team;
    team.run(count, [&](std::size_t index, int) { body(index); });
}

#if defined(__SSE2__)

namespace {
constexpr unsigned flushToZero = 0x8000;       // results
constexpr unsigned denormalsAreZero = 0x0040;  // operands
}  // namespace

FlushDenormals::FlushDenormals() noexcept : saved_(_mm_getcsr()) {
    _mm_setcsr(static_cast<unsigned>(saved_) | flushToZero | denormalsAreZero);
}
FlushDenormals::~FlushDenormals() {
    _mm_setcsr(static_cast<unsigned>(saved_));
}

#elif defined(__aarch64__)

FlushDenormals::FlushDenormals() noexcept : saved_(0) {
    __asm__ volatile("mrs %0, fpcr" : "=r"(saved_));
    __asm__ volatile("msr fpcr, %0" : : "r"(saved_ | (1UL << 24)));  // FZ
}
FlushDenormals::~FlushDenormals() {
    __asm__ volatile("msr fpcr, %0" : : "r"(saved_));
}

#else

FlushDenormals::FlushDenormals() noexcept : saved_(0) {}
FlushDenormals::~FlushDenormals() = default;

#endif

}  // namespace quillmere
