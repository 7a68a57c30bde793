#include "Soundcheck/Soundcheck.h"

#include <cstddef>
#include <utility>

#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Generate/Rendering.h"
#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Model/Training/ClipReading.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere::soundcheck {
namespace {

double meanSquaredDifference(std::span<const float> a, std::span<const float> b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = static_cast<double>(a[i]) - static_cast<double>(b[i]);
        sum += difference * difference;
    }
    return sum / static_cast<double>(a.size());
}

}  // namespace

std::vector<Clip> readClips(const std::filesystem::path& folder, const ModelConfig& config) {
    const CorpusSummary corpus = Corpus::scan(folder);
    const ModelTrainer::ClipNeeds needs{.sampleRate = static_cast<int>(config.sampleRate),
                                        .keptSamples = static_cast<std::size_t>(config.clipSamples()) + 1,
                                        .flatness = false};
    const FeatureExtractor extractor(config);
    STFT stft = extractor.makeSTFT();
    std::vector<Clip> clips;
    for (ModelTrainer::ClipReading& reading : ModelTrainer::readClips(corpus.files, needs, {}, {})) {
        if (!reading.isUsable()) continue;
        auto samples =
            ClipPreparation::cutAndFade(reading.clip.samples, config.clipSamples(), config.sampleRate);
        auto image = extractor.features(samples, stft);
        clips.push_back({std::move(reading.clip.name), std::move(samples), std::move(image)});
    }
    return clips;
}

std::vector<float> finished(std::vector<float> samples, const ModelConfig& config) {
    SeededRNG rng(0);  // decides on reversal, of which there is no chance
    Finishing::finish(samples, {}, static_cast<double>(config.sampleRate), rng);
    return samples;
}

std::vector<float> rendered(std::span<const float> image, const ModelConfig& config, std::uint64_t seed) {
    const FeatureExtractor extractor(config);
    STFT stft = extractor.makeSTFT();
    SeededRNG rng(seed);
    return finished(Rendering::waveform(image, {}, extractor, stft, rng), config);
}

std::vector<double> errors(const ModelBundle& model, std::span<const Clip> clips, network::Backend& backend) {
    VAEInference inference(model.config, model.weights, backend);
    std::vector<double> result;
    for (const Clip& clip : clips) {
        const std::vector<std::vector<float>> image{clip.image};
        const auto decoded = inference.decode(inference.encode(image));
        result.push_back(meanSquaredDifference(decoded.front(), clip.image));
    }
    return result;
}

}  // namespace quillmere::soundcheck
