#pragma once

#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace quillmere {

// The reason of the system call that has just failed.
[[nodiscard]] inline std::error_code lastError() {
    return {errno, std::generic_category()};
}

// An open file, closed on destruction; none when negative.
class Descriptor {
public:
    explicit Descriptor(int value = -1) : value_(value) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor&& other) noexcept : value_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }

    [[nodiscard]] int get() const noexcept { return value_; }
    [[nodiscard]] bool isOpen() const noexcept { return value_ >= 0; }
    [[nodiscard]] int release() noexcept { return std::exchange(value_, -1); }
    void reset(int value = -1) noexcept {
        if (value_ >= 0) ::close(value_);
        value_ = value;
    }

private:
    int value_;
};

}  // namespace quillmere
