#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Text and numbers as text, independent of the locale.
namespace quillmere::Text {

// The path's bytes as UTF-8 text.
[[nodiscard]] std::string utf8(const std::filesystem::path& path);

// value with the given number of decimals, as printf's "%.*f" in the C locale.
[[nodiscard]] std::string fixed(double value, int decimals);

// ASCII letters A-Z in lower case; every other byte unchanged.
[[nodiscard]] std::string lowercase(std::string_view text);

// The whole of text as a number in the C locale (no leading blanks or plus sign), or nothing.
// parseDouble accepts "inf" and "nan"; a value too large for a double gives nothing.
[[nodiscard]] std::optional<double> parseDouble(std::string_view text);
[[nodiscard]] std::optional<std::int64_t> parseInteger(std::string_view text);
[[nodiscard]] std::optional<std::uint64_t> parseUnsigned(std::string_view text);

// Two lower-case hexadecimal digits per byte.
[[nodiscard]] std::string hexadecimal(std::span<const std::uint8_t> bytes);
// The bytes of such a text, capitals allowed; nothing for any other text.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> parseHexadecimal(std::string_view text);

}  // namespace quillmere::Text
