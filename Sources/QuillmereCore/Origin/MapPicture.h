#pragma once

#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Origin/LatentMap.h"
#include "QuillmereCore/Picture/Drawing.h"

namespace quillmere {

// The map with a scale on both axes, a dot for each clip and the names for which there is room, earlier clips
// first; every dot has its name and place as its title. names: of the clips, in their order; title: above the
// picture. Any thread.
[[nodiscard]] Drawing mapPicture(const LatentMap& map, std::span<const std::string> names,
                                 const std::string& title);

// Numbers of a scale: multiples of 1, 2 or 5 times a power of ten within the range, about count of them.
[[nodiscard]] std::vector<double> scaleMarks(double low, double high, int count);
// Such a number with the decimals that its distance to the next one needs.
[[nodiscard]] std::string scaleText(double mark, double distance);

}  // namespace quillmere
