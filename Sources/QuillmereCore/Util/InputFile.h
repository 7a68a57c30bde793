#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

#include "QuillmereCore/Util/Descriptor.h"

namespace quillmere {

// A regular file open for reading whose size is known before anything is read. Everything here throws
// FileError. One thread at a time.
class InputFile {
public:
    // Never waits, not even for a pipe's other end: what is no regular file is refused.
    explicit InputFile(std::filesystem::path file);
    // What was opened already; file: for messages.
    InputFile(std::filesystem::path file, Descriptor descriptor);

    [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }
    // In bytes, when it was opened.
    [[nodiscard]] std::uint64_t size() const noexcept { return size_; }

    // Fills bytes with those that follow. False if the file ends too early.
    [[nodiscard]] bool read(std::span<std::byte> bytes);

    // All of a file whose size has been found reasonable: size() bytes, padded with zeros if it has been cut
    // meanwhile.
    [[nodiscard]] std::string readAll();

private:
    std::filesystem::path path_;
    Descriptor descriptor_;
    std::uint64_t size_ = 0;
};

}  // namespace quillmere
