#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

// Compressed and uncompressed audio files through FFmpeg's libraries. Internal to AudioIO.
//
// Files are opened by their contents, whatever their extension, but only as one of the containers a corpus
// may hold. Nothing is allocated from what a header claims, and nothing is printed.
// Any thread; nothing is shared between calls.
namespace quillmere::Decoder {

// Why a file cannot be used, as a phrase for the user.
class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Length {
    std::int64_t frames = 0;
    int sampleRate = 0;  // Hz
};

// Length without decoding: from the header where it is exact, else from the packets. Throws Error.
[[nodiscard]] Length measure(const std::filesystem::path& file);

// Takes the next frames of a file: every channel holds at least that many samples. The buffers are reused.
using Sink = std::function<void(std::span<const std::vector<float>> channels, std::size_t frames)>;

struct Result {
    int sampleRate = 0;                // Hz
    std::int64_t padding = 0;          // frames at the end of the delivered ones that the encoder made up
    std::optional<std::string> error;  // the first thing that went wrong; frames may have come all the same
};

// Decodes the whole file block by block. A change of the rate or of the channels ends it. Throws Error when
// the file cannot be opened, and whatever sink throws.
[[nodiscard]] Result decode(const std::filesystem::path& file, const Sink& sink);

}  // namespace quillmere::Decoder
