#include "QuillmereCore/Picture/SoundPictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <variant>

#include "QuillmereCore/Model/Features.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

const Drawing::Area& outline(const Drawing& drawing) {
    return std::get<Drawing::Area>(drawing.shapes().front());
}

TEST(SoundPictures, AWaveformEndsWhereItsSoundDoes) {
    const std::vector<float> samples(500, 0.5F);
    const Drawing drawing = SoundPictures::waveform(samples, 1000, 1, 100, 40);
    double right = 0;
    double top = 40;
    for (const Drawing::Point& point : outline(drawing).corners) {
        right = std::max(right, point.x);
        top = std::min(top, point.y);
    }
    EXPECT_NEAR(right, 50, 1);
    EXPECT_NEAR(top, 10, 1e-9);
}

TEST(SoundPictures, ASinglePeakIsSeenWhereItIs) {
    std::vector<float> samples(100'000);
    samples[70'001] = -1;
    const Drawing drawing = SoundPictures::waveform(samples, 100'000, 1, 100, 40);
    const auto& corners = outline(drawing).corners;
    const auto lowest = std::ranges::max_element(corners, {}, &Drawing::Point::y);
    EXPECT_EQ(*lowest, (Drawing::Point{70.5, 40}));
}

TEST(SoundPictures, WhatIsNotThereOrTooLoudIsNoTrouble) {
    EXPECT_TRUE(SoundPictures::waveform({}, 1000, 1, 100, 40).shapes().empty());
    const std::vector<float> loud(10, 3.0F);
    const Drawing drawing = SoundPictures::waveform(loud, 10, 1, 10, 40);
    for (const Drawing::Point& point : outline(drawing).corners)
        EXPECT_GE(point.y, 0);
}

TEST(SoundPictures, AMelImageHasItsLowestBandAtTheBottom) {
    // Two bands of three frames: the lowest loud at first, the highest silent.
    const float loud = Level::toNetwork(0);
    const float silent = -1;
    const std::vector<float> image{loud, silent, silent, silent, silent, silent};
    const Pixels pixels = SoundPictures::mel(image, 2, 3);
    EXPECT_EQ(pixels.width, 3U);
    EXPECT_EQ(pixels.height, 2U);
    EXPECT_EQ(pixels.colours[3], Palette::ramp(1));
    EXPECT_EQ(pixels.colours[0], Palette::ramp(0));
    EXPECT_EQ(pixels.colours[4], Palette::ramp(0));
}

TEST(SoundPictures, APainterShowsWhenAndWhereASoundIs) {
    // A high tone in the second half of a second.
    std::vector<float> samples(8000);
    const std::vector<float> tone = testing::sine(3000, 8000, 4000);
    std::ranges::copy(tone, samples.begin() + 4000);
    const SoundPictures::MelPainter painter(8000, 1, 50);
    const Pixels pixels = painter.paint(samples);
    EXPECT_EQ(pixels.width, 50U);
    EXPECT_EQ(pixels.height, 64U);
    const auto brightness = [&](std::size_t x, std::size_t y) {
        const Colour& colour = pixels.colours[y * pixels.width + x];
        return int{colour.red} + colour.green + colour.blue;
    };
    std::size_t brightest = 0;
    for (std::size_t y = 0; y < pixels.height; ++y) {
        if (brightness(40, y) > brightness(40, brightest)) brightest = y;
    }
    EXPECT_LT(brightest, 16U) << "high bands are at the top";
    EXPECT_EQ(pixels.colours[brightest * 50 + 5], Palette::ramp(0));
    EXPECT_EQ(painter.paint({}).colours[0], Palette::ramp(0));
}

}  // namespace
}  // namespace quillmere
