#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Origin/Recipe.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class Map : public CommandTest {
protected:
    [[nodiscard]] Outcome map(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"map", corpus.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] Outcome generateAt(const std::string& place,
                                     const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{
            "generate", corpus.string(), "--output", output.string(), "--at",
            place,      "--count",       "2",        "--set",         "phase-iterations=2"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] Recipe recipeOf(const cli::JSON& file) const {
        const Outcome outcome = runCommand({"recipe", file["path"].get<std::string>(), "--json"});
        return decodeRecipe(outcome.event("result")["files"][0]["recipes"][0].dump());
    }
};

TEST_F(Map, ShowsEverySampleWithItsPlace) {
    trainModel();
    const Outcome words = map();
    EXPECT_EQ(words.exitCode, 0) << words.err;
    for (const char* text : {"one.wav", "two.wav", "three.wav", " % of all differences", "--at X,Y"})
        EXPECT_THAT(words.out, HasSubstr(text));
    const cli::JSON result = map({"--json"}).event("result");
    ASSERT_EQ(result["clips"].size(), 3U);
    double sum = 0;
    for (const cli::JSON& clip : result["clips"])
        sum += clip["x"].get<double>();
    EXPECT_NEAR(sum, 0, 1e-9) << "the mean is in the middle";
    EXPECT_NEAR(result["shares"][0].get<double>() + result["shares"][1].get<double>(), 1, 1e-9)
        << "three clips lie in a plane";
}

TEST_F(Map, IsDrawnIntoAFile) {
    trainModel();
    const fs::path svg = folder / "map.svg";
    EXPECT_THAT(map({"--picture", svg.string()}).out, HasSubstr("map.svg"));
    EXPECT_THAT(readText(svg), HasSubstr("three.wav"));
    const fs::path png = folder / "map.png";
    EXPECT_EQ(map({"--picture", png.string(), "--json"}).event("result")["picture"], png.string());
    EXPECT_TRUE(readText(png).starts_with("\x89PNG"));
    const Outcome lost = map({"--picture", (folder / "missing" / "map.png").string()});
    EXPECT_EQ(lost.exitCode, 1);
    EXPECT_THAT(lost.err, HasSubstr("map.png"));
}

TEST_F(Map, NeedsALearnedFolder) {
    const Outcome outcome = map();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("has not been learned"));
    EXPECT_THAT(outcome.err, HasSubstr("quillmere-cli train"));
}

TEST_F(Map, CanBeCancelled) {
    trainModel();
    EXPECT_EQ(runCommandCancelledAt("\"phase\":\"scanning\"", withModels({"map", corpus.string(), "--json"}))
                  .exitCode,
              130);
}

TEST_F(Map, APlaceIsAValueThatOneCanType) {
    trainModel();
    const cli::JSON clip = map({"--json"}).event("result")["clips"][1];
    const std::string place =
        Text::fixed(clip["x"].get<double>(), 9) + "," + Text::fixed(clip["y"].get<double>(), 9);
    const Outcome made = generateAt(place, {"--seed", "3", "--json"});
    ASSERT_EQ(made.exitCode, 0) << made.err;
    const cli::JSON result = made.event("result");
    EXPECT_NEAR(result["at"]["x"].get<double>(), clip["x"].get<double>(), 1e-6);
    const Recipe first = recipeOf(result["files"][0]);
    EXPECT_EQ(first.sources.at(0).name, clip["name"].get<std::string>());
    EXPECT_GT(first.sources.at(0).weight, 0.999);
    EXPECT_EQ(first.lineage->way, "place");
    EXPECT_EQ(first.lineage->values.at("closeness"), 1);
    const Recipe second = recipeOf(result["files"][1]);
    EXPECT_EQ(first.latent, second.latent);
    EXPECT_NE(first.state, second.state);
    EXPECT_EQ(runCommand(withModels({"verify", output.string()})).exitCode, 0);
}

TEST_F(Map, ClosenessWalksAroundThePlace) {
    trainModel();
    const cli::JSON result =
        generateAt("0.1,-0.2", {"--closeness", "0.5", "--seed", "3", "--json"}).event("result");
    EXPECT_NE(recipeOf(result["files"][0]).latent, recipeOf(result["files"][1]).latent);
    EXPECT_EQ(recipeOf(result["files"][0]).seed, 3U);
    EXPECT_EQ(runCommand(withModels({"verify", output.string()})).exitCode, 0);
    EXPECT_THAT(generateAt("-0.1,0.2", {"--set", "drift=2"}).err, HasSubstr("drift changes nothing here"));
}

TEST_F(Map, APartOfAJobAtAPlaceIsThatOfTheWhole) {
    trainModel();
    const std::vector<std::string> how{"--closeness", "0.5", "--seed", "3"};
    ASSERT_EQ(generateAt("0,0", how).exitCode, 0);
    const std::string second = readText(output / "Struck_Bars_var_0002.wav");
    fs::remove_all(output);
    ASSERT_EQ(
        generateAt("0,0", {"--closeness", "0.5", "--seed", "3", "--first", "2", "--count", "1"}).exitCode, 2)
        << "the count is given twice";
    ASSERT_EQ(runCommand(withModels({"generate", corpus.string(), "--output", output.string(), "--at", "0,0",
                                     "--closeness", "0.5", "--seed", "3", "--first", "2", "--count", "1",
                                     "--set", "phase-iterations=2"}))
                  .exitCode,
              0);
    EXPECT_EQ(readText(output / "Struck_Bars_var_0002.wav"), second);
}

}  // namespace
}  // namespace quillmere::testing
