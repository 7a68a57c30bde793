#include "QuillmereCore/Origin/Verification.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Origin/RecipeKeeper.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/LearnedClips.h"
#include "Support/Processor.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::readText;
using testing::smallModel;
using testing::TempFolder;
using testing::writeText;

class Verifying : public ::testing::Test {
protected:
    Verifying() {
        ModelStore::replace(model(1), models / "Kicks-ab");
        SampleGenerator generator(model(1), testing::processor());
        const GenerationRequest request{.count = 20,
                                        .outputDirectory = folder.path(),
                                        .aesthetics = {.phaseIterations = 2},
                                        .seed = 42,
                                        .format = OutputFormat::wav16,
                                        .namePrefix = "kick"};
        RecipeKeeper keeper({.journal = journal.file()}, {.corpusName = "Kicks",
                                                          .fingerprint = "ab",
                                                          .aesthetics = request.aesthetics,
                                                          .format = request.format});
        (void)generator.generate(request, keeper.hooks(), {}, {});
    }

    static ModelBundle model(float weight) {
        ModelBundle bundle = smallModel();
        bundle.metadata.corpusName = "Kicks";
        bundle.metadata.fingerprint = "ab";
        bundle.weights[0][0] = weight;
        return bundle;
    }
    [[nodiscard]] fs::path file(int number) const {
        return folder / Finishing::fileName("kick_var", static_cast<std::size_t>(number));
    }
    [[nodiscard]] std::vector<Verification> check(const std::vector<fs::path>& files) const {
        return verify(lookUp(files, &journal), models.path(), testing::processor());
    }
    [[nodiscard]] Verification check(const fs::path& one) const { return check(std::vector{one}).at(0); }
    // Replaces bytes of the sound, which begins at 44.
    void spoil(const fs::path& path, std::size_t at) const {
        std::string bytes = readText(path);
        bytes.at(at) = static_cast<char>(bytes[at] ^ 0x15);
        writeText(path, bytes);
    }

    const TempFolder folder;
    const TempFolder models;
    const TempFolder data;
    const Journal journal{data / "journal.jsonl"};
};

TEST_F(Verifying, EveryFileThatIsAsMadeIsTheSame) {
    std::vector<fs::path> files;
    for (int i = 1; i <= 20; ++i)
        files.push_back(file(i));
    const fs::path moved = data / "moved.wav";
    fs::rename(files[7], moved);
    files[7] = moved;
    const auto results = check(files);
    ASSERT_EQ(results.size(), 20U);
    for (std::size_t i = 0; i < results.size(); ++i) {
        EXPECT_EQ(results[i].verdict, Verdict::sameBytes) << results[i].reason;
        EXPECT_EQ(results[i].file, files[i]);
        EXPECT_EQ(results[i].recipe->index, static_cast<std::int64_t>(i));
        EXPECT_TRUE(results[i].isSame());
    }
}

TEST_F(Verifying, TheSameSoundInAnotherContainerHasTheSameSamples) {
    AudioIO::write(AudioIO::readMono(file(1)).samples, folder / "wide.wav", 8000, OutputFormat::wav24);
    writeText(folder / "tagged.wav", readText(file(2)) + std::string("note\0\0\0\0", 8));
    for (const char* name : {"wide.wav", "tagged.wav"})
        EXPECT_EQ(check(folder / name).verdict, Verdict::sameSamples) << name;
}

TEST_F(Verifying, TellsWhereAnEmbeddedRecipesFileWasChanged) {
    SampleGenerator generator(model(1), testing::processor());
    RecipeKeeper keeper({.embedded = true}, {.corpusName = "Kicks",
                                             .fingerprint = "ab",
                                             .aesthetics = {.phaseIterations = 2},
                                             .format = OutputFormat::wav16});
    const GenerationRequest request{.count = 1,
                                    .outputDirectory = folder.path(),
                                    .aesthetics = {.phaseIterations = 2},
                                    .seed = 1,
                                    .format = OutputFormat::wav16,
                                    .namePrefix = "own"};
    const fs::path own = generator.generate(request, keeper.hooks(), {}, {}).at(0).url;
    EXPECT_EQ(check(own).verdict, Verdict::sameBytes);
    spoil(own, 44 + 2 * 100);
    const Verification changed = check(own);
    EXPECT_EQ(changed.verdict, Verdict::different);
    EXPECT_EQ(changed.firstDifference, 100U);
    EXPECT_THAT(changed.reason, HasSubstr("first sample that differs is 100"));
}

TEST_F(Verifying, AFileThatTheJournalDoesNotKnowIsUnknown) {
    spoil(file(1), 100);
    const Verification result = check(file(1));
    EXPECT_EQ(result.verdict, Verdict::unknown);
    EXPECT_FALSE(result.isSame());
    EXPECT_FALSE(result.recipe.has_value());
}

TEST_F(Verifying, TellsAMissingModelFromAChangedOne) {
    ModelStore::replace(model(2), models / "Kicks-ab");
    EXPECT_EQ(check(file(1)).verdict, Verdict::modelChanged);
    ASSERT_TRUE(ModelStore::remove(models / "Kicks-ab"));
    const Verification missing = check(file(1));
    EXPECT_EQ(missing.verdict, Verdict::modelMissing);
    EXPECT_THAT(missing.reason, HasSubstr("not among those"));
}

// A journal that says something else of the file: its entry, changed.
class LyingJournal : public Verifying {
protected:
    template <typename Change>
    Verification checkWith(const Change& change) {
        JournalEntry entry = journal.newest(100).front();
        change(entry);
        journal.append(entry);
        return check(fs::path(entry.file));
    }
};

TEST_F(LyingJournal, AnotherRecipeGivesADifferentFile) {
    const Verification louder = checkWith([](JournalEntry& entry) { entry.recipe.aesthetics.pitch = 5; });
    EXPECT_EQ(louder.verdict, Verdict::different);
    EXPECT_TRUE(louder.firstDifference.has_value());
    const Verification longer = checkWith([](JournalEntry& entry) { entry.recipe.device = "A Large Card"; });
    EXPECT_EQ(longer.verdict, Verdict::sameBytes) << "whatever device it says";
}

TEST_F(LyingJournal, SaysThatADifferentFileWasMadeOnAnotherDevice) {
    const Verification result = checkWith([](JournalEntry& entry) {
        entry.recipe.device = "A Large Card";
        entry.recipe.latent[0] += 1;
    });
    EXPECT_EQ(result.verdict, Verdict::different);
    EXPECT_THAT(result.reason, HasSubstr("made on another device (A Large Card)"));
}

TEST_F(LyingJournal, ARecipeThatCannotBeFollowedIsUnusableAndSpoilsNoOther) {
    JournalEntry entry = journal.newest(100).front();
    entry.recipe.aesthetics.drive = 1e38;
    entry.recipe.aesthetics.normalize = 1e38;
    journal.append(entry);
    const auto results = check(std::vector<fs::path>{fs::path(entry.file), file(19), file(20)});
    std::vector<Verdict> verdicts;
    for (const Verification& result : results)
        verdicts.push_back(result.verdict);
    EXPECT_THAT(verdicts, ElementsAre(Verdict::unusable, Verdict::sameBytes, Verdict::sameBytes));
    EXPECT_EQ(checkWith([](JournalEntry& other) { other.recipe.latent = {1}; }).verdict, Verdict::unusable);
    EXPECT_EQ(checkWith([](JournalEntry& other) { other.recipe.sources.at(0).clip = 6; }).verdict,
              Verdict::unusable);
}

TEST_F(Verifying, CountsEveryFileAndCanBeCancelled) {
    std::vector<fs::path> files{folder / "missing.wav"};
    for (int i = 1; i <= 20; ++i)
        files.push_back(file(i));
    const auto known = lookUp(files, &journal);
    std::vector<std::size_t> steps;
    const auto results =
        verify(known, models.path(), testing::processor(), [&](std::size_t done, std::size_t total) {
            EXPECT_EQ(total, 21U);
            steps.push_back(done);
        });
    EXPECT_THAT(steps, ElementsAre(1U, 17U, 21U));
    EXPECT_EQ(results[0].verdict, Verdict::unusable);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)verify(known, models.path(), testing::processor(), {}, stop.get_token()),
                 CancellationError);
}

// A model whose learned clips are in their folder and kept beside it.
class VerifyingDetail : public ::testing::Test {
protected:
    VerifyingDetail() {
        clips.model.metadata.corpusName = "Kicks";
        clips.model.metadata.corpusPath = clips.folder.path().string();
        const ClipSounds sounds = ClipSounds::inFolder(clips.model, clips.scan());
        ModelStore::replace(clips.model, models / "Kicks-ab", {}, ModelStore::storingPatience,
                            ModelStore::Former::replaced, sounds.toKeep(clips.model, {}));
        write("folder", sounds);
        write("kept", ClipSounds::keptWith(clips.model, models / "Kicks-ab"));
        write("noise", {});
    }
    void write(const std::string& prefix, const ClipSounds& sounds) {
        SampleGenerator generator(clips.model, testing::processor(), sounds);
        const GenerationRequest request{.count = 2,
                                        .outputDirectory = folder.path(),
                                        .aesthetics = {},
                                        .seed = 42,
                                        .namePrefix = prefix,
                                        .detail = 1};
        RecipeKeeper keeper({.journal = journal.file()}, {.corpusName = "Kicks", .fingerprint = "ab"});
        (void)generator.generate(request, keeper.hooks(), {}, {});
    }
    [[nodiscard]] Verification check(const std::string& prefix) const {
        const std::vector<fs::path> files{file(prefix)};
        return verify(lookUp(files, &journal), models.path(), testing::processor()).at(0);
    }
    [[nodiscard]] fs::path file(const std::string& prefix) const {
        return folder / Finishing::fileName(prefix + "_var", 2);
    }

    testing::LearnedClips clips;
    const TempFolder folder;
    const TempFolder models;
    const TempFolder data;
    const Journal journal{data / "journal.jsonl"};
};

TEST_F(VerifyingDetail, EachFileIsMadeAgainOfWhatItWasMadeOf) {
    EXPECT_NE(readText(file("folder")), readText(file("kept")));
    const std::vector<fs::path> files{file("folder"), file("kept"), file("noise")};
    const auto results = verify(lookUp(files, &journal), models.path(), testing::processor());
    std::vector<std::string_view> bases;
    for (const Verification& result : results) {
        EXPECT_EQ(result.verdict, Verdict::sameBytes) << result.file << ": " << result.reason;
        bases.push_back(rawValue(result.recipe->detailBasis));
    }
    EXPECT_THAT(bases, ElementsAre("sources", "kept", "noise"));
}

TEST_F(VerifyingDetail, SaysWhenTheSamplesOfTheFolderAreGone) {
    fs::remove(clips.folder / "clip 0.wav");
    const Verification ofFolder = check("folder");
    EXPECT_EQ(ofFolder.verdict, Verdict::different) << "the kept ones are not quite the same";
    EXPECT_THAT(ofFolder.reason, HasSubstr("no longer there as they were"));
    EXPECT_EQ(check("kept").verdict, Verdict::sameBytes);
    EXPECT_EQ(check("noise").verdict, Verdict::sameBytes);
}

TEST_F(VerifyingDetail, SaysWhenTheSamplesOfTheModelAreGone) {
    ModelStore::replace(clips.model, models / "Kicks-ab");
    const Verification ofModel = check("kept");
    EXPECT_EQ(ofModel.verdict, Verdict::different);
    EXPECT_THAT(ofModel.reason, HasSubstr("no longer kept with the model"));
    EXPECT_EQ(check("folder").verdict, Verdict::sameBytes);
}

}  // namespace
}  // namespace quillmere
