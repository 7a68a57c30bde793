#include "QuillmereCore/Origin/RecipeKeeper.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Origin/RecipeLookup.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/Processor.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::readText;
using testing::smallModel;
using testing::TempFolder;

class Keeping : public ::testing::Test {
protected:
    [[nodiscard]] GenerationRequest request() const {
        return {.count = 19,
                .outputDirectory = folder / "out",
                .aesthetics = {.stretchJitter = 1, .phaseIterations = 2},
                .seed = 42,
                .format = OutputFormat::wav16,
                .namePrefix = "kick"};
    }
    [[nodiscard]] RecipeBase base() const {
        return {.corpusName = "Drums",
                .fingerprint = "ab",
                .aesthetics = request().aesthetics,
                .format = request().format};
    }
    std::vector<GeneratedSample> generate(RecipeKeeper& keeper) {
        return generator.generate(request(), keeper.hooks(), {}, {});
    }
    static std::map<std::string, std::string> contentsOf(const fs::path& place) {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::directory_iterator(place))
            contents[entry.path().filename().string()] = readText(entry.path());
        return contents;
    }

    const TempFolder folder;
    const fs::path journal = folder / "journal.jsonl";
    SampleGenerator generator{smallModel(), testing::processor()};
};

TEST_F(Keeping, TheJournalKnowsEveryFileByItsBytesAndItsSound) {
    RecipeKeeper keeper({.journal = journal}, base());
    const auto files = generate(keeper);
    EXPECT_EQ(keeper.journalProblem(), std::nullopt);
    for (const GeneratedSample& file : files) {
        const std::string sound = soundDigest(AudioIO::readMono(file.url).samples, generator.sampleRate());
        for (const FileDigests& digests : {FileDigests{fileDigest(file.url), ""}, FileDigests{"", sound}}) {
            const auto entry = Journal(journal).find(std::span(&digests, 1)).at(0);
            ASSERT_TRUE(entry.has_value()) << file.url;
            EXPECT_EQ(entry->file, file.url.string());
            EXPECT_EQ(entry->recipe, makeRecipe(file.origin, base()));
            EXPECT_EQ(entry->recipe.seed, 42U);
            EXPECT_TRUE(ModelStore::parseISODate(entry->written).has_value()) << entry->written;
        }
    }
    EXPECT_EQ(Journal(journal).newest(100).size(), files.size());
}

TEST_F(Keeping, FilesStayAsTheyAreUnlessTheRecipeGoesIntoThem) {
    (void)generator.generate(request(), {}, {});
    const auto plain = contentsOf(folder / "out");
    fs::remove_all(folder / "out");
    RecipeKeeper journalOnly({.journal = journal, .document = folder / "recipes.jsonl"}, base());
    (void)generate(journalOnly);
    EXPECT_EQ(contentsOf(folder / "out"), plain);
    fs::remove_all(folder / "out");
    RecipeKeeper embedding({.embedded = true}, base());
    const auto files = generate(embedding);
    for (const GeneratedSample& file : files) {
        const auto chunk = RIFFChunk::find(file.url, recipeChunk);
        ASSERT_TRUE(chunk.has_value());
        EXPECT_EQ(decodeRecipe(*chunk), makeRecipe(file.origin, base()));
        const std::string& before = plain.at(file.url.filename().string());
        EXPECT_EQ(readText(file.url).substr(8, before.size() - 8), before.substr(8));
    }
}

TEST_F(Keeping, AppendsToADocument) {
    const fs::path document = folder / "recipes.jsonl";
    RecipeKeeper keeper({.document = document}, base());
    const auto first = generate(keeper);
    const auto second = generate(keeper);
    const std::vector<Recipe> recipes = readRecipes(document);
    ASSERT_EQ(recipes.size(), first.size() + second.size());
    EXPECT_FALSE(fs::exists(journal));
}

TEST_F(Keeping, FilesOfACancelledJobAreInTheJournal) {
    RecipeKeeper keeper({.journal = journal}, base());
    std::stop_source stop;
    EXPECT_THROW((void)generator.generate(
                     request(), keeper.hooks(), [&](std::int64_t, std::int64_t) { stop.request_stop(); },
                     stop.get_token()),
                 CancellationError);
    const auto written = contentsOf(folder / "out").size();
    EXPECT_GT(written, 0U);
    EXPECT_EQ(Journal(journal).newest(100).size(), written);
}

TEST_F(Keeping, AJournalThatCannotBeWrittenLosesNoFile) {
    fs::create_directories(journal);
    RecipeKeeper keeper({.journal = journal}, base());
    EXPECT_EQ(generate(keeper).size(), 19U);
    ASSERT_TRUE(keeper.journalProblem().has_value());
    EXPECT_NE(keeper.journalProblem()->english().find(journal.string()), std::string::npos);
}

TEST_F(Keeping, ADocumentThatCannotBeWrittenEndsTheJob) {
    fs::create_directories(journal);
    RecipeKeeper keeper({.document = journal}, base());
    EXPECT_THROW((void)generate(keeper), FileError);
}

}  // namespace
}  // namespace quillmere
