#include "QuillmereCore/Util/Progress.h"

#include <gtest/gtest.h>

#include <chrono>

namespace quillmere {
namespace {

using namespace std::chrono_literals;

constexpr ReportPace::Clock::time_point start{1h};

TEST(ReportPace, IsDueAtOnce) {
    ReportPace pace;
    EXPECT_TRUE(pace.isDue(start));
}

TEST(ReportPace, IsDueAgainAfter50Milliseconds) {
    ReportPace pace;
    (void)pace.isDue(start);
    EXPECT_FALSE(pace.isDue(start + 1ms));
    EXPECT_FALSE(pace.isDue(start + 49ms));
    EXPECT_TRUE(pace.isDue(start + 50ms));
    EXPECT_FALSE(pace.isDue(start + 99ms)) << "counted from the report, not from the start";
    EXPECT_TRUE(pace.isDue(start + 100ms));
}

TEST(ReportPace, IsDueAfterAReset) {
    ReportPace pace;
    (void)pace.isDue(start);
    pace.reset();
    EXPECT_TRUE(pace.isDue(start + 1ms));
}

}  // namespace
}  // namespace quillmere
