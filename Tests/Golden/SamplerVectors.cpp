#include <algorithm>

#include "Golden/GoldenAreas.h"
#include "Golden/GoldenModel.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Generate/LatentSampler.h"
#include "Support/Processor.h"

namespace quillmere::golden {
namespace {

// A generator for "count" latents of "latentDim" values.
SampleGenerator generatorFor(const Case& vector) {
    const auto count = vector.input.at("count").get<std::size_t>();
    const auto latentDim = vector.input.at("latentDim").get<std::size_t>();
    const std::vector<float> values = floats(vector.input.at("latents"));
    if (values.size() != count * latentDim) throw std::invalid_argument("latents: count does not fit");
    return SampleGenerator(blankModel(smallConfig(latentDim), splitRows(values, count)),
                           testing::processor());
}

// The corpus indices that sampling blends, in the order of choice. A corpus whose latents are unit
// vectors shows them: without departures the result is the weight of each. The choice comes before every
// other draw, so with n sources it begins like that with n - 1.
std::vector<std::size_t> chosenIndices(std::size_t corpusSize, double sources, const SeededRNG& rng) {
    std::vector<std::vector<float>> units(corpusSize, std::vector<float>(corpusSize));
    for (std::size_t i = 0; i < corpusSize; ++i) {
        units[i][i] = 1;
    }
    const LatentSampler sampler(units, static_cast<long long>(corpusSize));
    const auto blended = [&](double wanted) {
        Aesthetics plain{.sources = wanted, .drift = 0, .mutation = 0, .extrapolation = 0};
        SeededRNG copy = rng;
        const std::vector<float> weights = sampler.sample(copy, plain);
        std::vector<std::size_t> indices;
        for (std::size_t i = 0; i < weights.size(); ++i) {
            if (weights[i] != 0) indices.push_back(i);
        }
        return indices;
    };
    const std::size_t total = blended(sources).size();
    std::vector<std::size_t> chosen;
    for (std::size_t n = 1; n <= total; ++n) {
        for (const std::size_t index : blended(n == total ? sources : static_cast<double>(n))) {
            if (std::find(chosen.begin(), chosen.end(), index) == chosen.end()) chosen.push_back(index);
        }
    }
    return chosen;
}

Outputs statistics(const Case& vector) {
    const SampleGenerator generator = generatorFor(vector);
    Outputs out;
    out.array("centroid", generator.centroid());
    out.array("sigma", generator.sigma());
    out.array("deviations", joinRows(generator.deviations()));
    return out;
}

Outputs sampleLatent(const Case& vector) {
    const SampleGenerator generator = generatorFor(vector);
    const Aesthetics parameters = aesthetics(vector.input.at("aesthetics"));
    SeededRNG rng = seededGenerator(vector.input);
    Outputs out;
    out.value("chosen", chosenIndices(generator.bundle().latents.size(), parameters.sources, rng));
    out.array("latent", generator.sampleLatent(rng, parameters));
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs variationSeed(const Case& vector) {
    Outputs out;
    out.value("seed", wordText(SampleGenerator::variationSeed(word(vector.input.at("seed")),
                                                              word(vector.input.at("index")))));
    return out;
}

}  // namespace

Area samplerArea() {
    return {
        "sampler",
        {{"Sampler",
          {{"statistics", statistics}, {"sampleLatent", sampleLatent}, {"variationSeed", variationSeed}}}}};
}

}  // namespace quillmere::golden
