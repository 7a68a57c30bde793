#include "QuillmereCore/Generate/LatentSampler.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

using Latents = std::vector<std::vector<float>>;

// z += weight * direction.
void addScaled(std::vector<float>& z, std::span<const float> direction, float weight) {
    for (std::size_t j = 0; j < z.size(); ++j)
        z[j] += direction[j] * weight;
}

Latents truncated(std::span<const std::vector<float>> latents, long long dim) {
    require(dim >= 0, "LatentSampler: negative latent size");
    Latents result;
    for (const std::vector<float>& latent : latents) {
        require(std::ssize(latent) >= dim, "LatentSampler: a latent vector is too short");
        result.emplace_back(latent.begin(), latent.begin() + dim);
    }
    return result;
}

std::vector<float> mean(const Latents& latents, std::size_t dim) {
    const auto count = static_cast<float>(latents.size());
    std::vector<float> result(dim);
    for (const std::vector<float>& latent : latents) {
        for (std::size_t j = 0; j < dim; ++j)
            result[j] += latent[j] / count;
    }
    return result;
}

Latents differences(Latents latents, std::span<const float> centroid) {
    for (std::vector<float>& latent : latents) {
        for (std::size_t j = 0; j < centroid.size(); ++j)
            latent[j] -= centroid[j];
    }
    return latents;
}

std::vector<float> spread(const Latents& deviations, std::size_t dim) {
    constexpr float ofSingleLatent = 0.3F;
    constexpr float smallest = 0.02F;
    if (deviations.size() <= 1) return std::vector<float>(dim, ofSingleLatent);
    std::vector<float> sums(dim);
    for (const std::vector<float>& deviation : deviations) {
        for (std::size_t j = 0; j < dim; ++j)
            sums[j] += deviation[j] * deviation[j];
    }
    const auto count = static_cast<float>(deviations.size());
    for (float& value : sums)
        value = std::max(std::sqrt(value / count), smallest);
    return sums;
}

// A uniformly random point of the simplex: exponential draws, normalised to the sum 1.
void drawWeights(std::span<LatentDraw::Source> sources, SeededRNG& rng) {
    float sum = 0;
    for (LatentDraw::Source& source : sources) {
        source.weight = -std::log(std::max(rng.uniform(), 1.0e-6F));
        sum += source.weight;
    }
    for (LatentDraw::Source& source : sources)
        source.weight /= sum;
}

}  // namespace

LatentSampler::LatentSampler(std::span<const std::vector<float>> latents, long long dim)
    : latents_(truncated(latents, dim)),
      centroid_(mean(latents_, static_cast<std::size_t>(dim))),
      deviations_(differences(latents_, centroid_)),
      sigma_(spread(deviations_, static_cast<std::size_t>(dim))) {}

std::vector<float> LatentSampler::sample(SeededRNG& rng, const Aesthetics& aesthetics) const {
    return draw(rng, aesthetics).latent;
}

LatentDraw LatentSampler::draw(SeededRNG& rng, const Aesthetics& aesthetics) const {
    require(!latents_.empty(), "LatentSampler: no latents to sample from");
    LatentDraw draw;
    draw.sources = pickSources(sourceCount(aesthetics.sources), rng);
    drawWeights(draw.sources, rng);
    draw.latent = blend(draw.sources);
    addDrift(draw.latent, aesthetics.drift, rng);
    addMutation(draw.latent, aesthetics.mutation, rng);
    extrapolate(draw.latent, aesthetics.extrapolation);
    return draw;
}

LatentSampler::Surroundings LatentSampler::around(std::span<const std::vector<float>> others, double drift,
                                                  SeededRNG& rng) const {
    require(!others.empty(), "LatentSampler: nothing to sample around");
    std::vector<LatentDraw::Source> sources(others.size());
    drawWeights(sources, rng);
    Surroundings place{std::vector<float>(centroid_.size()), {}};
    for (std::size_t i = 0; i < others.size(); ++i) {
        require(others[i].size() == centroid_.size(), "LatentSampler: a latent vector of another size");
        addScaled(place.latent, others[i], sources[i].weight);
        place.weights.push_back(sources[i].weight);
    }
    addDrift(place.latent, drift, rng);
    return place;
}

std::size_t LatentSampler::sourceCount(double sources) const {
    constexpr long long most = 8;
    const long long available = std::min(std::ssize(latents_), static_cast<std::ptrdiff_t>(most));
    return static_cast<std::size_t>(std::clamp(roundedCount(sources), 1LL, available));
}

std::vector<LatentDraw::Source> LatentSampler::pickSources(std::size_t count, SeededRNG& rng) const {
    std::vector<std::size_t> remaining(latents_.size());
    std::iota(remaining.begin(), remaining.end(), std::size_t{0});
    std::vector<LatentDraw::Source> chosen;
    while (chosen.size() < count) {
        const auto pick = remaining.begin() + rng.intBelow(std::ssize(remaining));
        chosen.push_back({.clip = *pick});
        remaining.erase(pick);
    }
    return chosen;
}

std::vector<float> LatentSampler::blend(std::span<const LatentDraw::Source> sources) const {
    std::vector<float> z(centroid_.size());
    for (const LatentDraw::Source& source : sources)
        addScaled(z, latents_[source.clip], source.weight);
    return z;
}

// One draw per latent, so that the walk keeps to the directions in which the corpus varies.
void LatentSampler::addDrift(std::vector<float>& z, double drift, SeededRNG& rng) const {
    if (!(drift > 0) || latents_.size() < 2) return;
    const float amount = static_cast<float>(drift) / std::sqrt(static_cast<float>(latents_.size()));
    for (const std::vector<float>& deviation : deviations_)
        addScaled(z, deviation, rng.gaussian() * amount);
}

void LatentSampler::addMutation(std::vector<float>& z, double mutation, SeededRNG& rng) const {
    if (!(mutation > 0)) return;
    for (std::size_t j = 0; j < z.size(); ++j)
        z[j] += rng.gaussian() * (sigma_[j] * static_cast<float>(mutation));
}

void LatentSampler::extrapolate(std::vector<float>& z, double extrapolation) const {
    if (extrapolation == 0) return;
    const float factor = static_cast<float>(extrapolation) + 1.0F;
    for (std::size_t j = 0; j < z.size(); ++j)
        z[j] = (z[j] - centroid_[j]) * factor + centroid_[j];
}

}  // namespace quillmere
