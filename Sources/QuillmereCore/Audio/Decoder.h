#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Audio/ReadError.h"

// Compressed and uncompressed audio files through FFmpeg's libraries. Internal to AudioIO.
//
// Files are opened by their contents, whatever their extension, but only as one of the containers a corpus
// may hold. Nothing is allocated from what a header claims, and nothing is printed.
// Any thread; nothing is shared between calls. All throw ReadError, and CancellationError when asked to stop.
namespace quillmere::Decoder {

struct Length {
    std::int64_t frames = 0;
    int sampleRate = 0;  // Hz
};

// Length without decoding: from the header where it is exact, else from the packets.
[[nodiscard]] Length measure(const std::filesystem::path& file, const AudioIO::ReadOptions& options);

// The next frames of a file: every channel holds at least that many samples. The buffers are reused.
struct Block {
    std::span<const std::vector<float>> channels;
    std::size_t frames = 0;
    int sampleRate = 0;  // Hz
};
using Sink = std::function<void(const Block& block)>;

struct Result {
    int sampleRate = 0;             // Hz
    std::int64_t frames = 0;        // delivered
    std::int64_t silentFrames = 0;  // among them, in place of lost ones
    bool isTruncated = false;       // the file ends before it should
};

// Decodes the whole file block by block. A change of the rate or of the channels ends it, and so does damage
// behind which nothing can be decoded. Throws also when nothing but damage is found, for damage in the middle
// of a lossless stream, and whatever sink throws.
[[nodiscard]] Result decode(const std::filesystem::path& file, const Sink& sink,
                            const AudioIO::ReadOptions& options);

}  // namespace quillmere::Decoder
