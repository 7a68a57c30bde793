#include "QuillmereCore/Picture/PictureFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCore/Util/Failure.h"
#include "Support/PNGPixels.h"
#include "Support/TempFolder.h"
#include "Support/XMLDocument.h"

namespace quillmere {
namespace {

using testing::bytesOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::readPNG;
using testing::readText;
using testing::TempFolder;
using testing::XMLDocument;

constexpr Colour red{255, 0, 0};
constexpr Colour blue{0, 0, 255};

// A red box, a blue dot and a checked image.
Drawing sample(const std::string& text = "name") {
    Drawing drawing(40, 20);
    drawing.addBox({0, 0, 10, 20}, red);
    drawing.add(Drawing::Dot{{15, 10}, 4, blue, text});
    drawing.add(Drawing::Line{{{0, 19}, {40, 19}}, Palette::ink, 2});
    drawing.add(Drawing::Text{{39, 10}, text, 8, Palette::ink, Drawing::Anchor::end});
    drawing.add(Drawing::Image{{20, 0, 4, 4}, {2, 2, {red, blue, blue, red}}});
    return drawing;
}

TEST(PictureFile, AnSVGHasEveryShapeAndItsTextsAsText) {
    const XMLDocument document(PictureFile::svg(sample("a<b> & \"c\" é")));
    EXPECT_THAT(document.texts("//*[local-name()='text']"), ElementsAre("a<b> & \"c\" é"));
    EXPECT_THAT(document.texts("//*[local-name()='circle']/*[local-name()='title']"),
                ElementsAre("a<b> & \"c\" é"));
    EXPECT_THAT(document.texts("//*[local-name()='polygon']/@points"), ElementsAre("0,0 10,0 10,20 0,20"));
    EXPECT_THAT(document.texts("//*[local-name()='polyline']/@stroke-width"), ElementsAre("2"));
    EXPECT_THAT(document.texts("/*/@viewBox"), ElementsAre("0 0 40 20"));
    EXPECT_THAT(document.texts("//*[local-name()='image']/@href"),
                ElementsAre(HasSubstr("data:image/png;base64,iVBORw0KGgo")));
}

TEST(PictureFile, WhatXMLCannotHoldIsReplaced) {
    const XMLDocument document(PictureFile::svg(sample("a\x01z\xFF\xEF\xBF\xBE")));
    EXPECT_THAT(document.texts("//*[local-name()='text']"), ElementsAre("a\uFFFDz\uFFFD\uFFFD"));
}

TEST(PictureFile, APNGHasThePixelsOfTheDrawing) {
    const Pixels pixels = readPNG(PictureFile::png(sample(), 2));
    EXPECT_EQ(pixels.width, 80U);
    EXPECT_EQ(pixels.height, 40U);
    const auto at = [&](std::size_t x, std::size_t y) { return pixels.colours[y * pixels.width + x]; };
    EXPECT_EQ(at(4, 4), red);
    EXPECT_EQ(at(30, 20), blue);
    EXPECT_EQ(at(30, 4), Palette::white);
    EXPECT_EQ(at(41, 1), red) << "an enlarged image keeps its edges";
    EXPECT_EQ(at(46, 1), blue);
    EXPECT_EQ(at(41, 6), blue);
}

TEST(PictureFile, PixelsComeBackFromAPNG) {
    const Pixels pixels{3, 2, {red, blue, red, {1, 2, 3}, Palette::white, Palette::ink}};
    EXPECT_EQ(readPNG(PictureFile::png(pixels)), pixels);
}

TEST(PictureFile, TheNameDecidesTheKind) {
    const TempFolder folder;
    PictureFile::write(sample(), folder / "a.SVG");
    PictureFile::write(sample(), folder / "a.png");
    EXPECT_EQ(readText(folder / "a.SVG"), PictureFile::svg(sample()));
    EXPECT_EQ(readPNG(bytesOf(readText(folder / "a.png"))).width, 80U);
    EXPECT_THROW(PictureFile::write(sample(), folder / "a.jpg"), Failure);
    EXPECT_THROW(PictureFile::write(sample(), folder / "missing" / "a.png"), FileError);
    EXPECT_EQ(testing::entriesIn(folder.path()), 2U);
    EXPECT_TRUE(PictureFile::problemWithName("png").has_value());
}

TEST(PictureFile, APictureThatIsTooLargeIsRefusedOrMadeSmaller) {
    const Drawing large(20'000, 10);
    EXPECT_THROW((void)PictureFile::png(large, 2), Failure);
    const TempFolder folder;
    PictureFile::write(large, folder / "large.png");
    EXPECT_EQ(readPNG(bytesOf(readText(folder / "large.png"))).width, 32'767U);
}

TEST(PictureFile, DataAddressesFollowTheStandard) {
    for (const auto& [content, digits] : {std::pair("", ""), {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}})
        EXPECT_EQ(PictureFile::dataAddress(bytesOf(content), "text/plain"),
                  std::string("data:text/plain;base64,") + digits);
}

}  // namespace
}  // namespace quillmere
