#include <string>
#include <string_view>

#include "QuillmereCLI/Reference/Completion.h"
#include "QuillmereCLI/Reference/ShellText.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::cli {
namespace {

constexpr std::string_view beginning =
    R"bash(# bash completion of quillmere-cli, made from its commands and options.

# Offers those of the arguments that begin with what is typed.
_quillmere_cli_offer() {
    local word typed=${current//[\\\"\']/}
    for word; do
        [[ $word != "$typed"* ]] || COMPREPLY+=("$(printf '%q' "$word")")
    done
}

# Offers the names of the stored models: those of the folder behind --models, else the user's own.
_quillmere_cli_models() {
    local i folder names=() root=${XDG_DATA_HOME:-$HOME/.local/share}/Quillmere/Models
    for ((i = 1; i + 1 < ${#COMP_WORDS[@]}; i++)); do
        [[ ${COMP_WORDS[i]} != --models ]] || root=${COMP_WORDS[i + 1]}
    done
    for folder in "${root/#\~/$HOME}"/*/; do
        [[ ! -d $folder ]] || names+=("$(basename "$folder")")
    done
    _quillmere_cli_offer "${names[@]}"
}

)bash";

constexpr std::string_view end = R"bash(
# Offers values of the kind found.
_quillmere_cli_values() {
    case $kind in
    file) compopt -o default ;;
    folder) compopt -o dirnames ;;
    choice) _quillmere_cli_offer "${values[@]}" ;;
    model) _quillmere_cli_offer "${values[@]}"; _quillmere_cli_models ;;
    parameter) _quillmere_cli_offer "${values[@]/%/=}"; compopt -o nospace ;;
    esac
}

_quillmere_cli() {
    local i word kind many current=${COMP_WORDS[COMP_CWORD]} path='' expected='' assigned=''
    local commands=() options=() values=()
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; i++)); do
        word=${COMP_WORDS[i]}
        _quillmere_cli_command "$path"
        if [[ $word == '=' ]]; then
            [[ $expected ]] || assigned=1
        elif [[ $assigned ]]; then
            assigned=''
        elif [[ $word == -* ]]; then
            _quillmere_cli_option "$path $word"
            expected=''
            [[ $kind == none ]] || expected=$path\ $word
        elif [[ $expected ]]; then
            _quillmere_cli_option "$expected"
            [[ $many ]] || expected=''
        elif [[ " ${commands[*]} " == *" $word "* ]]; then
            path+=${path:+ }$word
        fi
    done
    if [[ $current == '=' ]]; then
        [[ $expected ]] || assigned=1
        current=''
    fi
    [[ ! $assigned ]] || return 0
    if [[ $expected ]]; then
        _quillmere_cli_option "$expected"
        if [[ ! $many || $current != -* ]]; then
            _quillmere_cli_values
            return 0
        fi
    fi
    _quillmere_cli_command "$path"
    if [[ $current == -* ]]; then
        _quillmere_cli_offer "${options[@]}"
    else
        _quillmere_cli_offer "${commands[@]}"
        _quillmere_cli_option "$path "
        _quillmere_cli_values
    fi
}

complete -F _quillmere_cli quillmere-cli
)bash";

std::string_view kindName(ValueKind kind) {
    switch (kind) {
        case ValueKind::none:
            return "none";
        case ValueKind::free:
            return "free";
        case ValueKind::choice:
            return "choice";
        case ValueKind::file:
            return "file";
        case ValueKind::folder:
            return "folder";
        case ValueKind::parameter:
            return "parameter";
        case ValueKind::model:
            return "model";
    }
    fatal("unknown kind of value");
}

std::string quotedWords(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : " ") + shellQuoted(word);
    return "(" + text + ")";
}

std::vector<std::string> optionNames(const CommandReference& command) {
    std::vector<std::string> names;
    for (const OptionReference& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

std::vector<std::string> commandNames(const CommandReference& command) {
    std::vector<std::string> names;
    for (const CommandReference& below : command.commands)
        names.push_back(below.name());
    return names;
}

// One branch per command: the commands below it and its options.
std::string commandFunction(const CommandReference& root) {
    std::string text =
        "# Sets commands and options to what the command $1 has.\n_quillmere_cli_command() {\n"
        "    case $1 in\n";
    for (const CommandReference* command : allCommands(root)) {
        text += "    " + shellQuoted(commandPath(*command)) +
                ")\n        commands=" + quotedWords(commandNames(*command)) +
                "\n        options=" + quotedWords(optionNames(*command)) + " ;;\n";
    }
    return text + "    esac\n}\n";
}

std::string branch(const std::string& pattern, const OptionReference& option) {
    return "    " + pattern + ") kind=" + std::string(kindName(option.kind)) +
           (option.takesMany ? " many=1" : "") +
           (option.words.empty() ? "" : " values=" + quotedWords(option.words)) + " ;;\n";
}

// One branch per option with a value: "COMMAND OPTION"; an argument has no option.
std::string optionFunction(const CommandReference& root) {
    std::string text =
        "\n# Sets kind, many and values to what can stand behind $1, a command and its option or nothing.\n"
        "_quillmere_cli_option() {\n    kind=none many='' values=()\n    case $1 in\n";
    for (const CommandReference* command : allCommands(root)) {
        const std::string path = commandPath(*command) + " ";
        for (const OptionReference& option : command->options) {
            if (option.kind != ValueKind::none)
                text += branch(shellQuoted(path + option.names.back()), option);
        }
        for (const OptionReference& argument : command->arguments)
            text += branch(shellQuoted(path), argument);
    }
    return text + "    esac\n}\n";
}

}  // namespace

std::string bashCompletion(const CommandReference& root) {
    return std::string(beginning) + commandFunction(root) + optionFunction(root) + std::string(end);
}

}  // namespace quillmere::cli
