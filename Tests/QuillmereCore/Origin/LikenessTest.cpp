#include "QuillmereCore/Origin/Likeness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

#include "Support/Processor.h"
#include "Support/SmallModel.h"

namespace quillmere {
namespace {

using testing::smallModel;

class Liking : public ::testing::Test {
protected:
    [[nodiscard]] Recipe recipeOf(std::uint64_t seed) const {
        return makeRecipe(generator.draw({}, 0, seed), {});
    }
    static double apart(const std::vector<float>& a, const std::vector<float>& b) {
        double sum = 0;
        for (std::size_t i = 0; i < a.size(); ++i)
            sum += std::pow(static_cast<double>(a[i]) - static_cast<double>(b[i]), 2);
        return std::sqrt(sum);
    }
    // Mean distance of a hundred draws around one place.
    [[nodiscard]] double spread(double closeness) const {
        const Recipe liked = recipeOf(3);
        double sum = 0;
        for (std::int64_t i = 0; i < 100; ++i)
            sum += apart(Likeness::around(generator, std::span(&liked, 1), closeness, 9, i).latent,
                         liked.latent);
        return sum / 100;
    }

    const SampleGenerator generator{smallModel(), testing::processor()};
};

TEST_F(Liking, TheClosestIsTheSamePlaceAndFartherOnesSpread) {
    EXPECT_EQ(spread(1), 0);
    EXPECT_GT(spread(0.5), 0.1);
    EXPECT_NEAR(spread(0), 2 * spread(0.5), 1e-4) << "the same walk, twice as far";
}

TEST_F(Liking, BlendsAllOfTheLikedOnes) {
    const std::vector<Recipe> liked{recipeOf(1), recipeOf(2), recipeOf(3)};
    for (std::int64_t i = 0; i < 20; ++i) {
        const SampleOrigin origin = Likeness::around(generator, liked, 1, 5, i);
        // Within the smallest box around them.
        for (std::size_t k = 0; k < origin.latent.size(); ++k) {
            const auto [low, high] =
                std::minmax({liked[0].latent[k], liked[1].latent[k], liked[2].latent[k]});
            EXPECT_GE(origin.latent[k], low - 1e-5F);
            EXPECT_LE(origin.latent[k], high + 1e-5F);
        }
        float sum = 0;
        std::set<std::size_t> clips;
        for (const SampleOrigin::Source& source : origin.sources) {
            sum += source.weight;
            EXPECT_TRUE(clips.insert(source.clip).second) << "each clip once";
        }
        EXPECT_NEAR(sum, 1, 1e-5);
        EXPECT_TRUE(
            std::ranges::is_sorted(origin.sources, std::ranges::greater(), &SampleOrigin::Source::weight));
    }
}

TEST_F(Liking, DependsOnTheSeedAndTheIndexAlone) {
    const Recipe liked = recipeOf(3);
    const auto draw = [&](std::uint64_t seed, std::int64_t index) {
        return Likeness::around(generator, std::span(&liked, 1), 0.5, seed, index);
    };
    EXPECT_EQ(draw(5, 2), draw(5, 2));
    EXPECT_NE(draw(5, 2).latent, draw(5, 3).latent);
    EXPECT_NE(draw(5, 2).latent, draw(6, 2).latent);
    EXPECT_NE(draw(5, 2).state, draw(5, 3).state);
    const Recipe recipe = makeRecipe(draw(5, 2), {});
    EXPECT_EQ(recipe.seed, 5U);
    EXPECT_EQ(recipe.model, generator.identity());
}

TEST_F(Liking, ABodyKeepsThePlaceAndASkinWhatComesAfter) {
    const Recipe recipe = recipeOf(3);
    const SampleOrigin body = Likeness::sameBody(recipe, 8, 1);
    EXPECT_EQ(body.latent, recipe.latent);
    EXPECT_EQ(body.sources, recipe.sources);
    EXPECT_NE(body.state, recipe.state);
    EXPECT_NE(body.state, Likeness::sameBody(recipe, 8, 2).state);
    const SampleOrigin skin = Likeness::sameSkin(generator, recipe, {}, 8, 1);
    EXPECT_EQ(skin.state, recipe.state);
    EXPECT_EQ(skin.latent, generator.draw({}, 1, SampleGenerator::variationSeed(8, 1)).latent);
    EXPECT_NE(skin.latent, recipe.latent);
}

TEST_F(Liking, APlaceIsTheBlendOfTheNearestClips) {
    const ModelBundle& bundle = generator.bundle();
    const LatentMap map(bundle.latents, 4);
    const MapPlace place{0.2, -0.3};
    const SampleOrigin origin = Likeness::atPlace(generator, map, place, 1, 5, 2);
    std::vector<float> blend(4);
    float sum = 0;
    for (const auto& [clip, weight] : map.blendAt(place)) {
        for (std::size_t i = 0; i < blend.size(); ++i)
            blend[i] += weight * bundle.latents[clip][i];
        sum += weight;
    }
    EXPECT_EQ(origin.latent, blend);
    EXPECT_NEAR(sum, 1, 1e-6);
    EXPECT_EQ(origin.sources.size(), 4U);
    EXPECT_EQ(Likeness::atPlace(generator, map, place, 1, 5, 3).latent, origin.latent);
    EXPECT_NE(Likeness::atPlace(generator, map, place, 1, 5, 3).state, origin.state);
    EXPECT_NE(Likeness::atPlace(generator, map, place, 0.5, 5, 2).latent, origin.latent);
    EXPECT_EQ(makeRecipe(origin, {}).seed, 5U);
}

using LikingDeathTest = Liking;

TEST_F(LikingDeathTest, RefusesTheMapOfAnotherModel) {
    std::vector<std::vector<float>> latents = generator.bundle().latents;
    latents.push_back(latents.front());
    const LatentMap map(latents, 4);
    EXPECT_DEATH((void)Likeness::atPlace(generator, map, {0, 0}, 1, 5, 2), "another model");
}

}  // namespace
}  // namespace quillmere
