#include "QuillmereCore/Audio/AudioIO.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

#include "QuillmereCore/Audio/Decoder.h"
#include "QuillmereCore/Audio/ReadError.h"
#include "QuillmereCore/Audio/Resampler.h"
#include "QuillmereCore/Audio/WAVWriter.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

Message outOfMemory() {
    return Message("out of memory");
}

// Frames beyond this are outside the supported range, on the way in and out.
constexpr std::size_t mostFrames = std::numeric_limits<std::uint32_t>::max();

// Limits of what is converted piece by piece.
constexpr int longestHours = 6;
constexpr double greatestStreamRatio = 100;

// Room for the converted signal and for what the filter adds to its ends; nothing when the rates or the
// length make no sense.
std::optional<std::size_t> resampledCapacity(std::size_t count, double from, double to) {
    constexpr double slack = 4096;
    if (!(from > 0 && to > 0 && std::isfinite(from) && std::isfinite(to))) return std::nullopt;
    if (std::max(from / to, to / from) > Resampler::greatestRatio) return std::nullopt;
    const double capacity = std::floor(to * static_cast<double>(count) / from) + slack;
    if (capacity > static_cast<double>(mostFrames)) return std::nullopt;
    return static_cast<std::size_t>(capacity);
}

bool areEqualRates(double from, double to) {
    return std::abs(from - to) < 0.5;
}

AudioIO::Damage damageIn(const Decoder::Result& result) {
    return {result.isTruncated, static_cast<double>(result.silentFrames) / result.sampleRate};
}

// Runs work that reads a file; its trouble becomes that of the file.
template <typename Work>
auto reading(const fs::path& file, const Work& work) {
    try {
        return work();
    } catch (const ReadError& error) {
        throw AudioIOError::unreadable(file, error.phrase(), error.isSystemTrouble());
    } catch (const std::bad_alloc&) {
        throw AudioIOError::unreadable(file, outOfMemory(), true);
    }
}

// Decodes a file of which sink takes the mono samples and their rate.
using MonoSink = std::function<void(std::span<const float> samples, int sampleRate)>;
Decoder::Result decodeMono(const fs::path& file, const MonoSink& sink, const AudioIO::ReadOptions& options) {
    std::error_code ignored;  // the decoder reports a file that cannot be looked at
    if (fs::file_size(file, ignored) == 0) throw AudioIOError::empty(file);
    std::size_t count = 0;
    const auto mix = [&](const Decoder::Block& block) {
        count += block.frames;
        if (count > mostFrames) throw ReadError("it is too long");
        sink(AudioIO::mixToMono(block.channels, block.frames), block.sampleRate);
    };
    const Decoder::Result result = reading(file, [&] { return Decoder::decode(file, mix, options); });
    if (result.frames == 0) throw AudioIOError::empty(file);
    return result;
}

// A signal on its way to another rate, where that is another.
class Conversion {
public:
    Conversion(double to, const AudioIO::SampleSink& sink, const std::stop_token& stop)
        : to_(to), sink_(sink), stop_(stop) {}

    void add(std::span<const float> samples, double from) {
        frames_ += static_cast<std::int64_t>(samples.size());
        if (static_cast<double>(frames_) > from * 3600 * longestHours)
            throw ReadError("it lasts more than {0} hours", longestHours);
        convert([&](const AudioIO::SampleSink& sink) {
            if (std::exchange(isFirst_, false)) setUp(from);
            if (resampler_) {
                resampler_->add(samples, sink);
            } else {
                sink(samples);
            }
        });
    }

    void finish() {
        convert([&](const AudioIO::SampleSink& sink) {
            if (resampler_) resampler_->finish(sink);
        });
    }

private:
    void setUp(double from) {
        if (areEqualRates(from, to_)) return;
        if (std::max(from / to_, to_ / from) > greatestStreamRatio) {
            throw ReadError("its sample rate of {0} Hz is too far from {1} Hz", std::llround(from),
                            std::llround(to_));
        }
        resampler_.emplace(from, to_);
    }

    template <typename Step>
    void convert(const Step& step) {
        try {
            step([this](std::span<const float> samples) {
                throwIfCancelled(stop_);  // one packet may become millions of samples
                converted_ += samples.size();
                if (converted_ > mostFrames) throw ReadError("it is too long");
                sink_(samples);
            });
        } catch (const Resampler::Error&) {
            throw std::bad_alloc();  // nothing else goes wrong at these rates
        }
    }

    double to_;
    const AudioIO::SampleSink& sink_;
    const std::stop_token& stop_;
    std::optional<Resampler> resampler_;
    std::int64_t frames_ = 0;
    std::size_t converted_ = 0;
    bool isFirst_ = true;
};

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
            return translatable("WAV 16-bit");
        case OutputFormat::wav24:
            return translatable("WAV 24-bit");
        case OutputFormat::wav32float:
            return translatable("WAV 32-bit float");
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

AudioIOError::AudioIOError(Kind kind, fs::path file, Message message)
    : Failure(std::move(message)), kind_(kind), file_(std::move(file)) {}

AudioIOError AudioIOError::unreadable(const fs::path& file, const Message& reason, bool isSystemTrouble) {
    AudioIOError error(Kind::unreadable, file, Message("Could not read {0}: {1}", file.filename(), reason));
    error.isSystemTrouble_ = isSystemTrouble;
    return error;
}

AudioIOError AudioIOError::empty(const fs::path& file) {
    return {Kind::empty, file, Message("{0} contains no audio", file.filename())};
}

const std::set<std::string, std::less<>>& AudioIO::supportedExtensions() {
    static const std::set<std::string, std::less<>> extensions{"wav",  "wave", "aif", "aiff", "aifc",
                                                               "flac", "mp3",  "m4a", "caf",  "aac"};
    return extensions;
}

AudioIO::MonoAudio AudioIO::readMono(const fs::path& file) {
    return readMono(file, {});
}

AudioIO::MonoAudio AudioIO::readMono(const fs::path& file, const ReadOptions& options) {
    MonoAudio audio;
    const auto append = [&audio](std::span<const float> samples, int /*sampleRate*/) {
        audio.samples.insert(audio.samples.end(), samples.begin(), samples.end());
    };
    const Decoder::Result result = decodeMono(file, append, options);
    audio.sampleRate = result.sampleRate;
    audio.damage = damageIn(result);
    return audio;
}

AudioIO::StreamedAudio AudioIO::stream(const fs::path& file, double rate, const SampleSink& sink,
                                       const ReadOptions& options) {
    require(rate > 0, "a stream needs a positive sample rate");
    Conversion conversion(rate, sink, options.stop);
    const Decoder::Result result = decodeMono(
        file, [&](std::span<const float> samples, int sampleRate) { conversion.add(samples, sampleRate); },
        options);
    reading(file, [&] { conversion.finish(); });
    return {result.frames, static_cast<double>(result.sampleRate), damageIn(result)};
}

std::optional<AudioIO::AudioInfo> AudioIO::info(const fs::path& file) {
    try {
        return measure(file);
    } catch (const AudioIOError&) {
        return std::nullopt;
    }
}

AudioIO::AudioInfo AudioIO::measure(const fs::path& file, const ReadOptions& options) {
    const Decoder::Length length = reading(file, [&] { return Decoder::measure(file, options); });
    return {static_cast<double>(length.frames) / length.sampleRate, static_cast<double>(length.sampleRate)};
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
    if (areEqualRates(from, to) || samples.empty()) return samples;
    const std::optional<std::size_t> capacity = resampledCapacity(samples.size(), from, to);
    if (!capacity) return samples;
    std::vector<float> converted;
    const auto append = [&converted](std::span<const float> piece) {
        converted.insert(converted.end(), piece.begin(), piece.end());
    };
    try {
        converted.reserve(*capacity);
        Resampler resampler(from, to);
        resampler.add(samples, append);
        resampler.finish(append);
    } catch (const std::bad_alloc&) {
        return samples;
    } catch (const Resampler::Error&) {
        return samples;
    }
    return converted;
}

std::vector<std::byte> AudioIO::encode(std::span<const float> samples, const fs::path& file, int sampleRate,
                                       OutputFormat format) {
    if (!WAVWriter::fits(samples.size(), format)) {
        throw FileError(file, std::make_error_code(std::errc::file_too_large),
                        Message("{0}: too long for a WAV file, which ends at 4 GiB", file));
    }
    try {
        return WAVWriter::encode(samples, sampleRate, format);
    } catch (const std::bad_alloc&) {
        throw AudioIOError::unreadable(file, outOfMemory());
    }
}

std::vector<float> AudioIO::asWritten(std::span<const float> samples, OutputFormat format) {
    return WAVWriter::stored(samples, format);
}

void AudioIO::write(std::span<const float> samples, const fs::path& file, int sampleRate, OutputFormat format,
                    Durability durability) {
    writeFileAtomically(file, encode(samples, file, sampleRate, format), durability);
}

}  // namespace quillmere
