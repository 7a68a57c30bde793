#include "QuillmereCore/Picture/Drawing.h"

#include <gtest/gtest.h>

#include <variant>

namespace quillmere {
namespace {

TEST(Drawing, ADrawingInAnotherIsMovedWhole) {
    Drawing inner(10, 10);
    inner.addBox({1, 2, 3, 4}, Palette::ink);
    inner.add(Drawing::Dot{{5, 5}, 1, Palette::ink, "dot"});
    inner.add(Drawing::Line{{{0, 0}, {1, 1}}, Palette::ink, 1});
    inner.add(Drawing::Text{{2, 3}, "a", 9, Palette::ink, Drawing::Anchor::end});
    inner.add(Drawing::Image{{0, 0, 4, 4}, {1, 1, {Palette::ink}}});
    Drawing outer(100, 100);
    outer.addDrawing(inner, {10, 20});
    ASSERT_EQ(outer.shapes().size(), 5U);
    EXPECT_EQ(std::get<Drawing::Area>(outer.shapes()[0]).corners[2], (Drawing::Point{14, 26}));
    EXPECT_EQ(std::get<Drawing::Dot>(outer.shapes()[1]).centre, (Drawing::Point{15, 25}));
    EXPECT_EQ(std::get<Drawing::Line>(outer.shapes()[2]).points[1], (Drawing::Point{11, 21}));
    EXPECT_EQ(std::get<Drawing::Text>(outer.shapes()[3]).place, (Drawing::Point{12, 23}));
    EXPECT_EQ(std::get<Drawing::Image>(outer.shapes()[4]).box, (Drawing::Box{10, 20, 4, 4}));
}

TEST(Drawing, LongTextsLoseTheirMiddleBetweenCharacters) {
    EXPECT_EQ(fitted("short.wav", 10, 200), "short.wav");
    const std::string text = "Größe öäü Größe öäü Größe 04.wav";
    const std::string cut = fitted(text, 10, 80);
    EXPECT_LE(textWidth(cut, 10), 80);
    EXPECT_TRUE(cut.starts_with("Grö")) << cut;
    EXPECT_TRUE(cut.ends_with(".wav")) << cut;
    EXPECT_NE(cut.find("…"), std::string::npos);
    EXPECT_FALSE(fitted(text, 10, 0).empty());
}

TEST(Drawing, TheRampGoesFromDarkToBright) {
    int before = -1;
    for (int step = 0; step <= 20; ++step) {
        const Colour colour = Palette::ramp(step / 20.0);
        const int brightness = 2 * colour.red + 3 * colour.green + colour.blue;
        EXPECT_GT(brightness, before) << step;
        before = brightness;
    }
    EXPECT_EQ(Palette::ramp(-1), Palette::ramp(0));
    EXPECT_EQ(Palette::ramp(2), Palette::ramp(1));
}

}  // namespace
}  // namespace quillmere
