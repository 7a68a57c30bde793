#include "QuillmereCore/Picture/SoundPictures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::SoundPictures {
namespace {

ModelConfig painterConfig(double sampleRate, double seconds, std::size_t columns) {
    constexpr int frameLength = 1024;
    constexpr int bands = 64;
    const double hop = std::ceil(seconds * sampleRate / static_cast<double>(columns));
    return {.sampleRate = static_cast<std::int64_t>(std::lround(sampleRate)),
            .nFFT = frameLength,
            .hop = static_cast<std::int64_t>(std::max(hop, 1.0)),
            .nMels = bands,
            .frames = static_cast<std::int64_t>(columns),
            .latentDim = 1,
            .profile = AnalysisProfile::percussive};
}

}  // namespace

Drawing waveform(std::span<const float> samples, double sampleRate, double seconds, double width,
                 double height) {
    constexpr double thinnest = 0.5;  // so that silence is a line
    const auto columns = static_cast<std::size_t>(width);
    const double perColumn = seconds * sampleRate / static_cast<double>(columns);
    const double middle = height / 2;
    std::vector<Drawing::Point> upper;
    std::vector<Drawing::Point> lower;
    for (std::size_t column = 0; column < columns; ++column) {
        const auto first = static_cast<std::size_t>(perColumn * static_cast<double>(column));
        if (first >= samples.size()) break;
        const auto count = static_cast<std::size_t>(std::max(std::ceil(perColumn), 1.0));
        const auto part = samples.subspan(first, std::min(count, samples.size() - first));
        const auto [least, most] = std::ranges::minmax(part);
        const auto x = static_cast<double>(column) + 0.5;
        const auto yOf = [&](float sample) {
            return middle - middle * std::clamp(static_cast<double>(sample), -1.0, 1.0);
        };
        upper.push_back({x, std::min(yOf(most), middle - thinnest)});
        lower.push_back({x, std::max(yOf(least), middle + thinnest)});
    }
    Drawing drawing(width, height);
    std::vector<Drawing::Point> outline = std::move(upper);
    outline.insert(outline.end(), lower.rbegin(), lower.rend());
    if (!outline.empty()) drawing.add(Drawing::Area{std::move(outline), Palette::accent});
    return drawing;
}

Pixels mel(std::span<const float> image, std::size_t bands, std::size_t frames) {
    require(bands > 0 && frames > 0 && image.size() == bands * frames, "mel: an image of another size");
    constexpr double floor = -80;  // dB
    Pixels pixels{frames, bands, std::vector<Colour>(image.size())};
    for (std::size_t band = 0; band < bands; ++band) {
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const double level = static_cast<double>(Level::toDB(image[band * frames + frame]));
            pixels.colours[(bands - 1 - band) * frames + frame] = Palette::ramp(1 - level / floor);
        }
    }
    return pixels;
}

MelPainter::MelPainter(double sampleRate, double seconds, std::size_t columns)
    : extractor_(painterConfig(sampleRate, seconds, columns)) {}

Pixels MelPainter::paint(std::span<const float> samples) const {
    STFT stft = extractor_.makeSTFT();
    const ModelConfig& config = extractor_.config();
    return mel(extractor_.features(samples, stft), static_cast<std::size_t>(config.nMels),
               static_cast<std::size_t>(config.frames));
}

}  // namespace quillmere::SoundPictures
