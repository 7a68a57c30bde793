#include "QuillmereCLI/Cancellation.h"

#include <pthread.h>
#include <signal.h>

#include <array>
#include <csignal>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::cli {
namespace {

constexpr std::array cancellingSignals{SIGINT, SIGTERM};
constexpr int wakeUp = SIGUSR1;  // sent to the watcher alone, when it is to end

// A blocked signal arrives even where it is ignored, so it must be asked.
bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t watchedSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    for (const int signal : cancellingSignals)
        sigaddset(&signals, signal);
    if (!isIgnored(SIGHUP)) sigaddset(&signals, SIGHUP);
    sigaddset(&signals, wakeUp);
    return signals;
}

void changeMask(int how, const sigset_t& signals) {
    require(pthread_sigmask(how, &signals, nullptr) == 0, "signals could not be blocked or let through");
}

// From now on the signal takes its default action, which ends the program.
void letThrough(int signal) {
    sigset_t one{};
    sigemptyset(&one);
    sigaddset(&one, signal);
    changeMask(SIG_UNBLOCK, one);
}

void watch(const std::stop_token& end, CancelFlag& flag) {
    sigset_t signals = watchedSignals();
    while (!end.stop_requested()) {
        int signal = 0;
        require(sigwait(&signals, &signal) == 0, "signals could not be waited for");
        if (signal == wakeUp) continue;
        flag.request(signal);
        sigdelset(&signals, signal);
        letThrough(signal);
    }
}

}  // namespace

void CancelFlag::request(int signal) noexcept {
    signal_.store(signal);
    source_.request_stop();
}

void CancelFlag::check() const {
    throwIfCancelled(token());
}

SignalRoute::SignalRoute(CancelFlag& flag) {
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGXFSZ, SIG_IGN);
    changeMask(SIG_BLOCK, watchedSignals());
    watcher_ = std::jthread([&flag](const std::stop_token& end) { watch(end, flag); });
}

SignalRoute::~SignalRoute() {
    watcher_.request_stop();
    pthread_kill(watcher_.native_handle(), wakeUp);
    watcher_.join();
    changeMask(SIG_UNBLOCK, watchedSignals());
}

}  // namespace quillmere::cli
