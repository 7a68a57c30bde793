#pragma once

#include <string>
#include <vector>

namespace quillmere::cli {

// As they are typed, in the order of Preset::all() and Aesthetics::specs().
[[nodiscard]] std::vector<std::string> presetNames();
[[nodiscard]] std::vector<std::string> parameterIDs();

}  // namespace quillmere::cli
