#include "QuillmereCore/Util/Language.h"

#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <system_error>

#include "QuillmereCore/Util/Catalogue.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::Language {
namespace {

namespace fs = std::filesystem;

// What a program speaks. Set once, before there are other threads.
struct Spoken {
    std::string name;
    std::optional<Catalogue> catalogue;  // none for English
};

Spoken& spoken() {
    static Spoken spoken;
    return spoken;
}

// The first variable that is set.
std::string_view firstOf(const Variables& variables, std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        const char* const value = variables(name);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

bool isC(std::string_view locale) {
    return locale == "C" || locale == "POSIX";
}

// The name of a locale, "de_AT.UTF-8@euro", in parts; empty for what it lacks.
struct LocaleName {
    explicit LocaleName(std::string_view name) {
        const std::size_t at = name.find('@');
        if (at != std::string_view::npos) modifier = name.substr(at);
        name = name.substr(0, at);
        const std::size_t dot = name.find('.');
        if (dot != std::string_view::npos) codeset = name.substr(dot + 1);
        region = name.substr(0, dot);
        language = region.substr(0, region.find('_'));
    }

    std::string_view language;  // de
    std::string_view region;    // de_AT
    std::string_view codeset;   // UTF-8
    std::string_view modifier;  // @euro
};

// Where a name says nothing of characters: what the system knows, if it has the locale. Elsewhere all is
// UTF-8.
std::string codesetOf(const std::string& locale) {
    const LocaleName parts(locale);
    if (!parts.codeset.empty()) return std::string(parts.codeset);
    const locale_t known = ::newlocale(LC_CTYPE_MASK, locale.c_str(), nullptr);
    if (known == nullptr) return "UTF-8";
    std::string codeset = ::nl_langinfo_l(CODESET, known);
    ::freelocale(known);
    return codeset;
}

// Whether what reads along shows UTF-8. Where nothing is said of characters, the words' own locale counts.
bool showsUTF8(const Variables& variables) {
    const std::string_view locale = firstOf(variables, {"LC_ALL", "LC_CTYPE", "LANG", "LC_MESSAGES"});
    std::string codeset = Text::lowercase(codesetOf(std::string(locale)));
    std::erase(codeset, '-');
    return codeset == "utf8";
}

// Whether it can be a folder's name and no way to another place.
bool isName(std::string_view text) {
    const auto allowed = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
               (character >= '0' && character <= '9') || character == '_' || character == '-' ||
               character == '@';
    };
    return !text.empty() && std::ranges::all_of(text, allowed);
}

// The folders for a language, the closest first.
void addFolders(const LocaleName& wish, std::vector<std::string>& folders) {
    const std::string modifier(wish.modifier);
    for (const std::string& name :
         {std::string(wish.region) + modifier, std::string(wish.language) + modifier,
          std::string(wish.region), std::string(wish.language)}) {
        if (isName(name) && std::ranges::find(folders, name) == folders.end()) folders.push_back(name);
    }
}

std::optional<Catalogue> catalogueIn(const fs::path& folder) {
    const fs::path file = folder / "LC_MESSAGES" / "quillmere.mo";
    std::error_code ignored;  // then there is no catalogue
    constexpr std::uintmax_t largest = 16U << 20U;
    if (!fs::is_regular_file(file, ignored) || fs::file_size(file, ignored) > largest) return std::nullopt;
    std::ifstream stream(file, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
    return Catalogue::read(bytes);
}

const char* english(const char* singular, const char* plural, std::uint64_t count) {
    return plural == nullptr || count == 1 ? singular : plural;
}

const char* lookup(const char* singular, const char* plural, std::uint64_t count) {
    const std::optional<Catalogue>& catalogue = spoken().catalogue;
    const char* const found = catalogue ? catalogue->find(singular, count) : nullptr;
    return found != nullptr ? found : english(singular, plural, count);
}

}  // namespace

std::vector<std::string> wishes(const Variables& variables) {
    const std::string_view locale = firstOf(variables, {"LC_ALL", "LC_MESSAGES", "LANG"});
    if (locale.empty() || isC(locale) || !showsUTF8(variables)) return {};
    std::string_view rest = firstOf(variables, {"LANGUAGE"});
    if (rest.empty()) rest = locale;
    std::vector<std::string> folders;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const LocaleName wish(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (isC(wish.language)) break;
        addFolders(wish, folders);
        if (wish.language == "en") break;
    }
    return folders;
}

fs::path ownFolder() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) return {};
    return program.parent_path().parent_path() / "share" / "locale";
}

void take(const fs::path& catalogues, const Variables& variables) {
    spoken() = {};
    if (catalogues.empty()) return;
    for (const std::string& name : wishes(variables)) {
        std::optional<Catalogue> catalogue = catalogueIn(catalogues / name);
        if (!catalogue) continue;
        spoken() = {name, std::move(catalogue)};
        return;
    }
}

void takeFromEnvironment(const fs::path& catalogues) {
    take(catalogues, [](const char* name) { return std::getenv(name); });
}

std::string name() {
    return spoken().name;
}

std::string text(const Message& message) {
    return message.translated(lookup);
}

}  // namespace quillmere::Language
