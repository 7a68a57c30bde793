#include "QuillmereCore/Audio/ByteSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

ReadError systemError(int code) {
    return ReadError(std::error_code(code, std::generic_category()));
}

}  // namespace

ReadError::ReadError(std::error_code reason) : ReadError(Message::system(reason)) {
    isSystemTrouble_ = quillmere::isSystemTrouble(reason);
}

bool isSystemTrouble(std::error_code reason) noexcept {
    for (const std::errc code : {std::errc::too_many_files_open, std::errc::too_many_files_open_in_system,
                                 std::errc::not_enough_memory, std::errc::io_error}) {
        if (reason == code) return true;
    }
    return false;
}

ByteSource::ByteSource(const std::filesystem::path& file, bool followsLinks, std::stop_token stop,
                       Allowance allowance)
    // A pipe or a device is opened like a file, told apart by what was opened, and closed again.
    : descriptor_(::open(file.c_str(),
                         O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY | (followsLinks ? 0 : O_NOFOLLOW))),
      stop_(std::move(stop)),
      allowance_(allowance) {
    if (descriptor_ < 0) throw systemError(errno);
    struct stat status {};
    const int code = ::fstat(descriptor_, &status) == 0 ? 0 : errno;
    if (code != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor_);
        if (code != 0) throw systemError(code);
        throw ReadError("it is not a regular file");
    }
    show({{0, status.st_size}});
}

ByteSource::~ByteSource() {
    ::close(descriptor_);
}

void ByteSource::show(std::vector<Range> parts) {
    parts_ = std::move(parts);
    starts_.clear();
    size_ = 0;
    for (const Range& part : parts_) {
        starts_.push_back(size_);
        size_ += part.size();
    }
}

std::size_t ByteSource::readAt(std::int64_t offset, std::span<std::byte> out) {
    std::size_t done = 0;
    while (done < out.size() && offset < size_) {
        supervise();
        const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
        const Range& part = parts_[static_cast<std::size_t>(next - starts_.begin()) - 1];
        const std::int64_t place = part.begin + (offset - *(next - 1));
        const auto wanted =
            std::min<std::int64_t>(static_cast<std::int64_t>(out.size() - done), part.end - place);
        const ssize_t count =
            ::pread(descriptor_, out.data() + done, static_cast<std::size_t>(wanted), place);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw systemError(errno);
        if (count == 0) break;  // the file has become shorter
        done += static_cast<std::size_t>(count);
        offset += count;
        bytesRead_ += count;
    }
    return done;
}

std::int64_t ByteSource::tryReadAt(std::int64_t offset, std::span<std::byte> out) noexcept {
    try {
        return static_cast<std::int64_t>(readAt(offset, out));
    } catch (...) {
        failure_ = std::current_exception();
        return -1;
    }
}

void ByteSource::check() const {
    if (failure_) std::rethrow_exception(failure_);
    throwIfCancelled(stop_);
}

void ByteSource::progress() noexcept {
    bytesRead_ = 0;
    lastProgress_ = std::chrono::steady_clock::now();
}

void ByteSource::supervise() const {
    throwIfCancelled(stop_);
    if (bytesRead_ > allowance_.bytes)
        throw ReadError("it holds more than {0} MiB in a row without sound", allowance_.bytes >> 20);
    if (std::chrono::steady_clock::now() - lastProgress_ > allowance_.time)
        throw ReadError("it takes too long to read");
}

}  // namespace quillmere
