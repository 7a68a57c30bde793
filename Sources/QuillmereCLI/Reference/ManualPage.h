#pragma once

#include <string>

#include "QuillmereCLI/Reference/CommandReference.h"

namespace quillmere::cli {

struct Edition {
    std::string version;  // "0.1.0"
    std::string date;     // "2025-03-01", of the manual
};

// The manual page (section 1) of command, which is root or one below it, in the language of man(7): ASCII
// only.
[[nodiscard]] std::string manualPage(const CommandReference& command, const CommandReference& root,
                                     const Edition& edition);

// Text as roff has it: nothing in it is a request or an escape, and what is not ASCII is named.
[[nodiscard]] std::string roffText(const std::string& text);

}  // namespace quillmere::cli
