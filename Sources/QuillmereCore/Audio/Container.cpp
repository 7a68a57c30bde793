#include "QuillmereCore/Audio/Container.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>

namespace quillmere::Container {
namespace {

// Beyond it a file is not made of chunks.
constexpr int mostChunks = 1024;

// Writers that cannot go back leave one of the largest numbers in place of a length.
constexpr std::int64_t smallestPlaceholder = 0x7FFF0000;

using Bytes = std::string_view;

std::uint64_t bigEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes)
        value = value << 8 | static_cast<unsigned char>(byte);
    return value;
}

std::uint64_t littleEndian(Bytes bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = bytes.size(); i > 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes[i - 1]);
    return value;
}

// Count bytes from offset on, or nothing where the file ends before.
std::optional<std::string> read(ByteSource& bytes, std::int64_t offset, std::size_t count) {
    std::string text(count, '\0');
    if (bytes.readAt(offset, std::as_writable_bytes(std::span(text))) < count) return std::nullopt;
    return text;
}

// The chunks of RIFF and IFF: a four-letter type, a 32-bit size, and padding to an even length.
struct ChunkStyle {
    bool isBigEndian;
    bool has64BitSizes;  // RF64: the true size is in a chunk of its own
    Bytes formatType;
    Bytes soundType;
};

struct Chunk {
    std::string type;
    std::int64_t size = 0;

    [[nodiscard]] bool isPlausible(std::int64_t space) const {
        const auto isPrintable = [](char c) { return c >= ' ' && c <= '~'; };
        return size <= space && std::all_of(type.begin(), type.end(), isPrintable);
    }
};

class ChunkWalk {
public:
    ChunkWalk(ByteSource& bytes, const ChunkStyle& style) : bytes_(bytes), style_(style) {}

    Outline run() {
        std::int64_t at = 12;
        for (int i = 0; i < mostChunks; ++i) {
            const std::optional<Chunk> chunk = chunkAt(at);
            if (!chunk) break;
            if (chunk->type == style_.soundType)
                return isFormatKnown_ ? sound(at + 8, chunk->size) : Outline();
            if (chunk->type == style_.formatType) isFormatKnown_ = true;
            if (chunk->type == "ds64") readLargeSize(at + 8);
            at = after(at, *chunk);
        }
        return {};
    }

private:
    static std::int64_t after(std::int64_t at, const Chunk& chunk) {
        return at + 8 + chunk.size + chunk.size % 2;
    }

    std::optional<Chunk> chunkAt(std::int64_t at) {
        const std::optional<std::string> header = read(bytes_, at, 8);
        if (!header) return std::nullopt;
        const Bytes size = Bytes(*header).substr(4);
        return Chunk{header->substr(0, 4),
                     static_cast<std::int64_t>(style_.isBigEndian ? bigEndian(size) : littleEndian(size))};
    }

    void readLargeSize(std::int64_t at) {
        const std::optional<std::string> sizes = read(bytes_, at, 16);
        if (sizes) largeSize_ = static_cast<std::int64_t>(littleEndian(Bytes(*sizes).substr(8)));
    }

    static Outline endingAt(std::int64_t end, bool isTruncated = false) {
        Outline outline;
        outline.soundEnd = end;
        outline.isTruncated = isTruncated;
        return outline;
    }

    Outline sound(std::int64_t begin, std::int64_t size) {
        if (style_.has64BitSizes) size = largeSize_;
        if (style_.isBigEndian && size == 0) return {};
        const std::int64_t space = bytes_.size() - begin;
        if (size <= 0 || size == std::numeric_limits<std::uint32_t>::max())
            return endingAt(begin + (chunksFollow(begin) ? 0 : space));
        if (size > space) return endingAt(begin + space, size < smallestPlaceholder);
        return endingAt(begin + size);
    }

    // Whether everything from there on reads as chunks, up to the end or to mere zeros: then it is no sound.
    bool chunksFollow(std::int64_t at) {
        for (int i = 0; i < mostChunks; ++i) {
            const std::optional<Chunk> chunk = chunkAt(at);
            const bool isEnd = !chunk || (chunk->size == 0 && chunk->type == Bytes("\0\0\0\0", 4));
            if (isEnd) return i > 0;
            if (!chunk->isPlausible(bytes_.size() - at - 8)) return false;
            at = after(at, *chunk);
        }
        return false;
    }

    ByteSource& bytes_;
    ChunkStyle style_;
    bool isFormatKnown_ = false;
    std::int64_t largeSize_ = 0;
};

// Chunks are a four-letter type and a 64-bit size; see Apple's Core Audio Format specification.
Outline outlineOfCAF(ByteSource& bytes) {
    Outline outline;
    std::int64_t at = 8;
    for (int i = 0; i < mostChunks; ++i) {
        const std::optional<std::string> header = read(bytes, at, 12);
        if (!header) break;
        const Bytes type = Bytes(*header).substr(0, 4);
        const auto size = static_cast<std::int64_t>(bigEndian(Bytes(*header).substr(4)));
        at += 12;
        if (size < 0) break;  // audio data up to the end of the file
        if (type == "pakt") {
            const std::optional<std::string> table = read(bytes, at, 24);
            if (!table) break;
            const auto valid = static_cast<std::int64_t>(bigEndian(Bytes(*table).substr(8, 8)));
            const auto priming = static_cast<std::int32_t>(bigEndian(Bytes(*table).substr(16, 4)));
            if (valid > 0) outline.packetTable = PacketTable{valid, std::max(priming, 0)};
        }
        const std::int64_t space = bytes.size() - at;
        if (type == "data" && size > space) outline.isTruncated = size < smallestPlaceholder;
        if (size > space) break;
        at += size;
    }
    return outline;
}

}  // namespace

Outline outlineOf(ByteSource& bytes) {
    const std::optional<std::string> start = read(bytes, 0, 12);
    if (!start) return {};
    const Bytes type = Bytes(*start).substr(0, 4);
    const Bytes form = Bytes(*start).substr(8);
    if (type == "caff") return outlineOfCAF(bytes);
    const bool isLarge = type == "RF64" || type == "BW64";
    if (form == "WAVE" && (type == "RIFF" || type == "RIFX" || isLarge))
        return ChunkWalk(bytes, {type == "RIFX", isLarge, "fmt ", "data"}).run();
    if (type == "FORM" && (form == "AIFF" || form == "AIFC"))
        return ChunkWalk(bytes, {true, false, "COMM", "SSND"}).run();
    return {};
}

}  // namespace quillmere::Container
