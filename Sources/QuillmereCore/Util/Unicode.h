#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quillmere {

// The character (code point) that begins at text[next] in UTF-8, negative for bytes that are none; next moves
// behind it. next lies within text.
[[nodiscard]] std::int32_t takeCharacter(std::string_view text, std::size_t& next);

}  // namespace quillmere
