#include "QuillmereCore/Origin/RecipeLookup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/SampleRecipe.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::bytesOf;
using ::testing::HasSubstr;
using testing::readText;
using testing::sampleRecipe;
using testing::smallModel;
using testing::TempFolder;
using testing::writeText;

const std::vector<float> samples{0, 0.5F, -0.5F, 0.25F};

class LookingUp : public ::testing::Test {
protected:
    // Writes a file, with a chunk or without.
    fs::path write(const std::string& name, const std::string& chunk = {}) const {
        std::vector<std::byte> bytes = AudioIO::encode(samples, name, 8000, OutputFormat::wav16);
        if (!chunk.empty()) {
            EXPECT_TRUE(RIFFChunk::append(bytes, recipeChunk, chunk));
        }
        writeFileAtomically(folder / name, bytes);
        return folder / name;
    }
    // Tells the journal that the file was written.
    void note(const fs::path& file, std::int64_t index) const {
        JournalEntry entry = testing::sampleEntry('0', '0', file.string());
        entry.digests = {sha256(bytesOf(readText(file))), soundDigest(samples, 8000)};
        entry.recipe.index = index;
        journal.append(entry);
    }
    [[nodiscard]] KnownFile lookUpOne(const fs::path& file) const {
        return lookUp(std::span(&file, 1), &journal).at(0);
    }

    const TempFolder folder;
    const Journal journal{folder / "journal.jsonl"};
};

TEST_F(LookingUp, FindsTheRecipeInTheFileFirst) {
    const fs::path file = write("a.wav", encodeJSON(sampleRecipe()));
    note(file, 99);
    const KnownFile known = lookUpOne(file);
    EXPECT_EQ(known.problem, "");
    EXPECT_EQ(known.carrier, KnownFile::Carrier::chunk);
    EXPECT_EQ(known.recipes, std::vector{sampleRecipe()});
    EXPECT_EQ(known.chunk, encodeJSON(sampleRecipe()));
    EXPECT_EQ(known.digests.bytes, fileDigest(file));
}

TEST_F(LookingUp, RecognisesAFileThatWasRenamedOrCopied) {
    const fs::path file = write("a.wav");
    note(file, 5);
    fs::copy_file(file, folder / "copy.wav");
    fs::rename(file, folder / "b.wav");
    for (const char* name : {"b.wav", "copy.wav"}) {
        const KnownFile known = lookUpOne(folder / name);
        EXPECT_EQ(known.carrier, KnownFile::Carrier::journal);
        ASSERT_EQ(known.recipes.size(), 1U) << known.problem;
        EXPECT_EQ(known.recipes[0].index, 5);
        EXPECT_EQ(known.entry->digests.bytes, known.digests.bytes);
    }
}

TEST_F(LookingUp, RecognisesTheSoundInAnotherContainer) {
    note(write("a.wav"), 5);
    // 16 bits that are padded to 24 sound the same.
    AudioIO::write(samples, folder / "b.wav", 8000, OutputFormat::wav24);
    const KnownFile known = lookUpOne(folder / "b.wav");
    ASSERT_EQ(known.recipes.size(), 1U) << known.problem;
    EXPECT_NE(known.entry->digests.bytes, known.digests.bytes);
    // At another rate it is another sound.
    AudioIO::write(samples, folder / "c.wav", 16000, OutputFormat::wav16);
    EXPECT_TRUE(lookUpOne(folder / "c.wav").isUnknown);
}

TEST_F(LookingUp, AFileOfWhichNothingIsKnownSaysSo) {
    const KnownFile known = lookUpOne(write("a.wav"));
    EXPECT_TRUE(known.isUnknown);
    EXPECT_TRUE(known.recipes.empty());
    EXPECT_THAT(known.problem, HasSubstr("a.wav: nothing is known"));
    const fs::path file = folder / "a.wav";
    EXPECT_TRUE(lookUp(std::span(&file, 1), nullptr).at(0).isUnknown) << "without a journal";
}

TEST_F(LookingUp, TroubleIsEachFilesOwnAndNamesIt) {
    note(write("good.wav"), 1);
    nlohmann::ordered_json newer = nlohmann::ordered_json::parse(encodeJSON(sampleRecipe()));
    newer["version"] = 9;
    writeText(folder / "noise.wav", "no sound");
    const std::vector<fs::path> files{write("damaged.wav", "{\"quillmere\":\"recipe\",\"vers"),
                                      write("newer.wav", newer.dump()),
                                      write("foreign.wav", "{}"),
                                      folder / "missing.wav",
                                      folder / "noise.wav",
                                      folder / "good.wav",
                                      folder.path()};
    const auto known = lookUp(files, &journal);
    ASSERT_EQ(known.size(), files.size());
    for (std::size_t i : {0U, 1U, 2U, 3U, 4U, 6U}) {
        EXPECT_TRUE(known[i].recipes.empty());
        EXPECT_FALSE(known[i].isUnknown);
        EXPECT_THAT(known[i].problem, HasSubstr(files[i].filename().string()));
    }
    EXPECT_THAT(known[0].problem, HasSubstr("the recipe is damaged"));
    EXPECT_THAT(known[1].problem, HasSubstr("newer version"));
    EXPECT_THAT(known[2].problem, HasSubstr("no recipe of this program"));
    EXPECT_EQ(known[5].problem, "");
}

TEST_F(LookingUp, ReadsDocumentsOfOneRecipeOrOnePerLine) {
    const std::string recipe = encodeJSON(sampleRecipe());
    const std::string pretty = nlohmann::ordered_json::parse(recipe).dump(2);
    const std::string entry = encodeJSON(testing::sampleEntry('a', 'b'));
    writeText(folder / "a.json", recipe);
    writeText(folder / "b.json", "\n  " + pretty + "\n");
    writeText(folder / "c.jsonl", recipe + "\n\n" + entry + "\r\n" + recipe);
    EXPECT_EQ(readRecipes(folder / "a.json").size(), 1U);
    EXPECT_EQ(readRecipes(folder / "b.json").at(0), sampleRecipe());
    EXPECT_EQ(readRecipes(folder / "c.jsonl"), (std::vector<Recipe>(3, sampleRecipe())));
    const KnownFile known = lookUpOne(folder / "c.jsonl");
    EXPECT_EQ(known.carrier, KnownFile::Carrier::document);
    EXPECT_EQ(known.recipes.size(), 3U);
}

TEST_F(LookingUp, TroubleInADocumentNamesTheLine) {
    const fs::path file = folder / "a.jsonl";
    const auto failure = [&](const std::string& text) -> std::string {
        writeText(file, text);
        try {
            (void)readRecipes(file);
        } catch (const RecipeError& error) {
            return error.what();
        }
        return "none";
    };
    const std::string recipe = encodeJSON(sampleRecipe());
    EXPECT_THAT(failure(recipe + "\n" + recipe.substr(0, 50) + "\n"), HasSubstr("a.jsonl, line 2: "));
    EXPECT_THAT(failure("\n \n"), HasSubstr("a.jsonl: there is no recipe"));
    EXPECT_THAT(failure("{}"), HasSubstr("a.jsonl: this is no recipe"));
}

class FindingModels : public ::testing::Test {
protected:
    [[nodiscard]] static ModelBundle model(float weight, const std::string& name) {
        ModelBundle bundle = smallModel();
        bundle.metadata.corpusName = name;
        bundle.metadata.fingerprint = "ab";
        bundle.weights[0][0] = weight;
        return bundle;
    }
    static Recipe recipeFor(const ModelBundle& bundle) {
        Recipe recipe = sampleRecipe();
        recipe.model = modelIdentity(bundle);
        recipe.corpusName = bundle.metadata.corpusName;
        recipe.fingerprint = bundle.metadata.fingerprint;
        return recipe;
    }

    const TempFolder root;
};

TEST_F(FindingModels, FindsAModelUnderItsNameOrAnother) {
    const Recipe recipe = recipeFor(model(1, "Kicks"));
    ModelStore::replace(model(2, "Snares"), root / "Snares-ab");
    ModelStore::replace(model(1, "Kicks"), root / "Renamed-ab");
    EXPECT_EQ(findModel(recipe, root.path()).folder, root / "Renamed-ab");
    ModelStore::replace(model(1, "Kicks"), root / "Kicks-ab");
    const FoundModel found = findModel(recipe, root.path());
    EXPECT_EQ(found.folder, root / "Kicks-ab");
    ASSERT_TRUE(found.bundle.has_value());
    EXPECT_EQ(modelIdentity(*found.bundle), recipe.model);
}

TEST_F(FindingModels, TellsAChangedModelFromAMissingOne) {
    const Recipe recipe = recipeFor(model(1, "Kicks"));
    const FoundModel missing = findModel(recipe, root.path());
    EXPECT_FALSE(missing.bundle.has_value());
    EXPECT_FALSE(missing.hasChanged);
    EXPECT_THAT(missingModelText(recipe, missing, root.path()), HasSubstr("not among those in"));
    ModelStore::replace(model(2, "Kicks"), root / "Kicks-ab");
    const FoundModel changed = findModel(recipe, root.path());
    EXPECT_FALSE(changed.bundle.has_value());
    EXPECT_TRUE(changed.hasChanged);
    EXPECT_THAT(missingModelText(recipe, changed, root.path()), HasSubstr("learned again"));
    EXPECT_FALSE(findModel(recipe, root / "nowhere").bundle.has_value());
}

TEST_F(FindingModels, PassesOverModelsThatCannotBeOpened) {
    const Recipe recipe = recipeFor(model(1, "Kicks"));
    ModelStore::replace(model(1, "Kicks"), root / "Zebra-ab");
    writeText(root / "Kicks-ab" / "model.json", "{");
    writeText(root / "Kicks-ab" / "weights.bin", "");
    EXPECT_EQ(findModel(recipe, root.path()).folder, root / "Zebra-ab");
}

}  // namespace
}  // namespace quillmere
