#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace quillmere {

// While it lives, parallel work in this process uses at most the given number of threads, the calling one
// included. Results never depend on it. Requires threads >= 1.
class ThreadLimit {
public:
    explicit ThreadLimit(int threads);
    ~ThreadLimit();
    ThreadLimit(const ThreadLimit&) = delete;
    ThreadLimit& operator=(const ThreadLimit&) = delete;

private:
    struct Control;
    std::unique_ptr<Control> control_;
};

// A team of threads that runs loops. The number of threads is fixed at construction: the ThreadLimit then
// in force, else one per processor the process may use.
// Threads: run() may be called by one thread at a time and not from inside a body of the same team.
class WorkerTeam {
public:
    WorkerTeam();
    ~WorkerTeam();
    WorkerTeam(const WorkerTeam&) = delete;
    WorkerTeam& operator=(const WorkerTeam&) = delete;

    // Number of threads, the calling one included.
    [[nodiscard]] int threads() const noexcept { return threads_; }

    // Calls body(index, worker) once for each index in [0, count) and returns when all calls have ended.
    // worker is in [0, threads()) and identifies the thread, so scratch memory can be kept per worker.
    // Indices are handed out one at a time, in no particular order. If a body throws, calls that have not
    // started may be skipped and one of the exceptions is rethrown here.
    void run(std::size_t count, const std::function<void(std::size_t index, int worker)>& body);

private:
    struct Arena;
    int threads_;
    std::unique_ptr<Arena> arena_;
};

// WorkerTeam().run for a single coarse loop whose body needs no worker number.
void parallelFor(std::size_t count, const std::function<void(std::size_t index)>& body);

// While it lives, the calling thread's floating-point unit treats denormal numbers as zero; the previous
// setting returns afterwards. Every thread that takes part in one computation must do the same, or the
// result depends on which thread did what. No effect on processors without such a switch.
class FlushDenormals {
public:
    FlushDenormals() noexcept;
    ~FlushDenormals();
    FlushDenormals(const FlushDenormals&) = delete;
    FlushDenormals& operator=(const FlushDenormals&) = delete;

private:
    unsigned long saved_;
};

}  // namespace quillmere
