#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/CommandLine.h"
#include "QuillmereCore/Util/Language.h"
#include "QuillmereCore/Util/StandardStreams.h"

namespace {

std::optional<std::size_t> terminalWidth() {
    if (isatty(STDERR_FILENO) != 1) return std::nullopt;
    const char* const kind = std::getenv("TERM");
    if (kind == nullptr || std::string_view(kind) == "dumb") return std::nullopt;
    winsize size{};
    constexpr std::size_t usualWidth = 80;
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return usualWidth;
    return size.ws_col;
}

int runProgram(int argc, char** argv) {
    quillmere::Language::takeFromEnvironment(quillmere::Language::ownFolder());
    quillmere::cli::CancelFlag cancel;
    const quillmere::cli::SignalRoute route(cancel);
    const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    return quillmere::cli::run(arguments, {std::cout, std::cerr, terminalWidth}, cancel);
}

}  // namespace

int main(int argc, char** argv) {
    quillmere::occupyStandardStreams();
    try {
        return runProgram(argc, argv);
    } catch (const std::exception& error) {
        // What the system refuses to a program before it knows its command: a thread, the first memory.
        std::cerr << "quillmere-cli: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
