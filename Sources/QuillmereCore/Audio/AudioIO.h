#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Message.h"

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
    static AudioIOError unreadable(const std::filesystem::path& file, const Message& reason,
                                   bool isSystemTrouble = false);
    static AudioIOError empty(const std::filesystem::path& file);

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    [[nodiscard]] const std::filesystem::path& file() const noexcept { return file_; }
    // Whether descriptors or memory are short or a disk cannot be read: the file itself may be sound, and to
    // go on without it would be wrong.
    [[nodiscard]] bool isSystemTrouble() const noexcept { return isSystemTrouble_; }

private:
    AudioIOError(Kind kind, std::filesystem::path file, Message message);
    Kind kind_;
    std::filesystem::path file_;
    bool isSystemTrouble_ = false;
};

// The one place where the system touches audio files. Stateless; every function may run on any thread.
namespace AudioIO {

// What is missing from a file that can be read all the same.
struct Damage {
    bool isTruncated = false;  // it ends, or changes its format, before it should; what comes before is read
    double silentSeconds = 0;  // of lost frames, in whose place silence keeps the time

    [[nodiscard]] bool any() const noexcept { return isTruncated || silentSeconds > 0; }
};

struct MonoAudio {
    std::vector<float> samples;  // nominally within +-1
    double sampleRate = 0;       // Hz, the file's own
    Damage damage;
};

struct AudioInfo {
    double duration = 0;    // seconds
    double sampleRate = 0;  // Hz
};

// The file-name extensions, in lower case without the dot, that a corpus may hold.
[[nodiscard]] const std::set<std::string, std::less<>>& supportedExtensions();

struct ReadOptions {
    std::stop_token stop;      // asked for every few kilobytes; then CancellationError is thrown
    bool followsLinks = true;  // otherwise a symbolic link is unreadable
};

// Decodes a whole file and averages its channels. The format is found by the contents, not by the name.
// A file that ends too early gives what is there; silence stands in for lost frames of MP3 and AAC streams,
// while a lossless file with a hole is unreadable. Throws AudioIOError: empty for a file without bytes or
// frames, unreadable for everything else: also for what is no regular file, and for one of which 64 MiB in a
// row give no sound.
[[nodiscard]] MonoAudio readMono(const std::filesystem::path& file);
[[nodiscard]] MonoAudio readMono(const std::filesystem::path& file, const ReadOptions& options);

// What became of a file that was read in pieces.
struct StreamedAudio {
    std::int64_t frames = 0;  // before the conversion
    double sampleRate = 0;    // Hz, the file's own
    Damage damage;
};

// Takes the next samples; they are valid during the call only.
using SampleSink = std::function<void(std::span<const float> samples)>;

// As readMono followed by resample, sample for sample, but piece by piece and so in little memory however
// long the file is. Sets limits that no sample meets: unreadable is also a file of more than six hours, and
// one whose rate is not within a hundredth and a hundredfold of rate. rate in Hz, > 0. Throws what sink
// throws.
StreamedAudio stream(const std::filesystem::path& file, double rate, const SampleSink& sink,
                     const ReadOptions& options = {});

// Length and rate without decoding, as readMono would find them but for damage inside; nothing when the file
// cannot be opened. A file without frames lasts 0 seconds.
[[nodiscard]] std::optional<AudioInfo> info(const std::filesystem::path& file);

// As info, but says why a file cannot be opened: throws AudioIOError.
[[nodiscard]] AudioInfo measure(const std::filesystem::path& file, const ReadOptions& options = {});

// Plain mean of the channels: sum in channel order, then one multiplication by 1 / channels in single
// precision (none for one channel). Each channel holds frames samples; no channels give frames zeros.
[[nodiscard]] std::vector<float> mixToMono(std::span<const std::vector<float>> channels, std::size_t frames);

// Converts the sample rate, band-limited, to about count * to / from samples in place (no delay). Rates
// closer than 0.5 Hz, an empty input and a conversion that cannot be set up (rates more than a factor of 1024
// apart, a length that makes no sense, too little memory) give the input unchanged. Rates in Hz.
[[nodiscard]] std::vector<float> resample(std::vector<float> samples, double from, double to);

// Writes a WAV file, replacing an existing one atomically. Values beyond +-1 saturate in the integer
// formats, NaN becomes silence there; float samples are stored unchanged. Requires sampleRate > 0, in Hz.
// Throws FileError, also for more than 4 GiB, and AudioIOError when memory is short.
void write(std::span<const float> samples, const std::filesystem::path& file, int sampleRate,
           OutputFormat format, Durability durability = Durability::onDisk);

// The bytes of such a file. file: what a failure names. Throws as write.
[[nodiscard]] std::vector<std::byte> encode(std::span<const float> samples, const std::filesystem::path& file,
                                            int sampleRate, OutputFormat format);
// What readMono reads from such a file.
[[nodiscard]] std::vector<float> asWritten(std::span<const float> samples, OutputFormat format);

}  // namespace AudioIO
}  // namespace quillmere
