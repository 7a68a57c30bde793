#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere {

// A latent vector and what it was blended from.
struct LatentDraw {
    struct Source {
        std::size_t clip = 0;  // position in the corpus
        float weight = 0;      // of the blend; the weights of all sources sum to 1

        friend bool operator==(const Source&, const Source&) = default;
    };
    std::vector<float> latent;    // [dim]
    std::vector<Source> sources;  // one to eight, in the order in which they were chosen
};

// Draws latent vectors around and between those of the corpus clips.
// Immutable after construction; any number of threads may share one, each with a generator of its own.
class LatentSampler {
public:
    // latents: one vector of at least dim values per clip; the values from dim on do not count. A shorter
    // vector or a negative dim is a programming error.
    LatentSampler(std::span<const std::vector<float>> latents, long long dim);

    // Mean of the latents, [dim].
    [[nodiscard]] const std::vector<float>& centroid() const noexcept { return centroid_; }
    // Each latent less the centroid, in corpus order.
    [[nodiscard]] const std::vector<std::vector<float>>& deviations() const noexcept { return deviations_; }
    // Spread of the latents (population, at least 0.02), [dim]; 0.3 for a single latent.
    [[nodiscard]] const std::vector<float>& sigma() const noexcept { return sigma_; }

    // A random blend of up to eight latents, then drift, mutation and extrapolation. The result depends on
    // the parameters and the state of rng alone. An empty corpus, or a number of sources that fits no
    // integer, stops the program.
    [[nodiscard]] std::vector<float> sample(SeededRNG& rng, const Aesthetics& aesthetics) const;

    // The same vector, by the same random numbers, with its sources.
    [[nodiscard]] LatentDraw draw(SeededRNG& rng, const Aesthetics& aesthetics) const;

    // A place around others.
    struct Surroundings {
        std::vector<float> latent;   // [dim]
        std::vector<float> weights;  // of each of the others in the blend; they sum to 1
    };
    // A random blend of the given latent vectors, with weights drawn as in draw, and from there a walk with
    // that drift. others: at least one, [dim] each.
    [[nodiscard]] Surroundings around(std::span<const std::vector<float>> others, double drift,
                                      SeededRNG& rng) const;

private:
    [[nodiscard]] std::size_t sourceCount(double sources) const;
    [[nodiscard]] std::vector<LatentDraw::Source> pickSources(std::size_t count, SeededRNG& rng) const;
    [[nodiscard]] std::vector<float> blend(std::span<const LatentDraw::Source> sources) const;
    void addDrift(std::vector<float>& z, double drift, SeededRNG& rng) const;
    void addMutation(std::vector<float>& z, double mutation, SeededRNG& rng) const;
    void extrapolate(std::vector<float>& z, double extrapolation) const;

    std::vector<std::vector<float>> latents_;  // [dim] each
    std::vector<float> centroid_;
    std::vector<std::vector<float>> deviations_;
    std::vector<float> sigma_;
};

}  // namespace quillmere
