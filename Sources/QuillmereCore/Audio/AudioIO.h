#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

// Sample formats of written files, each mono, little-endian RIFF/WAVE.
enum class OutputFormat {
    wav16,       // 16-bit integer PCM
    wav24,       // 24-bit integer PCM, three packed bytes
    wav32float,  // IEEE single precision
};

inline constexpr std::array<OutputFormat, 3> allOutputFormats{OutputFormat::wav16, OutputFormat::wav24,
                                                              OutputFormat::wav32float};

[[nodiscard]] std::string_view rawValue(OutputFormat format);  // "wav16", "wav24", "wav32float"
[[nodiscard]] std::string_view label(OutputFormat format);     // "WAV 16-bit", ...
[[nodiscard]] int bitDepth(OutputFormat format);               // 16, 24 or 32
// The format with that raw value, matched exactly; nothing for any other text.
[[nodiscard]] std::optional<OutputFormat> outputFormat(std::string_view rawValue);

// Trouble with an audio file the user chose. what() names the file, not its folder.
class AudioIOError : public Failure {
public:
    enum class Kind { unreadable, empty };
    static AudioIOError unreadable(const std::filesystem::path& file, const std::string& reason);
    static AudioIOError empty(const std::filesystem::path& file);

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    [[nodiscard]] const std::filesystem::path& file() const noexcept { return file_; }

private:
    AudioIOError(Kind kind, std::filesystem::path file, const std::string& message);
    Kind kind_;
    std::filesystem::path file_;
};

// The one place where the system touches audio files. Stateless; every function may run on any thread.
namespace AudioIO {

struct MonoAudio {
    std::vector<float> samples;  // nominally within +-1
    double sampleRate = 0;       // Hz, the file's own
};

struct AudioInfo {
    double duration = 0;    // seconds
    double sampleRate = 0;  // Hz
};

// The file-name extensions, in lower case without the dot, that a corpus may hold.
[[nodiscard]] const std::set<std::string, std::less<>>& supportedExtensions();

// Decodes a whole file and averages its channels. The format is found by the contents, not by the name. A
// file that is damaged after some good frames gives those. Throws AudioIOError: empty for a file without
// bytes or frames, unreadable for everything else.
[[nodiscard]] MonoAudio readMono(const std::filesystem::path& file);

// Length and rate without decoding, as readMono would find them but for damage inside; nothing when the file
// cannot be opened. A file without frames lasts 0 seconds.
[[nodiscard]] std::optional<AudioInfo> info(const std::filesystem::path& file);

// Plain mean of the channels: sum in channel order, then one multiplication by 1 / channels in single
// precision (none for one channel). Each channel holds frames samples; no channels give frames zeros.
[[nodiscard]] std::vector<float> mixToMono(std::span<const std::vector<float>> channels, std::size_t frames);

// Converts the sample rate, band-limited, to about count * to / from samples in place (no delay). Rates
// closer than 0.5 Hz, an empty input and a conversion that cannot be set up (rates or a length that make no
// sense, too little memory) give the input unchanged. Rates in Hz.
[[nodiscard]] std::vector<float> resample(std::vector<float> samples, double from, double to);

// Writes a WAV file, replacing an existing one atomically. Values beyond +-1 saturate in the integer
// formats, NaN becomes silence there; float samples are stored unchanged. Requires sampleRate > 0, in Hz.
// Throws FileError, also for more than 4 GiB, and AudioIOError when memory is short.
void write(std::span<const float> samples, const std::filesystem::path& file, int sampleRate,
           OutputFormat format);

// As write, but never replaces: false, with nothing written, when the name is already taken.
[[nodiscard]] bool writeNew(std::span<const float> samples, const std::filesystem::path& file, int sampleRate,
                            OutputFormat format);

}  // namespace AudioIO
}  // namespace quillmere
