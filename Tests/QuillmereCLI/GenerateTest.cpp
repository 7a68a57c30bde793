#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Audio/AudioIO.h"

namespace quillmere::testing {
namespace {

class Generate : public CommandTest {
protected:
    Generate() { trainModel(); }

    [[nodiscard]] std::vector<std::string> generateArguments(
        const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"generate", corpus.string(), "--output", output.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return withModels(arguments);
    }
    [[nodiscard]] Outcome generate(const std::vector<std::string>& more = {}) const {
        return runCommand(generateArguments(more));
    }
    // File names of the output folder with their bytes.
    [[nodiscard]] std::map<std::string, std::string> written() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(output))
            files[entry.path().filename().string()] = readText(entry.path());
        return files;
    }
    [[nodiscard]] std::string firstSample(const std::vector<std::string>& more) const {
        std::filesystem::remove_all(output);
        const Outcome outcome = generate(more);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        const auto files = written();
        return files.empty() ? std::string() : files.begin()->second;
    }
};

TEST_F(Generate, WritesTenVariationsByDefaultAndListsThem) {
    const Outcome outcome = generate({"--seed", "5"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto files = written();
    EXPECT_EQ(files.size(), 10U);
    for (const auto& [name, bytes] : files)
        EXPECT_NE(outcome.out.find(name), std::string::npos) << name;
    EXPECT_TRUE(files.contains("Struck_Bars_var_0001.wav"));
    EXPECT_NE(outcome.out.find("Seed 5."), std::string::npos) << outcome.out;
}

TEST_F(Generate, ReportsTheFilesInOrderAsOneResult) {
    const Outcome outcome = generate({"--count", "20", "--seed", "18446744073709551615", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const cli::JSON result = outcome.event("result");
    EXPECT_EQ(result["seed"].get<std::uint64_t>(), 18446744073709551615U);
    ASSERT_EQ(result["files"].size(), 20U);
    for (std::size_t i = 0; i < 20; ++i) {
        const std::filesystem::path path = result["files"][i]["path"].get<std::string>();
        const std::string number = (i < 9 ? "000" : "00") + std::to_string(i + 1);
        EXPECT_EQ(path, output / ("Struck_Bars_var_" + number + ".wav"));
        const auto info = AudioIO::info(path);
        ASSERT_TRUE(info.has_value());
        EXPECT_NEAR(result["files"][i]["seconds"].get<double>(), info->duration, 1e-9);
    }
}

TEST_F(Generate, ProgressCountsEveryVariation) {
    const Outcome outcome = generate({"--count", "3", "--json"});
    std::vector<int> steps;
    for (const cli::JSON& event : outcome.events()) {
        if (event["event"] == "progress" && event["phase"] == "generating") steps.push_back(event["step"]);
    }
    EXPECT_EQ(steps, (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(Generate, PrintsAFreshSeedThatGivesTheSameAgain) {
    const Outcome outcome = generate({"--count", "2", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const auto first = written();
    const std::uint64_t seed = outcome.event("result")["seed"];
    std::filesystem::remove_all(output);
    const Outcome again = generate({"--count", "2", "--seed", std::to_string(seed)});
    ASSERT_EQ(again.exitCode, 0) << again.err;
    EXPECT_EQ(written(), first);
    const Outcome other = generate({"--count", "2"});
    EXPECT_NE(other.out.find("use --seed "), std::string::npos) << other.out;
    EXPECT_EQ(other.out.find("Seed " + std::to_string(seed)), std::string::npos) << "two fresh seeds alike";
}

TEST_F(Generate, GivesTheSameBytesOnAnyNumberOfThreads) {
    const std::vector<std::string> parameters{"--count", "1", "--seed", "9", "--preset", "wild"};
    auto single = parameters;
    single.insert(single.end(), {"--threads", "1"});
    auto three = parameters;
    three.insert(three.end(), {"--threads", "3"});
    EXPECT_EQ(firstSample(single), firstSample(three));
}

TEST_F(Generate, NeverOverwritesAndNumbersOn) {
    ASSERT_EQ(generate({"--count", "2", "--seed", "1"}).exitCode, 0);
    const auto before = written();
    ASSERT_EQ(generate({"--count", "1", "--seed", "2"}).exitCode, 0);
    auto after = written();
    EXPECT_EQ(after.erase("Struck_Bars_var_0003.wav"), 1U);
    EXPECT_EQ(after, before);
}

TEST_F(Generate, WritesEachFormat) {
    for (const auto& [format, bits] :
         std::vector<std::pair<std::string, int>>{{"wav16", 16}, {"wav24", 24}, {"wav32float", 32}}) {
        const std::string bytes = firstSample({"--count", "1", "--seed", "1", "--format", format});
        ASSERT_GT(bytes.size(), 44U);
        EXPECT_EQ(bytes[34], bits) << format;
    }
    EXPECT_EQ(firstSample({"--count", "1"})[34], 24) << "by default";
}

TEST_F(Generate, PrefixReplacesTheFoldersName) {
    ASSERT_EQ(generate({"--count", "1", "--prefix", "my loop: v2"}).exitCode, 0);
    EXPECT_TRUE(written().contains("my_loop__v2_var_0001.wav"));
}

TEST_F(Generate, SetChangesThePresetAndClampsAsTheSlidersDo) {
    const Outcome outcome = generate({"--count", "1", "--preset", "LO-FI", "--set", "crush-bits=30", "--set",
                                      "extrapolation=-2", "--set", "drive=+3", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const cli::JSON used = outcome.event("result")["aesthetics"];
    EXPECT_EQ(used["crushBits"], 24);
    EXPECT_EQ(used["extrapolation"], -0.9);
    EXPECT_EQ(used["drive"], 3);
    EXPECT_EQ(used["decimate"], 3) << "from the preset";
    EXPECT_NE(outcome.err.find("crush-bits goes from 2 bit to 24 bit; using 24 bit"), std::string::npos)
        << outcome.err;
    EXPECT_EQ(outcome.err.find("drive"), std::string::npos) << outcome.err;
}

TEST_F(Generate, TheLastOfTwoSettingsWins) {
    const Outcome outcome = generate({"--count", "1", "--set", "pitch=5", "--set", "pitch=-5", "--json"});
    EXPECT_EQ(outcome.event("result")["aesthetics"]["pitch"], -5);
}

TEST_F(Generate, ReadsTheParametersThatAResultReports) {
    const Outcome wild = generate({"--count", "1", "--seed", "3", "--preset", "Wild", "--json"});
    const auto file = folder / "wild.json";
    writeText(file, wild.event("result")["aesthetics"].dump());
    EXPECT_EQ(firstSample({"--count", "1", "--seed", "3", "--aesthetics", file.string()}),
              firstSample({"--count", "1", "--seed", "3", "--preset", "Wild"}));
}

TEST_F(Generate, TakesAFilesValuesAsTheyAreBeyondTheSliders) {
    cli::JSON values = cli::toJSON(Aesthetics());
    values["sources"] = 1000;
    values["crushBits"] = 0.2;
    values["smear"] = 1e30;
    values["stretch"] = 1e12;
    values["phaseIterations"] = -5;
    writeText(folder / "beyond.json", values.dump());
    const Outcome outcome = generate(
        {"--count", "1", "--aesthetics", (folder / "beyond.json").string(), "--set", "stretch=1", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const cli::JSON used = outcome.event("result")["aesthetics"];
    EXPECT_EQ(used["sources"], 1000);
    EXPECT_EQ(used["crushBits"], 0.2);
    EXPECT_EQ(used["stretch"], 1);
}

TEST_F(Generate, NamesAnAestheticsFileThatCannotBeUsed) {
    const auto absurd = [](const char* field, double value) {
        cli::JSON values = cli::toJSON(Aesthetics());
        values[field] = value;
        return values.dump();
    };
    const std::vector<std::pair<std::string, std::string>> files{
        {"half.json", "{\"sources\": 1, "},
        {"keyless.json", "{\"sources\": 1}"},
        {"list.json", "[1, 2]"},
        {"overflow.json", R"({"sources": 1e999})"},
        {"empty.json", ""},
        {"absurd.json", absurd("sources", 1e300)},
        {"endless.json", absurd("phaseIterations", 1e12)},
        {"large.json", std::string(2'000'000, ' ')}};
    for (const auto& [name, text] : files) {
        writeText(folder / name, text);
        const Outcome outcome = generate({"--aesthetics", (folder / name).string()});
        EXPECT_EQ(outcome.exitCode, 1) << name;
        EXPECT_NE(outcome.err.find("quillmere-cli: " + (folder / name).string()), std::string::npos)
            << outcome.err;
    }
    for (const std::string& path : {(folder / "missing.json").string(), folder.path().string()}) {
        const Outcome outcome = generate({"--aesthetics", path});
        EXPECT_EQ(outcome.exitCode, 1) << path;
        EXPECT_NE(outcome.err.find("quillmere-cli: " + path), std::string::npos) << outcome.err;
    }
    EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(Generate, FailsWhenTheOutputFolderIsAFile) {
    writeText(output, "in the way");
    const Outcome outcome = generate();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("quillmere-cli: " + output.string()), std::string::npos) << outcome.err;
    EXPECT_EQ(readText(output), "in the way");
}

TEST_F(Generate, CreatesTheOutputFolderWithItsParents) {
    const auto deep = folder / "a" / "b" / "ü c";
    const Outcome outcome =
        runCommand(withModels({"generate", corpus.string(), "--output", deep.string(), "--count", "1"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(entriesIn(deep), 1U);
}

// What the shell would find there.
TEST_F(Generate, TheFolderAboveALinkIsThatOfWhatItLeadsTo) {
    std::filesystem::create_directories(folder / "far/away");
    std::filesystem::create_directory_symlink(folder / "far/away", folder / "link");
    const auto beside = (folder / "link/../new").string();
    const Outcome outcome =
        runCommand(withModels({"generate", corpus.string(), "--output", beside, "--count", "1"}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(entriesIn(folder / "far/new"), 1U);
    EXPECT_FALSE(std::filesystem::exists(folder / "new"));
    EXPECT_NE(outcome.out.find("far/new"), std::string::npos) << outcome.out;
}

TEST_F(Generate, ReportsWhatWasWrittenBeforeACancellation) {
    // Two batches of at most 16: the flag is set while the first one runs.
    const Outcome outcome =
        runCommandCancelledAt("\"step\":1,", generateArguments({"--count", "40", "--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(outcome.event("error")["message"], "The operation was cancelled.");
    const std::size_t files = entriesIn(output);
    EXPECT_GE(files, 1U);
    EXPECT_LE(files, 16U);
    EXPECT_NE(outcome.err.find(std::to_string(files) + (files == 1 ? " file was" : " files were")),
              std::string::npos)
        << outcome.err;
    for (const auto& [name, bytes] : written())
        EXPECT_TRUE(AudioIO::info(output / name).has_value()) << name << " is a whole file";
}

TEST_F(Generate, CancellationInTheLastBatchIsNoSuccess) {
    const Outcome outcome = runCommandCancelledAt(
        "\"phase\":\"generating\"", generateArguments({"--count", "4", "--json", "--threads", "1"}));
    EXPECT_EQ(outcome.exitCode, 130);
}

TEST_F(Generate, ReportsADamagedModel) {
    const auto json = modelFolder() / "model.json";
    const std::string text = readText(json);
    writeText(json, text.substr(0, text.size() / 2));
    const Outcome outcome = generate();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("quillmere-cli: "), std::string::npos);
    EXPECT_NE(outcome.err.find("--retrain"), std::string::npos) << outcome.err;
    EXPECT_EQ(readText(json).size(), text.size() / 2) << "a failed load changes nothing";
}

// Training at standard quality takes minutes, so this one is cancelled as soon as it has begun.
TEST_F(CommandTest, GenerateTrainsFirstAtStandardQualityWhenNoModelIsStored) {
    const Outcome outcome = runCommandCancelledAt(
        "\"training\"", withModels({"generate", corpus.string(), "--output", output.string(), "--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_NE(outcome.out.find("\"totalSteps\":2000"), std::string::npos) << outcome.out;
    EXPECT_EQ(entriesIn(output), 0U);
}

TEST_F(CommandTest, GenerateFailsOnAMissingFolderBeforeItCreatesAnything) {
    const Outcome outcome =
        runCommand(withModels({"generate", (folder / "nowhere").string(), "--output", output.string()}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("nowhere is not a folder"), std::string::npos) << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(output));
}

}  // namespace
}  // namespace quillmere::testing
