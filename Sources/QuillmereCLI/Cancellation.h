#pragma once

#include <atomic>
#include <functional>

namespace quillmere::cli {

// The flag that long work polls between its units. Any thread may read or set it, signal handlers included.
class CancelFlag {
public:
    // signal: the number of the signal that asked, for the exit code.
    void request(int signal) noexcept { signal_.store(signal); }
    [[nodiscard]] bool requested() const noexcept { return signal_.load() != 0; }
    // Throws CancellationError once the flag is set.
    void check() const;
    // 128 plus the signal's number, as a shell reports it: 130 after Ctrl-C.
    [[nodiscard]] int exitCode() const noexcept { return 128 + signal_.load(); }
    // The test that the core's long operations take. Refers to this flag.
    [[nodiscard]] std::function<bool()> test() const;

private:
    std::atomic<int> signal_{0};
    static_assert(std::atomic<int>::is_always_lock_free, "signal handlers set the flag");
};

// While it lives, SIGINT and SIGTERM set the flag, and a second signal of the kind ends the program at once.
// SIGPIPE is ignored, so that a closed pipe is an ordinary write error. One instance at a time.
class SignalRoute {
public:
    explicit SignalRoute(CancelFlag& flag);
    ~SignalRoute();
    SignalRoute(const SignalRoute&) = delete;
    SignalRoute& operator=(const SignalRoute&) = delete;
};

// While it lives, the signals of SignalRoute end the program at once with the same message and exit code:
// for work that cannot be asked to stop and leaves nothing behind, such as a scan.
class PromptCancellation {
public:
    // Throws CancellationError if the flag is set already.
    explicit PromptCancellation(const CancelFlag& flag);
    ~PromptCancellation();
    PromptCancellation(const PromptCancellation&) = delete;
    PromptCancellation& operator=(const PromptCancellation&) = delete;
};

}  // namespace quillmere::cli
