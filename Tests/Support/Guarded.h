#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace quillmere::testing {

// An output buffer with marked memory before and after it.
class Guarded {
public:
    explicit Guarded(std::size_t size) : size_(size), memory_(size + 2 * margin, mark) {}

    [[nodiscard]] std::span<float> span() { return std::span(memory_).subspan(margin, size_); }
    [[nodiscard]] std::span<const float> span() const { return std::span(memory_).subspan(margin, size_); }

    // Nothing was written outside the buffer.
    [[nodiscard]] bool intact() const {
        const auto marked = [](float value) { return value == mark; };
        return std::all_of(memory_.begin(), memory_.begin() + margin, marked) &&
               std::all_of(memory_.end() - margin, memory_.end(), marked);
    }
    // Every value of the buffer was written.
    [[nodiscard]] bool filled() const { return std::ranges::find(span(), mark) == span().end(); }

private:
    static constexpr std::ptrdiff_t margin = 64;
    static constexpr float mark = -12345.678F;
    std::size_t size_;
    std::vector<float> memory_;
};

}  // namespace quillmere::testing
