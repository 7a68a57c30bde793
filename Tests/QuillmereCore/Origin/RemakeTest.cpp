// From random parameters to a file, its recipe as text, and back to the same bytes.
//
// QUILLMERE_REMAKE_SETS is the number of parameter sets of all models together, where another one than that
// of the daily run is wanted.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Origin/RecipeKeeper.h"
#include "QuillmereCore/Origin/RecipeLookup.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"
#include "Support/Processor.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::randomLatents;
using testing::readText;
using testing::smallModel;
using testing::TempFolder;

constexpr std::int64_t perSet = 2;  // variations

int numberOfSets() {
    constexpr int daily = 60;
    const char* const text = std::getenv("QUILLMERE_REMAKE_SETS");
    const auto wanted = text == nullptr ? std::nullopt : Text::parseInteger(text);
    return static_cast<int>(wanted.value_or(daily));
}

// Models of three shapes and corpora.
std::vector<ModelBundle> smallModels() {
    std::vector<ModelBundle> models{smallModel(), smallModel(), smallModel()};
    models[1].config = {.sampleRate = 11025,
                        .nFFT = 512,
                        .hop = 128,
                        .nMels = 32,
                        .frames = 64,
                        .latentDim = 8,
                        .profile = AnalysisProfile::tonal};
    models[1].weights = VAEArchitecture::initialWeights(models[1].config, 6);
    models[1].latents = randomLatents(1, 8, 18);
    models[2].weights = VAEArchitecture::initialWeights(models[2].config, 7);
    models[2].latents = randomLatents(40, 4, 19);
    models[2].metadata.clipNames.assign(40, "clip.wav");
    return models;
}

// Anything that the sliders reach; each parameter is at its default now and then. Long and thorough
// renderings are left out, which only cost time.
Aesthetics randomAesthetics(SeededRNG& rng) {
    Aesthetics aesthetics;
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        if (rng.uniform() < 0.3F) continue;
        const double position = rng.uniform();
        aesthetics.set(spec, spec.logarithmic ? spec.lower * std::pow(spec.upper / spec.lower, position)
                                              : spec.lower + (spec.upper - spec.lower) * position);
    }
    aesthetics.stretch = std::min(aesthetics.stretch, 2.0);
    aesthetics.stretchJitter = std::min(aesthetics.stretchJitter, 1.0);
    aesthetics.phaseIterations = std::min(aesthetics.phaseIterations, 3.0);
    return aesthetics;
}

// The bytes of the file that a recipe describes.
std::string remade(SampleGenerator& generator, const Recipe& recipe, const std::string& chunk) {
    const VariationPlan plan = recipe.plan();
    const std::vector<float> samples = generator.remake(std::span(&plan, 1)).at(0).samples;
    std::vector<std::byte> bytes = AudioIO::encode(samples, "remade", generator.sampleRate(), recipe.format);
    if (!chunk.empty()) {
        EXPECT_TRUE(RIFFChunk::append(bytes, recipeChunk, chunk));
    }
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(Remake, EveryRecipeOfRandomParametersGivesTheSameBytes) {
    std::vector<ModelBundle> models = smallModels();
    const int sets = numberOfSets() / static_cast<int>(models.size());
    SeededRNG rng(14);
    for (std::size_t m = 0; m < models.size(); ++m) {
        const TempFolder folder;
        SampleGenerator writer(models[m], testing::processor());
        SampleGenerator reader(models[m], testing::processor());
        const Journal journal(folder / "journal.jsonl");
        for (int set = 0; set < sets; ++set) {
            const Aesthetics aesthetics = randomAesthetics(rng);
            const OutputFormat format = allOutputFormats[static_cast<std::size_t>(rng.intBelow(3))];
            const bool embedded = rng.uniform() < 0.5F;
            const std::uint64_t seed = rng.next();
            RecipeKeeper keeper({.journal = journal.file(), .embedded = embedded},
                                {.corpusName = "x", .aesthetics = aesthetics, .format = format});
            std::vector<fs::path> files;
            for (const GeneratedSample& sample : writer.generate({.count = perSet,
                                                 .outputDirectory = folder / "out",
                                                 .aesthetics = aesthetics,
                                                 .seed = seed,
                                                 .format = format,
                                                 .namePrefix = {}},
                                                                 keeper.hooks(), {}, {}))
                files.push_back(sample.url);
            for (const KnownFile& known : lookUp(files, &journal)) {
                ASSERT_EQ(known.problem, "");
                ASSERT_EQ(known.recipes.size(), 1U);
                ASSERT_TRUE(remade(reader, known.recipes[0], known.chunk) == readText(known.file))
                    << "model " << m << ", " << encodeJSON(known.recipes[0]);
            }
        }
    }
}

TEST(Remake, SamplesDependNeitherOnTheirNeighboursNorOnTheThreads) {
    SampleGenerator generator(smallModel(), testing::processor());
    SeededRNG rng(5);
    std::vector<VariationPlan> plans;
    for (int i = 0; i < 20; ++i) {
        const SampleOrigin origin =
            generator.auditionWithOrigin({.phaseIterations = 1}, static_cast<std::uint64_t>(i)).origin;
        plans.push_back({origin, randomAesthetics(rng)});
    }
    const auto together = generator.remake(plans);
    const ThreadLimit limit(1);
    const auto serial = generator.remake(plans);
    for (std::size_t i = 0; i < plans.size(); ++i) {
        EXPECT_EQ(serial[i].samples, together[i].samples) << i;
        EXPECT_EQ(generator.remake(std::span(plans).subspan(i, 1)).at(0).samples, together[i].samples) << i;
    }
}

TEST(Remake, OfAnAuditionGivesItsSamples) {
    SampleGenerator generator(smallModel(), testing::processor());
    const Aesthetics wild = Preset::named("Wild")->aesthetics;
    const AuditionedSample audition = generator.auditionWithOrigin(wild, 3);
    const VariationPlan plan{audition.origin, wild};
    EXPECT_EQ(generator.remake(std::span(&plan, 1)).at(0).samples, audition.samples);
}

TEST(Remake, RefusesParametersThatNoGenerationTakesAndCanBeCancelled) {
    SampleGenerator generator(smallModel(), testing::processor());
    VariationPlan plan{generator.auditionWithOrigin({.phaseIterations = 1}, 1).origin, {}};
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)generator.remake(std::span(&plan, 1), stop.get_token()), CancellationError);
    plan.aesthetics.stretch = std::nan("");
    EXPECT_THROW((void)generator.remake(std::span(&plan, 1)), InvalidParameterError);
}

}  // namespace
}  // namespace quillmere
