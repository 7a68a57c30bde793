#include "QuillmereCore/Util/HalfFloat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace quillmere {
namespace {

TEST(HalfFloat, ReadsTheStandardsExamples) {
    EXPECT_EQ(fromHalfBits(0x3C00), 1.0F);
    EXPECT_EQ(fromHalfBits(0xC000), -2.0F);
    EXPECT_EQ(fromHalfBits(0x7BFF), 65504.0F);
    EXPECT_EQ(fromHalfBits(0x0400), 0x1p-14F);
    EXPECT_EQ(fromHalfBits(0x0001), 0x1p-24F);
    EXPECT_EQ(fromHalfBits(0x3555), 0x1.554p-2F);
    EXPECT_TRUE(std::signbit(fromHalfBits(0x8000)));
    EXPECT_TRUE(std::isinf(fromHalfBits(0x7C00)));
    EXPECT_TRUE(std::isnan(fromHalfBits(0x7E00)));
}

TEST(HalfFloat, EveryHalfSurvivesTheWayThereAndBack) {
    for (std::uint32_t bits = 0; bits < 0x10000; ++bits) {
        const auto half = static_cast<std::uint16_t>(bits);
        const float value = fromHalfBits(half);
        if (std::isnan(value)) {
            EXPECT_TRUE(std::isnan(fromHalfBits(halfBits(value))));
        } else {
            ASSERT_EQ(halfBits(value), half);
        }
    }
}

TEST(HalfFloat, RoundsToTheNearestAndTiesToEven) {
    EXPECT_EQ(halfBits(1 + 0x1p-11F), 0x3C00) << "half way, to the even one below";
    EXPECT_EQ(halfBits(1 + 3 * 0x1p-11F), 0x3C02) << "half way, to the even one above";
    EXPECT_EQ(halfBits(1 + 0x1p-11F + 0x1p-20F), 0x3C01);
    EXPECT_EQ(halfBits(2 - 0x1p-12F), 0x4000) << "the carry reaches the exponent";
    EXPECT_EQ(halfBits(0x1p-25F), 0x0000);
    EXPECT_EQ(halfBits(3 * 0x1p-25F), 0x0002);
    EXPECT_EQ(halfBits(0x1p-14F - 0x1p-26F), 0x0400) << "up to the smallest normal half";
}

TEST(HalfFloat, BecomesInfinityBeyondItsRange) {
    EXPECT_EQ(halfBits(65519.996F), 0x7BFF);
    EXPECT_EQ(halfBits(65520), 0x7C00);
    EXPECT_EQ(halfBits(-std::numeric_limits<float>::infinity()), 0xFC00);
}

}  // namespace
}  // namespace quillmere
