#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <stop_token>
#include <vector>

#include "QuillmereCore/Generate/LatentSampler.h"

namespace quillmere {

// A place on a map of the corpus, in units of the latent vectors.
struct MapPlace {
    double x = 0, y = 0;

    friend bool operator==(const MapPlace&, const MapPlace&) = default;
};

// The corpus in a plane: its latent vectors along the two directions in which they differ most.
//
//   1. Mean and covariance of the latent vectors, summed clip by clip in double precision.
//   2. The eigenvectors of the covariance by Jacobi's method: rotations of every pair of rows in the order
//      (0,1), (0,2), ..., until nothing is left beside the diagonal. x is along the one with the greatest
//      eigenvalue, y along the next; of equal ones the first comes first.
//   3. Each is turned so that its component of the greatest magnitude, the first of equals, is positive.
//   4. The place of a clip is the product of its difference to the mean with both.
//
// All of this is basic arithmetic and square roots in a fixed order, so every machine gives the same places,
// bit for bit. Immutable; any thread.
class LatentMap {
public:
    // latents: at least dim finite values each; the values from dim on do not count. For 64 dimensions and
    // 20,000 clips a moment; the time grows with the third power of dim. Throws CancellationError.
    LatentMap(std::span<const std::vector<float>> latents, std::size_t dim, const std::stop_token& stop = {});

    // Of each clip, in their order.
    [[nodiscard]] std::span<const MapPlace> places() const { return places_; }
    // Where another latent vector, of dim finite values at least, lies on the map.
    [[nodiscard]] MapPlace placeOf(std::span<const float> latent) const;
    // Which part of all variance is along x, and along y; 0 where the clips do not differ.
    [[nodiscard]] std::array<double, 2> shares() const { return shares_; }
    // The two directions, [dim] each.
    [[nodiscard]] const std::array<std::vector<double>, 2>& directions() const { return directions_; }

    // What a place of the map is a blend of: the four nearest clips, nearest first, of equally near ones the
    // first; fewer where there are fewer, or where the distance is that of the fifth. The weight of a clip at
    // distance d is (1/d - 1/r)^2, r being the distance of the fifth clip, over the sum of these; without a
    // fifth clip it is 1/d^2. So the blend moves without leaps when the place does, and the place of a clip
    // is that clip; several clips at one place share it. At least one clip.
    [[nodiscard]] std::vector<LatentDraw::Source> blendAt(MapPlace place) const;

private:
    std::vector<double> mean_;  // of the latent vectors, [dim]
    std::vector<MapPlace> places_;
    std::array<double, 2> shares_{};
    std::array<std::vector<double>, 2> directions_;
};

}  // namespace quillmere
