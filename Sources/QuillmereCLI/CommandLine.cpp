#include "QuillmereCLI/CommandLine.h"

#include <array>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::cli {
namespace {

constexpr const char* version = "quillmere-cli " QUILLMERE_VERSION;
constexpr std::string_view noCommand = "A command is required";

// Help with the default value and the obligation in words, after the description.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter() {
        column_width(32);
        label("Usage", tr("Usage"));
        label("OPTIONS", tr("OPTIONS"));
        label("SUBCOMMAND", tr("SUBCOMMAND"));
        label("Positionals", tr("Positionals"));
    }

    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_name().empty() ? "" : " " + option->get_type_name();
    }
    std::string make_option_desc(const CLI::Option* option) const override {
        std::string text = option->get_description();
        if (option->get_required()) text = tr("{0} (required)", text);
        if (!option->get_default_str().empty())
            text = tr("{0} (default: {1})", text, option->get_default_str());
        return text;
    }
    std::string make_group(std::string group, bool isPositional,
                           std::vector<const CLI::Option*> options) const override {
        if (group == "Options") group = tr("Options");
        return Formatter::make_group(std::move(group), isPositional, std::move(options));
    }
};

void addCommands(CLI::App& app, Invocation& invocation) {
    app.name("quillmere-cli");
    app.formatter(std::make_shared<HelpFormatter>());  // before the commands, which inherit it
    app.set_help_flag("-h,--help", tr("Print this help message and exit"));
    app.require_subcommand(0, 1);
    addScan(app, invocation);
    addTrain(app, invocation);
    addGenerate(app, invocation);
    addAudition(app, invocation);
    addRecipe(app, invocation);
    addJournal(app, invocation);
    addVerify(app, invocation);
    addRelatives(app, invocation);
    addSweep(app, invocation);
    addKit(app, invocation);
    addReport(app, invocation);
    addMap(app, invocation);
    addPresets(app, invocation);
    addParameters(app, invocation);
    addDevices(app, invocation);
    addModels(app, invocation);
}

// What each command has.
void addToEach(CLI::App& app) {
    app.set_version_flag("--version", version, tr("Print the version and exit"));
    for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; })) {
        command->group(tr("Subcommands"));
        addToEach(*command);
    }
}

// What stands before and after between in text; nothing where it is not there.
std::optional<std::array<std::string, 2>> around(const std::string& text, std::string_view between) {
    const std::size_t at = text.find(between);
    if (at == std::string::npos) return std::nullopt;
    return std::array{text.substr(0, at), text.substr(at + between.size())};
}

template <typename Kind>
bool isA(const CLI::ParseError& error) {
    return dynamic_cast<const Kind*>(&error) != nullptr;
}

// A usage error in the user's language. Those of our own are; the library's are known by their words.
std::string wordsOf(const CLI::ParseError& error) {
    std::string text = error.what();
    if (isA<CLI::RequiredError>(error)) {
        if (text == noCommand) return tr("A command is required");
        if (const auto name = around(text, " is required")) return tr("{0} is required", (*name)[0]);
    }
    if (isA<CLI::RequiresError>(error)) {
        if (const auto names = around(text, " requires "))
            return tr("{0} requires {1}", (*names)[0], (*names)[1]);
    }
    if (isA<CLI::ExcludesError>(error)) {
        if (const auto names = around(text, " excludes "))
            return tr("{0} excludes {1}", (*names)[0], (*names)[1]);
    }
    if (isA<CLI::ExtrasError>(error)) {
        if (const auto one = around(text, "The following argument was not expected: "))
            return tr("The following argument was not expected: {0}", (*one)[1]);
        if (const auto several = around(text, "The following arguments were not expected: "))
            return tr("The following arguments were not expected: {0}", (*several)[1]);
    }
    if (isA<CLI::ArgumentMismatch>(error)) {
        const auto name = around(text, ": 1 required ");
        const auto type = name ? around((*name)[1], " missing") : std::nullopt;
        if (type) return tr("{0}: 1 required {1} missing", (*name)[0], (*type)[0]);
        const auto most = around(text, ": At Most ");
        const auto received = most ? around((*most)[1], " required but received ") : std::nullopt;
        if (received)
            return tr("{0}: At Most {1} required but received {2}", (*most)[0], (*received)[0],
                      (*received)[1]);
    }
    return text;
}

// The help that was asked for, or the usage error. Returns the exit code.
int answerParseError(const CLI::App& app, const CLI::ParseError& error, const Console::Streams& streams,
                     Console& console) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
        return app.exit(error, streams.out, streams.err);
    console.fail(Message::verbatim(wordsOf(error)));
    console.note(tr("Try --help."));
    return usageError;
}

int runAction(const Invocation& invocation, Console& console, const CancelFlag& cancel) {
    try {
        invocation.action(console, cancel);
        return success;
    } catch (const CancellationError&) {
        console.fail(Message("The operation was cancelled."));
        return cancel.exitCode();
    } catch (const Failure& failure) {
        console.fail(failure.message());
    } catch (const std::filesystem::filesystem_error& error) {
        console.fail(Message("{0}: {1}", error.path1(), error.code()));
    } catch (const std::bad_alloc&) {
        console.fail(Message("There is not enough memory for this."));
    } catch (const std::exception& error) {
        console.fail(Message::verbatim(error.what()));
    }
    return failure;
}

}  // namespace

std::unique_ptr<CLI::App> commandTree(Invocation& invocation) {
    auto app = std::make_unique<CLI::App>(
        tr("Learns the character of a folder of short audio samples and generates new ones."));
    addCommands(*app, invocation);
    addToEach(*app);
    return app;
}

int run(const std::vector<std::string>& arguments, const Console::Streams& streams,
        const CancelFlag& cancel) {
    Invocation invocation;
    const std::unique_ptr<CLI::App> app = commandTree(invocation);

    Console console(streams);
    int exitCode = success;
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());  // as CLI11 takes them
        app->parse(std::move(reversed));
        if (!invocation.action) throw CLI::RequiredError("A command");
        if (invocation.json) console.useJSON();
        exitCode = runAction(invocation, console, cancel);
    } catch (const CLI::ParseError& error) {
        exitCode = answerParseError(*app, error, streams, console);
    }
    if (!console.flush() && exitCode == success) {
        console.note(tr("quillmere-cli: Not everything could be written to standard output."));
        return failure;
    }
    return exitCode;
}

}  // namespace quillmere::cli
