#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Util/Language.h"
#include "QuillmereCore/Util/Message.h"

// Words and values as people read them: words in the user's language, numbers the same in all of them.
namespace quillmere::cli {

// A text in the user's language: a pattern and what stands in its places, as Message has them.
template <typename... Arguments>
[[nodiscard]] std::string tr(Pattern<sizeof...(Arguments)> pattern, const Arguments&... arguments) {
    return Language::text(Message(pattern, arguments...));
}

// The same by a count, which {0} stands for: trCounted(n, "{0} file", "{0} files").
template <typename... Arguments>
[[nodiscard]] std::string trCounted(std::int64_t count, SingularPattern<sizeof...(Arguments) + 1> singular,
                                    Pattern<sizeof...(Arguments) + 1> plural, const Arguments&... arguments) {
    return Language::text(Message::counted(count, singular, plural, arguments...));
}

// The same of a table's text, which is marked as translatable.
[[nodiscard]] std::string trTable(std::string_view text);

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

// "a, b and c".
[[nodiscard]] std::string enumeration(const std::vector<std::string>& words);

// Columns of a terminal that UTF-8 text takes: one for each character, two for the wide ones of East Asia.
[[nodiscard]] std::size_t columns(std::string_view text);

// text cut to at most width columns.
[[nodiscard]] std::string cutToWidth(std::string_view text, std::size_t width);

// text followed by blanks up to width columns.
[[nodiscard]] std::string padded(std::string_view text, std::size_t width);

// The label, blanks up to width columns, but one at least, and the text.
[[nodiscard]] std::string labelled(std::string_view label, std::size_t width, std::string_view text);

// Rows of cells as lines: every column but the last as wide as its widest cell, two blanks between columns.
[[nodiscard]] std::vector<std::string> table(const std::vector<std::vector<std::string>>& rows);

}  // namespace quillmere::cli
