#include "QuillmereCore/Util/Failure.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

namespace quillmere {

void fatal(std::string_view message) {
    std::fprintf(stderr, "quillmere: fatal: %.*s\n", static_cast<int>(message.size()), message.data());
    std::abort();
}

long long checkedMultiply(long long a, long long b) {
    long long product = 0;
    require(!__builtin_mul_overflow(a, b, &product), "arithmetic overflow in a size");
    return product;
}

long long checkedAdd(long long a, long long b) {
    long long sum = 0;
    require(!__builtin_add_overflow(a, b, &sum), "arithmetic overflow in a size");
    return sum;
}

long long roundedCount(double value) {
    const double rounded = std::round(value);
    // 2^63 is exact in double; the largest representable count is the double just below it.
    constexpr double limit = 9223372036854775808.0;
    require(rounded >= -limit && rounded < limit, "a count is not finite or out of range");
    return static_cast<long long>(rounded);
}

Failure::Failure(Message message)
    : std::runtime_error(message.english()), message_(std::make_shared<const Message>(std::move(message))) {}

FileError::FileError(const std::filesystem::path& file, std::error_code reason)
    : FileError(file, reason, Message("{0}: {1}", file, reason)) {}

FileError::FileError(std::filesystem::path file, std::error_code reason, Message message)
    : Failure(std::move(message)), file_(std::move(file)), reason_(reason) {}

}  // namespace quillmere
