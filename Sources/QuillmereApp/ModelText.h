#pragma once

#include <QString>
#include <cstdint>

#include "QuillmereCore/Model/ModelStore.h"

// Models as the window describes them.
namespace quillmere::ModelText {

// How long it was trained, and from what: "Standard", "250 steps", "240 of 2000 steps from a head start".
[[nodiscard]] QString effort(const ModelMetadata& metadata);
// When: "3 Oct 2026, 14:05".
[[nodiscard]] QString learnedAt(const ModelMetadata& metadata);
// "6.2 MB"
[[nodiscard]] QString size(std::uintmax_t bytes);

}  // namespace quillmere::ModelText
