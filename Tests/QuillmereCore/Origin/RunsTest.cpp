#include "QuillmereCore/Origin/Runs.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/SampleRecipe.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::sampleEntry;
using testing::sampleRecipe;
using testing::TempFolder;

class EarlierRuns : public ::testing::Test {
protected:
    // One file of a run.
    void write(std::uint64_t seed, std::int64_t index, const std::string& where = "/out/",
               const std::string& when = "2026-01-02T03:04:05Z") const {
        const std::string file = where + std::to_string(seed) + "_" + std::to_string(index) + "_" +
                                 std::to_string(written++) + ".wav";
        JournalEntry entry = sampleEntry('a', 'b', file);
        entry.recipe.seed = seed;
        entry.recipe.index = index;
        entry.written = when;
        journal.append(entry);
    }
    [[nodiscard]] std::vector<JournalRun> runs(const RunsLimits& limits = {}) const {
        return runsOf({.name = sampleRecipe().corpusName, .fingerprint = ""}, journal, limits);
    }
    // Of each run: the indices of its files.
    [[nodiscard]] static std::vector<std::vector<std::int64_t>> indices(const std::vector<JournalRun>& runs) {
        std::vector<std::vector<std::int64_t>> found;
        for (const JournalRun& run : runs) {
            found.emplace_back();
            for (const JournalEntry& file : run.files)
                found.back().push_back(file.recipe.index);
        }
        return found;
    }
    using Indices = std::vector<std::vector<std::int64_t>>;

    mutable int written = 0;  // each has a name of its own
    const TempFolder folder;
    const Journal journal{folder / "journal.jsonl"};
};

JournalSet sampleSet() {
    return {.count = 12, .made = "2026-01-02T03:04:05Z", .first = sampleRecipe(), .parent = {}};
}

TEST_F(EarlierRuns, NoJournalHasNone) {
    EXPECT_TRUE(runs().empty());
}

TEST_F(EarlierRuns, BeginWithTheFileThatWasWrittenFirst) {
    write(7, 5, "/out/", "2026-01-02T03:04:05Z");
    write(7, 2, "/out/", "2026-01-02T03:09:00Z");
    EXPECT_EQ(runs().at(0).recipe().index, 2);
    EXPECT_EQ(runs().at(0).made(), "2026-01-02T03:04:05Z");
}

TEST_F(EarlierRuns, FilesOfOneJobAreOneRunInTheirOrder) {
    for (const std::int64_t index : {2, 0, 1})
        write(7, index);
    const auto found = runs();
    EXPECT_EQ(indices(found), Indices({{0, 1, 2}}));
    EXPECT_EQ(found.front().recipe().seed, 7U);
    EXPECT_EQ(found.front().made(), "2026-01-02T03:04:05Z");
}

TEST_F(EarlierRuns, TheNewestComesFirst) {
    write(7, 0);
    write(8, 0);
    write(8, 1);
    write(7, 1);  // two programs at once
    EXPECT_EQ(indices(runs()), Indices({{0, 1}, {0, 1}}));
    EXPECT_EQ(runs().front().recipe().seed, 8U);
}

TEST_F(EarlierRuns, TheSameOnceMoreIsAnotherRun) {
    for (const std::int64_t index : {0, 1, 0, 1, 2})
        write(7, index);
    EXPECT_EQ(indices(runs()), Indices({{0, 1, 2}, {0, 1}}));
}

TEST_F(EarlierRuns, FilesInOtherFoldersOrMadeOtherwiseAreOtherRuns) {
    write(7, 0);
    write(7, 1, "/elsewhere/");
    JournalEntry entry = sampleEntry('a', 'b', "/out/c.wav");
    entry.recipe.seed = 7;
    entry.recipe.index = 2;
    entry.recipe.aesthetics.drift += 0.1;
    journal.append(entry);
    entry.file = "/out/d.wav";
    entry.recipe.index = 3;
    entry.recipe.lineage = Lineage{.way = "like", .parents = {}, .values = {}};
    journal.append(entry);
    EXPECT_EQ(indices(runs()), Indices({{3}, {2}, {1}, {0}}));
}

TEST_F(EarlierRuns, KnowsTheCorpusByItsNameOrItsFiles) {
    write(7, 0);
    JournalEntry renamed = sampleEntry('a', 'b', "/out/renamed.wav");
    renamed.recipe.corpusName = "Another";
    renamed.recipe.seed = 8;
    journal.append(renamed);
    JournalEntry other = renamed;
    other.file = "/out/other.wav";
    other.recipe.fingerprint = "0";
    other.recipe.model = std::string(64, 'b');
    journal.append(other);
    const Recipe recipe = sampleRecipe();
    const auto seeds = [&](const RunsCorpus& corpus) {
        std::vector<std::uint64_t> found;
        for (const JournalRun& run : runsOf(corpus, journal))
            found.push_back(run.recipe().seed);
        return found;
    };
    EXPECT_EQ(seeds({recipe.corpusName, ""}), (std::vector<std::uint64_t>{7}));
    EXPECT_EQ(seeds({"Nobody", recipe.fingerprint}), (std::vector<std::uint64_t>{8, 7}));
    EXPECT_TRUE(seeds({"Nobody", "1"}).empty());
    EXPECT_TRUE(seeds({"Nobody", ""}).empty());
    EXPECT_EQ(seeds({"Nobody", "", std::string(64, 'b')}), (std::vector<std::uint64_t>{8}));
}

TEST_F(EarlierRuns, SetsThatWereHeardAreRunsWithoutFiles) {
    write(7, 0);
    journal.append(sampleSet());
    const auto found = runs();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(found.front().files.empty());
    EXPECT_EQ(found.front().set, sampleSet());
    EXPECT_EQ(found.front().recipe(), sampleRecipe());
    EXPECT_EQ(indices(found).back(), (std::vector<std::int64_t>{0}));
}

TEST_F(EarlierRuns, ANameThatWasUsedAgainIsThatOfTheNewerFile) {
    const auto append = [&](std::uint64_t seed, std::int64_t index, const char* file) {
        JournalEntry entry = sampleEntry('a', 'b', file);
        entry.recipe.seed = seed;
        entry.recipe.index = index;
        journal.append(entry);
    };
    append(7, 0, "/out/1.wav");
    append(7, 1, "/out/2.wav");
    append(8, 0, "/out/1.wav");  // after the first one went to the trash
    auto found = runs();
    EXPECT_EQ(indices(found), Indices({{0}, {1}}));
    EXPECT_EQ(found.back().files.front().file, "/out/2.wav");
    append(8, 4, "/out/1.wav");  // in the same run
    EXPECT_EQ(indices(runs()), Indices({{4}, {1}}));
    append(9, 0, "/out/2.wav");
    found = runs();
    EXPECT_EQ(indices(found), Indices({{0}, {4}}));  // nothing is left of the first one
}

TEST_F(EarlierRuns, TheOldestAreForgotten) {
    for (std::uint64_t seed = 1; seed <= 5; ++seed) {
        for (std::int64_t index = 0; index < 3; ++index)
            write(seed, index);
    }
    EXPECT_EQ(runs({.runs = 2, .files = 100}).size(), 2U);
    EXPECT_EQ(runs({.runs = 2, .files = 100}).front().recipe().seed, 5U);
    EXPECT_EQ(runs({.runs = 9, .files = 7}).size(), 2U);
    EXPECT_EQ(indices(runs({.runs = 9, .files = 1})), Indices({{0, 1, 2}}));  // whole, though it is long
}

TEST_F(EarlierRuns, OneThatWasForgottenIsNotGoneOnWith) {
    write(1, 0);
    write(2, 0);
    write(1, 1);
    const auto found = runs({.runs = 1, .files = 100});
    EXPECT_EQ(indices(found), Indices({{1}}));
    EXPECT_EQ(found.front().recipe().seed, 1U);
}

}  // namespace
}  // namespace quillmere
