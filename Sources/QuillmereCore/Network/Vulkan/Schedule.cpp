#include "QuillmereCore/Network/Vulkan/Schedule.h"

#include <algorithm>

namespace quillmere::network::vulkan {
namespace {

bool conflict(const Access& a, const Access& b) {
    return a.buffer == b.buffer && a.begin < b.end && b.begin < a.end && (a.writes || b.writes);
}

}  // namespace

bool conflict(std::span<const Access> a, std::span<const Access> b) {
    return std::any_of(a.begin(), a.end(), [b](const Access& first) {
        return std::any_of(b.begin(), b.end(), [&](const Access& second) { return conflict(first, second); });
    });
}

std::vector<std::vector<std::size_t>> levelsOf(std::span<const std::vector<Access>> operations) {
    std::vector<std::vector<std::size_t>> levels;
    std::vector<std::size_t> levelOf(operations.size());
    for (std::size_t i = 0; i < operations.size(); ++i) {
        std::size_t level = 0;
        for (std::size_t earlier = 0; earlier < i; ++earlier) {
            if (levelOf[earlier] >= level && conflict(operations[earlier], operations[i]))
                level = levelOf[earlier] + 1;
        }
        levelOf[i] = level;
        if (level == levels.size()) levels.emplace_back();
        levels[level].push_back(i);
    }
    return levels;
}

}  // namespace quillmere::network::vulkan
