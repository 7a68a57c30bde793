#pragma once

#include <filesystem>
#include <string>

#include "QuillmereCore/Util/Message.h"

// The language in which a program speaks to people. It is English until the program asks for that of the
// environment, at its start; the core itself never does. Numbers, and everything that is stored or that
// programs read, are the same in every language, so nothing but looking up a text here knows of a locale.
namespace quillmere::Language {

// Where the catalogues are: share/locale beside the folder of the running program.
[[nodiscard]] std::filesystem::path ownFolder();

// From now on texts are in the language of the environment (LANGUAGE, LC_ALL, LC_MESSAGES, LANG), where
// catalogues has it, a folder like share/locale. The system need not have the locale; LANGUAGE
// stands for one that it has not. Before other threads run.
void takeFromEnvironment(const std::filesystem::path& catalogues);

// Threads: any.
[[nodiscard]] std::string text(const Message& message);

}  // namespace quillmere::Language
