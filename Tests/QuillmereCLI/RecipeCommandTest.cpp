// How files were made: what 'recipe' tells of it, and what 'generate --recipe' makes of it again.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

class RecipeCommand : public CommandTest {
protected:
    RecipeCommand() { trainModel(); }

    [[nodiscard]] Outcome generate(const std::vector<std::string>& more = {}, int count = 3) const {
        std::vector<std::string> arguments{
            "generate", corpus.string(),       "--output", output.string(),     "--seed", "5",
            "--count",  std::to_string(count), "--set",    "phase-iterations=2"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    // Makes the files again in the folder "again".
    [[nodiscard]] Outcome remake(std::vector<std::string> files,
                                 const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"generate", "--output", again.string(), "--recipe"};
        arguments.insert(arguments.end(), files.begin(), files.end());
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    static std::map<std::string, std::string> contentsOf(const fs::path& place) {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::directory_iterator(place))
            contents[entry.path().filename().string()] = readText(entry.path());
        return contents;
    }
    [[nodiscard]] std::string file(int number) const {
        return (output / ("Struck_Bars_var_000" + std::to_string(number) + ".wav")).string();
    }

    const fs::path again = folder / "again";
};

TEST_F(RecipeCommand, TellsHowAFileWasMadeWhateverItIsCalled) {
    ASSERT_EQ(generate({"--preset", "Wild"}).exitCode, 0);
    const fs::path moved = folder / "elsewhere.wav";
    fs::rename(file(2), moved);
    const Outcome words = runCommand({"recipe", moved.string()});
    EXPECT_EQ(words.exitCode, 0) << words.err;
    EXPECT_THAT(words.out, HasSubstr("seed       5, variation 2"));
    EXPECT_THAT(words.out, HasSubstr("the preset Wild with phase-iterations 2"));
    EXPECT_THAT(words.out, HasSubstr("the journal, by its bytes"));
    EXPECT_THAT(words.out, HasSubstr(" % one.wav"));
    const cli::JSON known = runCommand({"recipe", moved.string(), "--json"}).event("result")["files"][0];
    EXPECT_EQ(known["path"], moved.string());
    EXPECT_EQ(known["knownFrom"], "journal");
    EXPECT_EQ(known["sameBytes"], true);
    EXPECT_EQ(known["writtenAs"], file(2));
    const Recipe recipe = decodeRecipe(known["recipes"][0].dump());
    EXPECT_EQ(recipe.seed, 5U);
    EXPECT_EQ(recipe.index, 1);
    EXPECT_EQ(recipe.latent.size(), 4U);
}

TEST_F(RecipeCommand, RecognisesAFileInAnotherContainer) {
    ASSERT_EQ(generate({"--format", "wav16"}).exitCode, 0);
    const AudioIO::MonoAudio audio = AudioIO::readMono(file(1));
    AudioIO::write(audio.samples, folder / "converted.wav", static_cast<int>(audio.sampleRate),
                   OutputFormat::wav32float);
    const Outcome outcome = runCommand({"recipe", (folder / "converted.wav").string()});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("the journal, by its sound"));
}

TEST_F(RecipeCommand, AFileOfWhichNothingIsKnownIsAFailureThatNamesIt) {
    const Outcome one = runCommand({"recipe", (corpus / "one.wav").string()});
    EXPECT_EQ(one.exitCode, 1);
    EXPECT_THAT(one.err, HasSubstr("one.wav: nothing is known of where it comes from"));
    const Outcome two =
        runCommand({"recipe", (corpus / "one.wav").string(), (folder / "no.wav").string(), "--json"});
    EXPECT_EQ(two.exitCode, 1);
    EXPECT_EQ(two.event("error")["message"], "2 files have no recipe that can be read.");
    EXPECT_EQ(two.event("result")["files"].size(), 2U);
    EXPECT_THAT(two.err, HasSubstr("no.wav"));
}

TEST_F(RecipeCommand, TheJournalIsLeftAloneWhenNobodyWantsIt) {
    ASSERT_EQ(generate({"--no-journal"}).exitCode, 0);
    EXPECT_FALSE(fs::exists(journal));
    EXPECT_EQ(runCommand({"recipe", file(1)}).exitCode, 1);
    ASSERT_EQ(generate().exitCode, 0);
    EXPECT_TRUE(fs::exists(journal));
}

TEST_F(RecipeCommand, TheJournalCanBeSwitchedOffForGood) {
    ASSERT_EQ(generate().exitCode, 0);
    const std::string before = readText(journal);
    const Outcome off = runCommand({"journal", "off"});
    EXPECT_EQ(off.exitCode, 0) << off.err;
    EXPECT_THAT(off.out, HasSubstr("The journal is off"));
    EXPECT_THAT(off.out, HasSubstr(journal.string()));
    const Outcome quiet = generate();
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_EQ(quiet.err, generate({"--no-journal"}).err);
    EXPECT_EQ(readText(journal), before) << "what was noted stays";
    EXPECT_EQ(runCommand({"recipe", file(1)}).exitCode, 0);
    EXPECT_EQ(runCommand({"journal", "--json"}).event("result")["on"], false);

    EXPECT_EQ(runCommand({"journal", "on", "--json"}).event("result")["on"], true);
    ASSERT_EQ(generate().exitCode, 0);
    EXPECT_GT(readText(journal).size(), before.size());
    EXPECT_EQ(runCommand({"journal", "--json"}).event("result")["bytes"], fs::file_size(journal));
}

TEST_F(RecipeCommand, WhereNobodyCanTellWhetherTheJournalIsWantedItIsLeftAloneWithANote) {
    fs::create_symlink("preferences", folder / "preferences");
    const Outcome outcome = generate();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.err, HasSubstr("Note: the journal stays as it is"));
    EXPECT_FALSE(fs::exists(journal));
    EXPECT_EQ(runCommand({"journal"}).exitCode, 1);
    EXPECT_EQ(runCommand({"journal", "off"}).exitCode, 1);
}

TEST_F(RecipeCommand, RecipesAddNothingToTheFilesOrTheOutputUnlessTheyAreEmbedded) {
    const Outcome without = generate({"--no-journal"});
    const auto plain = contentsOf(output);
    fs::remove_all(output);
    const Outcome with = generate({"--recipes", (folder / "recipes.jsonl").string()});
    EXPECT_EQ(contentsOf(output), plain);
    EXPECT_EQ(with.err, without.err);
    fs::remove_all(output);
    ASSERT_EQ(generate({"--embed-recipe", "--no-journal"}).exitCode, 0);
    EXPECT_NE(contentsOf(output), plain);
    EXPECT_THAT(runCommand({"recipe", file(1)}).out, HasSubstr("the file itself"));
}

TEST_F(RecipeCommand, AJournalThatCannotBeWrittenIsOnlyNoted) {
    fs::create_directories(journal);
    const Outcome outcome = generate();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.err, HasSubstr(journal.string()));
    EXPECT_EQ(entriesIn(output), 3U);
}

TEST_F(RecipeCommand, GenerateMakesTheSameBytesFromEveryCarrier) {
    const fs::path document = folder / "recipes.jsonl";
    ASSERT_EQ(generate({"--preset", "Extreme", "--recipes", document.string()}).exitCode, 0);
    const auto original = contentsOf(output);
    for (const std::vector<std::string>& sources :
         {std::vector{file(1), file(2), file(3)}, std::vector{document.string()}}) {
        fs::remove_all(again);
        const Outcome outcome = remake(sources, {"--json"});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        std::vector<std::string> made;
        for (const auto& [name, bytes] : contentsOf(again))
            made.push_back(bytes);
        std::vector<std::string> wanted;
        for (const auto& [name, bytes] : original)
            wanted.push_back(bytes);
        // The document has them in the order in which they were finished.
        std::sort(made.begin(), made.end());
        std::sort(wanted.begin(), wanted.end());
        EXPECT_TRUE(made == wanted);
        EXPECT_EQ(outcome.event("result")["files"].size(), 3U);
        EXPECT_EQ(outcome.event("result")["files"][0]["source"], sources[0]);
    }
}

TEST_F(RecipeCommand, AFileMadeAgainIsKnownAsWell) {
    ASSERT_EQ(generate({"--embed-recipe"}).exitCode, 0);
    ASSERT_EQ(remake({file(2)}, {"--embed-recipe", "--no-journal"}).exitCode, 0);
    EXPECT_TRUE(readText(again / "Struck_Bars_var_0001.wav") == readText(file(2)));
}

TEST_F(RecipeCommand, ChangesWhatIsSetOnTheSameLatentVector) {
    ASSERT_EQ(generate().exitCode, 0);
    ASSERT_EQ(remake({file(1)}, {"--set", "pitch=5", "--set", "drift=3", "--format", "wav16"}).exitCode, 0);
    const fs::path made = again / "Struck_Bars_var_0001.wav";
    const auto recipeOf = [](const fs::path& path) {
        const Outcome outcome = runCommand({"recipe", path.string(), "--json"});
        return decodeRecipe(outcome.event("result")["files"][0]["recipes"][0].dump());
    };
    const Recipe before = recipeOf(file(1));
    const Recipe after = recipeOf(made);
    EXPECT_EQ(after.latent, before.latent);
    EXPECT_EQ(after.state, before.state);
    EXPECT_EQ(after.aesthetics.pitch, 5);
    EXPECT_EQ(after.format, OutputFormat::wav16);
    EXPECT_EQ(after.lineage->way, "recipe");
    EXPECT_NE(readText(made).substr(44), readText(file(1)).substr(44));
    // And that one can be had again, too.
    fs::rename(made, folder / "changed.wav");
    ASSERT_EQ(remake({(folder / "changed.wav").string()}).exitCode, 0);
    EXPECT_TRUE(readText(made) == readText(folder / "changed.wav"));
}

TEST_F(RecipeCommand, SaysWhenASettingChangesNothing) {
    ASSERT_EQ(generate().exitCode, 0);
    EXPECT_THAT(remake({file(1)}, {"--set", "drift=3"}).err, HasSubstr("drift changes nothing here"));
    EXPECT_THAT(remake({file(1)}, {"--set", "pitch=3"}).err, Not(HasSubstr("Note")));
}

TEST_F(RecipeCommand, RecipesOfSeveralCharactersKeepTheirOrder) {
    ASSERT_EQ(generate({"--preset", "Wild"}).exitCode, 0);
    ASSERT_EQ(generate({"--preset", "Ghostly", "--set", "stretch=1"}).exitCode, 0);
    ASSERT_EQ(remake({file(4), file(1), file(5), file(6)}).exitCode, 0);
    const std::vector<int> order{4, 1, 5, 6};
    for (std::size_t i = 0; i < order.size(); ++i) {
        EXPECT_TRUE(readText(again / ("Struck_Bars_var_000" + std::to_string(i + 1) + ".wav")) ==
                    readText(file(order[i])))
            << i;
    }
}

TEST_F(RecipeCommand, WhatCannotBeMadeAgainFailsBeforeAnythingIsWritten) {
    ASSERT_EQ(generate().exitCode, 0);
    const Outcome unknown = remake({file(1), (corpus / "one.wav").string()});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_THAT(unknown.err, HasSubstr("one.wav: nothing is known"));
    // Another model takes the place of the one that the file was made with.
    ASSERT_EQ(runCommand(trainArguments({"--retrain", "--seed", "77"})).exitCode, 0);
    const Outcome changed = remake({file(1)});
    EXPECT_EQ(changed.exitCode, 1);
    EXPECT_THAT(changed.err, HasSubstr("var_0001.wav: the model"));
    EXPECT_THAT(changed.err, HasSubstr("learned again"));
    fs::remove_all(models);
    const Outcome missing = remake({file(1)});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.err, HasSubstr("is not among those in"));
    EXPECT_FALSE(fs::exists(again));
}

TEST_F(RecipeCommand, ALatentVectorOfAnotherModelIsRefused) {
    const fs::path document = folder / "recipes.jsonl";
    ASSERT_EQ(generate({"--recipes", document.string()}, 1).exitCode, 0);
    cli::JSON entry = cli::JSON::parse(readText(document));
    entry["recipe"]["latent"] = "00000000";
    writeText(document, entry.dump());
    const Outcome outcome = remake({document.string()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("recipes.jsonl: the recipe is damaged: its latent vector"));
}

TEST_F(RecipeCommand, SaysThatARecipeIsOfAnotherDevice) {
    const fs::path document = folder / "recipes.jsonl";
    ASSERT_EQ(generate({"--recipes", document.string()}, 1).exitCode, 0);
    cli::JSON entry = cli::JSON::parse(readText(document));
    entry["recipe"]["device"] = "A Large Card";
    writeText(document, entry.dump());
    EXPECT_THAT(remake({document.string()}).err, HasSubstr("made on another device (A Large Card)"));
}

TEST_F(RecipeCommand, CanBeCancelled) {
    const fs::path document = folder / "recipes.jsonl";
    ASSERT_EQ(generate({"--recipes", document.string()}, 40).exitCode, 0);
    const Outcome outcome = runCommandCancelledAt(
        "\"step\":1,",
        withModels({"generate", "--recipe", document.string(), "--output", again.string(), "--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_LE(entriesIn(again), 16U);
}

// ---- New ones out of known ones

class Likeness : public RecipeCommand {
protected:
    Likeness() { EXPECT_EQ(generate({"--preset", "Wild"}).exitCode, 0); }

    // Makes two new variations in the folder "again" and returns their recipes.
    [[nodiscard]] std::vector<Recipe> make(const std::vector<std::string>& how) const {
        fs::remove_all(again);
        std::vector<std::string> arguments{"generate", "--output", again.string(), "--count", "2", "--json"};
        arguments.insert(arguments.end(), how.begin(), how.end());
        const Outcome outcome = runCommand(withModels(arguments));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        std::vector<Recipe> recipes;
        const cli::JSON result = outcome.event("result");
        for (const cli::JSON& made : result["files"])
            recipes.push_back(recipeOf(made["path"].get<std::string>()));
        return recipes;
    }
    [[nodiscard]] static Recipe recipeOf(const std::string& path) {
        const Outcome outcome = runCommand({"recipe", path, "--json"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return decodeRecipe(outcome.event("result")["files"][0]["recipes"][0].dump());
    }
};

TEST_F(Likeness, NewOnesLieAroundTheLikedOnesAndSayFromWhichTheyCome) {
    const auto recipes = make({"--like", file(1), file(2), "--closeness", "0.9", "--seed", "8"});
    ASSERT_EQ(recipes.size(), 2U);
    EXPECT_NE(recipes[0].latent, recipes[1].latent);
    for (const Recipe& recipe : recipes) {
        EXPECT_EQ(recipe.seed, 8U);
        ASSERT_TRUE(recipe.lineage.has_value());
        EXPECT_EQ(recipe.lineage->way, "like");
        EXPECT_EQ(recipe.lineage->parents.size(), 2U);
        EXPECT_EQ(recipe.lineage->values.at("closeness"), 0.9);
        EXPECT_EQ(recipe.aesthetics, recipeOf(file(1)).aesthetics) << "the character of the first";
    }
    EXPECT_THAT(runCommand({"recipe", (again / "Struck_Bars_var_0001.wav").string()}).out,
                HasSubstr("like closeness 0.90, from 2 files"));
    EXPECT_EQ(runCommand(withModels({"verify", again.string()})).exitCode, 0);
}

TEST_F(Likeness, TheSameSeedGivesTheSameAgain) {
    EXPECT_EQ(make({"--like", file(1), "--seed", "8"}), make({"--like", file(1), "--seed", "8"}));
    EXPECT_NE(make({"--like", file(1)})[0].latent, make({"--like", file(1)})[0].latent) << "a fresh seed";
    EXPECT_EQ(make({"--like", file(1), "--closeness", "1"})[1].latent, recipeOf(file(1)).latent);
}

TEST_F(Likeness, ABodyKeepsThePlaceAndASkinAllElse) {
    const Recipe known = recipeOf(file(2));
    for (const Recipe& recipe : make({"--body", file(2)})) {
        EXPECT_EQ(recipe.latent, known.latent);
        EXPECT_NE(recipe.state, known.state);
        EXPECT_EQ(recipe.lineage->way, "body");
    }
    for (const Recipe& recipe : make({"--skin", file(2), "--set", "drift=2"})) {
        EXPECT_NE(recipe.latent, known.latent);
        EXPECT_EQ(recipe.state, known.state);
        EXPECT_EQ(recipe.aesthetics.drift, 2);
        EXPECT_EQ(recipe.lineage->way, "skin");
    }
}

TEST_F(Likeness, FilesOfDifferentModelsHaveNothingInBetween) {
    ASSERT_EQ(runCommand(trainArguments({"--retrain", "--seed", "77"})).exitCode, 0);
    ASSERT_EQ(generate().exitCode, 0);
    const auto like = [&](const std::string& first, const std::string& second) {
        return runCommand(withModels({"generate", "--output", again.string(), "--like", first, second}));
    };
    EXPECT_THAT(like(file(1), file(4)).err, HasSubstr("var_0001.wav: the model"));
    const fs::path other = models / "Other";
    fs::rename(modelFolder(), other);
    ASSERT_EQ(runCommand(trainArguments()).exitCode, 0);
    const Outcome outcome = like(file(1), file(4));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("var_0004.wav was made with another model than"));
    EXPECT_FALSE(fs::exists(again));
}

// ---- Parts of a larger job

TEST_F(RecipeCommand, PartsHaveTheNumbersAndBytesOfOneRun) {
    ASSERT_EQ(generate({}, 20).exitCode, 0);
    const auto whole = contentsOf(output);
    fs::remove_all(output);
    for (const auto& [first, count] : {std::pair("18", 3), std::pair("1", 1), std::pair("2", 16)})
        ASSERT_EQ(generate({"--first", first}, count).exitCode, 0);
    EXPECT_TRUE(contentsOf(output) == whole);
    EXPECT_EQ(generate({"--first", "21", "--json"}).event("result")["first"], 21);
}

TEST_F(RecipeCommand, APartNeverTakesAnotherNumber) {
    ASSERT_EQ(generate({"--first", "2"}).exitCode, 0);
    const auto before = contentsOf(output);
    const Outcome outcome = generate({"--first", "4"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("Struck_Bars_var_0004.wav"));
    EXPECT_EQ(contentsOf(output), before);
}

}  // namespace
}  // namespace quillmere::testing
