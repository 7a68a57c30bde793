#include <gtest/gtest.h>

#include <optional>
#include <sstream>

#include "QuillmereCLI/DetailReport.h"
#include "QuillmereCLI/RunCommand.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;

class DetailOption : public CommandTest {
protected:
    DetailOption() { trainModel(); }

    [[nodiscard]] Outcome audition(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{
            "audition", corpus.string(), "--output", (folder / "a.wav").string(), "--seed", "7"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] Outcome generate(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{
            "generate", corpus.string(), "--output", output.string(), "--count", "3", "--seed", "7"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] std::string sound() const { return readText(folder / "a.wav"); }

    // Lets the stored model pass for that of the folder as it is now.
    void adoptModel() const {
        const Outcome scan = runCommand(withModels({"scan", corpus.string(), "--json"}));
        fs::rename(modelFolder(), fs::path(scan.event("result")["modelFolder"].get<std::string>()));
    }
};

TEST_F(DetailOption, TakesTheLearnedSamplesAndSaysSo) {
    ASSERT_EQ(audition({}).exitCode, 0);
    const std::string plain = sound();
    const Outcome detailed = audition({"--detail", "0.5"});
    ASSERT_EQ(detailed.exitCode, 0) << detailed.err;
    EXPECT_NE(detailed.out.find("Detail 0.50 from the learned samples."), std::string::npos) << detailed.out;
    EXPECT_EQ(detailed.err.find("noise"), std::string::npos) << detailed.err;
    const std::string half = sound();
    EXPECT_NE(half, plain);
    ASSERT_EQ(audition({"--detail", "0.5"}).exitCode, 0);
    EXPECT_EQ(sound(), half);
    ASSERT_EQ(audition({"--detail", "1"}).exitCode, 0);
    EXPECT_NE(sound(), half);
    ASSERT_EQ(audition({"--detail", "0"}).exitCode, 0);
    EXPECT_EQ(sound(), plain);
}

TEST_F(DetailOption, GenerationsAndAuditionsAgree) {
    ASSERT_EQ(audition({"--detail", "1"}).exitCode, 0);
    const Outcome outcome = generate({"--detail", "1", "--threads", "2"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("Detail 1.00 from the learned samples."), std::string::npos) << outcome.out;
    EXPECT_EQ(readText(output / "Struck_Bars_var_0001.wav"), sound());
}

TEST_F(DetailOption, EventsNameTheAmountAndTheSounds) {
    const cli::JSON result = generate({"--detail", "1", "--json"}).event("result");
    EXPECT_EQ(result["detail"],
              cli::JSON::parse(R"({"amount": 1.0, "sounds": "folder", "withNoise": 0, "nearCopies": 0})"));
    for (const cli::JSON& file : result["files"])
        EXPECT_EQ(file["detail"], "sources");
    EXPECT_EQ(audition({"--detail", "0.25", "--json"}).event("result")["detail"]["amount"], 0.25);
}

TEST_F(DetailOption, WithoutItNothingIsSaidOfDetail) {
    const cli::JSON result = generate({"--json"}).event("result");
    EXPECT_FALSE(result.contains("detail"));
    EXPECT_FALSE(result["files"][0].contains("detail"));
    const Outcome outcome = audition({});
    EXPECT_EQ(outcome.out.find("etail"), std::string::npos) << outcome.out;
}

TEST_F(DetailOption, NoiseStandsInForSamplesThatHaveChanged) {
    fs::rename(corpus / "two.wav", corpus / "zwei.wav");
    adoptModel();
    const Outcome outcome = audition({"--detail", "1"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.err.find("noise stands in"), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.out.find("from the learned samples"), std::string::npos) << outcome.out;
    const cli::JSON result = generate({"--detail", "1", "--json"}).event("result");
    EXPECT_EQ(result["detail"]["sounds"], "none");
    EXPECT_EQ(result["detail"]["withNoise"], 3);
    EXPECT_EQ(result["files"][0]["detail"], "noise");
}

TEST(DetailReport, TellsOfNearCopies) {
    std::ostringstream out;
    std::ostringstream err;
    cli::Console console({out, err, [] { return std::nullopt; }});
    cli::DetailReport report(1, ClipSounds());
    for (const float sameness : {0.4F, nearCopy, 0.94F}) {
        SampleOrigin origin;
        origin.sameness = sameness;
        report.count(origin);
    }
    report.print(console);
    EXPECT_EQ(
        err.str(),
        "Note: 1 of 3 variations is nearly a copy of a learned sample; more sources, drift or samples keep "
        "them apart.\n");
    cli::JSON result;
    report.addTo(result);
    EXPECT_EQ(result["detail"]["nearCopies"], 1);
}

TEST_F(DetailOption, KeptSoundsServeWhenTheFolderHasChanged) {
    const Outcome trained = runCommand(trainArguments({"--keep-sounds", "--json"}));
    ASSERT_EQ(trained.exitCode, 0) << trained.err;
    const cli::JSON training = trained.event("result");
    EXPECT_EQ(training["trained"], false);  // the stored model stays, with its sounds
    EXPECT_EQ(training["soundBytes"], fs::file_size(modelFolder() / "sounds.bin"));
    ASSERT_EQ(audition({"--detail", "1"}).exitCode, 0);
    const std::string fromFolder = sound();

    fs::rename(corpus / "two.wav", corpus / "zwei.wav");
    adoptModel();
    const Outcome outcome = audition({"--detail", "1"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("from the samples that were kept with the model"), std::string::npos)
        << outcome.out;
    const std::string fromModel = sound();
    EXPECT_EQ(fromModel.size(), fromFolder.size());
    EXPECT_EQ(audition({"--detail", "1", "--json"}).event("result")["detail"]["sounds"], "model");

    // The file is made again of the kept sounds, though the folder's are there once more.
    const fs::path made =
        generate({"--detail", "1", "--json"}).event("result")["files"][0]["path"].get<std::string>();
    fs::rename(corpus / "zwei.wav", corpus / "two.wav");
    const Outcome again = runCommand(withModels(
        {"generate", "--recipe", made.string(), "--output", (folder / "again").string(), "--json"}));
    ASSERT_EQ(again.exitCode, 0) << again.err;
    const cli::JSON file = again.event("result")["files"][0];
    EXPECT_EQ(file["detail"], "kept");
    EXPECT_EQ(readText(fs::path(file["path"].get<std::string>())), readText(made));
}

TEST_F(DetailOption, TrainingSaysWhatTheSoundsWillTakeBeforeItKeepsThem) {
    const Outcome outcome = runCommand(trainArguments({"--keep-sounds", "--retrain"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::size_t announced = outcome.out.find("The sounds will take up to ");
    const std::size_t learned = outcome.out.find("Learned 3 samples");
    ASSERT_NE(announced, std::string::npos) << outcome.out;
    EXPECT_LT(announced, learned);
    EXPECT_NE(outcome.out.find("The sounds are kept with the model ("), std::string::npos) << outcome.out;
    EXPECT_EQ(runCommand(trainArguments({"--retrain"})).exitCode, 0);
    EXPECT_FALSE(fs::exists(modelFolder() / "sounds.bin"));
}

TEST_F(DetailOption, OnlyAnAmountFromZeroToOneIsAccepted) {
    for (const char* amount : {"1.01", "-0.1", "nan", "much", ""}) {
        const Outcome outcome = audition({"--detail", amount});
        EXPECT_EQ(outcome.exitCode, 2) << amount;
        EXPECT_NE(outcome.err.find("--detail: must be a number from 0 to 1"), std::string::npos)
            << outcome.err;
    }
}

TEST_F(DetailOption, IsInTheHelpOfBothCommands) {
    for (const char* command : {"generate", "audition"})
        EXPECT_NE(runCommand({command, "--help"}).out.find("--detail"), std::string::npos) << command;
}

}  // namespace
}  // namespace quillmere::testing
