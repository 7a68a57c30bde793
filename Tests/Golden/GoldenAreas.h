#pragma once

#include "Golden/GoldenCase.h"

// The operations of each area (FORMAT.md, "Operations") in terms of the library, one source file per area.
namespace quillmere::golden {

[[nodiscard]] Area rngArea();
[[nodiscard]] Area stftArea();
[[nodiscard]] Area melArea();
[[nodiscard]] Area griffinLimArea();
[[nodiscard]] Area corpusArea();
[[nodiscard]] Area clipsArea();
[[nodiscard]] Area featuresArea();
[[nodiscard]] Area configArea();
[[nodiscard]] Area vaeArea();
[[nodiscard]] Area trainerArea();
[[nodiscard]] Area aestheticsArea();
[[nodiscard]] Area samplerArea();
[[nodiscard]] Area renderArea();
[[nodiscard]] Area detailArea();
[[nodiscard]] Area finishArea();
[[nodiscard]] Area formatArea();

}  // namespace quillmere::golden
