#include "QuillmereCore/Origin/Likeness.h"

#include <algorithm>
#include <map>
#include <vector>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::Likeness {
namespace {

constexpr std::size_t mostSources = 8;  // as of any variation

// The sources of all, each with its share of its own blend times the weight of that; the greatest first.
std::vector<SampleOrigin::Source> sharedSources(std::span<const Recipe> liked,
                                                std::span<const float> weights) {
    std::map<std::size_t, SampleOrigin::Source> byClip;
    for (std::size_t i = 0; i < liked.size(); ++i) {
        for (const SampleOrigin::Source& source : liked[i].sources) {
            SampleOrigin::Source& sum = byClip[source.clip];
            sum.clip = source.clip;
            sum.name = source.name;
            sum.weight += weights[i] * source.weight;
        }
    }
    std::vector<SampleOrigin::Source> sources;
    sources.reserve(byClip.size());
    for (const auto& [clip, source] : byClip)
        sources.push_back(source);
    std::ranges::stable_sort(sources, std::ranges::greater(), &SampleOrigin::Source::weight);
    sources.resize(std::min(sources.size(), mostSources));
    float sum = 0;
    for (const SampleOrigin::Source& source : sources)
        sum += source.weight;
    if (!(sum > 0)) return sources;
    for (SampleOrigin::Source& source : sources)
        source.weight /= sum;
    return sources;
}

SampleOrigin newOrigin(const SampleGenerator& generator, std::uint64_t seed, std::int64_t index) {
    return {.index = index,
            .seed = SampleGenerator::variationSeed(seed, static_cast<std::uint64_t>(index)),
            .latent = {},
            .sources = {},
            .model = generator.identity()};
}

}  // namespace

SampleOrigin around(const SampleGenerator& generator, std::span<const Recipe> liked, double closeness,
                    std::uint64_t seed, std::int64_t index) {
    require(!liked.empty(), "around: nothing is liked");
    SampleOrigin origin = newOrigin(generator, seed, index);
    SeededRNG rng(origin.seed);
    std::vector<std::vector<float>> latents;
    for (const Recipe& recipe : liked)
        latents.push_back(recipe.latent);
    LatentSampler::Surroundings place = generator.sampler().around(latents, 1 - closeness, rng);
    origin.latent = std::move(place.latent);
    origin.sources = sharedSources(liked, place.weights);
    origin.state = rng.s;
    return origin;
}

SampleOrigin atPlace(const SampleGenerator& generator, const LatentMap& map, MapPlace place, double closeness,
                     std::uint64_t seed, std::int64_t index) {
    SampleOrigin origin = newOrigin(generator, seed, index);
    const ModelBundle& bundle = generator.bundle();
    require(map.places().size() == bundle.latents.size(), "atPlace: the map is of another model");
    std::vector<float> blend(static_cast<std::size_t>(bundle.config.latentDim));
    for (const auto& [clip, weight] : map.blendAt(place)) {
        for (std::size_t i = 0; i < blend.size(); ++i)
            blend[i] += weight * bundle.latents[clip][i];
        const std::vector<std::string>& names = bundle.metadata.clipNames;
        origin.sources.push_back({clip, clip < names.size() ? names[clip] : std::string(), weight});
    }
    SeededRNG rng(origin.seed);
    origin.latent = generator.sampler().around(std::span(&blend, 1), 1 - closeness, rng).latent;
    origin.state = rng.s;
    return origin;
}

SampleOrigin sameBody(const Recipe& recipe, std::uint64_t seed, std::int64_t index) {
    SampleOrigin origin = recipe.origin();
    origin.index = index;
    origin.seed = SampleGenerator::variationSeed(seed, static_cast<std::uint64_t>(index));
    origin.state = SeededRNG(origin.seed).s;
    origin.fit.reset();  // it was of that file
    return origin;
}

SampleOrigin sameSkin(const SampleGenerator& generator, const Recipe& recipe, const Aesthetics& aesthetics,
                      std::uint64_t seed, std::int64_t index) {
    SampleOrigin origin = generator.draw(
        aesthetics, index, SampleGenerator::variationSeed(seed, static_cast<std::uint64_t>(index)));
    origin.state = recipe.state;
    return origin;
}

}  // namespace quillmere::Likeness
