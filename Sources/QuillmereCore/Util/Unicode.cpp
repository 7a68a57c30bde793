#include "QuillmereCore/Util/Unicode.h"

#include <unicode/utf8.h>

namespace quillmere {

std::int32_t takeCharacter(std::string_view text, std::size_t& next) {
    UChar32 character = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // inside the macro
    U8_NEXT(text.data(), next, text.size(), character);
#pragma GCC diagnostic pop
    return character;
}

}  // namespace quillmere
