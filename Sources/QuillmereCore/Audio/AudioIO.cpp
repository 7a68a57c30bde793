#include "QuillmereCore/Audio/AudioIO.h"

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

#include "QuillmereCore/Audio/Decoder.h"
#include "QuillmereCore/Audio/WAVWriter.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr const char* outOfMemory = "out of memory";

// Frames beyond this are outside the supported range, on the way in and out.
constexpr std::size_t mostFrames = std::numeric_limits<std::uint32_t>::max();

std::vector<std::byte> encode(std::span<const float> samples, const fs::path& file, int sampleRate,
                              OutputFormat format) {
    if (!WAVWriter::fits(samples.size(), format)) {
        throw FileError(file, std::make_error_code(std::errc::file_too_large),
                        Text::utf8(file) + ": too long for a WAV file, which ends at 4 GiB");
    }
    try {
        return WAVWriter::encode(samples, sampleRate, format);
    } catch (const std::bad_alloc&) {
        throw AudioIOError::unreadable(file, outOfMemory);
    }
}

// Room for the converted signal and for what the filter adds to its ends; nothing when the rates or the
// length make no sense.
std::optional<std::size_t> resampledCapacity(std::size_t count, double from, double to) {
    constexpr double slack = 4096;
    if (!(from > 0 && to > 0 && std::isfinite(from) && std::isfinite(to))) return std::nullopt;
    const double capacity = std::floor(to * static_cast<double>(count) / from) + slack;
    if (capacity > static_cast<double>(mostFrames)) return std::nullopt;
    return static_cast<std::size_t>(capacity);
}

}  // namespace

std::string_view rawValue(OutputFormat format) {
    switch (format) {
        case OutputFormat::wav16:
            return "wav16";
        case OutputFormat::wav24:
            return "wav24";
        case OutputFormat::wav32float:
            return "wav32float";
    }
    fatal("unknown output format");
}

std::string_view label(OutputFormat format) {
    switch (format) {
        case OutputFormat::wav16:
            return "WAV 16-bit";
        case OutputFormat::wav24:
            return "WAV 24-bit";
        case OutputFormat::wav32float:
            return "WAV 32-bit float";
    }
    fatal("unknown output format");
}

int bitDepth(OutputFormat format) {
    switch (format) {
        case OutputFormat::wav16:
            return 16;
        case OutputFormat::wav24:
            return 24;
        case OutputFormat::wav32float:
            return 32;
    }
    fatal("unknown output format");
}

std::optional<OutputFormat> outputFormat(std::string_view raw) {
    for (const OutputFormat format : allOutputFormats) {
        if (rawValue(format) == raw) return format;
    }
    return std::nullopt;
}

AudioIOError::AudioIOError(Kind kind, fs::path file, const std::string& message)
    : Failure(message), kind_(kind), file_(std::move(file)) {}

AudioIOError AudioIOError::unreadable(const fs::path& file, const std::string& reason) {
    return {Kind::unreadable, file, "Could not read " + Text::utf8(file.filename()) + ": " + reason};
}

AudioIOError AudioIOError::empty(const fs::path& file) {
    return {Kind::empty, file, Text::utf8(file.filename()) + " contains no audio"};
}

const std::set<std::string, std::less<>>& AudioIO::supportedExtensions() {
    static const std::set<std::string, std::less<>> extensions{"wav",  "wave", "aif", "aiff", "aifc",
                                                               "flac", "mp3",  "m4a", "caf",  "aac"};
    return extensions;
}

AudioIO::MonoAudio AudioIO::readMono(const fs::path& file) {
    std::error_code ignored;  // the decoder reports a file that cannot be looked at
    if (fs::file_size(file, ignored) == 0) throw AudioIOError::empty(file);
    MonoAudio audio;
    const auto append = [&audio](std::span<const std::vector<float>> channels, std::size_t frames) {
        if (audio.samples.size() + frames > mostFrames) throw Decoder::Error("it is too long");
        const std::vector<float> mono = mixToMono(channels, frames);
        audio.samples.insert(audio.samples.end(), mono.begin(), mono.end());
    };
    try {
        const Decoder::Result result = Decoder::decode(file, append);
        audio.sampleRate = result.sampleRate;
        audio.samples.resize(audio.samples.size() - static_cast<std::size_t>(result.padding));
        if (audio.samples.empty() && result.error) throw Decoder::Error(*result.error);
    } catch (const Decoder::Error& error) {
        throw AudioIOError::unreadable(file, error.what());
    } catch (const std::bad_alloc&) {
        throw AudioIOError::unreadable(file, outOfMemory);
    }
    if (audio.samples.empty()) throw AudioIOError::empty(file);
    return audio;
}

std::optional<AudioIO::AudioInfo> AudioIO::info(const fs::path& file) {
    try {
        const Decoder::Length length = Decoder::measure(file);
        return AudioInfo{static_cast<double>(length.frames) / length.sampleRate,
                         static_cast<double>(length.sampleRate)};
    } catch (const Decoder::Error&) {
        return std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

std::vector<float> AudioIO::mixToMono(std::span<const std::vector<float>> channels, std::size_t frames) {
    std::vector<float> mono(frames, 0.0F);
    for (const std::vector<float>& channel : channels) {
        require(channel.size() >= frames, "a channel is shorter than the signal");
        for (std::size_t i = 0; i < frames; ++i)
            mono[i] += channel[i];
    }
    if (channels.size() > 1) {
        const float factor = 1.0F / static_cast<float>(channels.size());
        for (float& sample : mono)
            sample *= factor;
    }
    return mono;
}

std::vector<float> AudioIO::resample(std::vector<float> samples, double from, double to) {
    if (std::abs(from - to) < 0.5 || samples.empty()) return samples;
    const std::optional<std::size_t> capacity = resampledCapacity(samples.size(), from, to);
    if (!capacity) return samples;
    std::vector<float> converted;
    try {
        converted.resize(*capacity);
    } catch (const std::bad_alloc&) {
        return samples;
    }
    const soxr_io_spec_t floats = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
    const soxr_runtime_spec_t oneThread = soxr_runtime_spec(1);
    std::size_t produced = 0;
    const soxr_error_t error =
        soxr_oneshot(from, to, 1, samples.data(), samples.size(), nullptr, converted.data(), converted.size(),
                     &produced, &floats, &quality, &oneThread);
    if (error != nullptr) return samples;
    converted.resize(produced);
    return converted;
}

void AudioIO::write(std::span<const float> samples, const fs::path& file, int sampleRate,
                    OutputFormat format) {
    writeFileAtomically(file, encode(samples, file, sampleRate, format));
}

bool AudioIO::writeNew(std::span<const float> samples, const fs::path& file, int sampleRate,
                       OutputFormat format) {
    return writeNewFile(file, encode(samples, file, sampleRate, format));
}

}  // namespace quillmere
