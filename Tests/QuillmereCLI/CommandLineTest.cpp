#include "QuillmereCLI/CommandLine.h"

#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "Support/CommaLocale.h"

namespace quillmere::testing {
namespace {

const std::vector<std::vector<std::string>> allCommands{
    {},          {"scan"},       {"train"},  {"generate"},        {"audition"}, {"recipe"},
    {"verify"},  {"relatives"},  {"map"},    {"sweep"},           {"kit"},      {"report"},
    {"presets"}, {"parameters"}, {"models"}, {"models", "remove"}};

std::vector<std::string> with(std::vector<std::string> arguments, const std::string& last) {
    arguments.push_back(last);
    return arguments;
}

TEST(CommandLine, HelpIsGivenEverywhereOnStandardOutput) {
    for (const auto& command : allCommands) {
        const Outcome outcome = runCommand(with(command, "--help"));
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_NE(outcome.out.find("Usage: quillmere-cli"), std::string::npos) << outcome.out;
        EXPECT_EQ(outcome.err, "");
        if (!command.empty()) {
            EXPECT_NE(outcome.out.find(command.back()), std::string::npos);
        }
    }
}

TEST(CommandLine, VersionIsGivenEverywhereOnStandardOutput) {
    for (const auto& command : allCommands) {
        const Outcome outcome = runCommand(with(command, "--version"));
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_TRUE(outcome.out.starts_with("quillmere-cli ")) << outcome.out;
        EXPECT_EQ(outcome.err, "");
    }
}

TEST(CommandLine, HelpOfTrainNamesEveryOption) {
    const std::string help = runCommand({"train", "--help"}).out;
    for (const char* option : {"FOLDER", "--quality", "--steps", "--analysis", "--clip-seconds",
                               "--latent-dim", "--batch-size", "--learning-rate", "--kl-weight", "--seed",
                               "--threads", "--models", "--device", "--retrain", "--continue", "--json"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
}

TEST(CommandLine, HelpOfGenerateNamesEveryOption) {
    const std::string help = runCommand({"generate", "--help"}).out;
    for (const char* option :
         {"FOLDER", "--output",     "--count",        "--preset",  "--set",       "--aesthetics",
          "--seed", "--format",     "--prefix",       "--threads", "--models",    "--device",
          "--json", "--first",      "--recipe",       "--like",    "--closeness", "--body",
          "--skin", "--no-journal", "--embed-recipe", "--recipes", "--at"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
}

struct Misuse {
    const char* name;
    std::vector<std::string> arguments;
    const char* mention;  // part of the message

    friend std::ostream& operator<<(std::ostream& out, const Misuse& misuse) { return out << misuse.name; }
};

class UsageError : public ::testing::TestWithParam<Misuse> {};

TEST_P(UsageError, ExitsWithTwoAndSaysWhyOnStandardError) {
    const Outcome outcome = runCommand(GetParam().arguments);
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("quillmere-cli: ")) << outcome.err;
    EXPECT_NE(outcome.err.find(GetParam().mention), std::string::npos) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(
    Misuses, UsageError,
    ::testing::Values(
        Misuse{"NoCommand", {}, "A command is required"}, Misuse{"UnknownCommand", {"sing"}, "sing"},
        Misuse{"UnknownOption", {"scan", "x", "--loud"}, "--loud"},
        Misuse{"MissingFolder", {"scan"}, "FOLDER"}, Misuse{"EmptyFolder", {"scan", ""}, "FOLDER"},
        Misuse{"TwoFolders", {"scan", "a", "b"}, "b"}, Misuse{"MissingOutput", {"generate", "x"}, "--output"},
        Misuse{"MissingSource", {"generate", "--output", "o"}, "FOLDER is required"},
        Misuse{"TwoSources", {"generate", "x", "--output", "o", "--recipe", "a.wav"}, "--recipe"},
        Misuse{
            "CountOfRecipes", {"generate", "--output", "o", "--count", "2", "--recipe", "a.wav"}, "--count"},
        Misuse{"PartOfAnUnknownSeed", {"generate", "x", "--output", "o", "--first", "2"}, "--seed"},
        Misuse{
            "PartFromNothing", {"generate", "x", "--output", "o", "--first", "0", "--seed", "1"}, "--first"},
        Misuse{"ClosenessToNothing", {"generate", "x", "--output", "o", "--closeness", "1"}, "--like"},
        Misuse{"PlaceOfOneNumber", {"generate", "x", "--output", "o", "--at", "1.5"}, "1.5,-0.25"},
        Misuse{"PlaceBeyondNumbers", {"generate", "x", "--output", "o", "--at", "nan,0"}, "--at"},
        Misuse{"PlaceOfAFile", {"generate", "--output", "o", "--at", "0,0", "--like", "a.wav"}, "--at"},
        Misuse{"PictureOfAnotherKind", {"map", "x", "--picture", "map.jpg"}, ".png or .svg"},
        Misuse{"SweepOfNothing", {"sweep", "x", "--output", "o"}, "pitch=-12:12:7"},
        Misuse{"SweepOfOneStep", {"sweep", "x", "--output", "o", "--set", "pitch=0:1:1"}, "pitch=-12:12:7"},
        Misuse{"SweepBeyondTheRange",
               {"sweep", "x", "--output", "o", "--set", "pitch=0:99:3"},
               "pitch goes from"},
        Misuse{"SweepOfThree",
               {"sweep", "x", "--output", "o", "--set", "pitch=0:1:2", "--set", "tilt=0:1:2", "--set",
                "drive=0:1:2"},
               "two ranges at most"},
        Misuse{"SweepOfOneTwice",
               {"sweep", "x", "--output", "o", "--set", "pitch=0:1:2", "--set", "pitch=1:2:2"},
               "two ranges of one"},
        Misuse{"SweepTooFine",
               {"sweep", "x", "--output", "o", "--set", "pitch=0:1:40", "--set", "tilt=0:1:40"},
               "1600 sounds"},
        Misuse{"RangeOutsideASweep",
               {"generate", "x", "--output", "o", "--set", "pitch=0:1:2"},
               "pitch must be a number"},
        Misuse{"KitOfNothing", {"kit", "--output", "o"}, "FILE"},
        Misuse{"KitWithTooManySounds",
               {"kit", "a.wav", "--output", "o", "--count", "6", "--layers", "3"},
               "16 at most"},
        Misuse{"KitWithoutAName", {"kit", "a.wav", "--output", "o", "--name", "/"}, "--name"},
        Misuse{"TooClose",
               {"generate", "--output", "o", "--like", "a.wav", "--closeness", "1.1"},
               "--closeness"},
        Misuse{"BodyAndSkin", {"generate", "--output", "o", "--body", "a.wav", "--skin", "b.wav"}, "--skin"},
        Misuse{"RecipeOfNothing", {"recipe"}, "FILE"},
        Misuse{"StepsZero", {"train", "x", "--steps", "0"}, "--steps"},
        Misuse{"StepsNegative", {"train", "x", "--steps=-3"}, "-3"},
        Misuse{"StepsFraction", {"train", "x", "--steps", "2.5"}, "2.5"},
        Misuse{"StepsHuge", {"train", "x", "--steps", "99999999999999999999"}, "whole number"},
        Misuse{"StepsTwice", {"train", "x", "--steps", "1", "--steps", "2"}, "--steps"},
        Misuse{"BatchZero", {"train", "x", "--batch-size", "0"}, "--batch-size"},
        Misuse{"LatentZero", {"train", "x", "--latent-dim", "0"}, "--latent-dim"},
        Misuse{"LatentAbsurd", {"train", "x", "--latent-dim", "1000000000"}, "--latent-dim"},
        Misuse{"ClipNaN", {"train", "x", "--clip-seconds", "nan"}, "--clip-seconds"},
        Misuse{"ClipInfinite", {"train", "x", "--clip-seconds", "inf"}, "--clip-seconds"},
        Misuse{"ClipNegative", {"train", "x", "--clip-seconds=-1"}, "--clip-seconds"},
        Misuse{"ClipAbsurd", {"train", "x", "--clip-seconds", "1e9"}, "--clip-seconds"},
        Misuse{"DecimalComma", {"train", "x", "--clip-seconds", "0,5"}, "0,5"},
        Misuse{"RateNaN", {"train", "x", "--learning-rate", "nan"}, "--learning-rate"},
        Misuse{"WeightNegative", {"train", "x", "--kl-weight=-1"}, "--kl-weight"},
        Misuse{"SeedNegative", {"train", "x", "--seed=-1"}, "--seed"},
        Misuse{"SeedTooLarge", {"train", "x", "--seed", "18446744073709551616"}, "--seed"},
        Misuse{"SeedWord", {"train", "x", "--seed", "abc"}, "abc"},
        Misuse{"ThreadsZero", {"train", "x", "--threads", "0"}, "--threads"},
        Misuse{"EmptyDevice", {"train", "x", "--device", ""}, "must not be empty"},
        Misuse{"UnknownQuality", {"train", "x", "--quality", "best"}, "quick, standard and thorough"},
        Misuse{"UnknownAnalysis", {"train", "x", "--analysis", "odd"}, "auto, percussive and tonal"},
        Misuse{"CountZero", {"generate", "x", "--output", "y", "--count", "0"}, "--count"},
        Misuse{"UnknownPreset", {"generate", "x", "--output", "y", "--preset", "Calm"}, "Faithful, Balanced"},
        Misuse{
            "UnknownParameter", {"generate", "x", "--output", "y", "--set", "pitchJitter=1"}, "pitch-jitter"},
        Misuse{"ParameterNaN", {"generate", "x", "--output", "y", "--set", "pitch=nan"}, "pitch"},
        Misuse{"ParameterInfinite", {"generate", "x", "--output", "y", "--set", "pitch=inf"}, "pitch"},
        Misuse{"ParameterWithoutValue", {"generate", "x", "--output", "y", "--set", "pitch"}, "pitch=-3"},
        Misuse{"ParameterWord", {"generate", "x", "--output", "y", "--set", "pitch=low"}, "low"},
        Misuse{"UnknownFormat",
               {"generate", "x", "--output", "y", "--format", "WAV16"},
               "wav16, wav24 and wav32float"},
        Misuse{"EmptyPrefix", {"generate", "x", "--output", "y", "--prefix", ""}, "--prefix"},
        Misuse{"PresetAndFile",
               {"generate", "x", "--output", "y", "--preset", "Wild", "--aesthetics", "z"},
               "--preset"},
        Misuse{"AuditionNotToWAV", {"audition", "x", "--output", "y.mp3"}, "y.mp3"},
        Misuse{"RemoveNothing", {"models", "remove"}, "NAME"}),
    [](const auto& test) { return test.param.name; });

class LocaleTest : public CommandTest {
protected:
    const CommaLocale locale_;
};

TEST_F(LocaleTest, DecimalCommasChangeNoOutput) {
    const Outcome comma = runCommand({"parameters"});
    EXPECT_NE(comma.out.find("0.40"), std::string::npos);
    EXPECT_NE(comma.out.find("2000 ms"), std::string::npos);
    EXPECT_EQ(comma.out.find("0,40"), std::string::npos);
}

TEST_F(LocaleTest, DecimalCommasChangeNoInputAndNoEvent) {
    const Outcome trained = runCommand(trainArguments({"--json"}));
    ASSERT_EQ(trained.exitCode, 0) << trained.err;
    EXPECT_EQ(trained.event("result")["steps"], 2);
    const Outcome generated = runCommand(withModels({"generate", corpus.string(), "--output", output.string(),
                                                     "--count", "1", "--set", "pitch=-1.5", "--json"}));
    ASSERT_EQ(generated.exitCode, 0) << generated.err;
    EXPECT_EQ(generated.event("result")["aesthetics"]["pitch"], -1.5);
}

}  // namespace
}  // namespace quillmere::testing
