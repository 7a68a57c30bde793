#include "QuillmereCore/Origin/MapPicture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <variant>

#include "Support/SmallModel.h"

namespace quillmere {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using testing::randomLatents;

template <typename Shape>
std::vector<Shape> shapesOf(const Drawing& drawing) {
    std::vector<Shape> shapes;
    for (const Drawing::Shape& shape : drawing.shapes()) {
        if (const auto* const one = std::get_if<Shape>(&shape)) shapes.push_back(*one);
    }
    return shapes;
}

std::vector<std::string> numbered(std::size_t count) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i)
        names.push_back("sample " + std::to_string(i));
    return names;
}

TEST(MapPicture, HasADotForEveryClipAndNamesWhereThereIsRoom) {
    constexpr std::size_t count = 2000;
    const LatentMap map(randomLatents(count, 8, 1), 8);
    const Drawing drawing = mapPicture(map, numbered(count), "Kicks");
    const auto dots = shapesOf<Drawing::Dot>(drawing);
    ASSERT_EQ(dots.size(), count);
    for (const Drawing::Dot& dot : dots) {
        EXPECT_GT(dot.centre.x, 0);
        EXPECT_LT(dot.centre.x, drawing.width());
        EXPECT_GT(dot.centre.y, 0);
        EXPECT_LT(dot.centre.y, drawing.height());
    }
    EXPECT_TRUE(dots[7].title.starts_with("sample 7 ("));
    std::size_t names = 0;
    for (const Drawing::Text& text : shapesOf<Drawing::Text>(drawing))
        names += text.text.starts_with("sample ") ? 1 : 0;
    EXPECT_GT(names, 20U);
    EXPECT_LT(names, count / 2);
}

TEST(MapPicture, NamesEveryOneOfAFew) {
    const LatentMap map(std::vector<std::vector<float>>{{-5, 0}, {5, 0}, {0, 3}}, 2);
    const Drawing drawing = mapPicture(map, numbered(3), "Kicks");
    std::set<std::string> texts;
    for (const Drawing::Text& text : shapesOf<Drawing::Text>(drawing))
        texts.insert(text.text);
    for (const std::string& name : numbered(3))
        EXPECT_THAT(texts, Contains(name));
    EXPECT_THAT(texts, Contains("Kicks"));
}

TEST(MapPicture, BothAxesHaveTheSameUnit) {
    const LatentMap map(std::vector<std::vector<float>>{{-5, -1}, {5, -1}, {0, 2}}, 2);
    const auto dots = shapesOf<Drawing::Dot>(mapPicture(map, numbered(3), ""));
    EXPECT_NEAR((dots[1].centre.x - dots[0].centre.x) / 10, (dots[0].centre.y - dots[2].centre.y) / 3, 1e-6);
}

TEST(MapPicture, ClipsThatAreAllAtOnePlaceAreShown) {
    const LatentMap map(std::vector<std::vector<float>>{{1, 1}}, 2);
    EXPECT_EQ(shapesOf<Drawing::Dot>(mapPicture(map, {}, "")).size(), 1U);
}

TEST(ScaleMarks, AreRoundNumbersWithinTheRange) {
    EXPECT_THAT(scaleMarks(-1, 1, 4), ElementsAre(-1, -0.5, 0, 0.5, 1));
    EXPECT_EQ(scaleMarks(0.3, 97, 8).front(), 20);
    EXPECT_TRUE(scaleMarks(1, 1, 4).empty());
    EXPECT_EQ(scaleText(-0.5, 0.5), "-0.5");
    EXPECT_EQ(scaleText(-0.0, 0.5), "0");
    EXPECT_EQ(scaleText(20, 20), "20");
    EXPECT_EQ(scaleText(0.004, 0.002), "0.004");
}

}  // namespace
}  // namespace quillmere
