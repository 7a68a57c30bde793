#include <string>
#include <string_view>

#include "QuillmereCLI/Reference/Completion.h"
#include "QuillmereCLI/Reference/ShellText.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::cli {
namespace {

constexpr std::string_view beginning =
    R"(# fish completion of quillmere-cli, made from its commands and options.

# The names of the stored models: those of the folder behind --models, else the user's own.
function __quillmere_cli_models
    set -l root $HOME/.local/share/Quillmere/Models
    set -q XDG_DATA_HOME; and set root $XDG_DATA_HOME/Quillmere/Models
    set -l words (commandline -opc)
    set -l place (contains -i -- --models $words); and set root $words[(math $place + 1)]
    for folder in $root/*/
        basename $folder
    end
end

complete -c quillmere-cli -f
)";

std::string fishQuoted(std::string_view text) {
    return "'" + escaped(text, "'\\") + "'";
}

// Whether the command line has come to command, and to none below it.
std::string condition(const CommandReference& command) {
    std::string text;
    for (std::size_t i = 1; i < command.words.size(); ++i)
        text += (i > 1 ? "; and " : "") + ("__fish_seen_subcommand_from " + command.words[i]);
    if (text.empty()) return "__fish_use_subcommand";
    for (const CommandReference& below : command.commands)
        text += "; and not __fish_seen_subcommand_from " + below.name();
    return text;
}

std::string wordList(const OptionReference& option, std::string_view suffix) {
    std::string text;
    for (const std::string& word : option.words)
        text += (text.empty() ? "" : " ") + escaped(word, " '\\()$") + std::string(suffix);
    return text;
}

std::string valueText(const OptionReference& option) {
    switch (option.kind) {
        case ValueKind::none:
            return "";
        case ValueKind::free:
            return " -x";
        case ValueKind::choice:
            return " -x -a " + fishQuoted(wordList(option, ""));
        case ValueKind::file:
            return " -r -F";
        case ValueKind::folder:
            return " -x -a '(__fish_complete_directories)'";
        case ValueKind::parameter:
            return " -x -a " + fishQuoted(wordList(option, "="));
        case ValueKind::model:
            return " -x -a " + fishQuoted("(__quillmere_cli_models) " + wordList(option, ""));
    }
    fatal("unknown kind of value");
}

std::string optionLine(const CommandReference& command, const OptionReference& option) {
    std::string text = "complete -c quillmere-cli -n " + fishQuoted(condition(command));
    for (const std::string& name : option.names)
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    return text + valueText(option) + " -d " + fishQuoted(option.help) + "\n";
}

// Files after an option that takes several: fish knows options with one value only.
std::string moreFilesLine(const CommandReference& command, const OptionReference& option) {
    const std::string isGiven = "; and __fish_contains_opt " + option.names.back().substr(2);
    return "complete -c quillmere-cli -n " + fishQuoted(condition(command) + isGiven) + " -F\n";
}

std::string argumentLine(const CommandReference& command, const OptionReference& argument) {
    const std::string values = argument.kind == ValueKind::file ? " -F" : valueText(argument);
    return "complete -c quillmere-cli -n " + fishQuoted(condition(command)) + values + "\n";
}

std::string commandLine(const CommandReference& command, const CommandReference& below) {
    return "complete -c quillmere-cli -n " + fishQuoted(condition(command)) + " -a " + below.name() + " -d " +
           fishQuoted(below.description) + "\n";
}

}  // namespace

std::string fishCompletion(const CommandReference& root) {
    std::string text(beginning);
    for (const CommandReference* command : allCommands(root)) {
        text += "\n";
        for (const CommandReference& below : command->commands)
            text += commandLine(*command, below);
        for (const OptionReference& option : command->options) {
            text += optionLine(*command, option);
            if (option.takesMany) text += moreFilesLine(*command, option);
        }
        for (const OptionReference& argument : command->arguments)
            text += argumentLine(*command, argument);
    }
    return text;
}

}  // namespace quillmere::cli
