#pragma once

#include <cstdint>
#include <optional>

#include "QuillmereCore/Audio/ByteSource.h"

// What the chunks of WAV, AIFF and CAF files say of where the sound is. Internal to AudioIO.
namespace quillmere::Container {

// A CAF file's packet table header: how many frames are meant to be heard, and how many come before them.
struct PacketTable {
    std::int64_t validFrames = 0;
    std::int64_t primingFrames = 0;
};

struct Outline {
    // Where the sound ends, in bytes, in WAV and AIFF files of the usual order: there is no need to look
    // behind it. A WAV file whose sound has no stated length reaches to its end, unless tags follow at once.
    std::optional<std::int64_t> soundEnd;
    bool isTruncated = false;                // the file is shorter than it says
    std::optional<PacketTable> packetTable;  // of CAF files
};

// Empty for files of other kinds. Throws as ByteSource does.
[[nodiscard]] Outline outlineOf(ByteSource& bytes);

}  // namespace quillmere::Container
