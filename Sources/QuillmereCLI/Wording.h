#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// Values as people read them. No function here depends on the locale.
namespace quillmere::cli {

// text with everything as an escape that would steer a terminal, or hide what a file is called: control
// characters
// (\n, \x1b, \u0085), line separators, marks that change the direction of writing (\u202e), other invisible
// characters but those that join emoji and letters, and bytes that are no UTF-8 (\xff).
[[nodiscard]] std::string printable(std::string_view text);
[[nodiscard]] std::string shownPath(const std::filesystem::path& path);

// As printable, in single quotes where a shell would need them.
[[nodiscard]] std::string shellWord(const std::filesystem::path& path);

// "0.52 s", "12.3 s", "3 min 4 s", "1 h 2 min".
[[nodiscard]] std::string duration(double seconds);

// As duration, in whole seconds below a minute: "9 s".
[[nodiscard]] std::string roughDuration(double seconds);

// "812 B", "48.1 kB", "2.3 MB": decimal units.
[[nodiscard]] std::string byteSize(std::uint64_t bytes);

// "1 file", "2 files".
[[nodiscard]] std::string counted(std::int64_t count, std::string_view singular, std::string_view plural);

// "a, b and c".
[[nodiscard]] std::string enumeration(const std::vector<std::string>& words);

// Number of Unicode characters of UTF-8 text; each counts as one column of a terminal.
[[nodiscard]] std::size_t columns(std::string_view text);

// text cut to at most width columns.
[[nodiscard]] std::string cutToWidth(std::string_view text, std::size_t width);

// text followed by blanks up to width columns.
[[nodiscard]] std::string padded(std::string_view text, std::size_t width);

// Rows of cells as lines: every column but the last as wide as its widest cell, two blanks between columns.
[[nodiscard]] std::vector<std::string> table(const std::vector<std::vector<std::string>>& rows);

}  // namespace quillmere::cli
