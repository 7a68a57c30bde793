#include "QuillmereCore/Util/Message.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <ostream>

#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

// Text with what show makes of the numbers of its places. A place without an argument stays as it is.
template <typename Show>
std::string filled(std::string_view pattern, std::size_t arguments, const Show& show) {
    std::string text;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        const bool isPlace = pattern[at] == '{' && at + 2 < pattern.size() && pattern[at + 2] == '}' &&
                             pattern[at + 1] >= '0' && pattern[at + 1] <= '9';
        const auto number = isPlace ? static_cast<std::size_t>(pattern[at + 1] - '0') : arguments;
        if (number >= arguments) {
            text += pattern[at];
            continue;
        }
        text += show(number);
        at += 2;
    }
    return text;
}

// What the system says of the usual trouble with files and memory, for the catalogues.
constexpr std::array systemWords{
    std::pair{EPERM, translatable("Operation not permitted")},
    std::pair{ENOENT, translatable("No such file or directory")},
    std::pair{EIO, translatable("Input/output error")},
    std::pair{ENOMEM, translatable("Cannot allocate memory")},
    std::pair{EACCES, translatable("Permission denied")},
    std::pair{EBUSY, translatable("Device or resource busy")},
    std::pair{EEXIST, translatable("File exists")},
    std::pair{EXDEV, translatable("Invalid cross-device link")},
    std::pair{ENODEV, translatable("No such device")},
    std::pair{ENOTDIR, translatable("Not a directory")},
    std::pair{EISDIR, translatable("Is a directory")},
    std::pair{EINVAL, translatable("Invalid argument")},
    std::pair{ENFILE, translatable("Too many open files in system")},
    std::pair{EMFILE, translatable("Too many open files")},
    std::pair{ETXTBSY, translatable("Text file busy")},
    std::pair{EFBIG, translatable("File too large")},
    std::pair{ENOSPC, translatable("No space left on device")},
    std::pair{EROFS, translatable("Read-only file system")},
    std::pair{EMLINK, translatable("Too many links")},
    std::pair{ENAMETOOLONG, translatable("File name too long")},
    std::pair{ENOSYS, translatable("Function not implemented")},
    std::pair{ENOTEMPTY, translatable("Directory not empty")},
    std::pair{ELOOP, translatable("Too many levels of symbolic links")},
    std::pair{EOVERFLOW, translatable("Value too large for defined data type")},
    std::pair{ENOTSUP, translatable("Operation not supported")},
    std::pair{ETIMEDOUT, translatable("Connection timed out")},
    std::pair{EHOSTDOWN, translatable("Host is down")},
    std::pair{ESTALE, translatable("Stale file handle")},
    std::pair{EDQUOT, translatable("Disk quota exceeded")},
};

// Never in another language, unlike std::error_code::message(). Null for a number without words.
const char* wordsFor(int number) {
    for (const auto& [known, words] : systemWords) {
        if (known == number) return words;
    }
    return ::strerrordesc_np(number);
}

}  // namespace

Message::Message(std::string_view singular, std::string_view plural, std::int64_t count,
                 std::vector<Message> arguments)
    : singular_(singular), plural_(plural), count_(count), arguments_(std::move(arguments)) {
    const bool isOne = plural_.empty() || count_ == 1;
    english_ = filled(isOne ? singular_ : plural_, arguments_.size(),
                      [&](std::size_t number) { return arguments_[number].english(); });
}

Message Message::verbatim(std::string text) {
    Message message;
    message.english_ = std::move(text);
    return message;
}

Message Message::system(const std::error_code& error) {
    const bool isErrno =
        error.category() == std::generic_category() || error.category() == std::system_category();
    const char* const words = isErrno ? wordsFor(error.value()) : nullptr;
    return words != nullptr ? fromTable(words) : verbatim(error.message());
}

Message Message::of(const std::filesystem::path& path) {
    return verbatim(Text::utf8(path));
}

std::string Message::translated(Lookup lookup) const {
    if (singular_.empty()) return english_;
    const char* const plural = plural_.empty() ? nullptr : plural_.c_str();
    const char* const pattern = lookup(singular_.c_str(), plural, static_cast<std::uint64_t>(count_));
    return filled(pattern, arguments_.size(),
                  [&](std::size_t number) { return arguments_[number].translated(lookup); });
}

std::ostream& operator<<(std::ostream& out, const Message& message) {
    return out << message.english();
}

}  // namespace quillmere
