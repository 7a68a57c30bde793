#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCLI/CommandLine.h"
#include "Support/Environment.h"
#include "Support/SmallCorpus.h"
#include "Support/TempFolder.h"

namespace quillmere::testing {

struct Outcome {
    int exitCode = 0;
    std::string out, err;

    // Standard output as events; fails the test on a line that is no JSON object with a key "event".
    [[nodiscard]] std::vector<cli::JSON> events() const {
        std::vector<cli::JSON> events;
        std::istringstream lines(out);
        for (std::string line; std::getline(lines, line);) {
            cli::JSON event = cli::JSON::parse(line, nullptr, false);
            EXPECT_TRUE(event.is_object() && event.contains("event")) << line;
            events.push_back(std::move(event));
        }
        return events;
    }
    // The only event of that kind; fails the test if there is another number of them.
    [[nodiscard]] cli::JSON event(std::string_view kind) const {
        std::vector<cli::JSON> matching;
        for (cli::JSON& event : events()) {
            if (event["event"] == kind) matching.push_back(std::move(event));
        }
        EXPECT_EQ(matching.size(), 1U) << kind << " in\n" << out;
        return matching.empty() ? cli::JSON::object() : matching.front();
    }
};

// Runs a command in this process. terminalWidth: as if standard error were a terminal that wide.
inline Outcome runCommand(const std::vector<std::string>& arguments, const cli::CancelFlag& cancel,
                          std::optional<std::size_t> terminalWidth = {}) {
    std::ostringstream out;
    std::ostringstream err;
    Outcome outcome;
    outcome.exitCode = cli::run(arguments, {out, err, [=] { return terminalWidth; }}, cancel);
    outcome.out = out.str();
    outcome.err = err.str();
    return outcome;
}
inline Outcome runCommand(const std::vector<std::string>& arguments) {
    return runCommand(arguments, cli::CancelFlag());
}

// Text that asks for cancellation, like Ctrl-C, once it contains trigger. Whole lines arrive at each flush.
class CancellingText : public std::stringbuf {
public:
    CancellingText(std::string trigger, cli::CancelFlag& cancel)
        : trigger_(std::move(trigger)), cancel_(cancel) {}

private:
    int sync() override {
        if (view().find(trigger_) != std::string_view::npos) cancel_.request(SIGINT);
        return 0;
    }

    std::string trigger_;
    cli::CancelFlag& cancel_;
};

inline Outcome runCommandCancelledAt(const std::string& trigger, const std::vector<std::string>& arguments) {
    cli::CancelFlag cancel;
    CancellingText text(trigger, cancel);
    std::ostream out(&text);
    std::ostringstream err;
    Outcome outcome;
    outcome.exitCode = cli::run(arguments, {out, err, [] { return std::optional<std::size_t>(); }}, cancel);
    outcome.out = text.str();
    outcome.err = err.str();
    return outcome;
}

// A small corpus, an empty models root and an output folder that does not exist yet. The user's data, where
// the journal is, and preferences are in folders of the test's own.
class CommandTest : public ::testing::Test {
protected:
    CommandTest() { writeSmallCorpus(corpus); }

    // The arguments, followed by --models.
    [[nodiscard]] std::vector<std::string> withModels(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--models", models.string()});
        return arguments;
    }
    // train with settings that take a moment.
    [[nodiscard]] std::vector<std::string> trainArguments(std::vector<std::string> more = {}) const {
        std::vector<std::string> arguments{
            "train", corpus.string(),  "--steps", "2", "--batch-size", "2", "--latent-dim",
            "4",     "--clip-seconds", "0.1"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return withModels(arguments);
    }
    void trainModel() const {
        const Outcome outcome = runCommand(trainArguments());
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    }
    // The only model folder.
    [[nodiscard]] std::filesystem::path modelFolder() const {
        const std::filesystem::directory_iterator entry(models);
        EXPECT_NE(entry, std::filesystem::directory_iterator());
        return entry->path();
    }

    const TempFolder folder;
    const std::filesystem::path corpus = folder / "Struck Bars";
    const std::filesystem::path models = folder / "models";
    const std::filesystem::path output = folder / "output";
    const std::filesystem::path journal = folder / "data" / "Quillmere" / "journal.jsonl";

private:
    const EnvironmentVariable data_{"XDG_DATA_HOME", (folder / "data").string()};
    const EnvironmentVariable preferences_{"XDG_CONFIG_HOME", (folder / "preferences").string()};
};

}  // namespace quillmere::testing
