#include "QuillmereCore/Audio/RIFFChunk.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Audio/ByteSource.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::RIFFChunk {
namespace {

constexpr std::size_t headerBytes = 8;    // of a chunk: its kind and its length
constexpr std::size_t prefaceBytes = 12;  // "RIFF", length, "WAVE"
constexpr int mostChunks = 1024;          // beyond it a file is not made of chunks

void copyTo(std::span<std::byte> place, std::string_view text) {
    std::ranges::copy(std::as_bytes(std::span(text)), place.begin());
}

// Four bytes, little-endian.
void store(std::span<std::byte> place, std::uint64_t value) {
    for (unsigned i = 0; i < 4; ++i)
        place[i] = static_cast<std::byte>(value >> (8 * i));
}

std::int64_t lengthIn(std::string_view header) {
    std::int64_t value = 0;
    for (unsigned i = 0; i < 4; ++i)
        value |= std::int64_t{static_cast<unsigned char>(header[4 + i])} << (8 * i);
    return value;
}

// count bytes from offset on, fewer where the file ends.
std::string textAt(ByteSource& bytes, std::int64_t offset, std::size_t count) {
    std::string text(count, '\0');
    text.resize(bytes.readAt(offset, std::as_writable_bytes(std::span(text))));
    return text;
}

std::optional<std::string> findIn(ByteSource& bytes, std::string_view id) {
    const std::string preface = textAt(bytes, 0, prefaceBytes);
    if (preface.size() < prefaceBytes || !preface.starts_with("RIFF") || !preface.ends_with("WAVE"))
        return std::nullopt;
    std::int64_t at = prefaceBytes;
    for (int i = 0; i < mostChunks; ++i) {
        const std::string header = textAt(bytes, at, headerBytes);
        if (header.size() < headerBytes) return std::nullopt;
        const std::int64_t length = lengthIn(header);
        at += static_cast<std::int64_t>(headerBytes);
        if (header.starts_with(id)) {
            if (length > static_cast<std::int64_t>(mostBytes) || length > bytes.size() - at)
                throw ReadError("its chunk \"{0}\" is cut off", id);
            return textAt(bytes, at, static_cast<std::size_t>(length));
        }
        at += length + length % 2;
    }
    return std::nullopt;
}

}  // namespace

bool append(std::vector<std::byte>& wav, std::string_view id, std::string_view content) {
    require(id.size() == 4 && wav.size() >= prefaceBytes && wav.size() % 2 == 0,
            "a chunk needs a kind of four characters and a whole file to stand in");
    const std::uint64_t size = wav.size() + headerBytes + content.size() + content.size() % 2;
    if (size - headerBytes > std::numeric_limits<std::uint32_t>::max()) return false;
    const std::size_t start = wav.size();
    wav.resize(size);
    const std::span<std::byte> chunk = std::span(wav).subspan(start);
    copyTo(chunk, id);
    store(chunk.subspan(4, 4), content.size());
    copyTo(chunk.subspan(headerBytes), content);
    store(std::span(wav).subspan(4, 4), size - headerBytes);
    return true;
}

std::optional<std::string> find(const std::filesystem::path& file, std::string_view id) {
    try {
        ByteSource bytes(file, true, {}, {});
        return findIn(bytes, id);
    } catch (const ReadError& error) {
        throw AudioIOError::unreadable(file, error.phrase(), error.isSystemTrouble());
    }
}

}  // namespace quillmere::RIFFChunk
