#include "QuillmereCore/Generate/Detail/Attack.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace quillmere::Detail {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::FloatEq;

constexpr AttackFrames two{2, 2};

TEST(Attack, LastsSixFramesOfThePercussiveAndTwoOfTheTonalAnalysis) {
    const auto framesAt = [](std::int64_t hop) { return AttackFrames::forHop(hop); };
    EXPECT_EQ(framesAt(256).rise, 6U);
    EXPECT_EQ(framesAt(256).fade, 6U);
    EXPECT_EQ(framesAt(1024).count(), 4U);
    EXPECT_EQ(framesAt(64).count(), 12U);
    EXPECT_EQ(framesAt(1 << 20).count(), 4U);
}

TEST(Attack, CourseIsHowFarEachFrameLiesBelowTheLoudestOfTheRise) {
    std::vector<float> course(4);
    const std::vector<float> image{-0.8F, 0.2F, 0.5F, -0.3F, 9};  // the third frame is no longer the rise
    addCourse(image, 5, two, 1, course);
    EXPECT_THAT(course, ElementsAre(FloatEq(-1.0F), FloatEq(0), FloatEq(0.3F), FloatEq(-0.5F)));
}

TEST(Attack, CoursesOfSourcesAddUpByTheirShares) {
    std::vector<float> course(8);
    addCourse(std::vector<float>{0, 0, 0, 0, -1, 1, 0, 0}, 4, two, 0.25F, course);
    addCourse(std::vector<float>{-1, 0, -1, -1, 0, 0, 0, 0}, 4, two, 0.75F, course);
    EXPECT_THAT(course, ElementsAre(FloatEq(-0.75F), FloatEq(0), FloatEq(-0.75F), FloatEq(-0.75F),
                                    FloatEq(-0.5F), FloatEq(0), FloatEq(-0.25F), FloatEq(-0.25F)));
}

TEST(Attack, KeepsTheLoudestOfTheRiseAndFadesIntoTheDecodedFrames) {
    std::vector<float> image{0.1F, 0.4F, 0.3F, 0.2F, 0.1F};
    const std::vector<float> course{-2, 0, -1, -1};
    applyAttack(image, 5, two, course, 1);
    EXPECT_THAT(image, ElementsAre(FloatEq(-1.6F), FloatEq(0.4F), FloatEq(-0.6F),
                                   FloatEq(0.5F * -0.6F + 0.5F * 0.2F), 0.1F));
}

TEST(Attack, ActsInProportionToTheAmount) {
    const std::vector<float> decoded{0.1F, 0.4F, 0.3F, 0.2F};
    const std::vector<float> course{-2, 0, -1, -1};
    std::vector<float> full = decoded;
    std::vector<float> half = decoded;
    std::vector<float> none = decoded;
    applyAttack(full, 4, two, course, 1);
    applyAttack(half, 4, two, course, 0.5F);
    applyAttack(none, 4, two, course, 0);
    EXPECT_EQ(none, decoded);
    for (std::size_t t = 0; t < 4; ++t)
        EXPECT_NEAR(half[t], 0.5F * (full[t] + decoded[t]), 1e-6F) << t;
}

TEST(Attack, AnImageShorterThanTheAttackIsReachedAsFarAsItGoes) {
    std::vector<float> image{0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.5F};
    applyAttack(image, 3, two, std::vector<float>(8, -1.0F), 1);
    EXPECT_THAT(image, Each(-0.5F));
    std::vector<float> single{0.5F};
    applyAttack(single, 1, two, std::vector<float>(4, -1.0F), 1);
    EXPECT_THAT(single, ElementsAre(-0.5F));
}

TEST(AttackDeathTest, SizesThatDoNotFitStopTheProgram) {
    std::vector<float> course(4);
    EXPECT_DEATH(addCourse(std::vector<float>(3), 3, two, 1, course), "size");
    EXPECT_DEATH(addCourse(std::vector<float>(5), 4, two, 1, course), "size");
    std::vector<float> uneven(5);
    EXPECT_DEATH(addCourse(std::vector<float>(4), 4, two, 1, uneven), "size");
    std::vector<float> image(10);
    EXPECT_DEATH(applyAttack(image, 5, two, course, 1), "size");
    EXPECT_DEATH(applyAttack(image, 4, two, std::vector<float>(8), 1), "size");
    EXPECT_DEATH(applyAttack(image, 0, two, course, 1), "size");
    EXPECT_DEATH((void)AttackFrames::forHop(0), "hop");
}

}  // namespace
}  // namespace quillmere::Detail
