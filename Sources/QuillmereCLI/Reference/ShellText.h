#pragma once

#include <string>
#include <string_view>

#include "QuillmereCLI/Reference/CommandReference.h"

// What the completions for all shells share.
namespace quillmere::cli {

// text as one word, in single quotes.
[[nodiscard]] std::string shellQuoted(std::string_view text);

// text with a backslash before each of the given characters.
[[nodiscard]] std::string escaped(std::string_view text, std::string_view characters);

// "models remove": the words of command without the program's.
[[nodiscard]] std::string commandPath(const CommandReference& command);

}  // namespace quillmere::cli
