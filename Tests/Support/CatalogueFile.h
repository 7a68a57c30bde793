#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "Support/TempFolder.h"

namespace quillmere::testing {

// How a catalogue begins, by its rule of plurals.
inline std::string catalogueHeader(const std::string& plurals = "nplurals=2; plural=(n > 1);") {
    return "Language: xx\nContent-Type: text/plain; charset=UTF-8\nPlural-Forms: " + plurals + "\n";
}

// A catalogue's file (.mo) with these texts by their sources, forms behind one another with zero bytes.
inline std::string catalogueFile(const std::map<std::string, std::string>& texts, bool isBig = false) {
    std::string file;
    const auto number = [&](std::size_t value) {
        std::string bytes;
        for (int i = 0; i < 4; ++i, value >>= 8U)
            bytes += static_cast<char>(value & 0xFFU);
        if (isBig) std::ranges::reverse(bytes);
        file += bytes;
    };
    constexpr std::size_t start = 28;
    const std::size_t tables = 8 * texts.size();
    for (const std::size_t value : {std::size_t{0x950412DE}, std::size_t{0}, texts.size(), start,
                                    start + tables, std::size_t{0}, start + 2 * tables})
        number(value);
    std::string content;
    const auto add = [&](const std::string& text) {
        number(text.size());
        number(start + 2 * tables + content.size());
        content += text + '\0';
    };
    for (const auto& [source, text] : texts)
        add(source);
    for (const auto& [source, text] : texts)
        add(text);
    return file + content;
}

// Catalogues of Language: the folder of a language with its file.
inline void writeCatalogue(const std::filesystem::path& catalogues, const std::string& language,
                           const std::map<std::string, std::string>& texts) {
    std::map<std::string, std::string> all = texts;
    all.emplace("", catalogueHeader());
    writeText(catalogues / language / "LC_MESSAGES" / "quillmere.mo", catalogueFile(all));
}

}  // namespace quillmere::testing
