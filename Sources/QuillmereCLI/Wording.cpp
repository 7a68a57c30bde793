#include "QuillmereCLI/Wording.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "QuillmereCore/Util/Text.h"
#include "QuillmereCore/Util/Unicode.h"

namespace quillmere::cli {
namespace {

// prefix and the lowest digits of value in hexadecimal, as many as stated.
std::string hexadecimal(std::string_view prefix, std::uint32_t value, int digits) {
    std::string text(prefix);
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text += "0123456789abcdef"[value >> static_cast<unsigned>(shift) & 15U];
    return text;
}

std::string escaped(UChar32 character) {
    switch (character) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            break;
    }
    const auto value = static_cast<std::uint32_t>(character);
    if (value < 0x80U) return hexadecimal("\\x", value, 2);
    return value < 0x10000U ? hexadecimal("\\u", value, 4) : hexadecimal("\\U", value, 8);
}

bool isHarmless(UChar32 character) {
    constexpr UChar32 nonJoiner = 0x200C;
    constexpr UChar32 joiner = 0x200D;
    if (character == nonJoiner || character == joiner) return true;
    return (U_GET_GC_MASK(character) & (U_GC_CC_MASK | U_GC_CF_MASK | U_GC_ZL_MASK | U_GC_ZP_MASK)) == 0;
}

std::size_t columnsOf(UChar32 character) {
    const int width = character < 0 ? 0 : u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

// Whether a shell takes the character as it is.
bool isPlain(char c) {
    const auto byte = static_cast<unsigned char>(c);
    const bool letterOrDigit =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || byte >= 0x80U;
    return letterOrDigit || std::string_view("/._-+,:@%").find(c) != std::string_view::npos;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    for (std::size_t next = 0; next < text.size();) {
        const std::size_t start = next;
        const UChar32 character = takeCharacter(text, next);
        const std::string_view bytes = text.substr(start, next - start);
        if (character < 0) {
            for (const char byte : bytes)
                result += hexadecimal("\\x", static_cast<unsigned char>(byte), 2);
        } else if (isHarmless(character)) {
            result += bytes;
        } else {
            result += escaped(character);
        }
    }
    return result;
}

std::string shownPath(const std::filesystem::path& path) {
    return printable(Text::utf8(path));
}

std::string shellWord(const std::filesystem::path& path) {
    std::string text = shownPath(path);
    if (!text.empty() && std::all_of(text.begin(), text.end(), isPlain)) return text;
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::string trTable(std::string_view text) {
    return Language::text(Message::fromTable(text));
}

std::string duration(double seconds) {
    if (!std::isfinite(seconds)) return "?";
    if (seconds < 9.995) return tr("{0} s", Text::fixed(seconds, 2));
    if (seconds < 59.95) return tr("{0} s", Text::fixed(seconds, 1));
    const double minutes = std::floor(std::round(seconds) / 60);
    if (minutes < 60) {
        return tr("{0} min {1} s", Text::fixed(minutes, 0),
                  Text::fixed(std::round(seconds) - minutes * 60, 0));
    }
    const double hours = std::floor(std::round(seconds / 60) / 60);
    return tr("{0} h {1} min", Text::fixed(hours, 0), Text::fixed(std::round(seconds / 60) - hours * 60, 0));
}

std::string roughDuration(double seconds) {
    const double whole = std::round(seconds);
    return whole < 60 ? tr("{0} s", Text::fixed(whole, 0)) : duration(whole);
}

std::string byteSize(std::uint64_t bytes) {
    if (bytes < 1000) return tr("{0} B", bytes);
    constexpr std::array<std::string_view, 4> units{translatable("kB"), translatable("MB"),
                                                    translatable("GB"), translatable("TB")};
    double value = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    while (value >= 999.95 && unit + 1 < units.size()) {
        value /= 1000;
        ++unit;
    }
    return tr("{0} {1}", Text::fixed(value, 1), Message::fromTable(units[unit]));
}

std::string enumeration(const std::vector<std::string>& words) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i == 0) {
            text = words[i];
        } else {
            text = i + 1 == words.size() ? tr("{0} and {1}", text, words[i]) : tr("{0}, {1}", text, words[i]);
        }
    }
    return text;
}

std::size_t columns(std::string_view text) {
    std::size_t used = 0;
    for (std::size_t next = 0; next < text.size();)
        used += columnsOf(takeCharacter(text, next));
    return used;
}

std::string cutToWidth(std::string_view text, std::size_t width) {
    std::size_t used = 0;
    for (std::size_t next = 0; next < text.size();) {
        const std::size_t start = next;
        used += columnsOf(takeCharacter(text, next));
        if (used > width) return std::string(text.substr(0, start));
    }
    return std::string(text);
}

std::string padded(std::string_view text, std::size_t width) {
    const std::size_t used = columns(text);
    return std::string(text) + std::string(width > used ? width - used : 0, ' ');
}

std::string labelled(std::string_view label, std::size_t width, std::string_view text) {
    return padded(label, std::max(width, columns(label) + 1)) + std::string(text);
}

std::vector<std::string> table(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], columns(row[i]));
    }
    std::vector<std::string> lines;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += i + 1 < row.size() ? padded(row[i], widths[i] + 2) : row[i];
        line.erase(line.find_last_not_of(' ') + 1);
        lines.push_back(std::move(line));
    }
    return lines;
}

}  // namespace quillmere::cli
