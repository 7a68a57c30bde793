#pragma once

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QString>
#include <array>
#include <csignal>

namespace quillmere::testing {

// An X server without a screen, for programs that are started later. Needs no QCoreApplication; ends with the
// program that made it, however that ends.
class XServer {
public:
    XServer() {
        std::array<int, 2> pipe{};
        if (::pipe(pipe.data()) != 0) return;
        server_ = ::fork();
        if (server_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM);
            ::dup2(pipe[1], STDOUT_FILENO);
            ::execlp("Xvfb", "Xvfb", "-displayfd", "1", "-screen", "0", "1400x1000x24", "-nolisten", "tcp",
                     static_cast<char*>(nullptr));
            ::_exit(1);
        }
        ::close(pipe[1]);
        number_ = firstLine(pipe[0]);
        ::close(pipe[0]);
    }
    ~XServer() {
        if (server_ <= 0) return;
        ::kill(server_, SIGTERM);
        ::waitpid(server_, nullptr, 0);
    }
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    // Empty when it has not started.
    [[nodiscard]] QString name() const { return number_.isEmpty() ? QString() : ":" + number_; }

private:
    static QString firstLine(int descriptor) {
        constexpr int patience = 20000;  // milliseconds
        QByteArray line;
        char letter = 0;
        pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
        while (::poll(&waiting, 1, patience) == 1 && ::read(descriptor, &letter, 1) == 1 && letter != '\n')
            line.append(letter);
        return QString::fromLatin1(line);
    }

    pid_t server_ = -1;
    QString number_;
};

}  // namespace quillmere::testing
