#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <exception>
#include <functional>
#include <stdexcept>

namespace quillmere::testing {

// A copy of this process that runs body and ends: for work that must happen in another process, under
// another user or under a resource limit. Fork only from a process with one thread.
class ChildProcess {
public:
    explicit ChildProcess(const std::function<bool()>& body) : id_(::fork()) {
        if (id_ < 0) throw std::runtime_error("cannot fork");
        if (id_ == 0) ::_exit(run(body));
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() {
        if (id_ > 0) (void)succeeded();
    }

    // Waits for the end. True if body returned true; false if it returned false, threw or crashed.
    [[nodiscard]] bool succeeded() {
        int status = 0;
        if (::waitpid(id_, &status, 0) != id_) return false;
        id_ = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    static int run(const std::function<bool()>& body) {
        try {
            return body() ? 0 : 1;
        } catch (const std::exception&) {
            return 2;
        }
    }

    pid_t id_;
};

}  // namespace quillmere::testing
