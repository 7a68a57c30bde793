#include "QuillmereCLI/CommandLine.h"

#include <filesystem>
#include <memory>
#include <new>
#include <ostream>

#include <CLI/CLI.hpp>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

constexpr const char* version = "quillmere-cli " QUILLMERE_VERSION;

// Help with the default value and the obligation in words, after the description.
class HelpFormatter : public CLI::Formatter {
public:
    HelpFormatter() { column_width(32); }

    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_name().empty() ? "" : " " + option->get_type_name();
    }
    std::string make_option_desc(const CLI::Option* option) const override {
        std::string text = option->get_description();
        if (option->get_required()) text += " (required)";
        if (!option->get_default_str().empty()) text += " (default: " + option->get_default_str() + ")";
        return text;
    }
};

void addCommands(CLI::App& app, Invocation& invocation) {
    app.name("quillmere-cli");
    app.formatter(std::make_shared<HelpFormatter>());  // before the commands, which inherit it
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

void addVersionEverywhere(CLI::App& app) {
    app.set_version_flag("--version", version, "Print the version and exit");
    for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; }))
        addVersionEverywhere(*command);
}

// The help that was asked for, or the usage error. Returns the exit code.
int answerParseError(const CLI::App& app, const CLI::ParseError& error, const Console::Streams& streams,
                     Console& console) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
        return app.exit(error, streams.out, streams.err);
    console.fail(error.what());
    console.note("Try --help.");
    return usageError;
}

int runAction(const Invocation& invocation, Console& console, const CancelFlag& cancel) {
    try {
        invocation.action(console, cancel);
        return success;
    } catch (const CancellationError& cancellation) {
        console.fail(cancellation.what());
        return cancel.exitCode();
    } catch (const std::filesystem::filesystem_error& error) {
        console.fail(Text::utf8(error.path1()) + ": " + error.code().message());
    } catch (const std::bad_alloc&) {
        console.fail("There is not enough memory for this.");
    } catch (const std::exception& error) {
        console.fail(error.what());
    }
    return failure;
}

}  // namespace

std::unique_ptr<CLI::App> commandTree(Invocation& invocation) {
    auto app = std::make_unique<CLI::App>(
        "Learns the character of a folder of short audio samples and generates new ones.");
    addCommands(*app, invocation);
    addVersionEverywhere(*app);
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
        console.note("quillmere-cli: Not everything could be written to standard output.");
        return failure;
    }
    return exitCode;
}

}  // namespace quillmere::cli
