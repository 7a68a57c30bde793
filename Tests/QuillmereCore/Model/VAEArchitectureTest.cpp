#include "QuillmereCore/Model/VAEArchitecture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "QuillmereCore/Util/RNG.h"

namespace quillmere::VAEArchitecture {
namespace {

using Shape = std::vector<std::int64_t>;

const ModelConfig smallest{8000, 256, 64, 32, 32, 4, AnalysisProfile::percussive};

const Param& named(const std::vector<Param>& list, const std::string& name) {
    const auto found = std::ranges::find(list, name, &Param::name);
    if (found == list.end()) throw std::runtime_error("no parameter " + name);
    return *found;
}

TEST(VAEArchitecture, ListsTheParametersInTheOrderOfStoredModels) {
    const std::vector<std::string> expected{"enc0.w", "enc0.b", "enc1.w",   "enc1.b",   "enc2.w", "enc2.b",
                                            "enc3.w", "enc3.b", "enc4.w",   "enc4.b",   "mu.w",   "mu.b",
                                            "lv.w",   "lv.b",   "dec.fc.w", "dec.fc.b", "dec0.w", "dec0.b",
                                            "dec1.w", "dec1.b", "dec2.w",   "dec2.b",   "dec3.w", "dec3.b",
                                            "dec4.w", "dec4.b", "out.w",    "out.b"};
    std::vector<std::string> names;
    for (const Param& param : params(smallest))
        names.push_back(param.name);
    EXPECT_EQ(names, expected);
}

TEST(VAEArchitecture, ConvolutionShapesFollowTheChannels) {
    const std::vector<Param> list = params(smallest);
    EXPECT_EQ(named(list, "enc0.w").shape, (Shape{24, 1, 4, 4}));
    EXPECT_EQ(named(list, "enc1.w").shape, (Shape{48, 24, 4, 4}));
    EXPECT_EQ(named(list, "enc2.w").shape, (Shape{96, 48, 4, 4}));
    EXPECT_EQ(named(list, "enc3.w").shape, (Shape{128, 96, 4, 4}));
    EXPECT_EQ(named(list, "enc4.w").shape, (Shape{192, 128, 4, 4}));
    EXPECT_EQ(named(list, "enc4.b").shape, (Shape{1, 192, 1, 1}));
    EXPECT_EQ(named(list, "dec0.w").shape, (Shape{128, 192, 3, 3}));
    EXPECT_EQ(named(list, "dec1.w").shape, (Shape{96, 128, 3, 3}));
    EXPECT_EQ(named(list, "dec2.w").shape, (Shape{48, 96, 3, 3}));
    EXPECT_EQ(named(list, "dec3.w").shape, (Shape{24, 48, 3, 3}));
    EXPECT_EQ(named(list, "dec4.w").shape, (Shape{24, 24, 3, 3}));
    EXPECT_EQ(named(list, "out.w").shape, (Shape{1, 24, 3, 3}));
    EXPECT_EQ(named(list, "out.b").shape, (Shape{1, 1, 1, 1}));
}

TEST(VAEArchitecture, AnImageOf96By192FlattensTo3456) {
    const ModelConfig config{44100, 1024, 256, 96, 192, 64, AnalysisProfile::percussive};
    const std::vector<Param> list = params(config);
    EXPECT_EQ(named(list, "mu.w").shape, (Shape{3456, 64}));
    EXPECT_EQ(named(list, "mu.w").elementCount(), 3456 * 64);
    EXPECT_EQ(named(list, "mu.b").shape, (Shape{1, 64}));
    EXPECT_EQ(named(list, "lv.w").shape, (Shape{3456, 64}));
    EXPECT_EQ(named(list, "lv.b").shape, (Shape{1, 64}));
    EXPECT_EQ(named(list, "dec.fc.w").shape, (Shape{64, 3456}));
    EXPECT_EQ(named(list, "dec.fc.b").shape, (Shape{1, 3456}));
}

TEST(VAEArchitecture, ATonalImageHasFourTimesTheRows) {
    const ModelConfig config{44100, 4096, 1024, 384, 64, 8, AnalysisProfile::tonal};
    EXPECT_EQ(named(params(config), "mu.w").shape, (Shape{192 * 12 * 2, 8}));
}

TEST(VAEArchitecture, StandardDeviationsAreScaledByTheFanInInSinglePrecision) {
    const ModelConfig config{44100, 1024, 256, 96, 192, 64, AnalysisProfile::percussive};
    const std::vector<Param> list = params(config);
    EXPECT_EQ(named(list, "enc0.w").initStd, std::sqrt(2.0F / 16.0F));
    EXPECT_EQ(named(list, "enc3.w").initStd, std::sqrt(2.0F / 1536.0F));
    EXPECT_EQ(named(list, "dec2.w").initStd, std::sqrt(2.0F / 864.0F));
    EXPECT_EQ(named(list, "mu.w").initStd, 0.5F / std::sqrt(3456.0F));
    EXPECT_EQ(named(list, "lv.w").initStd, 0.1F / std::sqrt(3456.0F));
    EXPECT_EQ(named(list, "dec.fc.w").initStd, std::sqrt(2.0F / 64.0F));
    EXPECT_EQ(named(list, "out.w").initStd, 0.068041384F);
    for (const Param& param : list) {
        const bool isBias = param.name.ends_with(".b");
        EXPECT_EQ(param.initStd == 0, isBias) << param.name;
        EXPECT_EQ(param.constant, param.name == "out.b" ? -0.6F : 0.0F) << param.name;
    }
}

TEST(VAEArchitecture, AnEmptyShapeCountsAsOneElement) {
    EXPECT_EQ(Param{}.elementCount(), 1);
    EXPECT_EQ((Param{"none", {3, 0}, 0, 0}.elementCount()), 0);
}

TEST(VAEArchitectureDeathTest, AnElementCountThatOverflowsStopsTheProgram) {
    const Param param{"huge", {std::int64_t{1} << 40, std::int64_t{1} << 40}, 0, 0};
    EXPECT_DEATH((void)param.elementCount(), "overflow");
    ModelConfig config = smallest;
    config.nMels = std::int64_t{1} << 62;
    EXPECT_DEATH((void)params(config), "overflow");
}

TEST(VAEArchitecture, InitialWeightsRepeatForTheSameSeed) {
    EXPECT_EQ(initialWeights(smallest, 42), initialWeights(smallest, 42));
    EXPECT_NE(initialWeights(smallest, 42), initialWeights(smallest, 43));
}

TEST(VAEArchitecture, InitialBiasesAreZeroExceptTheOutputBias) {
    const std::vector<Param> list = params(smallest);
    const auto weights = initialWeights(smallest, 1);
    ASSERT_EQ(weights.size(), list.size());
    for (std::size_t p = 0; p < list.size(); ++p) {
        ASSERT_EQ(weights[p].size(), static_cast<std::size_t>(list[p].elementCount())) << list[p].name;
        if (!list[p].name.ends_with(".b")) continue;
        const float expected = list[p].name == "out.b" ? -0.6F : 0.0F;
        EXPECT_EQ(weights[p], std::vector<float>(weights[p].size(), expected)) << list[p].name;
    }
}

TEST(VAEArchitecture, OneGeneratorRunsThroughTheWholeListWithTwoDrawsPerRandomValue) {
    const std::vector<Param> list = params(smallest);
    const auto weights = initialWeights(smallest, 7);
    SeededRNG rng(7);
    for (std::size_t p = 0; p < list.size(); ++p) {
        if (list[p].initStd == 0) continue;
        SeededRNG first = rng;
        ASSERT_EQ(weights[p].front(), first.gaussian() * list[p].initStd) << list[p].name;
        for (std::int64_t draw = 0; draw < 2 * (list[p].elementCount() - 1); ++draw)
            rng.next();
        ASSERT_EQ(weights[p].back(), rng.gaussian() * list[p].initStd) << list[p].name;
    }
}

}  // namespace
}  // namespace quillmere::VAEArchitecture
