#pragma once

#include <string>
#include <vector>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/Console.h"

namespace quillmere::cli {

// Exit codes.
inline constexpr int success = 0;
inline constexpr int failure = 1;
inline constexpr int usageError = 2;
// A cancelled command ends with CancelFlag::exitCode.

// The whole program but the process: parses the arguments (without the program's name), runs the command and
// returns the exit code. Throws nothing that a user can cause.
[[nodiscard]] int run(const std::vector<std::string>& arguments, const Console::Streams& streams,
                      const CancelFlag& cancel);

}  // namespace quillmere::cli
