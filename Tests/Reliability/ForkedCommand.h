#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCLI/CommandLine.h"
#include "Support/FaultLayer.h"
#include "Support/SharedMemory.h"

namespace quillmere::testing {

// A command of the command line in a process of its own, forked from this one: nothing has to be loaded, a
// run costs as much as its work. Fork only from a process with one thread. One that does not end is ended.
class ForkedCommand {
public:
    struct Result {
        int exitCode = -1;  // 128 plus the signal's number when a signal ended it
        std::string out, err;
    };

    // prepare is called in the child, before the command.
    explicit ForkedCommand(
        const std::vector<std::string>& arguments, const std::function<void()>& prepare = [] {}) {
        std::array<int, 2> ends{};
        if (::pipe(ends.data()) != 0) throw std::runtime_error("cannot make a pipe");
        id_ = ::fork();
        if (id_ < 0) throw std::runtime_error("cannot fork");
        if (id_ == 0) {
            ::close(ends[0]);
            run(arguments, prepare, ends[1]);
        }
        ::close(ends[1]);
        output_ = ends[0];
    }
    ~ForkedCommand() {
        if (id_ > 0) {
            ::kill(id_, SIGKILL);
            (void)finish();
        }
    }
    ForkedCommand(const ForkedCommand&) = delete;
    ForkedCommand& operator=(const ForkedCommand&) = delete;

    void signal(int number) const { ::kill(id_, number); }

    Result finish() {
        std::string text;
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = ::read(output_, buffer.data(), buffer.size())) > 0;)
            text.append(buffer.data(), static_cast<std::size_t>(count));
        ::close(output_);
        int status = 0;
        ::waitpid(id_, &status, 0);
        id_ = -1;
        const std::size_t border = std::min(text.find('\0'), text.size());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), text.substr(0, border),
                border < text.size() ? text.substr(border + 1) : std::string()};
    }

private:
    // What is thrown ends the child: it must not go on as another copy of the tests.
    [[noreturn]] static void run(const std::vector<std::string>& arguments,
                                 const std::function<void()>& prepare, int output) noexcept {
        constexpr unsigned longestRun = 120;  // seconds, on the busiest of machines
        ::alarm(longestRun);
        std::ostringstream out;
        std::ostringstream err;
        const cli::CancelFlag cancel;
        prepare();
        const int exitCode =
            cli::run(arguments, {out, err, [] { return std::optional<std::size_t>(); }}, cancel);
        watchFilesNoMore();
        const std::string text = out.str() + '\0' + err.str();
        for (std::string_view rest = text; !rest.empty();) {
            const ssize_t written = ::write(output, rest.data(), rest.size());
            if (written <= 0) break;
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
        ::_exit(exitCode);
    }

    pid_t id_ = -1;
    int output_ = -1;
};

}  // namespace quillmere::testing
