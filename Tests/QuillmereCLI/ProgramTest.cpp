// The installed program as a child process: what only a whole process can show.

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>

#include <nlohmann/json.hpp>

#include "Support/Environment.h"
#include "Support/Program.h"
#include "Support/SmallCorpus.h"
#include "Support/TempFolder.h"

namespace quillmere::testing {
namespace {

constexpr const char* cli = QUILLMERE_CLI;

class ProgramTest : public ::testing::Test {
protected:
    ProgramTest() { writeSmallCorpus(corpus); }

    [[nodiscard]] std::vector<std::string> trainArguments(const std::string& steps) const {
        return {cli,
                "train",
                corpus.string(),
                "--steps",
                steps,
                "--batch-size",
                "2",
                "--latent-dim",
                "4",
                "--clip-seconds",
                "0.1",
                "--models",
                models.string()};
    }
    [[nodiscard]] std::vector<std::string> generateArguments(const std::string& count) const {
        return {cli,        "generate",      corpus.string(), "--output", output.string(),
                "--models", models.string(), "--count",       count};
    }
    void trainModel() const {
        const auto result = Program(trainArguments("2")).finish();
        ASSERT_EQ(result.exitCode, 0) << result.err;
    }

    const TempFolder folder;
    const std::filesystem::path corpus = folder / "corpus";
    const std::filesystem::path models = folder / "models";
    const std::filesystem::path output = folder / "output";

private:
    // Nothing here may touch the user's own journal.
    const EnvironmentVariable data_{"XDG_DATA_HOME", (folder / "data").string()};
    const EnvironmentVariable preferences_{"XDG_CONFIG_HOME", (folder / "preferences").string()};
};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST_F(ProgramTest, ExitCodesTellSuccessFailureAndMisuse) {
    EXPECT_EQ(Program({cli, "--version"}).finish().exitCode, 0);
    EXPECT_EQ(Program({cli, "presets"}).finish().exitCode, 0);
    EXPECT_EQ(Program({cli, "scan", (folder / "nowhere").string()}).finish().exitCode, 1);
    EXPECT_EQ(Program({cli, "scan"}).finish().exitCode, 2);
    EXPECT_EQ(Program({cli}).finish().exitCode, 2);
}

TEST_F(ProgramTest, FailuresGoToStandardErrorInOneLine) {
    const auto result = Program({cli, "scan", (folder / "nowhere").string()}).finish();
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(
        result.err.ends_with("quillmere-cli: " + (folder / "nowhere").string() + " is not a folder\n"))
        << result.err;
}

TEST_F(ProgramTest, InterruptEndsTrainingWithinASecondAndLeavesNothing) {
    Program program(trainArguments("10000000"));
    ASSERT_TRUE(program.waitFor("Training"));
    const auto start = std::chrono::steady_clock::now();
    program.signal(SIGINT);
    const auto result = program.finish();
    // A thread sanitizer or a busy machine may slow one training step many times over.
    EXPECT_LT(secondsSince(start), 10.0);
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_TRUE(result.err.ends_with("quillmere-cli: The operation was cancelled.\n")) << result.err;
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(ProgramTest, TerminationIsACancellationToo) {
    Program program(trainArguments("10000000"));
    ASSERT_TRUE(program.waitFor("Training"));
    program.signal(SIGTERM);
    const auto result = program.finish();
    EXPECT_EQ(result.exitCode, 143);
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(ProgramTest, ATerminalThatClosesIsACancellationToo) {
    Program program(trainArguments("10000000"));
    ASSERT_TRUE(program.waitFor("Training"));
    program.signal(SIGHUP);
    EXPECT_EQ(program.finish().exitCode, 129);
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(ProgramTest, AClosedTerminalEndsNothingThatWasStartedToOutliveIt) {
    auto arguments = trainArguments("10000000");
    arguments.insert(arguments.begin(), "/usr/bin/nohup");
    Program program(arguments);
    ASSERT_TRUE(program.waitFor("Training"));
    program.signal(SIGHUP);
    program.signal(SIGTERM);
    EXPECT_EQ(program.finish().exitCode, 143);
}

TEST_F(ProgramTest, AFileBeyondThePermittedSizeIsAFailureWithASentence) {
    auto arguments = trainArguments("2");
    arguments.insert(arguments.begin(), {"/usr/bin/prlimit", "--fsize=20000"});
    const auto result = Program(arguments).finish();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.ends_with(": File too large\n")) << result.err;
    EXPECT_EQ(entriesIn(models), 0U);
}

#ifndef __SANITIZE_THREAD__  // it needs the addresses that such a stack takes
// No thread finds room for a stack of 64 TiB.
TEST_F(ProgramTest, ASystemThatStartsNoThreadIsAFailureWithASentence) {
    const auto result = Program({"/usr/bin/prlimit", "--stack=70368744177664", cli, "presets"}).finish();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "quillmere-cli: Resource temporarily unavailable\n");
}
#endif

TEST_F(ProgramTest, InterruptWhileGeneratingLeavesOnlyWholeFiles) {
    trainModel();
    auto arguments = generateArguments("100000");
    arguments.emplace_back("--json");
    Program program(arguments);
    ASSERT_TRUE(program.waitFor("\"step\":20,"));
    program.signal(SIGINT);
    const auto result = program.finish();
    EXPECT_EQ(result.exitCode, 130);
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(output)) {
        const std::string bytes = readText(entry.path());
        EXPECT_EQ(entry.path().extension(), ".wav") << entry.path();
        EXPECT_TRUE(bytes.starts_with("RIFF")) << entry.path();
        ++files;
    }
    EXPECT_GE(files, 20U);
}

TEST_F(ProgramTest, InterruptWhileScanningEndsAtOnce) {
    // Enough files that the scan is still running when the signal arrives.
    const std::string bytes = readText(corpus / "one.wav");
    for (int i = 0; i < 2000; ++i)
        writeText(corpus / (std::to_string(i) + ".wav"), bytes);
    Program program({cli, "scan", corpus.string(), "--models", models.string()});
    ASSERT_TRUE(program.waitFor("Scanning"));
    program.signal(SIGINT);
    const auto result = program.finish();
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_NE(result.err.find("quillmere-cli: The operation was cancelled.\n"), std::string::npos)
        << result.err;
}

TEST_F(ProgramTest, JSONIsAllThereIsOnStandardOutput) {
    auto arguments = trainArguments("2");
    arguments.emplace_back("--json");
    const auto trained = Program(arguments).finish();
    EXPECT_EQ(trained.exitCode, 0);
    EXPECT_EQ(trained.err, "");
    arguments = generateArguments("2");
    arguments.emplace_back("--json");
    const auto generated = Program(arguments).finish();
    EXPECT_EQ(generated.exitCode, 0);
    EXPECT_EQ(generated.err, "");
    std::istringstream lines(trained.out + generated.out);
    int results = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto event = nlohmann::json::parse(line, nullptr, false);
        ASSERT_TRUE(event.is_object()) << line;
        results += event["event"] == "result" ? 1 : 0;
    }
    EXPECT_EQ(results, 2);
}

TEST_F(ProgramTest, UnreadableAudioCausesNoChatter) {
    writeText(corpus / "notes.wav", "RIFF no audio at all");
    writeText(corpus / "notes.mp3", std::string(5000, '\xFF'));
    writeText(corpus / "notes.flac", "fLaC and then nothing");
    auto arguments = trainArguments("1");
    arguments.emplace_back("--json");
    const auto result = Program(arguments).finish();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

TEST_F(ProgramTest, AFullDiskBehindStandardOutputIsAFailure) {
    const auto result = Program({cli, "parameters"}, {}, "/dev/full").finish();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.starts_with("quillmere-cli: ")) << result.err;
}

// Files that took their numbers would be written into by whatever is said.
TEST_F(ProgramTest, ClosedStreamsAreOccupied) {
    Program program(trainArguments("10000000"), {}, nullptr, {STDIN_FILENO, STDOUT_FILENO});
    ASSERT_TRUE(program.waitFor("Training"));
    const std::filesystem::path open = std::filesystem::path("/proc") / std::to_string(program.id()) / "fd";
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO})
        EXPECT_EQ(std::filesystem::read_symlink(open / std::to_string(stream)), "/dev/null");
    program.signal(SIGINT);
    EXPECT_EQ(program.finish().exitCode, 130);
}

TEST_F(ProgramTest, AClosedPipeIsAFailureAndNoCrash) {
    auto arguments = trainArguments("20");
    arguments.emplace_back("--json");
    Program program(arguments);
    ASSERT_TRUE(program.waitFor("training"));
    program.closeOutput();
    EXPECT_EQ(program.finish().exitCode, 1);
    EXPECT_EQ(entriesIn(models), 1U) << "the model is stored all the same";
}

TEST_F(ProgramTest, ALocaleWithDecimalCommasChangesNothing) {
    const std::vector<std::string> german{"LC_ALL=de_DE.UTF-8", "LANG=de_DE.UTF-8", "LANGUAGE=en"};
    EXPECT_EQ(Program({cli, "parameters"}, german).finish().out, Program({cli, "parameters"}).finish().out);
    trainModel();
    auto arguments = generateArguments("1");
    arguments.insert(arguments.end(), {"--set", "pitch=-1.5", "--json"});
    const auto result = Program(arguments, german).finish();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.out.find("\"pitch\":-1.5"), std::string::npos) << result.out;
}

TEST_F(ProgramTest, TheModelsRootFollowsTheEnvironment) {
    const auto data = folder / "data";
    auto arguments = trainArguments("1");
    arguments.resize(arguments.size() - 2);
    const auto result = Program(arguments, {"XDG_DATA_HOME=" + data.string()}).finish();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(entriesIn(data / "Quillmere" / "Models"), 1U);
}

TEST_F(ProgramTest, TwoProcessesNeverOverwriteEachOthersFiles) {
    trainModel();
    Program first(generateArguments("12"));
    Program second(generateArguments("12"));
    EXPECT_EQ(first.finish().exitCode, 0);
    EXPECT_EQ(second.finish().exitCode, 0);
    EXPECT_EQ(entriesIn(output), 24U);
}

}  // namespace
}  // namespace quillmere::testing
