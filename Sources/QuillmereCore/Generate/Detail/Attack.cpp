#include "QuillmereCore/Generate/Detail/Attack.h"

#include <algorithm>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

Detail::AttackFrames Detail::AttackFrames::forHop(std::int64_t hop) {
    require(hop > 0, "Detail: hop must be positive");
    const auto frames = static_cast<std::size_t>(std::clamp<std::int64_t>(6 * 256 / hop, 2, 6));
    return {frames, frames};
}

void Detail::addCourse(std::span<const float> image, std::size_t columns, const AttackFrames& attack,
                       float share, std::span<float> course) {
    const std::size_t count = attack.count();
    require(columns >= count && course.size() % count == 0 && image.size() == course.size() / count * columns,
            "Detail: a size does not match its buffer");
    for (std::size_t band = 0; band < course.size() / count; ++band) {
        const std::span<const float> from = image.subspan(band * columns, count);
        const std::span<float> to = course.subspan(band * count, count);
        const float loudest = *std::ranges::max_element(from.first(attack.rise));
        for (std::size_t t = 0; t < count; ++t)
            to[t] += share * (from[t] - loudest);
    }
}

void Detail::applyAttack(std::span<float> image, std::size_t frames, const AttackFrames& attack,
                         std::span<const float> course, float amount) {
    const std::size_t count = attack.count();
    require(frames > 0 && image.size() % frames == 0 && course.size() == image.size() / frames * count,
            "Detail: a size does not match its buffer");
    for (std::size_t band = 0; band < image.size() / frames; ++band) {
        const std::span<float> row = image.subspan(band * frames, std::min(frames, count));
        const float loudest = *std::ranges::max_element(row.first(std::min(row.size(), attack.rise)));
        for (std::size_t t = 0; t < row.size(); ++t) {
            const float left = static_cast<float>(count - t) / static_cast<float>(attack.fade);
            const float share = amount * std::min(1.0F, left);
            row[t] = share * (loudest + course[band * count + t]) + (1.0F - share) * row[t];
        }
    }
}

}  // namespace quillmere
