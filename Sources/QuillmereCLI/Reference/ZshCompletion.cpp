#include <algorithm>
#include <string>
#include <string_view>

#include "QuillmereCLI/Reference/Completion.h"
#include "QuillmereCLI/Reference/ShellText.h"

namespace quillmere::cli {
namespace {

constexpr std::string_view beginning = R"(#compdef quillmere-cli
# zsh completion of quillmere-cli, made from its commands and options.

# Offers the arguments, and the names of the stored models: those behind --models, else the user's own.
_quillmere_cli_stored_models() {
  local root=${${(Q)opt_args[--models]}:-${XDG_DATA_HOME:-$HOME/.local/share}/Quillmere/Models}
  local -a names=("$@" ${~root}/*(N/:t))
  compadd -a names
}

)";

// "_quillmere_cli_models_remove"
std::string functionName(const CommandReference& command) {
    std::string name = "_quillmere_cli";
    for (std::size_t i = 1; i < command.words.size(); ++i)
        name += "_" + command.words[i];
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::string wordList(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + escaped(word, " ()\\:'");
    return text;
}

std::string action(const OptionReference& option) {
    switch (option.kind) {
        case ValueKind::none:
        case ValueKind::free:
            break;
        case ValueKind::choice:
            return "(" + wordList(option.words) + ")";
        case ValueKind::file:
            return "_files";
        case ValueKind::folder:
            return "_files -/";
        case ValueKind::parameter:
            return "compadd -S = - " + wordList(option.words);
        case ValueKind::model:
            return " _quillmere_cli_stored_models " +
                   wordList(option.words);  // a blank: with no more words than these
    }
    return " ";
}

std::string valueSpec(const OptionReference& option) {
    const std::string message =
        option.value.empty() || option.value == "..." ? option.names.back() : option.value;
    return ":" + escaped(message, ":\\") + ":" + action(option);
}

// One word of _arguments for each name.
std::string optionSpecs(const OptionReference& option) {
    std::string text;
    for (const std::string& name : option.names) {
        std::string spec = (option.isRepeatable ? "*" : "") + name;
        if (!option.isRepeatable && option.names.size() > 1) {
            std::string others;
            for (const std::string& other : option.names)
                others += (others.empty() ? "" : " ") + other;
            spec.insert(0, "(" + others + ")");
        }
        spec += "[" + escaped(option.help, "[]:\\") + "]";
        if (option.kind != ValueKind::none) spec += valueSpec(option);
        text += " \\\n    " + shellQuoted(spec);
    }
    return text;
}

std::string argumentSpec(const OptionReference& argument) {
    const std::string number = argument.takesMany ? "*" : argument.isRequired ? "1" : "1:";
    return " \\\n    " + shellQuoted(number + valueSpec(argument));
}

// Offers the commands below, and hands what follows one of them to its own function.
std::string dispatch(const CommandReference& command) {
    std::string text = "  case $state in\n  command)\n    local -a commands=(\n";
    for (const CommandReference& below : command.commands)
        text += "      " + shellQuoted(below.name() + ":" + escaped(below.description, ":\\")) + "\n";
    text += "    )\n    _describe command commands ;;\n  rest)\n    case $words[1] in\n";
    for (const CommandReference& below : command.commands)
        text += "    " + below.name() + ") " + functionName(below) + " ;;\n";
    return text + "    esac ;;\n  esac\n";
}

std::string function(const CommandReference& command) {
    std::string text = functionName(command) + "() {\n";
    if (!command.commands.empty()) text += "  local curcontext=$curcontext state line\n";
    text += "  typeset -A opt_args\n  _arguments -C";
    // What stands behind a command is for the command's own function.
    if (!command.commands.empty()) text += " -A '-*'";
    for (const OptionReference& option : command.options)
        text += optionSpecs(option);
    for (const OptionReference& argument : command.arguments)
        text += argumentSpec(argument);
    if (!command.commands.empty()) text += " \\\n    '1: :->command' '*:: :->rest'";
    text += "\n";
    if (!command.commands.empty()) text += dispatch(command);
    return text + "}\n\n";
}

}  // namespace

std::string zshCompletion(const CommandReference& root) {
    std::string text(beginning);
    for (const CommandReference* command : allCommands(root))
        text += function(*command);
    return text + functionName(root) + " \"$@\"\n";
}

}  // namespace quillmere::cli
