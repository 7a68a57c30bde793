#include "QuillmereCore/Origin/LatentMap.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/RNG.h"
#include "Support/SmallModel.h"

namespace quillmere {
namespace {

using ::testing::ElementsAre;
using testing::randomLatents;

double product(std::span<const double> a, std::span<const double> b) {
    return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

// Covariance times direction, less its eigenvalue times direction: nothing for an eigenvector.
double residual(std::span<const std::vector<float>> latents, std::span<const double> direction,
                double share) {
    const std::size_t dim = direction.size();
    std::vector<double> mean(dim);
    for (const auto& latent : latents) {
        for (std::size_t j = 0; j < dim; ++j)
            mean[j] += static_cast<double>(latent[j]) / static_cast<double>(latents.size());
    }
    std::vector<double> image(dim);
    double variance = 0;
    for (const auto& latent : latents) {
        std::vector<double> deviation(dim);
        for (std::size_t j = 0; j < dim; ++j)
            deviation[j] = static_cast<double>(latent[j]) - mean[j];
        variance += product(deviation, deviation);
        const double along = product(deviation, direction);
        for (std::size_t j = 0; j < dim; ++j)
            image[j] += along * deviation[j];
    }
    for (std::size_t j = 0; j < dim; ++j)
        image[j] -= share * variance * direction[j];
    return std::sqrt(product(image, image)) / variance;
}

TEST(LatentMap, TheAxesAreTheTwoPrincipalDirections) {
    auto latents = randomLatents(200, 64, 3);
    for (auto& latent : latents) {
        for (std::size_t j = 0; j < latent.size(); ++j)
            latent[j] *= 1 + 0.02F * static_cast<float>(j % 17);
    }
    const LatentMap map(latents, 64);
    for (std::size_t axis = 0; axis < 2; ++axis) {
        const auto& direction = map.directions()[axis];
        EXPECT_NEAR(product(direction, direction), 1, 1e-13);
        EXPECT_LT(residual(latents, direction, map.shares()[axis]), 1e-13) << axis;
    }
    EXPECT_NEAR(product(map.directions()[0], map.directions()[1]), 0, 1e-13);
    EXPECT_GT(map.shares()[0], map.shares()[1]);
    // No other direction has more: the variance along each coordinate stays below that along x.
    for (std::size_t j = 0; j < 64; ++j) {
        std::vector<double> unit(64);
        unit[j] = 1;
        EXPECT_GT(residual(latents, unit, map.shares()[0]), 1e-6);
    }
}

TEST(LatentMap, PlacesAreCoordinatesAlongTheAxes) {
    // An ellipse in the plane of the second and the third coordinate.
    std::vector<std::vector<float>> latents;
    for (int i = 0; i < 8; ++i) {
        const double angle = 0.7853981633974483 * i;
        latents.push_back({5, static_cast<float>(-3 * std::cos(angle)), static_cast<float>(std::sin(angle))});
    }
    const LatentMap map(latents, 3);
    EXPECT_NEAR(map.shares()[0], 0.9, 1e-6);
    EXPECT_NEAR(map.shares()[1], 0.1, 1e-6);
    for (std::size_t i = 0; i < latents.size(); ++i) {
        EXPECT_NEAR(map.places()[i].x, latents[i][1], 1e-6) << "turned so that the greatest is positive";
        EXPECT_NEAR(map.places()[i].y, latents[i][2], 1e-6);
    }
}

TEST(LatentMap, AnotherVectorHasAPlaceToo) {
    const auto latents = randomLatents(30, 8, 5);
    const LatentMap map(latents, 8);
    for (std::size_t clip = 0; clip < latents.size(); ++clip)
        EXPECT_EQ(map.placeOf(latents[clip]), map.places()[clip]);
    std::vector<float> between(9, 100);  // the last one does not count
    for (std::size_t j = 0; j < 8; ++j)
        between[j] = (latents[3][j] + latents[4][j]) / 2;
    EXPECT_NEAR(map.placeOf(between).x, (map.places()[3].x + map.places()[4].x) / 2, 1e-6);
    EXPECT_NEAR(map.placeOf(between).y, (map.places()[3].y + map.places()[4].y) / 2, 1e-6);
}

TEST(LatentMap, GivesTheSameBitsEverywhere) {
    const std::vector<std::vector<float>> latents{{1, 2, 0.5F, -0.25F},
                                                  {-1, 0.25F, 3, 1.5F},
                                                  {0, -2, 1, 0.75F},
                                                  {2.5F, 1, -1, -3},
                                                  {-0.5F, 0.5F, 0.25F, 2}};
    // By the same arithmetic in Python.
    EXPECT_THAT(LatentMap(latents, 4).places(),
                ElementsAre(MapPlace{-0x1.27825a33e3c00p+0, 0x1.68eea9851ca72p+0},
                            MapPlace{0x1.508effe954616p+1, 0x1.42cd264233dc1p-1},
                            MapPlace{0x1.4e09c0a237126p+0, -0x1.0a88410a2ee36p+1},
                            MapPlace{-0x1.0e678941ba418p+2, -0x1.da44affc1869ep-2},
                            MapPlace{0x1.71f8bec5ecf0cp+0, 0x1.0298e2da5a97ep-1}));
}

TEST(LatentMap, ValuesBehindTheDimensionDoNotCount) {
    auto latents = randomLatents(10, 6, 4);
    const LatentMap map(latents, 4);
    for (auto& latent : latents)
        latent[5] = 99;
    const LatentMap same(latents, 4);
    for (std::size_t i = 0; i < latents.size(); ++i)
        EXPECT_EQ(map.places()[i], same.places()[i]);
}

TEST(LatentMap, FewOrEqualClipsHaveAMapToo) {
    const LatentMap one(randomLatents(1, 4, 5), 4);
    EXPECT_THAT(one.places(), ElementsAre(MapPlace{0, 0}));
    EXPECT_EQ(one.shares()[0], 0);
    const LatentMap line(std::vector<std::vector<float>>{{1}, {3}}, 1);
    EXPECT_THAT(line.places(), ElementsAre(MapPlace{-1, 0}, MapPlace{1, 0}));
    EXPECT_EQ(line.shares()[0], 1);
    EXPECT_EQ(line.shares()[1], 0);
}

TEST(LatentMap, CanBeCancelled) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(LatentMap(randomLatents(3, 4, 5), 4, stop.get_token()), CancellationError);
}

// Clips at given places: two dimensions, of which x has the greater variance.
LatentMap placed(const std::vector<MapPlace>& places) {
    std::vector<std::vector<float>> latents;
    for (const MapPlace& place : places)
        latents.push_back({static_cast<float>(place.x), static_cast<float>(place.y)});
    return {latents, 2};
}

TEST(BlendAt, ThePlaceOfAClipIsThatClip) {
    const LatentMap map(randomLatents(20, 8, 6), 8);
    for (std::size_t clip = 0; clip < 20; ++clip) {
        const auto blend = map.blendAt(map.places()[clip]);
        EXPECT_THAT(blend, ElementsAre(LatentDraw::Source{clip, 1}));
    }
}

TEST(BlendAt, ClipsAtOnePlaceShareIt) {
    const LatentMap map = placed({{-4, 0}, {4, 1}, {4, 1}, {-4, -2}});
    const auto blend = map.blendAt(map.places()[1]);
    EXPECT_THAT(blend, ElementsAre(LatentDraw::Source{1, 0.5F}, LatentDraw::Source{2, 0.5F}));
}

TEST(BlendAt, WeightsAreAsStated) {
    // The distances from the middle are 1, 1, 2, 4 and 5.
    const LatentMap map = placed({{1, 0}, {-1, 0}, {2, 0}, {-4, 0}, {5, 0}, {-9, 0}, {6, 0.1}});
    const double shift = map.places()[0].x - 1;
    const auto blend = map.blendAt({shift, map.places()[0].y});
    ASSERT_EQ(blend.size(), 4U);
    const auto weight = [](double distance) { return std::pow(1 / distance - 1 / 5.0, 2); };
    const double sum = 2 * weight(1) + weight(2) + weight(4);
    EXPECT_EQ(blend[0].clip, 0U) << "of equally near ones the first";
    EXPECT_NEAR(blend[0].weight, weight(1) / sum, 1e-2);
    EXPECT_NEAR(blend[1].weight, weight(1) / sum, 1e-2);
    EXPECT_NEAR(blend[2].weight, weight(2) / sum, 1e-2);
    EXPECT_NEAR(blend[3].weight, weight(4) / sum, 1e-2);
}

TEST(BlendAt, MovesWithoutLeaps) {
    const LatentMap map(randomLatents(40, 8, 7), 8);
    const auto weights = [&](double x) {
        std::vector<double> of(40);
        for (const auto& [clip, weight] : map.blendAt({x, 0.1}))
            of[clip] = static_cast<double>(weight);
        return of;
    };
    constexpr double step = 1e-4;
    auto before = weights(-3);
    for (double x = -3; x < 3; x += step) {
        const auto now = weights(x);
        for (std::size_t clip = 0; clip < now.size(); ++clip)
            ASSERT_NEAR(now[clip], before[clip], 0.05) << x;
        before = now;
    }
}

TEST(BlendAt, EquallyFarClipsShareAPlaceFarAway) {
    const LatentMap map = placed({{0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}, {0, 0}});
    const auto blend = map.blendAt({100, 100});
    ASSERT_EQ(blend.size(), 4U);
    for (const auto& source : blend)
        EXPECT_EQ(source.weight, 0.25F);
    EXPECT_EQ(placed({{1, 2}}).blendAt({1e300, -1e300}).size(), 1U);
}

}  // namespace
}  // namespace quillmere
