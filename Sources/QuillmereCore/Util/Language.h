#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Util/Message.h"

// The language in which a program speaks to people. It is English until the program asks for that of the
// environment, at its start; the core itself never does. Numbers, and everything that is stored or that
// programs read, are the same in every language. The C library's locales have no part in it: none is set, and
// the system need not have one of the language.
namespace quillmere::Language {

// The value of a variable of the environment; null for one that is not set, which an empty one is, too.
using Variables = std::function<const char*(const char* name)>;

// The languages that an environment asks for, the best first, as folders of catalogues are named: "de_AT",
// "de". LC_ALL, LC_MESSAGES and LANG name one, the first of them that is set; "C" and "POSIX" are English.
// LANGUAGE names several in place of that one, between colons, unless it is "C" or "POSIX" ("C.UTF-8" lets
// LANGUAGE speak). The list ends with English, wherever that stands in it: what follows is known less well.
// Empty for English, and where the characters of the locale (LC_ALL, LC_CTYPE, LANG) are not UTF-8.
[[nodiscard]] std::vector<std::string> wishes(const Variables& variables);

// Where the catalogues are: share/locale beside the folder of the running program. Empty where the system
// does not tell what is running.
[[nodiscard]] std::filesystem::path ownFolder();

// From now on texts are in the first language of the wishes that catalogues has, a folder like share/locale,
// and in English where it has none. Before other threads run.
void take(const std::filesystem::path& catalogues, const Variables& variables);
// With the variables of the process.
void takeFromEnvironment(const std::filesystem::path& catalogues);

// The language of the texts by the name of its folder ("de"); empty while they are the English of the
// sources. Threads: any.
[[nodiscard]] std::string name();

// Threads: any.
[[nodiscard]] std::string text(const Message& message);

}  // namespace quillmere::Language
