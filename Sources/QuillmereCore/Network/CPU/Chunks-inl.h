// The tiles that are transformed together, and their matrices. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_CHUNKS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_CHUNKS_INL_H_
#undef QUILLMERE_NETWORK_CHUNKS_INL_H_
#else
#define QUILLMERE_NETWORK_CHUNKS_INL_H_
#endif

#include <algorithm>

#include "QuillmereCore/Network/CPU/Kernels.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"
#include "QuillmereCore/Network/CPU/TileGeometry.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

inline constexpr int planes = transformPlanes;

// The tiles that are worked through together: of an outer layer some tile rows of one image, of an inner
// layer all tiles of all images in the call. Tile t of a chunk is row t of its matrices.
struct Chunk {
    int firstImage, lastImage;  // several images only with all their tile rows
    int firstRow, lastRow;      // tile rows
    int tileCols;

    [[nodiscard]] int rows() const { return lastRow - firstRow; }
    [[nodiscard]] int tiles() const { return (lastImage - firstImage) * rows() * tileCols; }
};

template <class Body>
HWY_INLINE void forEachChunk(const LayerCall& call, Body body) {
    const TileGeometry& g = call.geometry;
    if (g.inner) {
        body(Chunk{call.firstImage, call.lastImage, 0, g.tileRows, g.tileCols});
        return;
    }
    for (int n = call.firstImage; n < call.lastImage; ++n) {
        for (int row = 0; row < g.tileRows; row += g.rowsPerChunk) {
            body(Chunk{n, n + 1, row, std::min(g.tileRows, row + g.rowsPerChunk), g.tileCols});
        }
    }
}

// body(first tile of the row within the chunk, image, tile row)
template <class Body>
HWY_INLINE void forEachTileRow(const Chunk& chunk, Body body) {
    std::size_t tile = 0;
    for (int n = chunk.firstImage; n < chunk.lastImage; ++n) {
        for (int row = chunk.firstRow; row < chunk.lastRow; ++row, tile += chunk.tileCols)
            body(tile, n, row);
    }
}

// A matrix [planes][tiles][width] of transformed tiles or of products: a chunk's own scratch or its rows in
// the matrices of the whole batch.
struct TileMatrix {
    float* data;
    std::size_t plane;  // floats from one plane to the next
    std::size_t width;
    [[nodiscard]] float* row(std::size_t tile) const { return data + tile * width; }
    [[nodiscard]] float* ofPlane(int p) const { return data + static_cast<std::size_t>(p) * plane; }
};

HWY_INLINE TileMatrix tileMatrix(const LayerCall& call, const Chunk& chunk, float* scratch, float* ofBatch,
                                 int width) {
    const auto columns = static_cast<std::size_t>(width);
    if (!ofBatch) return {scratch, planeStride(chunk.tiles() * columns), columns};
    const std::size_t firstTile = chunk.firstImage * call.geometry.tilesPerImage();
    return {ofBatch + firstTile * columns, planeStride(call.geometry.batchTiles() * columns), columns};
}

HWY_INLINE TileMatrix hiTiles(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.V, call.batchTiles.V, call.geometry.groupChannels);
}
HWY_INLINE TileMatrix loTiles(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.Z, call.batchTiles.Z, call.geometry.loChannels);
}
HWY_INLINE TileMatrix hiProducts(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.M, call.batchTiles.M, call.geometry.groupChannels);
}
HWY_INLINE TileMatrix loProducts(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.M, call.batchTiles.M, call.geometry.loChannelsPadded);
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
