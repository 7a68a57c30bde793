#include "QuillmereCore/Model/Training/Augmentation.h"

#include <algorithm>

namespace quillmere::ModelTrainer {
namespace {

constexpr float silence = -1.0F;

}  // namespace

std::int64_t maxShift(const ModelConfig& config) {
    return static_cast<std::int64_t>(static_cast<double>(config.sampleRate) * 0.035 /
                                     static_cast<double>(config.hop));
}

Augmentation drawAugmentation(const ModelConfig& config, SeededRNG& rng) {
    Augmentation result;
    if (0.7F > rng.uniform()) result.shift = rng.intBelow(std::max<std::int64_t>(maxShift(config), 1) + 1);
    if (config.profile == AnalysisProfile::percussive && 0.5F > rng.uniform())
        result.melShift = rng.intBelow(3) - 1;
    result.gain = rng.signedUniform() * 6.0F / 50.0F;  // +-6 dB
    return result;
}

void applyAugmentation(const Augmentation& augmentation, const ModelConfig& config,
                       std::span<const float> image, std::span<float> out) {
    const auto& [shift, melShift, gain] = augmentation;
    std::ranges::fill(out, silence);
    for (std::int64_t row = 0; row < config.nMels; ++row) {
        const std::int64_t source = row - melShift;
        if (source < 0 || source >= config.nMels) continue;
        const float* const from = image.data() + source * config.frames;
        float* const to = out.data() + row * config.frames;
        for (std::int64_t column = shift; column < config.frames; ++column) {
            const float value = from[column - shift];
            to[column] = value > -0.99F ? std::max(value + gain, silence) : value;
        }
    }
}

std::vector<float> augment(std::span<const float> image, const ModelConfig& config, SeededRNG& rng) {
    std::vector<float> out(image.size());
    applyAugmentation(drawAugmentation(config, rng), config, image, out);
    return out;
}

}  // namespace quillmere::ModelTrainer
