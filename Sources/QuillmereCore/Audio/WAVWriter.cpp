#include "QuillmereCore/Audio/WAVWriter.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::WAVWriter {
namespace {

constexpr std::uint16_t tagPCM = 1;
constexpr std::uint16_t tagFloat = 3;
constexpr std::uint16_t channels = 1;

// Sizes in bytes of the parts of a file. Non-PCM formats need an extension size in "fmt " and a "fact" chunk.
struct Layout {
    Layout(std::size_t samples, OutputFormat format)
        : isFloat(format == OutputFormat::wav32float),
          sample(static_cast<unsigned>(bitDepth(format)) / 8),
          data(std::uint64_t{samples} * sample) {}

    [[nodiscard]] std::uint64_t riff() const { return 4 + (8 + format()) + fact() + 8 + data + padding(); }
    [[nodiscard]] unsigned format() const { return isFloat ? 18 : 16; }
    [[nodiscard]] unsigned fact() const { return isFloat ? 12 : 0; }
    [[nodiscard]] unsigned padding() const { return data % 2; }

    bool isFloat;
    unsigned sample;
    std::uint64_t data;
};

class Bytes {
public:
    explicit Bytes(std::uint64_t capacity) { bytes_.reserve(capacity); }

    void text(std::string_view characters) {
        for (const char c : characters)
            bytes_.push_back(static_cast<std::byte>(c));
    }
    // The lowest count bytes of value, little-endian.
    void number(std::uint64_t value, unsigned count) {
        for (unsigned i = 0; i < count; ++i)
            bytes_.push_back(static_cast<std::byte>(value >> (8 * i)));
    }
    [[nodiscard]] std::vector<std::byte> take() && { return std::move(bytes_); }

private:
    std::vector<std::byte> bytes_;
};

void appendHeader(Bytes& out, const Layout& layout, std::size_t samples, unsigned sampleRate) {
    out.text("RIFF");
    out.number(layout.riff(), 4);
    out.text("WAVEfmt ");
    out.number(layout.format(), 4);
    out.number(layout.isFloat ? tagFloat : tagPCM, 2);
    out.number(channels, 2);
    out.number(sampleRate, 4);
    out.number(std::uint64_t{sampleRate} * layout.sample, 4);  // bytes per second
    out.number(layout.sample, 2);                              // bytes per frame
    out.number(8 * layout.sample, 2);
    if (layout.isFloat) {
        out.number(0, 2);  // no extension
        out.text("fact");
        out.number(4, 4);
        out.number(samples, 4);
    }
    out.text("data");
    out.number(layout.data, 4);
}

std::int32_t quantise(float sample, float fullScale) {
    const float value = sample * fullScale;  // exact: a power of two
    if (std::isnan(value)) return 0;
    if (value >= fullScale - 1) return static_cast<std::int32_t>(fullScale) - 1;
    if (value <= -fullScale) return -static_cast<std::int32_t>(fullScale);
    return static_cast<std::int32_t>(std::lrint(value));
}

float fullScaleOf(const Layout& layout) {
    return std::ldexp(1.0F, static_cast<int>(8 * layout.sample) - 1);
}

void appendSamples(Bytes& out, std::span<const float> samples, const Layout& layout) {
    if (layout.isFloat) {
        for (const float sample : samples)
            out.number(std::bit_cast<std::uint32_t>(sample), 4);
        return;
    }
    const float fullScale = fullScaleOf(layout);
    for (const float sample : samples)
        out.number(static_cast<std::uint32_t>(quantise(sample, fullScale)), layout.sample);
}

}  // namespace

bool fits(std::size_t samples, OutputFormat format) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    // The first test keeps the sizes of the second from overflowing.
    return samples <= largest && Layout(samples, format).riff() <= largest;
}

std::vector<std::byte> encode(std::span<const float> samples, int sampleRate, OutputFormat format) {
    require(sampleRate > 0, "a WAV file needs a positive sample rate");
    require(fits(samples.size(), format), "too many samples for a WAV file");
    const Layout layout(samples.size(), format);
    Bytes out(8 + layout.riff());
    appendHeader(out, layout, samples.size(), static_cast<unsigned>(sampleRate));
    appendSamples(out, samples, layout);
    out.number(0, layout.padding());
    return std::move(out).take();
}

std::vector<float> stored(std::span<const float> samples, OutputFormat format) {
    std::vector<float> result(samples.begin(), samples.end());
    const Layout layout(samples.size(), format);
    if (layout.isFloat) return result;
    const float fullScale = fullScaleOf(layout);
    for (float& sample : result)
        sample = static_cast<float>(quantise(sample, fullScale)) / fullScale;  // exact: a power of two
    return result;
}

}  // namespace quillmere::WAVWriter
