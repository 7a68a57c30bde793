#pragma once

#include <filesystem>
#include <iosfwd>
#include <string_view>

#include <nlohmann/json.hpp>

#include "QuillmereCore/Generate/Aesthetics.h"

namespace quillmere::cli {

using JSON = nlohmann::ordered_json;

// One JSON object per line, each with the key "event"; docs/formats.md lists them. UTF-8, independent of the
// locale; bytes of file names that are not UTF-8 become U+FFFD.
void writeEvent(std::ostream& out, const JSON& event);

// An event of that kind without further members.
[[nodiscard]] JSON makeEvent(std::string_view event);

// The result event of a command.
[[nodiscard]] JSON makeResult(std::string_view command);

[[nodiscard]] JSON toJSON(const std::filesystem::path& path);
// The twenty parameters under their member names, the form that --aesthetics reads.
[[nodiscard]] JSON toJSON(const Aesthetics& aesthetics);

}  // namespace quillmere::cli
