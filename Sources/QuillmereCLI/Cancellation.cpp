#include "QuillmereCLI/Cancellation.h"

#include <unistd.h>

#include <csignal>
#include <string_view>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::cli {
namespace {

// A signal handler can reach nothing but objects of static storage.
std::atomic<CancelFlag*> routedFlag{nullptr};
std::atomic<bool> endAtOnce{false};
std::atomic<bool> errorIsTerminal{false};

extern "C" void handleCancellation(int signal) {
    if (endAtOnce.load()) {
        constexpr std::string_view clearLine = "\r\x1b[K";
        constexpr std::string_view message = "quillmere-cli: The operation was cancelled.\n";
        if (errorIsTerminal.load()) (void)!::write(STDERR_FILENO, clearLine.data(), clearLine.size());
        (void)!::write(STDERR_FILENO, message.data(), message.size());
        _exit(128 + signal);
    }
    if (CancelFlag* flag = routedFlag.load()) flag->request(signal);
}

void setHandler(int signal, void (*handler)(int), int flags) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    require(sigaction(signal, &action, nullptr) == 0, "a signal handler could not be set");
}

}  // namespace

void CancelFlag::check() const {
    if (requested()) throw CancellationError();
}

std::function<bool()> CancelFlag::test() const {
    return [this] { return requested(); };
}

SignalRoute::SignalRoute(CancelFlag& flag) {
    errorIsTerminal.store(isatty(STDERR_FILENO) == 1);
    routedFlag.store(&flag);
    // Reset on delivery: the second Ctrl-C takes the default action. Restart: a signal must not make an
    // unrelated read or write fail, the flag alone ends the work.
    setHandler(SIGINT, handleCancellation, SA_RESETHAND | SA_RESTART);
    setHandler(SIGTERM, handleCancellation, SA_RESETHAND | SA_RESTART);
    setHandler(SIGPIPE, SIG_IGN, 0);
}

SignalRoute::~SignalRoute() {
    setHandler(SIGINT, SIG_DFL, 0);
    setHandler(SIGTERM, SIG_DFL, 0);
    routedFlag.store(nullptr);
}

PromptCancellation::PromptCancellation(const CancelFlag& flag) {
    endAtOnce.store(true);
    // Checked after the switch, so that a signal in between is not lost.
    if (flag.requested()) {
        endAtOnce.store(false);
        throw CancellationError();
    }
}

PromptCancellation::~PromptCancellation() {
    endAtOnce.store(false);
}

}  // namespace quillmere::cli
