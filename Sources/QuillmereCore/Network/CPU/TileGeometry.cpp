#include "QuillmereCore/Network/CPU/TileGeometry.h"

#include <algorithm>

namespace quillmere::network::cpu {
namespace {

// About this many tiles at a time keep all planes of a chunk in the second-level cache.
constexpr int goodChunk = 64;

}  // namespace

bool isInner(const ConvLayer& layer) {
    // With fewer channels the tiles of the whole batch would not fit the cache.
    return layer.hiChannels >= 96;
}

TileGeometry::TileGeometry(const ConvLayer& layer, int batchSize)
    : batch(batchSize),
      hiChannels(layer.hiChannels),
      loChannels(layer.loChannels),
      loHeight(layer.loHeight),
      loWidth(layer.loWidth),
      tileRows((layer.loHeight + tileExtent - 1) / tileExtent),
      tileCols((layer.loWidth + tileExtent - 1) / tileExtent),
      groupChannels(4 * layer.hiChannels),
      loChannelsPadded(roundUp(layer.loChannels, widthMultiple)),
      inner(isInner(layer)) {
    rowsPerChunk = inner ? tileRows : std::min(tileRows, std::max(1, goodChunk / tileCols));
}

}  // namespace quillmere::network::cpu
