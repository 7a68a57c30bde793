#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Util/FileLock.h"
#include "Support/Environment.h"
#include "Support/HeadStartFiles.h"

namespace quillmere::testing {
namespace {

using Train = CommandTest;

TEST_F(Train, StoresAModelWithTheOptionsGiven) {
    const Outcome outcome = runCommand(trainArguments({"--analysis", "tonal"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("Learned 3 samples (tonal analysis"), std::string::npos) << outcome.out;
    EXPECT_NE(
        outcome.out.find("generate '" + corpus.string() + "' --models " + models.string() + " --output"),
        std::string::npos)
        << outcome.out;
    const ModelBundle bundle = ModelStore::load(modelFolder());
    EXPECT_EQ(bundle.metadata.steps, 2);
    EXPECT_EQ(bundle.config.latentDim, 4);
    EXPECT_EQ(bundle.config.profile, AnalysisProfile::tonal);
    EXPECT_EQ(bundle.metadata.corpusName, "Struck Bars");
    EXPECT_EQ(bundle.metadata.corpusPath, corpus.string());
}

TEST_F(Train, ReportsProgressAndResultAsEvents) {
    const Outcome outcome = runCommand(trainArguments({"--json"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    std::vector<std::string> phases;
    for (const cli::JSON& event : outcome.events()) {
        if (event["event"] != "progress") continue;
        const std::string phase = event["phase"];
        if (phases.empty() || phases.back() != phase) phases.push_back(phase);
    }
    EXPECT_EQ(phases, (std::vector<std::string>{"scanning", "analysing", "training", "finishing", "saving"}));
    const cli::JSON result = outcome.event("result");
    EXPECT_EQ(result["command"], "train");
    EXPECT_EQ(result["trained"], true);
    EXPECT_EQ(result["clipCount"], 3);
    EXPECT_EQ(result["steps"], 2);
    EXPECT_EQ(result["modelFolder"], modelFolder().string());
    EXPECT_TRUE(result["seconds"].contains("training"));
}

TEST_F(Train, WritesOneLinePerPhaseOffATerminal) {
    const Outcome outcome = runCommand(trainArguments());
    EXPECT_EQ(outcome.err,
              "Scanning Struck Bars…\nReading 3 samples…\nTraining model… 2 steps\nEncoding corpus…\n"
              "Saving the model…\n");
}

TEST_F(Train, LeavesNoProgressLineOnATerminal) {
    const Outcome outcome = runCommand(trainArguments(), cli::CancelFlag(), 80);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.err.find("step "), std::string::npos);
    EXPECT_EQ(outcome.err.find('\n'), std::string::npos);
    EXPECT_TRUE(outcome.err.ends_with("\r\x1b[K"));
}

TEST_F(Train, StopsWhenAModelIsStoredAlready) {
    trainModel();
    const auto before = std::filesystem::last_write_time(modelFolder() / "weights.bin");
    const Outcome outcome = runCommand(trainArguments({"--seed", "2"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("stored already"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("--retrain"), std::string::npos) << outcome.out;
    EXPECT_EQ(std::filesystem::last_write_time(modelFolder() / "weights.bin"), before);
    EXPECT_EQ(runCommand(trainArguments({"--json"})).event("result")["trained"], false);
}

TEST_F(Train, RetrainReplacesTheModel) {
    trainModel();
    const std::string before = readText(modelFolder() / "weights.bin");
    const Outcome outcome = runCommand(trainArguments({"--seed", "2", "--retrain"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(readText(modelFolder() / "weights.bin"), before);
}

TEST_F(Train, TheSameSeedTrainsTheSameWeightsOnAnyNumberOfThreads) {
    std::vector<std::string> weights;
    for (const char* threads : {"1", "2", "3"}) {
        ASSERT_EQ(runCommand(trainArguments({"--retrain", "--threads", threads, "--seed", "7"})).exitCode, 0);
        weights.push_back(readText(modelFolder() / "weights.bin"));
    }
    EXPECT_EQ(weights[0], weights[1]);
    EXPECT_EQ(weights[0], weights[2]);
}

TEST_F(Train, QualityChoosesTheSteps) {
    const std::vector<std::pair<std::string, int>> qualities{
        {"quick", 800}, {"standard", 2000}, {"thorough", 5000}};
    for (const auto& [quality, steps] : qualities) {
        const Outcome outcome = runCommandCancelledAt(
            "\"training\"", withModels({"train", corpus.string(), "--quality", quality, "--batch-size", "1",
                                        "--latent-dim", "1", "--clip-seconds", "0.1", "--json"}));
        EXPECT_EQ(outcome.exitCode, 130);
        bool seen = false;
        for (const cli::JSON& event : outcome.events()) {
            if (event["event"] != "progress" || event["phase"] != "training") continue;
            EXPECT_EQ(event["totalSteps"], steps);
            seen = true;
        }
        EXPECT_TRUE(seen) << outcome.out;
    }
}

// ---- From another model

// A second corpus and its models folder, for a training that starts from the model of the first.
class TrainFromAModel : public CommandTest {
protected:
    TrainFromAModel() {
        trainModel();
        name = modelFolder().filename().string();
        writeSmallCorpus(other);
        writeWAV(other / "four.wav", struckTone(600, 0.2, 22050), 22050);
    }
    [[nodiscard]] std::vector<std::string> arguments(const std::string& start,
                                                     std::vector<std::string> more = {}) const {
        std::vector<std::string> result = trainArguments(std::move(more));
        result[1] = other.string();
        result.insert(result.end(), {"--start", start});
        return result;
    }

    const std::filesystem::path other = folder / "More Bars";
    std::string name;
};

TEST_F(TrainFromAModel, BuildsOnItAndSaysSo) {
    const Outcome outcome = runCommand(arguments(name));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find(" s per sample), onto the model of Struck Bars.\n"), std::string::npos)
        << outcome.out;
    EXPECT_NE(runCommand(withModels({"models"})).out.find("onto the model of Struck Bars"),
              std::string::npos);
}

TEST_F(TrainFromAModel, FindsItByItsFolderToo) {
    const Outcome outcome = runCommand(arguments(modelFolder().string(), {"--json"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const cli::JSON start = outcome.event("result")["start"];
    EXPECT_EQ(start["kind"], "model");
    EXPECT_EQ(start["name"], "Struck Bars");
    EXPECT_EQ(start["identity"].get<std::string>().size(), 64U);
}

TEST_F(TrainFromAModel, TakesClipsOfAnotherLength) {
    for (const char* seconds : {"0.05", "0.9"}) {
        std::vector<std::string> longer = arguments(name, {"--retrain"});
        *(std::ranges::find(longer, "0.1")) = seconds;
        const Outcome outcome = runCommand(longer);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    }
}

TEST_F(TrainFromAModel, IsAnotherModelThanAFreshOne) {
    const auto weights = [&] {
        for (const auto& entry : std::filesystem::directory_iterator(models)) {
            if (entry.path().filename().string().starts_with("More Bars"))
                return readText(entry.path() / "weights.bin");
        }
        return std::string();
    };
    ASSERT_EQ(runCommand(arguments("fresh")).exitCode, 0);
    const std::string fresh = weights();
    ASSERT_EQ(runCommand(arguments(name, {"--retrain"})).exitCode, 0);
    EXPECT_NE(weights(), fresh);
}

TEST_F(TrainFromAModel, RefusesOneOfAnotherAnalysis) {
    const Outcome outcome = runCommand(arguments(name, {"--analysis", "tonal"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("was learned with the percussive analysis, not with the tonal one."),
              std::string::npos)
        << outcome.err;
}

TEST_F(TrainFromAModel, RefusesOneThatIsNotThere) {
    const Outcome outcome = runCommand(arguments("Nothing-1234"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("There is no model named Nothing-1234 in " + models.string()),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(runCommand(arguments("")).exitCode, 2);
}

// ---- From the head start

class TrainFromTheHeadStart : public CommandTest {
protected:
    TrainFromTheHeadStart() { writeHeadStart(headStart); }
    [[nodiscard]] std::vector<std::string> arguments(std::vector<std::string> more = {}) const {
        std::vector<std::string> result{
            "train", corpus.string(), "--clip-seconds", "0.1",          "--batch-size",
            "1",     "--start",       "head-start",     "--head-start", headStart.string()};
        result.insert(result.end(), more.begin(), more.end());
        return withModels(result);
    }

    const std::filesystem::path headStart = folder / "head start";
};

TEST_F(TrainFromTheHeadStart, SaysSoAndKeepsItWithTheModel) {
    const Outcome outcome = runCommand(arguments({"--steps", "1"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("onto head start test.\n"), std::string::npos) << outcome.out;
    const auto start = ModelStore::load(modelFolder()).metadata.start;
    ASSERT_TRUE(start);
    EXPECT_EQ(start->kind, ModelStart::Kind::headStart);
    EXPECT_EQ(start->name, "test");
}

TEST_F(TrainFromTheHeadStart, TakesFewerStepsForEachQuality) {
    for (const QualityInfo& quality : allQualities) {
        const Outcome outcome = runCommandCancelledAt(
            "\"training\"", arguments({"--quality", std::string(quality.name), "--json"}));
        EXPECT_EQ(outcome.exitCode, 130);
        bool seen = false;
        for (const cli::JSON& event : outcome.events()) {
            if (event["event"] != "progress" || event["phase"] != "training") continue;
            EXPECT_EQ(event["totalSteps"], quality.stepsFromStart);
            seen = true;
        }
        EXPECT_TRUE(seen) << outcome.out;
        EXPECT_LT(quality.stepsFromStart, quality.steps);
    }
}

TEST_F(TrainFromTheHeadStart, IsFoundByTheEnvironmentToo) {
    const EnvironmentVariable variable("QUILLMERE_HEAD_START", headStart.string());
    const Outcome outcome = runCommand(
        withModels({"train", corpus.string(), "--steps", "1", "--batch-size", "1", "--start", "head-start"}));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("onto head start test.\n"), std::string::npos) << outcome.out;
}

TEST_F(TrainFromTheHeadStart, BeginsAfreshWithANoticeWhereItIsMissingOrDamaged) {
    const auto file = headStart / "tonal.base";
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - 1);
    for (int i = 0; i < 2; ++i) {
        const Outcome outcome = runCommand(arguments({"--steps", "1", "--retrain"}));
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_NE(outcome.err.find("The head start cannot be used: " + file.string()), std::string::npos)
            << outcome.err;
        EXPECT_NE(outcome.err.find("Learning begins from random weights instead.\n"), std::string::npos);
        EXPECT_EQ(ModelStore::load(modelFolder()).metadata.start, std::nullopt);
        std::filesystem::remove(file);
    }
}

TEST_F(TrainFromTheHeadStart, RefusesLatentVectorsOfAnotherSize) {
    const Outcome outcome = runCommand(arguments({"--latent-dim", "8"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("has latent vectors of 64 numbers, not of 8."), std::string::npos)
        << outcome.err;
}

// ---- Trouble

TEST_F(Train, LeavesNothingBehindWhenCancelledWhileTraining) {
    const Outcome outcome = runCommandCancelledAt("\"training\"", trainArguments({"--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(outcome.event("error")["message"], "The operation was cancelled.");
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(Train, StartsNothingWhenCancelledBefore) {
    cli::CancelFlag cancel;
    cancel.request(SIGINT);
    const Outcome outcome = runCommand(trainArguments(), cancel);
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_NE(outcome.err.find("quillmere-cli: The operation was cancelled.\n"), std::string::npos)
        << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(models) && entriesIn(models) > 0);
}

TEST_F(Train, AFolderWhoseNameLeavesNoRoomForAModelIsRefusedBeforeItIsRead) {
    const auto longName = folder / std::string(250, 'n');
    writeSmallCorpus(longName);
    const Outcome outcome = runCommand(withModels({"train", longName.string(), "--json"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("The name of this folder is too long for a model of it to be stored."),
              std::string::npos)
        << outcome.err;
    EXPECT_EQ(outcome.out.find("analysing"), std::string::npos) << outcome.out;
}

TEST_F(Train, FailsWithoutUsableAudio) {
    const auto useless = folder / "useless";
    writeText(useless / "notes.wav", "no audio at all");
    const Outcome outcome = runCommand(withModels({"train", useless.string()}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("quillmere-cli: No usable audio files were found in that folder.\n"),
              std::string::npos)
        << outcome.err;
}

TEST_F(Train, SaysHowManyFilesWereLeftOut) {
    writeText(corpus / "notes.wav", "no audio at all");
    const Outcome outcome = runCommand(trainArguments());
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("1 file was left out"), std::string::npos) << outcome.out;
}

TEST_F(Train, FailsAtOnceWhenTheModelsFolderIsAFile) {
    writeText(models, "in the way");
    const Outcome outcome = runCommand(trainArguments());
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err.find("Reading"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("quillmere-cli: " + models.string()), std::string::npos) << outcome.err;
}

TEST_F(Train, ReportsADamagedModelAndHowToReplaceIt) {
    trainModel();
    const auto weights = modelFolder() / "weights.bin";
    std::filesystem::resize_file(weights, std::filesystem::file_size(weights) - 1);
    const Outcome outcome = runCommand(trainArguments());
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("quillmere-cli: Model weights do not match the saved configuration\n"),
              std::string::npos)
        << outcome.err;
    EXPECT_NE(outcome.err.find("--retrain"), std::string::npos) << outcome.err;
    EXPECT_EQ(runCommand(trainArguments({"--retrain"})).exitCode, 0);
}

TEST_F(Train, CanBeCancelledWhileAnotherProgramStoresTheModel) {
    trainModel();
    const std::filesystem::path model = modelFolder();
    const std::string before = readText(model / "weights.bin");
    {
        const auto lock =
            FileLock::acquire(models / ("." + model.filename().string() + ".lock"), std::chrono::seconds(0));
        ASSERT_TRUE(lock);
        const Outcome outcome =
            runCommandCancelledAt("\"saving\"", trainArguments({"--retrain", "--seed", "2", "--json"}));
        EXPECT_EQ(outcome.exitCode, 130);
    }
    EXPECT_EQ(readText(model / "weights.bin"), before);
    EXPECT_EQ(entriesIn(models), 1U);
}

TEST_F(Train, KeepsADamagedModelThatItReplaces) {
    trainModel();
    const std::filesystem::path model = modelFolder();
    std::filesystem::resize_file(model / "weights.bin", 100);
    EXPECT_EQ(runCommand(trainArguments({"--retrain"})).exitCode, 0);
    EXPECT_EQ(std::filesystem::file_size(model.string() + ".damaged/weights.bin"), 100U);
    EXPECT_EQ(entriesIn(models), 2U);
    EXPECT_EQ(runCommand(trainArguments({"--retrain"})).exitCode, 0);
    EXPECT_EQ(entriesIn(models), 2U);
}

TEST_F(Train, TrainsAfreshWhenAFileOfTheModelIsMissing) {
    trainModel();
    std::filesystem::remove(modelFolder() / "weights.bin");
    const Outcome outcome = runCommand(trainArguments());
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("Learned 3 samples"), std::string::npos);
}

}  // namespace
}  // namespace quillmere::testing
