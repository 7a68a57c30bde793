#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace quillmere::network::vulkan {

// A range of bytes of a buffer that an operation reads or writes.
struct Access {
    std::uint32_t buffer = 0;
    std::uint64_t begin = 0, end = 0;
    bool writes = false;
};

// Whether two operations with these accesses must keep their order: ranges overlap, and one of them writes.
[[nodiscard]] bool conflict(std::span<const Access> a, std::span<const Access> b);

// The order in which operations run, given as one list of accesses each in the order in which they were
// stated. The operations of one level do not conflict and need no barrier among them; between two levels
// there is one barrier. No order that respects the conflicts has fewer levels: there is a chain of
// conflicting operations as long as there are levels. Inside a level the stated order is kept.
[[nodiscard]] std::vector<std::vector<std::size_t>> levelsOf(std::span<const std::vector<Access>> operations);

}  // namespace quillmere::network::vulkan
