#include "QuillmereCore/Model/Training/TrainingError.h"

namespace quillmere {
namespace {

Message description(TrainingError::Kind kind) {
    switch (kind) {
        case TrainingError::Kind::noUsableAudio:
            return Message("No usable audio files were found in that folder.");
        case TrainingError::Kind::diverged:
            return Message("Training diverged (loss became NaN). Try again with a lower learning rate.");
    }
    fatal("unknown training error");
}

}  // namespace

TrainingError::TrainingError(Kind kind) : Failure(description(kind)), kind_(kind) {}

}  // namespace quillmere
