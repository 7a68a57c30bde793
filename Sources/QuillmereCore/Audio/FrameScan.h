#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "QuillmereCore/Audio/ByteSource.h"

// Holes in streams of MP3 and AAC frames, which follow one another without a table that says where each one
// begins. A decoder that meets a hole closes it; here its length is found. Internal to AudioIO.
namespace quillmere::FrameScan {

enum class Stream {
    mp3,   // MPEG audio of any layer
    adts,  // AAC
};

// Frames that are gone.
struct Loss {
    std::int64_t at = 0;      // where the next frame begins, in bytes of the remaining parts put together
    std::int64_t frames = 0;  // about how many: exact where all frames have one length
};

struct Findings {
    std::vector<ByteSource::Range> parts;  // the file without what lies between frames
    std::vector<Loss> losses;              // in ascending order
    bool isTruncated = false;              // the last frame is not whole, or no frames are what should be
    // Samples that are meant to be heard, as encoders of MP3 note it: a decoder that counts what it gets
    // would miss the end by what is lost. Only of a stream with losses and its end.
    std::optional<std::int64_t> samples;
};

// Walks from frame to frame. Tags between frames are taken out of the parts, but are no loss. Nothing when no
// frames are found. Throws as ByteSource does, and ReadError when more is lost than is there.
[[nodiscard]] std::optional<Findings> scan(ByteSource& bytes, Stream stream);

}  // namespace quillmere::FrameScan
