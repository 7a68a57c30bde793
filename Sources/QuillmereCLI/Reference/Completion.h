#pragma once

#include <string>

#include "QuillmereCLI/Reference/CommandReference.h"

// Scripts that let a shell complete commands, options and values. They name everything they offer, so the
// program is not started while somebody types; names of models are those of the folders that hold them.
namespace quillmere::cli {

[[nodiscard]] std::string bashCompletion(const CommandReference& root);
[[nodiscard]] std::string zshCompletion(const CommandReference& root);
[[nodiscard]] std::string fishCompletion(const CommandReference& root);

}  // namespace quillmere::cli
