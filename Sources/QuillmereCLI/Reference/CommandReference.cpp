#include "QuillmereCLI/Reference/CommandReference.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include <CLI/CLI.hpp>

#include "QuillmereCLI/ParameterNames.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::cli {
namespace {

const CLI::Formatter& formatterOf(const CLI::App& app) {
    const auto* const formatter = dynamic_cast<const CLI::Formatter*>(app.get_formatter().get());
    require(formatter != nullptr, "the help has a formatter of its own kind");
    return *formatter;
}

// "auto|cpu|gpu|INDEX|NAME": auto, cpu and gpu. Capitals stand for something else.
std::vector<std::string> literalWords(std::string_view value) {
    std::vector<std::string> words;
    while (!value.empty()) {
        const std::string_view word = value.substr(0, value.find('|'));
        value.remove_prefix(std::min(word.size() + 1, value.size()));
        const bool isLiteral = std::none_of(word.begin(), word.end(),
                                            [](unsigned char letter) { return std::isupper(letter) != 0; });
        if (isLiteral) words.emplace_back(word);
    }
    return words;
}

// The values that a person can be offered, by what the help calls the value.
void describeValue(OptionReference& option, std::string_view command) {
    const std::string& name = option.names.back();
    const std::string_view value = option.value.empty() || option.value == "..." ? name : option.value;
    if (name == "--preset") {
        option.kind = ValueKind::choice;
        option.words = presetNames();
    } else if (value.starts_with("ID=")) {
        option.kind = ValueKind::parameter;
        option.words = parameterIDs();
    } else if (value == "PATH" || value.starts_with("FILE")) {
        option.kind = ValueKind::file;
    } else if (value == "DIR" || value == "FOLDER") {
        option.kind = ValueKind::folder;
    } else if (value.ends_with("|MODEL") || (command == "remove" && name == "NAME")) {
        option.kind = ValueKind::model;
        option.words = literalWords(option.value);
    } else if (value.find('|') != std::string_view::npos) {
        option.kind = ValueKind::choice;
        option.words = literalWords(value);
    } else {
        option.kind = ValueKind::free;
    }
}

OptionReference referenceOf(const CLI::Option& option, const CLI::App& app) {
    OptionReference reference;
    if (option.nonpositional()) {
        for (const std::string& name : option.get_snames())
            reference.names.push_back("-" + name);
        for (const std::string& name : option.get_lnames())
            reference.names.push_back("--" + name);
    } else {
        reference.names = {option.get_name(true)};
    }
    reference.value = option.get_type_name();
    reference.help = formatterOf(app).make_option_desc(&option);
    reference.isRequired = option.get_required();
    reference.takesMany = option.get_expected_max() > 1;
    reference.isRepeatable =
        reference.takesMany || option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    if (option.get_items_expected_max() > 0) describeValue(reference, app.get_name());
    return reference;
}

CommandReference referenceOf(const CLI::App& app, std::vector<std::string> words) {
    words.push_back(app.get_name());
    CommandReference reference;
    reference.words = std::move(words);
    reference.description = app.get_description();
    if (reference.description.ends_with(".")) reference.description.pop_back();
    for (const CLI::Option* option : app.get_options({})) {
        auto& list = option->nonpositional() ? reference.options : reference.arguments;
        list.push_back(referenceOf(*option, app));
    }
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        reference.commands.push_back(referenceOf(*command, reference.words));
    return reference;
}

}  // namespace

std::string CommandReference::pageName() const {
    std::string name;
    for (const std::string& word : words)
        name += (name.empty() ? "" : "-") + word;
    return name;
}

CommandReference referenceOf(const CLI::App& app) {
    return referenceOf(app, {});
}

std::vector<const CommandReference*> allCommands(const CommandReference& root) {
    std::vector<const CommandReference*> commands{&root};
    for (const CommandReference& command : root.commands) {
        const auto below = allCommands(command);
        commands.insert(commands.end(), below.begin(), below.end());
    }
    return commands;
}

}  // namespace quillmere::cli
