#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere {

struct GenerationRequest {
    std::int64_t count = 0;
    std::filesystem::path outputDirectory;
    Aesthetics aesthetics;
    std::uint64_t seed = 0;
    OutputFormat format = OutputFormat::wav24;
    std::optional<std::string> namePrefix;  // absent: the corpus's name
};

struct GeneratedSample {
    std::filesystem::path url;
    double seconds = 0;
};

// Turns a trained model into new samples.
// Immutable after construction apart from the decoder's scratch memory: one call at a time.
class SampleGenerator {
public:
    using ProgressCallback = std::function<void(std::int64_t done, std::int64_t total)>;
    using CancelTest = std::function<bool()>;

    explicit SampleGenerator(ModelBundle bundle);

    [[nodiscard]] const ModelBundle& bundle() const noexcept { return bundle_; }
    [[nodiscard]] int sampleRate() const noexcept { return static_cast<int>(bundle_.config.sampleRate); }
    // Statistics of the corpus latents, [latentDim] each.
    [[nodiscard]] const std::vector<float>& centroid() const noexcept { return centroid_; }
    [[nodiscard]] const std::vector<float>& sigma() const noexcept { return sigma_; }
    [[nodiscard]] const std::vector<std::vector<float>>& deviations() const noexcept { return deviations_; }

    // One latent vector by the four "departure" parameters.
    [[nodiscard]] std::vector<float> sampleLatent(SeededRNG& rng, const Aesthetics& aesthetics) const;

    // One decoded image [nMels][frames] to finished samples. stft: made for the model's configuration.
    [[nodiscard]] std::vector<float> render(std::span<const float> image, const Aesthetics& aesthetics,
                                            SeededRNG& rng, STFT& stft) const;

    // Renders and writes count variations, never overwriting a file. progress(done, total) follows each
    // written file, one call at a time, possibly on a worker thread. Throws the first writing failure after
    // the running batch, or CancellationError at the next batch boundary; written files stay.
    [[nodiscard]] std::vector<GeneratedSample> generate(const GenerationRequest& request,
                                                        const ProgressCallback& progress,
                                                        const CancelTest& isCancelled);

    // One variation, not written: the samples of variation 0 of a request with the same seed.
    [[nodiscard]] std::vector<float> audition(const Aesthetics& aesthetics, std::uint64_t seed);

    // Seed of variation index of a request.
    [[nodiscard]] static std::uint64_t variationSeed(std::uint64_t seed, std::uint64_t index);

private:
    ModelBundle bundle_;
    VAEInference inference_;
    FeatureExtractor extractor_;
    std::vector<float> centroid_;
    std::vector<std::vector<float>> deviations_;
    std::vector<float> sigma_;
};

}  // namespace quillmere
