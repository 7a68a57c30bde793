#include "QuillmereCore/Model/Training/TrainingError.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(TrainingError, SaysWhatTheUserCanDo) {
    EXPECT_STREQ(TrainingError(TrainingError::Kind::noUsableAudio).what(),
                 "No usable audio files were found in that folder.");
    EXPECT_STREQ(TrainingError(TrainingError::Kind::diverged).what(),
                 "Training diverged (loss became NaN). Try again with a lower learning rate.");
}

}  // namespace
}  // namespace quillmere
