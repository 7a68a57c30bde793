#include "QuillmereCore/Picture/ContactSheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <variant>

#include "Support/Signals.h"

namespace quillmere {
namespace {

using ::testing::Contains;

TEST(ContactSheet, ShowsEverySoundInItsPlace) {
    ContactSheet sheet{.title = "Kicks", .sampleRate = 8000, .columns = 3, .cells = {}};
    for (int i = 0; i < 5; ++i)
        sheet.cells.push_back({"pitch " + std::to_string(i), testing::sine(300 + 100 * i, 8000, 2000)});
    sheet.cells.push_back({"silence", {}});
    const Drawing drawing = sheet.draw();
    std::vector<Drawing::Image> images;
    std::vector<std::string> texts;
    for (const Drawing::Shape& shape : drawing.shapes()) {
        if (const auto* const image = std::get_if<Drawing::Image>(&shape)) images.push_back(*image);
        if (const auto* const text = std::get_if<Drawing::Text>(&shape)) texts.push_back(text->text);
    }
    ASSERT_EQ(images.size(), 6U);
    EXPECT_EQ(images[0].box.y, images[2].box.y);
    EXPECT_EQ(images[0].box.x, images[3].box.x);
    EXPECT_GT(images[3].box.y, images[0].box.y + images[0].box.height);
    EXPECT_FALSE(images[0].pixels == images[1].pixels);
    for (const Drawing::Image& image : images) {
        EXPECT_LE(image.box.x + image.box.width, drawing.width());
        EXPECT_LE(image.box.y + image.box.height, drawing.height());
    }
    EXPECT_THAT(texts, Contains("Kicks"));
    EXPECT_THAT(texts, Contains("pitch 4"));
    EXPECT_THAT(texts, Contains("0.25 s across"));
}

TEST(ContactSheet, MayBeEmpty) {
    EXPECT_GT(ContactSheet{}.draw().width(), 0);
}

}  // namespace
}  // namespace quillmere
