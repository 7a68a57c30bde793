#include "QuillmereCore/Util/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

Descriptor open(const std::filesystem::path& file) {
    Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!descriptor.isOpen()) throw FileError(file, lastError());
    return descriptor;
}

}  // namespace

InputFile::InputFile(std::filesystem::path file) : InputFile(file, open(file)) {}

InputFile::InputFile(std::filesystem::path file, Descriptor descriptor)
    : path_(std::move(file)), descriptor_(std::move(descriptor)) {
    struct stat status {};
    if (::fstat(descriptor_.get(), &status) != 0) throw FileError(path_, lastError());
    if (S_ISDIR(status.st_mode)) throw FileError(path_, std::make_error_code(std::errc::is_a_directory));
    if (!S_ISREG(status.st_mode)) throw FileError(path_, std::make_error_code(std::errc::not_supported));
    size_ = static_cast<std::uint64_t>(status.st_size);
}

bool InputFile::read(std::span<std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::read(descriptor_.get(), bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw FileError(path_, lastError());
        if (count == 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

std::string InputFile::readAll() {
    std::string text(static_cast<std::size_t>(size_), '\0');
    (void)read(std::as_writable_bytes(std::span(text)));  // what is cut short does not decode
    return text;
}

}  // namespace quillmere
