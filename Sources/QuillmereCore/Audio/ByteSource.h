#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <span>
#include <stop_token>
#include <vector>

#include "QuillmereCore/Audio/ReadError.h"

namespace quillmere {

// The bytes of a regular file, read under supervision: reading ends when it is cancelled, and when much was
// read without anything coming of it. Internal to the core; one thread at a time.
class ByteSource {
public:
    // How much may be read, and how long it may take, between two calls of progress().
    struct Allowance {
        std::int64_t bytes = std::int64_t{64} << 20;
        std::chrono::milliseconds time = std::chrono::minutes(1);
    };

    // A part of the file, in bytes.
    struct Range {
        std::int64_t begin = 0;
        std::int64_t end = 0;  // beyond the last byte
        [[nodiscard]] std::int64_t size() const noexcept { return end - begin; }
    };

    // Opens without ever blocking, not even on a pipe or a device. Throws ReadError, for anything but a
    // regular file too; where links are not followed, for a symbolic link.
    ByteSource(const std::filesystem::path& file, bool followsLinks, std::stop_token stop,
               Allowance allowance);
    ~ByteSource();
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // Bytes in what is shown of the file: at first, all of them.
    [[nodiscard]] std::int64_t size() const noexcept { return size_; }

    // Shows only these parts of the file, as if they were one piece. In ascending order, not overlapping.
    void show(std::vector<Range> parts);

    // Fills out from the given place on, as far as there are bytes; returns their number. Throws ReadError
    // and CancellationError.
    std::size_t readAt(std::int64_t offset, std::span<std::byte> out);

    // As readAt, for callers that cannot be thrown through: what is thrown is kept for check(), and the
    // answer is negative.
    std::int64_t tryReadAt(std::int64_t offset, std::span<std::byte> out) noexcept;
    // Throws what tryReadAt kept.
    void check() const;

    // Something came of what was read: the allowance begins anew.
    void progress() noexcept;

    [[nodiscard]] bool isCancelled() const noexcept { return stop_.stop_requested(); }

private:
    void supervise() const;

    int descriptor_;
    std::stop_token stop_;
    Allowance allowance_;
    std::vector<Range> parts_;
    std::vector<std::int64_t> starts_;  // of each part in what is shown
    std::int64_t size_ = 0;
    std::int64_t bytesRead_ = 0;  // since the last progress
    std::chrono::steady_clock::time_point lastProgress_ = std::chrono::steady_clock::now();
    std::exception_ptr failure_;
};

}  // namespace quillmere
