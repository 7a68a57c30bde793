#include "Schooling/Trial.h"

#include <chrono>
#include <cstddef>
#include <utility>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Training/ClipReading.h"
#include "QuillmereCore/Model/Training/TrainingError.h"
#include "QuillmereCore/Model/Training/TrainingLoop.h"
#include "QuillmereCore/Model/VAE.h"

namespace quillmere::schooling {
namespace {

double squaredDifference(const std::vector<float>& a, const std::vector<float>& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = static_cast<double>(a[i]) - static_cast<double>(b[i]);
        sum += difference * difference;
    }
    return sum / static_cast<double>(a.size());
}

double meanError(VAEInference& inference, const std::vector<std::vector<float>>& images) {
    if (images.empty()) return 0;
    const auto decoded = inference.decode(inference.encode(images));
    double sum = 0;
    for (std::size_t i = 0; i < images.size(); ++i)
        sum += squaredDifference(decoded[i], images[i]);
    return sum / static_cast<double>(images.size());
}

}  // namespace

TrialCorpus readTrialCorpus(const std::filesystem::path& folder, const TrainingOptions& options) {
    const CorpusSummary summary = Corpus::scan(folder);
    const int rate = summary.dominantSampleRate();
    auto clips = ModelTrainer::readClips(summary.files, ModelTrainer::needsOf(options, rate), {}, {});
    std::erase_if(clips, [](const ModelTrainer::ClipReading& clip) { return !clip.isUsable(); });
    if (clips.empty()) throw TrainingError(TrainingError::Kind::noUsableAudio);
    TrialCorpus corpus;
    corpus.config = ModelTrainer::chooseConfig(clips, rate, options);
    const FeatureExtractor extractor(corpus.config);
    STFT stft = extractor.makeSTFT();
    for (std::size_t i = 0; i < clips.size(); ++i) {
        auto image = ClipPreparation::prepare(clips[i].clip, corpus.config, extractor, stft).image;
        (i % 3 == 1 ? corpus.unseen : corpus.learned).push_back(std::move(image));
    }
    return corpus;
}

TrialResult runTrial(const TrialCorpus& corpus, const TrainingOptions& options, network::Backend& backend) {
    const auto begin = std::chrono::steady_clock::now();
    const auto trained =
        options.steps == 0
            ? ModelTrainer::startOnImages(corpus.config, corpus.learned, options, backend)
            : ModelTrainer::trainOnImages(corpus.config, corpus.learned, options, {}, {}, backend);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
    VAEInference inference(corpus.config, trained.weights, backend);
    return {.learned = static_cast<double>(trained.finalReconstructionError),
            .unseen = meanError(inference, corpus.unseen),
            .seconds = elapsed.count()};
}

}  // namespace quillmere::schooling
