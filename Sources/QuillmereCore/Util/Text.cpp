#include "QuillmereCore/Util/Text.h"

#include <array>
#include <charconv>

namespace quillmere::Text {
namespace {

template <typename Number>
std::optional<Number> parseWhole(std::string_view text) {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || rest != end) return std::nullopt;
    return value;
}

}  // namespace

std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string fixed(double value, int decimals) {
    // The largest double has 309 digits before the point.
    std::array<char, 400> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                            std::chars_format::fixed, decimals);
    if (error != std::errc{}) return {};
    return {buffer.data(), end};
}

std::string lowercase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

std::optional<double> parseDouble(std::string_view text) {
    return parseWhole<double>(text);
}
std::optional<std::int64_t> parseInteger(std::string_view text) {
    return parseWhole<std::int64_t>(text);
}
std::optional<std::uint64_t> parseUnsigned(std::string_view text) {
    return parseWhole<std::uint64_t>(text);
}

std::string hexadecimal(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

std::optional<std::vector<std::uint8_t>> parseHexadecimal(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    for (; !text.empty(); text.remove_prefix(2)) {
        if (text.size() < 2) return std::nullopt;
        std::uint8_t byte = 0;
        const auto [rest, error] = std::from_chars(text.data(), text.data() + 2, byte, 16);
        if (error != std::errc{} || rest != text.data() + 2) return std::nullopt;
        bytes.push_back(byte);
    }
    return bytes;
}

}  // namespace quillmere::Text
