#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillmere {

// A priority queue of different numbers below a fixed size: bits in a tree of 64-bit words, each level saying
// which words of the one below are not 0. The lowest number is found by one step per level, of which 2^24
// numbers need four.
class RankQueue {
public:
    explicit RankQueue(std::size_t size) {
        do {
            size = (size + 63) / 64;
            levels_.emplace_back(size);
        } while (size > 1);
    }

    [[nodiscard]] bool isEmpty() const { return levels_.back().empty() || levels_.back().front() == 0; }

    // number: below the size.
    void insert(std::uint32_t number) {
        std::size_t at = number;
        for (std::vector<std::uint64_t>& level : levels_) {
            std::uint64_t& word = level[at / 64];
            const bool wasEmpty = word == 0;
            word |= std::uint64_t{1} << (at % 64);
            if (!wasEmpty) return;
            at /= 64;
        }
    }

    // Removes the lowest number. Not for an empty queue.
    std::uint32_t takeLowest() {
        std::size_t at = 0;
        for (std::size_t level = levels_.size(); level-- > 0;)
            at = at * 64 + static_cast<std::size_t>(std::countr_zero(levels_[level][at]));
        const auto lowest = static_cast<std::uint32_t>(at);
        for (std::vector<std::uint64_t>& level : levels_) {
            std::uint64_t& word = level[at / 64];
            word &= word - 1;
            if (word != 0) break;
            at /= 64;
        }
        return lowest;
    }

private:
    std::vector<std::vector<std::uint64_t>> levels_;  // from the numbers themselves to a single word
};

}  // namespace quillmere
