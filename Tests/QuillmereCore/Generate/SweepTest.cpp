#include "QuillmereCore/Generate/Sweep.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace quillmere::Sweep {
namespace {

using ::testing::ElementsAre;

Axis axis(const char* id, double from, double to, std::int64_t count) {
    return {Aesthetics::spec(id), from, to, count};
}

TEST(Sweep, ARangeHasBothEndsAndEqualSteps) {
    const Axis pitch = axis("pitch", -12, 12, 7);
    std::vector<double> values;
    for (std::int64_t step = 0; step < pitch.count; ++step)
        values.push_back(pitch.value(step));
    EXPECT_THAT(values, ElementsAre(-12, -8, -4, 0, 4, 8, 12));
    const Axis downwards = axis("drift", 1, 0.1, 3);
    EXPECT_EQ(downwards.value(0), 1);
    EXPECT_DOUBLE_EQ(downwards.value(1), 0.55);
    EXPECT_EQ(downwards.value(2), 0.1) << "exactly the end";
}

TEST(Sweep, AGridHasEveryCombinationWithTheFirstAxisFastest) {
    const std::vector<Axis> axes{axis("pitch", 0, 2, 3), axis("drive", 0, 6, 2)};
    Aesthetics start;
    start.tilt = 1.5;
    start.pitch = 9;
    const std::vector<Point> all = points(start, axes);
    ASSERT_EQ(all.size(), 6U);
    EXPECT_THAT(all[1].values, ElementsAre(1, 0));
    EXPECT_THAT(all[3].values, ElementsAre(0, 6));
    for (const Point& point : all) {
        EXPECT_EQ(point.aesthetics.pitch, point.values[0]);
        EXPECT_EQ(point.aesthetics.drive, point.values[1]);
        EXPECT_EQ(point.aesthetics.tilt, 1.5);
    }
}

TEST(Sweep, NamesTellTheValues) {
    const std::vector<Axis> axes{axis("pitch", -12, 12, 7), axis("pitch-jitter", 0, 1, 4)};
    const std::vector<Point> all = points({}, axes);
    EXPECT_EQ(title(all[7], axes), "pitch -12, pitch-jitter 0.333333");
    EXPECT_EQ(fileName("Kicks", all[7], axes), "Kicks_pitch_-12_pitch-jitter_0.333333.wav");
    EXPECT_EQ(fileName("Kicks", all[3], axes), "Kicks_pitch_0_pitch-jitter_0.wav");
    std::set<std::string> names;
    for (const Point& point : all)
        names.insert(fileName("Kicks", point, axes));
    EXPECT_EQ(names.size(), all.size());
}

}  // namespace
}  // namespace quillmere::Sweep
