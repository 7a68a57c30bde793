#pragma once

#include <atomic>
#include <stop_token>
#include <thread>

namespace quillmere::cli {

// Asks long work to stop, which polls its token between its units. Threads: any.
class CancelFlag {
public:
    // signal: the number of the signal that asked, for the exit code.
    void request(int signal) noexcept;
    // Throws CancellationError once it was requested.
    void check() const;
    // 128 plus the signal's number, as a shell reports it: 130 after Ctrl-C.
    [[nodiscard]] int exitCode() const noexcept { return 128 + signal_.load(); }
    // For the core's long operations.
    [[nodiscard]] std::stop_token token() const noexcept { return source_.get_token(); }

private:
    std::stop_source source_;
    std::atomic<int> signal_{0};
};

// While it lives, SIGINT, SIGTERM and SIGHUP (unless whoever started the program had it ignored, as nohup
// does) set the flag, and a second signal of the kind ends the program at once. SIGPIPE and SIGXFSZ are
// ignored, so that a closed pipe and a file beyond the permitted size are ordinary write errors.
//
// The signals are blocked and a thread of its own waits for them, so that no unrelated read or write is
// interrupted. Make it before any other thread, which would receive the signals instead.
class SignalRoute {
public:
    explicit SignalRoute(CancelFlag& flag);
    ~SignalRoute();
    SignalRoute(const SignalRoute&) = delete;
    SignalRoute& operator=(const SignalRoute&) = delete;

private:
    std::jthread watcher_;
};

}  // namespace quillmere::cli
