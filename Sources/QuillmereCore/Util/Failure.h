#pragma once

#include <filesystem>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <system_error>

namespace quillmere {

// Stops the program with a message on standard error. For programming errors only: conditions that cannot
// occur unless the code is wrong. Trouble that a user can cause is thrown as a Failure.
[[noreturn]] void fatal(std::string_view message);

// Stops the program with message unless condition holds.
inline void require(bool condition, std::string_view message) {
    if (!condition) fatal(message);
}

// a * b and a + b for sizes and counts; overflow stops the program.
[[nodiscard]] long long checkedMultiply(long long a, long long b);
[[nodiscard]] long long checkedAdd(long long a, long long b);

// Rounds half away from zero; a value that is not finite or does not fit stops the program.
[[nodiscard]] long long roundedCount(double value);

// Base of every failure that a user can cause. what() is the sentence the user reads.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Trouble reported by the file system: what() names the file and gives the system's reason.
class FileError : public Failure {
public:
    FileError(const std::filesystem::path& file, std::error_code reason);
    // For failures that have a sentence of their own.
    FileError(std::filesystem::path file, std::error_code reason, const std::string& message);

    [[nodiscard]] const std::filesystem::path& file() const noexcept { return file_; }
    [[nodiscard]] std::error_code reason() const noexcept { return reason_; }

private:
    std::filesystem::path file_;
    std::error_code reason_;
};

// A document (JSON) that lacks a key, has a value of the wrong type, or is no document at all.
class DecodingError : public Failure {
public:
    using Failure::Failure;
};

// Thrown when work ends early because its caller asked for it. Not a Failure: nothing went wrong. Long work
// takes a std::stop_token, asks it between its units, and ends so; an empty token never asks to stop.
class CancellationError : public std::exception {
public:
    [[nodiscard]] const char* what() const noexcept override { return "The operation was cancelled."; }
};

inline void throwIfCancelled(const std::stop_token& stop) {
    if (stop.stop_requested()) throw CancellationError();
}

}  // namespace quillmere
