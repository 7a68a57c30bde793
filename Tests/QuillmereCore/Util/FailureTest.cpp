#include "QuillmereCore/Util/Failure.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace quillmere {
namespace {

constexpr long long largest = std::numeric_limits<long long>::max();
constexpr long long smallest = std::numeric_limits<long long>::min();

TEST(FailureDeathTest, FatalStopsTheProgramWithItsMessage) {
    EXPECT_DEATH(fatal("the moon is missing"), "quillmere: fatal: the moon is missing");
}

TEST(FailureDeathTest, RequireStopsOnlyWhenTheConditionFails) {
    require(true, "never shown");
    EXPECT_DEATH(require(false, "a broken promise"), "a broken promise");
}

TEST(Failure, CheckedArithmeticReturnsExactResults) {
    EXPECT_EQ(checkedMultiply(-3, 7), -21);
    EXPECT_EQ(checkedMultiply(largest, 1), largest);
    EXPECT_EQ(checkedAdd(largest, smallest), -1);
}

TEST(FailureDeathTest, CheckedArithmeticStopsOnOverflow) {
    EXPECT_DEATH((void)checkedMultiply(largest / 2 + 1, 2), "overflow");
    EXPECT_DEATH((void)checkedMultiply(smallest, -1), "overflow");
    EXPECT_DEATH((void)checkedAdd(largest, 1), "overflow");
    EXPECT_DEATH((void)checkedAdd(smallest, -1), "overflow");
}

TEST(Failure, RoundedCountTakesHalvesAwayFromZero) {
    EXPECT_EQ(roundedCount(2.5), 3);
    EXPECT_EQ(roundedCount(-2.5), -3);
    EXPECT_EQ(roundedCount(0.49999999999999994), 0);
    EXPECT_EQ(roundedCount(-0x1p63), smallest);
}

TEST(FailureDeathTest, RoundedCountStopsOnWhatIsNoCount) {
    EXPECT_DEATH((void)roundedCount(std::nan("")), "count");
    EXPECT_DEATH((void)roundedCount(std::numeric_limits<double>::infinity()), "count");
    EXPECT_DEATH((void)roundedCount(-std::numeric_limits<double>::infinity()), "count");
    EXPECT_DEATH((void)roundedCount(0x1p63), "count");
}

TEST(Failure, FileErrorNamesTheFileAndTheReason) {
    const std::error_code reason = std::make_error_code(std::errc::permission_denied);
    const FileError error("/music/Flöte.wav", reason);
    EXPECT_EQ(error.what(), "/music/Flöte.wav: " + reason.message());
    EXPECT_EQ(error.file(), "/music/Flöte.wav");
    EXPECT_EQ(error.reason(), reason);
}

TEST(Failure, FileErrorKeepsASentenceOfItsOwn) {
    const FileError error("/music", std::make_error_code(std::errc::no_space_on_device),
                          Message("The disk is full."));
    EXPECT_STREQ(error.what(), "The disk is full.");
    EXPECT_EQ(error.file(), "/music");
}

TEST(Failure, CancellationIsNotAFailure) {
    const auto throwCancellation = [] { throw CancellationError(); };
    try {
        throwCancellation();
    } catch (const Failure&) {
        FAIL() << "a cancellation was caught as a failure";
    } catch (const std::exception& error) {
        EXPECT_FALSE(std::string(error.what()).empty());
    }
}

TEST(Failure, MayHaveASentenceThatIsTranslatedAlready) {
    const Failure failure(std::string("{0} ist voll."));
    EXPECT_STREQ(failure.what(), "{0} ist voll.");
    EXPECT_EQ(failure.message().translated([](const char*, const char*, std::uint64_t) { return "x"; }),
              "{0} ist voll.");
}

}  // namespace
}  // namespace quillmere
