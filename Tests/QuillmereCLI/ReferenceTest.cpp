// Manual pages and completions against what --help says, which shows the same tree of commands.

#include "QuillmereCLI/Reference/CommandReference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Reference/Completion.h"
#include "QuillmereCLI/Reference/ManualPage.h"
#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Generate/Aesthetics.h"

namespace quillmere::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsSupersetOf;
using ::testing::Not;

const cli::Edition edition{.version = "1.2.3", .date = "2025-03-01"};

cli::CommandReference reference() {
    cli::Invocation invocation;
    return cli::referenceOf(*cli::commandTree(invocation));
}

const cli::CommandReference& commandNamed(const cli::CommandReference& root, std::string_view page) {
    for (const cli::CommandReference* command : cli::allCommands(root)) {
        if (command->pageName() == page) return *command;
    }
    throw std::runtime_error("no command " + std::string(page));
}

const cli::OptionReference& optionNamed(const cli::CommandReference& command, const std::string& name) {
    const auto found =
        std::find_if(command.options.begin(), command.options.end(),
                     [&](const cli::OptionReference& option) { return option.names.back() == name; });
    if (found == command.options.end()) throw std::runtime_error("no option " + name);
    return *found;
}

// What --help lists in the part that begins with heading: the first word of each line that is indented by two
// blanks. An option that has a short name, too, is listed by both, with a comma between.
std::vector<std::string> listedInHelp(const cli::CommandReference& command, const std::string& heading) {
    std::vector<std::string> arguments(command.words.begin() + 1, command.words.end());
    arguments.emplace_back("--help");
    std::istringstream lines(runCommand(arguments).out);
    std::vector<std::string> names;
    std::string part;
    for (std::string line; std::getline(lines, line);) {
        if (line.ends_with(":")) part = line.substr(0, line.size() - 1);
        const bool isEntry = line.size() > 2 && line.starts_with("  ") && line[2] != ' ';
        if (part != heading || !isEntry) continue;
        std::string first = line.substr(2, line.find(' ', 2) - 2);
        const std::size_t comma = first.find(',');
        if (comma != std::string::npos) {
            names.push_back(first.substr(0, comma));
            first.erase(0, comma + 1);
        }
        names.push_back(first);
    }
    return names;
}

// text without what only roff needs, in one line.
std::string plain(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    for (const char* escape : {"\\fB", "\\fI", "\\fR", "\\&", "\\|"}) {
        const std::string_view pattern(escape);
        for (std::size_t at = text.find(pattern); at != std::string::npos; at = text.find(pattern, at))
            text.erase(at, pattern.size());
    }
    for (std::size_t at = text.find("\\-"); at != std::string::npos; at = text.find("\\-", at))
        text.erase(at, 1);
    return text;
}

TEST(CommandReference, HasEveryCommandOfTheHelp) {
    const cli::CommandReference root = reference();
    for (const cli::CommandReference* command : cli::allCommands(root)) {
        std::vector<std::string> names;
        for (const cli::CommandReference& below : command->commands)
            names.push_back(below.name());
        EXPECT_EQ(names, listedInHelp(*command, "Subcommands")) << command->pageName();
    }
    EXPECT_THAT(listedInHelp(root, "Subcommands"), IsSupersetOf({"scan", "train", "generate", "models"}));
}

TEST(CommandReference, HasEveryOptionAndArgumentOfTheHelp) {
    const cli::CommandReference root = reference();
    for (const cli::CommandReference* command : cli::allCommands(root)) {
        std::vector<std::string> options;
        for (const cli::OptionReference& option : command->options)
            options.insert(options.end(), option.names.begin(), option.names.end());
        EXPECT_EQ(options, listedInHelp(*command, "Options")) << command->pageName();
        std::vector<std::string> arguments;
        for (const cli::OptionReference& argument : command->arguments)
            arguments.insert(arguments.end(), argument.names.begin(), argument.names.end());
        EXPECT_EQ(arguments, listedInHelp(*command, "Positionals")) << command->pageName();
    }
}

TEST(CommandReference, KnowsWhatValuesAre) {
    const cli::CommandReference root = reference();
    const cli::CommandReference& train = commandNamed(root, "quillmere-cli-train");
    const cli::CommandReference& generate = commandNamed(root, "quillmere-cli-generate");
    const cli::CommandReference& remove = commandNamed(root, "quillmere-cli-models-remove");

    EXPECT_EQ(optionNamed(train, "--json").kind, cli::ValueKind::none);
    EXPECT_EQ(optionNamed(train, "--steps").kind, cli::ValueKind::free);
    EXPECT_EQ(optionNamed(train, "--models").kind, cli::ValueKind::folder);
    EXPECT_EQ(train.arguments.at(0).kind, cli::ValueKind::folder);
    EXPECT_THAT(optionNamed(train, "--quality").words, ElementsAre("quick", "standard", "thorough"));
    EXPECT_THAT(optionNamed(train, "--device").words, ElementsAre("auto", "cpu", "gpu"));
    EXPECT_THAT(optionNamed(train, "--start").words, Contains("fresh"));
    EXPECT_EQ(optionNamed(train, "--start").kind, cli::ValueKind::model);
    EXPECT_EQ(remove.arguments.at(0).kind, cli::ValueKind::model);
    EXPECT_EQ(optionNamed(generate, "--aesthetics").kind, cli::ValueKind::file);
    EXPECT_EQ(optionNamed(generate, "--prefix").kind, cli::ValueKind::free);
    EXPECT_EQ(optionNamed(generate, "--preset").words.size(), Preset::all().size());
    EXPECT_EQ(optionNamed(generate, "--set").words.size(), Aesthetics::specs().size());
    EXPECT_TRUE(optionNamed(generate, "--set").isRepeatable);
    EXPECT_FALSE(optionNamed(generate, "--set").takesMany);
    EXPECT_TRUE(optionNamed(generate, "--like").takesMany);
}

TEST(CommandReference, TellsFilesAndParametersByHowTheirNamesBegin) {
    CLI::App app("Test", "test");
    std::string value;
    app.formatter(std::make_shared<CLI::Formatter>());
    app.add_option("--picture", value, "")->type_name("FILE.png|svg");
    app.add_option("--range", value, "")->type_name("ID=FROM:TO");
    const cli::CommandReference root = cli::referenceOf(app);
    EXPECT_EQ(optionNamed(root, "--picture").kind, cli::ValueKind::file);
    EXPECT_EQ(optionNamed(root, "--range").kind, cli::ValueKind::parameter);
}

TEST(ManualPage, HasEveryOptionWithItsHelp) {
    const cli::CommandReference root = reference();
    for (const cli::CommandReference* command : cli::allCommands(root)) {
        const std::string page = plain(cli::manualPage(*command, root, edition));
        for (const std::string& name : listedInHelp(*command, "Options"))
            EXPECT_THAT(page, HasSubstr(name)) << command->pageName();
        for (const cli::OptionReference& option : command->options)
            EXPECT_THAT(page, HasSubstr(plain(cli::roffText(option.help)) + ". ")) << command->pageName();
    }
}

TEST(ManualPage, NamesEveryOtherPage) {
    const cli::CommandReference root = reference();
    const std::string page = plain(cli::manualPage(root, root, edition));
    for (const cli::CommandReference* command : cli::allCommands(root)) {
        const bool isOther = command != &root;
        EXPECT_EQ(page.find(command->pageName() + "(1)") != std::string::npos, isOther);
    }
    EXPECT_THAT(page, HasSubstr("quillmere(1)"));
}

TEST(ManualPage, OfGenerateHasEveryParameterAndPreset) {
    const cli::CommandReference root = reference();
    const std::string page =
        plain(cli::manualPage(commandNamed(root, "quillmere-cli-generate"), root, edition));
    for (const ParameterSpec& spec : Aesthetics::specs())
        EXPECT_THAT(page, HasSubstr(".TP " + std::string(spec.id) + " "));
    for (const Preset& preset : Preset::all())
        EXPECT_THAT(page, HasSubstr(".TP " + std::string(preset.name) + " "));
}

TEST(ManualPage, SaysItsNameAndEdition) {
    const cli::CommandReference root = reference();
    const std::string page = cli::manualPage(commandNamed(root, "quillmere-cli-scan"), root, edition);
    EXPECT_TRUE(page.starts_with(".TH QUILLMERE\\-CLI\\-SCAN 1 2025-03-01 \"Quillmere 1.2.3\"")) << page;
    EXPECT_THAT(page, HasSubstr("quillmere\\-cli\\-scan \\- look at a folder"));
}

TEST(RoffText, HasNoRequestsAndNoEscapesOfItsOwn) {
    EXPECT_EQ(cli::roffText("a-b\\n"), "a\\-b\\en");
    EXPECT_EQ(cli::roffText(".SH"), "\\&.SH");
    EXPECT_EQ(cli::roffText("'devices' lists"), "\\(aqdevices\\(aq lists");
    EXPECT_EQ(cli::roffText("± 2× Griffin–Lim 𝄞"), "\\[u00B1] 2\\[u00D7] Griffin\\[u2013]Lim \\[u1D11E]");
}

// Of the lines of text, those that have word.
std::vector<std::string> linesWith(const std::string& text, const std::string& word) {
    std::istringstream lines(text);
    std::vector<std::string> found;
    for (std::string line; std::getline(lines, line);) {
        if (line.find(word) != std::string::npos) found.push_back(line);
    }
    return found;
}

TEST(Completion, HasEveryOptionForEveryShell) {
    const cli::CommandReference root = reference();
    const std::string bash = cli::bashCompletion(root);
    const std::string zsh = cli::zshCompletion(root);
    const std::string fish = cli::fishCompletion(root);
    for (const cli::CommandReference* command : cli::allCommands(root)) {
        for (const std::string& name : listedInHelp(*command, "Options")) {
            EXPECT_THAT(bash, HasSubstr("'" + name + "'"));
            EXPECT_THAT(zsh, HasSubstr(name + "["));
            if (!name.starts_with("--")) continue;
            const std::string inFish = " -l " + name.substr(2) + " ";
            const std::string last = command->name();
            EXPECT_THAT(linesWith(fish, inFish),
                        Contains(HasSubstr(command == &root ? "__fish_use_subcommand"
                                                            : "__fish_seen_subcommand_from " + last)))
                << name << " of " << command->pageName();
        }
    }
}

TEST(Completion, QuotesWhatAShellWouldRead) {
    const cli::CommandReference root{.words = {"quillmere-cli"},
                                     .description = "Test",
                                     .arguments = {},
                                     .options = {{.names = {"--kind"},
                                                  .value = "a|b",
                                                  .help = "One of [these]: it's $HOME",
                                                  .kind = cli::ValueKind::choice,
                                                  .words = {"two words", "it's"}}},
                                     .commands = {}};
    EXPECT_THAT(cli::bashCompletion(root), HasSubstr(R"(values=('two words' 'it'\''s'))"));
    EXPECT_THAT(cli::zshCompletion(root),
                HasSubstr(R"('--kind[One of \[these\]\: it'\''s $HOME]:a|b:(two\ words it\'\''s)')"));
    EXPECT_THAT(cli::fishCompletion(root), HasSubstr(R"(-d 'One of [these]: it\'s $HOME')"));
    EXPECT_THAT(cli::fishCompletion(root), Not(HasSubstr("-a 'two words")));
}

}  // namespace
}  // namespace quillmere::testing
