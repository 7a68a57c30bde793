#pragma once

#include <cstddef>

#include "QuillmereCore/Network/Plan.h"

namespace quillmere::network::cpu {

// The convolutional layers between the network's first and last layer are of two kinds:
//   Outer layers lie towards the image: many pixels, few channels. Each image is worked through from end to
//     end, a chunk of tiles at a time, so that all matrices of a chunk stay in the second-level cache. The
//     transformed weights are small and used again for every chunk.
//   Inner layers lie towards the latent vector: few pixels, many channels. They are worked through in stages:
//     the tiles of all images are transformed, then multiplied, then turned into activations or gradients,
//     each stage for the whole batch before the next. Their weights are what is large; in stages each is read
//     once.
// Every inner layer lies deeper than every outer one.
[[nodiscard]] bool isInner(const ConvLayer& layer);

// Channel counts are multiples of this; those of the deepest layer also of widthMultiple.
inline constexpr int channelMultiple = 8;
// Matrix widths and flat arrays are padded to multiples of this.
inline constexpr int widthMultiple = 16;

// Rows and columns of lo in one tile, and products per tile (Kernels.h).
inline constexpr int tileExtent = 3;
inline constexpr int transformPlanes = 16;

// The columns of transformed weights lie in panels of this many (the last one may be narrower), so that a
// product reads them from end to end.
inline constexpr int panelWidth = 48;

[[nodiscard]] constexpr int roundUp(int value, int multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

// Floats from one of the planes of a transformed matrix to the next: planes that lie a multiple of 4096 bytes
// apart would all fall on the same few places of the cache.
[[nodiscard]] constexpr std::size_t planeStride(std::size_t size) {
    return (size + 1023) / 1024 * 1024 + 64;
}

// Sizes of one layer's tiles and matrices.
struct TileGeometry {
    TileGeometry() = default;
    TileGeometry(const ConvLayer& layer, int batch);

    [[nodiscard]] std::size_t tilesPerImage() const { return static_cast<std::size_t>(tileRows) * tileCols; }
    [[nodiscard]] std::size_t batchTiles() const { return static_cast<std::size_t>(batch) * tilesPerImage(); }
    // Largest number of tiles in a chunk of an outer layer.
    [[nodiscard]] std::size_t chunkTiles() const { return static_cast<std::size_t>(rowsPerChunk) * tileCols; }
    // Floats from one plane of transformed weights to the next, [loChannels][groupChannels] or, for down,
    // [groupChannels][loChannelsPadded].
    [[nodiscard]] std::size_t weightPlane() const {
        return planeStride(static_cast<std::size_t>(loChannels) * groupChannels);
    }
    [[nodiscard]] std::size_t downPlane() const {
        return planeStride(static_cast<std::size_t>(groupChannels) * loChannelsPadded);
    }

    // Floats of scratch for weightGradientColumns.
    [[nodiscard]] std::size_t gradientScratch() const {
        return transformPlanes * planeStride(static_cast<std::size_t>(loChannels) * panelWidth);
    }

    int batch = 0;
    int hiChannels = 0, loChannels = 0;
    int loHeight = 0, loWidth = 0;
    int tileRows = 0, tileCols = 0;
    int groupChannels = 0;     // 4 * hiChannels: [row in pair][column in pair][channel]
    int loChannelsPadded = 0;  // to widthMultiple
    int rowsPerChunk = 0;      // tile rows of one image in a chunk; of an inner layer, all
    bool inner = false;
};

}  // namespace quillmere::network::cpu
