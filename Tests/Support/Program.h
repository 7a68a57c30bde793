#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::testing {

// A program started as a child process, with its standard output and error collected.
class Program {
public:
    struct Result {
        int exitCode = -1;  // 128 plus the signal's number when a signal ended it
        std::string out, err;
    };

    // arguments[0] is the program's path. environment: more variables, as NAME=value.
    // outputFile: where standard output goes instead. closed: standard streams that it is started without.
    explicit Program(const std::vector<std::string>& arguments,
                     const std::vector<std::string>& environment = {}, const char* outputFile = nullptr,
                     const std::vector<int>& closed = {})
        : out_(makePipe()), err_(makePipe()) {
        std::vector<char*> argv = pointers(arguments);
        std::vector<char*> envp = pointers(environment);
        envp.pop_back();
        for (char** variable = environ; *variable != nullptr; ++variable)
            envp.push_back(*variable);
        envp.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (outputFile != nullptr) {
            posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile, O_WRONLY, 0);
        } else {
            posix_spawn_file_actions_adddup2(&actions, out_[1], STDOUT_FILENO);
        }
        posix_spawn_file_actions_adddup2(&actions, err_[1], STDERR_FILENO);
        for (const int stream : closed)
            posix_spawn_file_actions_addclose(&actions, stream);
        const int error = posix_spawn(&id_, argv[0], &actions, nullptr, argv.data(), envp.data());
        posix_spawn_file_actions_destroy(&actions);
        ::close(out_[1]);
        ::close(err_[1]);
        if (error != 0) throw std::runtime_error("cannot start " + arguments[0]);
    }
    ~Program() {
        if (id_ > 0) {
            ::kill(id_, SIGKILL);
            ::waitpid(id_, nullptr, 0);
        }
        closeOutput();
        ::close(err_[0]);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] pid_t id() const noexcept { return id_; }
    void signal(int number) const { ::kill(id_, number); }

    // Reads no more of standard output: the program's next write meets a closed pipe.
    void closeOutput() {
        if (out_[0] >= 0) ::close(out_[0]);
        out_[0] = -1;
    }

    // Collects output until standard output or error contains text. False if the program ends before.
    [[nodiscard]] bool waitFor(std::string_view text) {
        while (result_.out.find(text) == std::string::npos && result_.err.find(text) == std::string::npos) {
            if (!readSome()) return false;
        }
        return true;
    }

    // Collects all output and waits for the end.
    Result finish() {
        while (readSome()) {
        }
        int status = 0;
        ::waitpid(id_, &status, 0);
        id_ = -1;
        result_.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        return result_;
    }

private:
    using Pipe = std::array<int, 2>;

    static Pipe makePipe() {
        Pipe ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
        return ends;
    }

    static std::vector<char*> pointers(const std::vector<std::string>& texts) {
        std::vector<char*> result;
        result.reserve(texts.size() + 1);
        for (const std::string& text : texts)
            result.push_back(const_cast<char*>(text.c_str()));
        result.push_back(nullptr);
        return result;
    }

    // False once both pipes have ended.
    bool readSome() {
        std::array<pollfd, 2> ends{pollfd{out_[0], POLLIN, 0}, pollfd{err_[0], POLLIN, 0}};
        if (outEnded_) ends[0].fd = -1;
        if (errEnded_) ends[1].fd = -1;
        if (ends[0].fd < 0 && ends[1].fd < 0) return false;
        if (::poll(ends.data(), ends.size(), -1) < 0) return errno == EINTR;
        if (ends[0].fd >= 0 && ends[0].revents != 0) outEnded_ = !append(ends[0].fd, result_.out);
        if (ends[1].fd >= 0 && ends[1].revents != 0) errEnded_ = !append(ends[1].fd, result_.err);
        return true;
    }

    static bool append(int descriptor, std::string& text) {
        std::array<char, 4096> buffer{};
        const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
        if (count < 0) return errno == EINTR;
        text.append(buffer.data(), static_cast<std::size_t>(count));
        return count > 0;
    }

    Pipe out_, err_;
    pid_t id_ = -1;
    Result result_;
    bool outEnded_ = false;
    bool errEnded_ = false;
};

}  // namespace quillmere::testing
