#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace quillmere {

// Why an audio file cannot be used, as a phrase for the user. Internal to AudioIO.
class ReadError : public std::runtime_error {
public:
    explicit ReadError(const std::string& phrase) : std::runtime_error(phrase) {}
    // The system refused something, in its own words.
    explicit ReadError(std::error_code reason);

    // Whether the system is short of something or broken, so that a sound file may be lost for no fault of
    // its own.
    [[nodiscard]] bool isSystemTrouble() const noexcept { return isSystemTrouble_; }

private:
    bool isSystemTrouble_ = false;
};

// Whether a refusal says nothing of the file that was asked for: descriptors or memory are short, or a disk
// cannot be read.
[[nodiscard]] bool isSystemTrouble(std::error_code reason) noexcept;

}  // namespace quillmere
