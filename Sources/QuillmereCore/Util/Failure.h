#pragma once

#include <concepts>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <system_error>

#include "QuillmereCore/Util/Message.h"

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

// Base of every failure that a user can cause. what() is the sentence the user reads, in English; a program
// that speaks another language shows message().
class Failure : public std::runtime_error {
public:
    explicit Failure(Message message);
    // As the Message of these arguments: Failure("{0} is silent", file).
    template <typename... Arguments>
    explicit Failure(Pattern<sizeof...(Arguments)> pattern, const Arguments&... arguments)
        : Failure(Message(pattern, arguments...)) {}
    // A sentence that is in the user's language already, as the window has them.
    template <std::same_as<std::string> String>
    explicit Failure(const String& sentence) : Failure(Message::verbatim(sentence)) {}
    // A move is a copy, which leaves its source a message, too.
    Failure(const Failure&) = default;
    Failure& operator=(const Failure&) = default;

    [[nodiscard]] const Message& message() const noexcept { return *message_; }

private:
    std::shared_ptr<const Message> message_;  // shared, because an exception's copy must not fail
};

// Trouble reported by the file system: what() names the file and gives the system's reason.
class FileError : public Failure {
public:
    FileError(const std::filesystem::path& file, std::error_code reason);
    // For failures that have a sentence of their own.
    FileError(std::filesystem::path file, std::error_code reason, Message message);

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
