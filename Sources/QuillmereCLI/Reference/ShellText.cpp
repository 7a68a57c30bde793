#include "QuillmereCLI/Reference/ShellText.h"

namespace quillmere::cli {

std::string shellQuoted(std::string_view text) {
    std::string quoted = "'";
    for (const char character : text) {
        if (character == '\'') {
            quoted += "'\\''";
        } else {
            quoted += character;
        }
    }
    return quoted + "'";
}

std::string escaped(std::string_view text, std::string_view characters) {
    std::string result;
    for (const char character : text) {
        if (characters.find(character) != std::string_view::npos) result += '\\';
        result += character;
    }
    return result;
}

std::string commandPath(const CommandReference& command) {
    std::string path;
    for (std::size_t i = 1; i < command.words.size(); ++i)
        path += (i > 1 ? " " : "") + command.words[i];
    return path;
}

}  // namespace quillmere::cli
