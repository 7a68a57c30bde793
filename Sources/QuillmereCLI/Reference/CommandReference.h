#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

// What manual pages and completions need to know of the command line. It is read off the tree of commands
// that also parses the arguments and prints the help, so that no option is listed twice.
namespace quillmere::cli {

// What may stand where a value is expected.
enum class ValueKind {
    none,    // the option takes no value
    free,    // a number or a name of the user's own
    choice,  // one of words
    file,
    folder,
    parameter,  // ID=VALUE, or ID= and more; words has the identifiers
    model,      // the name of a stored model, or one of words
};

struct OptionReference {
    std::vector<std::string> names;  // "-h" and "--help"; of an argument its one name, such as "FOLDER"
    std::string value;               // as the help shows it: "N", "quick|standard|thorough"; may be empty
    std::string help;                // with obligation and default, as the help has it
    ValueKind kind = ValueKind::none;
    std::vector<std::string> words;  // values that can be offered
    bool isRequired = false;
    bool takesMany = false;     // one after the other
    bool isRepeatable = false;  // it may be given several times
};

struct CommandReference {
    std::vector<std::string> words;  // "quillmere-cli", "models", "remove"
    std::string description;         // without a full stop
    std::vector<OptionReference> arguments;
    std::vector<OptionReference> options;
    std::vector<CommandReference> commands;

    [[nodiscard]] std::string name() const { return words.back(); }
    // "quillmere-cli-models-remove", the name of its manual page.
    [[nodiscard]] std::string pageName() const;
};

[[nodiscard]] CommandReference referenceOf(const CLI::App& app);

// The command and all below it, each before its own commands.
[[nodiscard]] std::vector<const CommandReference*> allCommands(const CommandReference& root);

}  // namespace quillmere::cli
