#pragma once

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

class TrainingError : public Failure {
public:
    enum class Kind { noUsableAudio, diverged };
    explicit TrainingError(Kind kind);
    [[nodiscard]] Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

}  // namespace quillmere
