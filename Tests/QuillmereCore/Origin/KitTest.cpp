#include "QuillmereCore/Origin/Kit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "QuillmereCore/Generate/Finishing.h"
#include "Support/Processor.h"
#include "Support/SFZDocument.h"
#include "Support/Signals.h"
#include "Support/SmallModel.h"
#include "Support/XMLDocument.h"

namespace quillmere {
namespace {

using ::testing::ElementsAre;
using testing::SFZDocument;
using testing::XMLDocument;

double level(const std::vector<float>& samples) {
    double sum = 0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

// The sounds as they are in the kit.
std::vector<std::vector<float>> fitted(std::vector<std::vector<float>> sounds,
                                       const Kit::Arrangement& arrangement) {
    for (std::size_t i = 0; i < sounds.size(); ++i)
        Finishing::fit(sounds[i], arrangement.fits[i].samples, arrangement.fits[i].gain, 8000);
    return sounds;
}

TEST(KitArrangement, GivesEverySoundTheLengthAndTheLevelOfTheFirst) {
    const std::vector<std::vector<float>> sounds{testing::noise(1, 4000, 0.3F), testing::noise(2, 3000, 0.5F),
                                                 testing::sine(400, 8000, 6000, 0.2)};
    const Kit::Arrangement arrangement = Kit::arrange(sounds, 1);
    EXPECT_THAT(arrangement.order, ElementsAre(0, 1, 2));
    EXPECT_NEAR(arrangement.fits[0].gain, 1, 1e-6) << "the chosen one stays as it is";
    for (const std::vector<float>& sound : fitted(sounds, arrangement)) {
        EXPECT_EQ(sound.size(), 4000U);
        EXPECT_NEAR(20 * std::log10(level(sound) / level(sounds[0])), 0, 0.1);
    }
}

TEST(KitArrangement, NoPeakIsCutOff) {
    // The second is as loud as the first only with a peak far beyond full scale.
    std::vector<float> click(4000);
    click[10] = 0.9F;
    const std::vector<std::vector<float>> sounds{testing::sine(400, 8000, 4000, 0.9), click};
    const Kit::Arrangement arrangement = Kit::arrange(sounds, 1);
    const auto result = fitted(sounds, arrangement);
    EXPECT_NEAR(result[1][10], std::pow(10, -0.1 / 20), 1e-3);
    EXPECT_NEAR(level(result[0]), level(result[1]), 1e-6);
}

TEST(KitArrangement, LayersGoFromTheSoftestUp) {
    std::vector<std::vector<float>> sounds;
    for (const float amplitude : {0.4F, 0.1F, 0.9F, 0.2F})
        sounds.push_back(testing::noise(7, 1000, amplitude));
    EXPECT_THAT(Kit::arrange(sounds, 2).order, ElementsAre(1, 3, 0, 2));
    EXPECT_THAT(Kit::arrange(sounds, 4).order, ElementsAre(1, 3, 0, 2));
    EXPECT_THAT(Kit::arrange(sounds, 1).order, ElementsAre(0, 1, 2, 3));
}

TEST(KitArrangement, SilenceIsNoTrouble) {
    const std::vector<std::vector<float>> sounds{std::vector<float>(100), testing::noise(1, 100, 0.5F)};
    for (const SoundFit& fit : Kit::arrange(sounds, 1).fits)
        EXPECT_NEAR(fit.gain, 1, 1e-6);
}

TEST(KitVelocities, CoverEveryVelocityOnce) {
    for (std::size_t layers = 1; layers <= 16; ++layers) {
        int next = 1;
        for (std::size_t layer = 0; layer < layers; ++layer) {
            const auto [low, high] = Kit::velocities(layer, layers);
            EXPECT_EQ(low, next);
            EXPECT_GE(high, low);
            next = high + 1;
        }
        EXPECT_EQ(next, 128) << layers;
    }
}

TEST(KitPlans, BeginWithTheChosenSoundAndStayNear) {
    const SampleGenerator generator(testing::smallModel(), testing::processor());
    Recipe recipe = makeRecipe(generator.draw({}, 0, 3), {});
    recipe.fit = SoundFit{10, 2};
    const auto plans = Kit::plans(generator, recipe, {.count = 3, .layers = 2, .closeness = 1}, 9, 1);
    ASSERT_EQ(plans.size(), 6U);
    EXPECT_EQ(plans[0].origin.latent, recipe.latent);
    EXPECT_EQ(plans[0].origin.state, recipe.state);
    for (const VariationPlan& plan : plans) {
        EXPECT_EQ(plan.origin.latent, recipe.latent);
        EXPECT_FALSE(plan.origin.fit.has_value());
    }
    EXPECT_NE(plans[1].origin.state, plans[2].origin.state);
    const auto other = Kit::plans(generator, recipe, {.count = 3, .layers = 1, .closeness = 0.5}, 9, 0);
    EXPECT_NE(other[1].origin.latent, recipe.latent);
    EXPECT_NE(other[1].origin.state, plans[1].origin.state) << "each instrument has its own";
}

const Kit::Description sampleKit{
    .name = "Bars & <more>",
    .instruments = {{"kick \"one\"",
                     {{"01_kick_v1_1.wav", "01_kick_v1_2.wav"}, {"01_kick_v2_1.wav", "01_kick_v2_2.wav"}}},
                    {"snare", {{"02_snare_1.wav"}}}},
    .longestSeconds = 2};

TEST(KitFiles, AnSFZPlaysItsSoundsInTurnByVelocity) {
    const SFZDocument document(Kit::sfz(sampleKit));
    EXPECT_EQ(document.regions().size(), 5U);
    EXPECT_THAT(document.played(36, 1, 0), ElementsAre("01_kick_v1_1.wav"));
    EXPECT_THAT(document.played(36, 63, 1), ElementsAre("01_kick_v1_2.wav"));
    EXPECT_THAT(document.played(36, 64, 2), ElementsAre("01_kick_v2_1.wav"));
    EXPECT_THAT(document.played(36, 127, 3), ElementsAre("01_kick_v2_2.wav"));
    for (int velocity = 1; velocity <= 127; ++velocity)
        EXPECT_THAT(document.played(37, velocity, velocity), ElementsAre("02_snare_1.wav"));
    EXPECT_TRUE(document.played(38, 100, 0).empty());
}

TEST(KitFiles, ADrumKitHasEverySoundWithItsVelocities) {
    const XMLDocument document(Kit::hydrogen(sampleKit));
    const std::string instrument = "//*[local-name()='instrument']";
    EXPECT_THAT(document.texts("/*/*[local-name()='name']"), ElementsAre("Bars & <more>"));
    EXPECT_THAT(document.texts(instrument + "/*[local-name()='name']"), ElementsAre("kick \"one\"", "snare"));
    EXPECT_THAT(document.texts(instrument + "/*[local-name()='sampleSelectionAlgo']"),
                ElementsAre("ROUND_ROBIN", "VELOCITY"));
    EXPECT_THAT(document.texts(instrument + "/*[local-name()='midiOutNote']"), ElementsAre("36", "37"));
    EXPECT_THAT(document.texts("//*[local-name()='filename']"),
                ElementsAre("01_kick_v1_1.wav", "01_kick_v1_2.wav", "01_kick_v2_1.wav", "01_kick_v2_2.wav",
                            "02_snare_1.wav"));
    EXPECT_THAT(document.texts("//*[local-name()='min']"),
                ElementsAre("0.000000", "0.000000", "0.500000", "0.500000", "0.000000"));
    EXPECT_THAT(document.texts("//*[local-name()='max']"),
                ElementsAre("0.500000", "0.500000", "1.000000", "1.000000", "1.000000"));
    EXPECT_EQ(document.count("//*[namespace-uri()='http://www.hydrogen-music.org/drumkit']"),
              document.count("//*"));
}

TEST(KitFiles, NamesAreOnesThatEverySamplerTakes) {
    EXPECT_EQ(Kit::plainName("Große Trommel=1/2 #3.wav"), "Gro__e_Trommel_1_2__3.wav");
}

}  // namespace
}  // namespace quillmere
