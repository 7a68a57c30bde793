#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "Support/SFZDocument.h"
#include "Support/XMLDocument.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class KitCommand : public CommandTest {
protected:
    KitCommand() {
        trainModel();
        const Outcome made =
            runCommand(withModels({"generate", corpus.string(), "--output", output.string(), "--seed", "5",
                                   "--count", "2", "--format", "wav16", "--set", "phase-iterations=2"}));
        EXPECT_EQ(made.exitCode, 0) << made.err;
    }
    [[nodiscard]] Outcome kit(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{"kit",    file(1), file(2), "--output", folder.path().string(),
                                           "--seed", "3"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] std::string file(int number) const {
        return (output / ("Struck_Bars_var_000" + std::to_string(number) + ".wav")).string();
    }
    // Every file that a document names is in the kit's folder.
    static void expectThere(const fs::path& place, const std::vector<std::string>& names) {
        for (const std::string& name : names)
            EXPECT_TRUE(fs::is_regular_file(place / name)) << name;
    }
    static double level(const fs::path& sound) {
        double sum = 0;
        const AudioIO::MonoAudio audio = AudioIO::readMono(sound);
        for (const float sample : audio.samples)
            sum += static_cast<double>(sample) * static_cast<double>(sample);
        return std::sqrt(sum / static_cast<double>(audio.samples.size()));
    }
};

TEST_F(KitCommand, WritesSoundsThatTakeTurnsAndTheFilesThatSaySo) {
    const Outcome outcome = kit({"--name", "My Bars", "--count", "3", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const fs::path place = folder / "My_Bars";
    const cli::JSON result = outcome.event("result");
    EXPECT_EQ(result["output"], place.string());
    EXPECT_EQ(result["instruments"].size(), 2U);
    EXPECT_EQ(entriesIn(place), 8U);
    const SFZDocument sfz(readText(place / "My_Bars.sfz"));
    EXPECT_EQ(sfz.regions().size(), 6U);
    EXPECT_NE(sfz.played(36, 100, 0), sfz.played(36, 100, 1));
    expectThere(place, sfz.played(37, 1, 2));
    const XMLDocument hydrogen(readText(place / "drumkit.xml"));
    EXPECT_EQ(hydrogen.texts("/*/*[local-name()='name']").at(0), "My_Bars") << "as the folder";
    expectThere(place, hydrogen.texts("//*[local-name()='filename']"));
    EXPECT_EQ(hydrogen.count("//*[local-name()='layer']"), 6U);
    for (const char* instrument : {"01_Struck_Bars_var_0001", "02_Struck_Bars_var_0002"}) {
        const auto sound = [&](int turn) {
            return place / (std::string(instrument) + "_" + std::to_string(turn) + ".wav");
        };
        for (const int turn : {2, 3}) {
            EXPECT_EQ(AudioIO::readMono(sound(turn)).samples.size(),
                      AudioIO::readMono(sound(1)).samples.size());
            EXPECT_NEAR(20 * std::log10(level(sound(turn)) / level(sound(1))), 0, 0.2);
            EXPECT_NE(readText(sound(turn)), readText(sound(1)));
        }
    }
    EXPECT_EQ(runCommand(withModels({"verify", place.string()})).exitCode, 0);
    const Outcome recipe = runCommand({"recipe", (place / "01_Struck_Bars_var_0001_2.wav").string()});
    EXPECT_THAT(recipe.out, HasSubstr("kit closeness 0.80, from 1 file"));
    EXPECT_THAT(recipe.out, HasSubstr("fitted"));
}

TEST_F(KitCommand, ASoundOfAKitIsMadeAgain) {
    ASSERT_EQ(kit({"--count", "2"}).exitCode, 0);
    const fs::path sound = folder / "Kit" / "02_Struck_Bars_var_0002_2.wav";
    const fs::path again = folder / "again";
    ASSERT_EQ(
        runCommand(withModels({"generate", "--recipe", sound.string(), "--output", again.string()})).exitCode,
        0);
    EXPECT_EQ(readText(again / "Struck_Bars_var_0001.wav"), readText(sound));
}

TEST_F(KitCommand, LayersHaveTheirVelocities) {
    const cli::JSON result = kit({"--count", "2", "--layers", "2", "--json"}).event("result");
    const cli::JSON layers = result["instruments"][0]["layers"];
    ASSERT_EQ(layers.size(), 2U);
    EXPECT_EQ(layers[0]["low"], 1);
    EXPECT_EQ(layers[0]["high"].get<int>() + 1, layers[1]["low"].get<int>());
    EXPECT_EQ(layers[1]["files"].size(), 2U);
    EXPECT_EQ(result["files"].size(), 8U);
}

TEST_F(KitCommand, TheSameSeedGivesTheSameKit) {
    ASSERT_EQ(kit({"--name", "A"}).exitCode, 0);
    ASSERT_EQ(kit({"--name", "B"}).exitCode, 0);
    EXPECT_EQ(readText(folder / "A" / "01_Struck_Bars_var_0001_4.wav"),
              readText(folder / "B" / "01_Struck_Bars_var_0001_4.wav"));
}

TEST_F(KitCommand, TroubleNamesTheFile) {
    const Outcome unknown =
        runCommand(withModels({"kit", (corpus / "one.wav").string(), "--output", folder.path().string()}));
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.err, HasSubstr("one.wav: nothing is known"));
    EXPECT_FALSE(fs::exists(folder / "Kit"));
    ASSERT_EQ(kit({"--count", "1"}).exitCode, 0);
    const Outcome again = kit({"--count", "1"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_THAT(again.err, HasSubstr("Kit"));
}

TEST_F(KitCommand, CanBeCancelled) {
    const Outcome outcome = runCommandCancelledAt(
        "\"phase\":\"generating\"",
        withModels({"kit", file(1), file(2), "--output", folder.path().string(), "--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_FALSE(fs::exists(folder / "Kit" / "drumkit.xml"));
}

}  // namespace
}  // namespace quillmere::testing
