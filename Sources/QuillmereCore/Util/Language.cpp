#include "QuillmereCore/Util/Language.h"

#include <libintl.h>
#include <locale.h>

#include <cstdlib>
#include <string_view>
#include <system_error>

namespace quillmere::Language {
namespace {

namespace fs = std::filesystem;

constexpr const char* domain = "quillmere";

// The locale of the texts, and of nothing else. Null for English. Set once, before there are other threads.
locale_t& messageLocale() {
    static locale_t locale = nullptr;
    return locale;
}

// A thread's locale while it looks up a text.
class Scope {
public:
    explicit Scope(locale_t locale) : before_(::uselocale(locale)) {}
    ~Scope() { ::uselocale(before_); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

private:
    locale_t before_;
};

// What the environment asks for; empty for nothing.
std::string_view wish() {
    for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

// A locale that the system has not: catalogues are found by the name alone.
locale_t uninstalled() {
    const locale_t locale = ::newlocale(LC_MESSAGES_MASK, "C.UTF-8", nullptr);
    constexpr int keepGiven = 0;
    if (locale != nullptr) (void)::setenv("LANGUAGE", std::string(wish()).c_str(), keepGiven);
    return locale;
}

const char* lookup(const char* singular, const char* plural, std::uint64_t count) {
    return plural == nullptr ? ::dgettext(domain, singular) : ::dngettext(domain, singular, plural, count);
}

const char* english(const char* singular, const char* plural, std::uint64_t count) {
    return plural == nullptr || count == 1 ? singular : plural;
}

}  // namespace

fs::path ownFolder() {
    std::error_code ignored;  // then there is no catalogue
    const fs::path program = fs::read_symlink("/proc/self/exe", ignored);
    return program.parent_path().parent_path() / "share" / "locale";
}

void takeFromEnvironment(const fs::path& catalogues) {
    locale_t locale = ::newlocale(LC_MESSAGES_MASK, "", nullptr);
    messageLocale() = locale != nullptr ? locale : uninstalled();
    ::bindtextdomain(domain, catalogues.c_str());
    // Whatever the terminal's own is: file names are UTF-8, too.
    ::bind_textdomain_codeset(domain, "UTF-8");
}

std::string text(const Message& message) {
    const locale_t locale = messageLocale();
    if (locale == nullptr) return message.translated(english);
    const Scope scope(locale);
    return message.translated(lookup);
}

}  // namespace quillmere::Language
