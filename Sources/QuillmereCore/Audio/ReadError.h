#pragma once

#include <memory>
#include <stdexcept>
#include <system_error>

#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// Why an audio file cannot be used, as a phrase for the user. Internal to AudioIO.
class ReadError : public std::runtime_error {
public:
    explicit ReadError(Message phrase)
        : std::runtime_error(phrase.english()), phrase_(std::make_shared<const Message>(std::move(phrase))) {}
    template <typename... Arguments>
    explicit ReadError(Pattern<sizeof...(Arguments)> pattern, const Arguments&... arguments)
        : ReadError(Message(pattern, arguments...)) {}
    // The system refused something, in its own words.
    explicit ReadError(std::error_code reason);
    // A move is a copy, which leaves its source a phrase, too.
    ReadError(const ReadError&) = default;
    ReadError& operator=(const ReadError&) = default;

    [[nodiscard]] const Message& phrase() const noexcept { return *phrase_; }

    // Whether the system is short of something or broken, so that a sound file may be lost for no fault of
    // its own.
    [[nodiscard]] bool isSystemTrouble() const noexcept { return isSystemTrouble_; }

private:
    std::shared_ptr<const Message> phrase_;  // shared, because an exception's copy must not fail
    bool isSystemTrouble_ = false;
};

// Whether a refusal says nothing of the file that was asked for: descriptors or memory are short, or a disk
// cannot be read.
[[nodiscard]] bool isSystemTrouble(std::error_code reason) noexcept;

}  // namespace quillmere
