#include "QuillmereCore/Origin/Journal.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "QuillmereCore/Util/Failure.h"
#include "Support/Environment.h"
#include "Support/OtherUser.h"
#include "Support/SampleRecipe.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::readText;
using testing::sampleEntry;
using testing::sampleRecipe;
using testing::TempFolder;
using testing::writeText;

class Journalling : public ::testing::Test {
protected:
    [[nodiscard]] std::optional<JournalEntry> find(const FileDigests& digests) const {
        return journal.find(std::span(&digests, 1)).at(0);
    }
    [[nodiscard]] std::size_t lines() const {
        const std::string text = readText(file);
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }

    const TempFolder folder;
    const fs::path file = folder / "data" / "journal.jsonl";
    const Journal journal{file};
};

const std::string none;
const std::string a(64, 'a');
const std::string b(64, 'b');
const std::string c(64, 'c');

TEST_F(Journalling, AnEntryComesBackAsItWas) {
    const JournalEntry entry = sampleEntry('a', 'b', "/tmp/\"café\"\n.wav");
    EXPECT_EQ(decodeJournalEntry(encodeJSON(entry)), entry);
    EXPECT_EQ(encodeJSON(entry).find('\n'), std::string::npos);
}

TEST_F(Journalling, NamesStandInALineAsPeopleWriteThem) {
    EXPECT_NE(encodeJSON(sampleEntry('a', 'b', "/tmp/café.wav")).find("/tmp/café.wav"), std::string::npos);
}

JournalSet sampleSet() {
    JournalSet set{.count = 12, .made = "2026-01-02T03:04:05Z", .first = sampleRecipe(), .parent = {}};
    set.first.lineage = Lineage{.way = "like", .parents = {}, .values = {{"closeness", 0.7}}};
    set.parent = {.name = "\"kick\".wav", .recipe = sampleRecipe()};
    return set;
}

TEST_F(Journalling, ASetComesBackAsItWas) {
    JournalSet set = sampleSet();
    EXPECT_EQ(decodeJournalSet(encodeJSON(set)), set);
    EXPECT_EQ(encodeJSON(set).find('\n'), std::string::npos);
    set.parent.reset();
    EXPECT_EQ(decodeJournalSet(encodeJSON(set)), set);
}

TEST_F(Journalling, ASetIsNoFile) {
    journal.append(sampleEntry('a', 'b', "1"));
    journal.append(sampleSet());
    EXPECT_EQ(journal.newest(10).size(), 1U);
    EXPECT_EQ(find({a, b})->file, "1");
}

TEST_F(Journalling, ReadsWhatIsWantedInOrder) {
    journal.append(sampleEntry('a', 'b', "1"));
    journal.append(sampleSet());
    writeText(file, readText(file) + "{\"heard\":0}\n{\"heard\":12,\"made\":1}\nrubbish\n");
    journal.append(sampleEntry('c', 'd', "2"));
    std::vector<Journal::Line> lines;
    const auto take = [&](Journal::Line line) { lines.push_back(std::move(line)); };
    journal.read([](std::string_view) { return true; }, take);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(std::get<JournalEntry>(lines[0]).file, "1");
    EXPECT_EQ(std::get<JournalSet>(lines[1]), sampleSet());
    EXPECT_EQ(std::get<JournalEntry>(lines[2]).file, "2");
    lines.clear();
    journal.read([](std::string_view line) { return line.find("/tmp/2") != std::string_view::npos; }, take);
    EXPECT_TRUE(lines.empty());
    journal.read([](std::string_view line) { return line.starts_with("{\"heard\""); }, take);
    EXPECT_EQ(lines.size(), 1U);
}

TEST_F(Journalling, TellsTheTimeInWholeSeconds) {
    const std::string now = journalTime();
    EXPECT_EQ(now.size(), std::string("2026-01-02T03:04:05Z").size());
    EXPECT_EQ(now.back(), 'Z');
    EXPECT_GT(now, "2024");
}

TEST_F(Journalling, FindsAFileByItsBytesAndElseByItsSound) {
    journal.append(sampleEntry('a', 'b'));
    EXPECT_EQ(find({a, none}), sampleEntry('a', 'b'));
    EXPECT_EQ(find({c, b}), sampleEntry('a', 'b'));
    EXPECT_EQ(find({c, none}), std::nullopt);
    EXPECT_EQ(find({b, a}), std::nullopt);
    EXPECT_EQ(find({none, none}), std::nullopt);
}

TEST_F(Journalling, BytesGoBeforeSoundAndNewerBeforeOlder) {
    journal.append(sampleEntry('a', 'b', "1"));
    journal.append(sampleEntry('c', 'b', "2"));
    journal.append(sampleEntry('a', 'b', "3"));
    journal.append(sampleEntry('d', 'b', "4"));
    EXPECT_EQ(find({a, b})->file, "3");
    EXPECT_EQ(find({none, b})->file, "4");
}

TEST_F(Journalling, AnswersManyQuestionsInTheirOrder) {
    journal.append(sampleEntry('a', 'b', "1"));
    journal.append(sampleEntry('c', 'd', "2"));
    const std::vector<FileDigests> wanted{{c, none}, {b, none}, {a, none}, {a, none}};
    const auto found = journal.find(wanted);
    ASSERT_EQ(found.size(), 4U);
    EXPECT_EQ(found[0]->file, "2");
    EXPECT_EQ(found[1], std::nullopt);
    EXPECT_EQ(found[2]->file, "1");
    EXPECT_EQ(found[3]->file, "1");
}

TEST_F(Journalling, NoJournalKnowsNothing) {
    EXPECT_EQ(journal.bytes(), 0U);
    EXPECT_EQ(find({a, b}), std::nullopt);
    EXPECT_TRUE(journal.newest(10).empty());
    EXPECT_FALSE(fs::exists(file.parent_path())) << "asking creates nothing";
}

TEST_F(Journalling, NewestGivesTheLastEntriesInOrder) {
    for (const char* name : {"1", "2", "3"})
        journal.append(sampleEntry('a', 'b', name));
    const auto entries = journal.newest(2);
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].file, "2");
    EXPECT_EQ(entries[1].file, "3");
}

TEST_F(Journalling, ADamagedLineCostsItselfAlone) {
    journal.append(sampleEntry('a', 'b', "1"));
    writeText(file, readText(file) + "{\"sha256\":\"" + c + "\",\"sound\":\"" + c + "\",\"fi\n" +
                        std::string(5000, '\0') + "\n\xFF\xFE\n\n[1]\n" + encodeJSON(sampleEntry('d', 'd')) +
                        "x\n");
    journal.append(sampleEntry('e', 'f', "2"));
    EXPECT_EQ(find({a, none})->file, "1");
    EXPECT_EQ(find({c, none}), std::nullopt);
    EXPECT_EQ(find({std::string(64, 'd'), none}), std::nullopt);
    EXPECT_EQ(find({std::string(64, 'e'), none})->file, "2");
    EXPECT_EQ(journal.newest(10).size(), 2U);
}

TEST_F(Journalling, ALineCutShortDoesNotSpoilTheNext) {
    for (const std::size_t length : {1U, 200U, 1000U}) {
        fs::remove(file);
        journal.append(sampleEntry('a', 'b', "1"));
        writeText(file, readText(file) + encodeJSON(sampleEntry('c', 'c')).substr(0, length));
        journal.append(sampleEntry('e', 'f', "2"));
        EXPECT_EQ(find({a, none})->file, "1");
        EXPECT_EQ(find({std::string(64, 'e'), none})->file, "2") << length;
    }
}

TEST_F(Journalling, ASingleByteDoesNotSpoilTheNextLine) {
    fs::create_directories(file.parent_path());
    writeText(file, "x");
    journal.append(sampleEntry('a', 'b', "1"));
    EXPECT_EQ(readText(file).substr(0, 2), "x\n");
    EXPECT_EQ(find({a, none})->file, "1");
}

TEST_F(Journalling, AnEntryCutAnywhereIsNone) {
    const std::string whole = encodeJSON(sampleEntry('c', 'c'));
    std::string text;
    for (std::size_t length = 0; length < std::min<std::size_t>(whole.size(), 300); ++length)
        text += whole.substr(0, length) + "\n";
    journal.append(sampleEntry('a', 'b', "1"));
    writeText(file, text + readText(file));
    EXPECT_EQ(find({c, none}), std::nullopt);
    EXPECT_EQ(find({a, none})->file, "1");
}

TEST_F(Journalling, ASegmentThatIsMetTwiceCountsOnce) {
    journal.append(sampleEntry('a', 'b', "1"));
    fs::create_hard_link(file, file.string() + ".1");
    EXPECT_EQ(journal.newest(10).size(), 1U);
}

TEST_F(Journalling, GarbageWithoutLinesIsPassedOver) {
    writeText(file, std::string((std::size_t{3} << 20) + 17, 'x'));
    journal.append(sampleEntry('a', 'b', "1"));
    EXPECT_EQ(find({a, none})->file, "1");
}

TEST_F(Journalling, LinesAcrossTheBordersOfWhatIsReadAtOnceAreFound) {
    constexpr int count = 3000;
    std::string text = "rubbish\n";
    const auto digest = [](int i) {
        std::string number = std::to_string(i);
        return std::string(64 - number.size(), '0') + number;
    };
    for (int i = 0; i < count; ++i) {
        JournalEntry entry = sampleEntry('a', 'b', std::to_string(i));
        entry.digests.bytes = digest(i);
        text += encodeJSON(entry) + "\n";
    }
    ASSERT_GT(text.size(), std::size_t{2} << 20);
    writeText(file, text);
    std::vector<FileDigests> wanted;
    for (int i = 0; i < count; ++i)
        wanted.push_back({digest(i), none});
    const auto found = journal.find(wanted);
    for (int i = 0; i < count; ++i) {
        ASSERT_TRUE(found[static_cast<std::size_t>(i)].has_value()) << i;
        EXPECT_EQ(found[static_cast<std::size_t>(i)]->file, std::to_string(i));
    }
}

TEST_F(Journalling, DropsTheOldestWhenItIsFull) {
    const std::uint64_t lineBytes = encodeJSON(sampleEntry('a', 'b', "00")).size() + 1;
    const Journal small(file, {.segmentBytes = 3 * lineBytes, .segments = 3});
    const auto name = [](int i) { return std::string(i < 10 ? "0" : "") + std::to_string(i); };
    for (int i = 0; i < 20; ++i) {
        small.append(sampleEntry('a', 'b', name(i)));
        const auto entries = small.newest(100);
        EXPECT_LE(entries.size(), 9U);
        EXPECT_GE(entries.size(), std::min<std::size_t>(7, static_cast<std::size_t>(i) + 1));
        for (std::size_t k = 0; k < entries.size(); ++k)
            EXPECT_EQ(entries[k].file, name(i + 1 - static_cast<int>(entries.size() - k)));
    }
    EXPECT_EQ(testing::entriesIn(file.parent_path()), 3U) << "no lock is left behind";
    for (const auto& entry : fs::directory_iterator(file.parent_path()))
        EXPECT_LE(fs::file_size(entry.path()), 3 * lineBytes);
    EXPECT_GT(small.bytes(), 6 * lineBytes - 1);
    EXPECT_LE(small.bytes(), 9 * lineBytes);
}

TEST_F(Journalling, AJournalOfOneSegmentStartsAnew) {
    const std::uint64_t lineBytes = encodeJSON(sampleEntry('a', 'b', "0")).size() + 1;
    const Journal small(file, {.segmentBytes = 2 * lineBytes, .segments = 1});
    for (const char* name : {"1", "2", "3"})
        small.append(sampleEntry('a', 'b', name));
    ASSERT_EQ(small.newest(100).size(), 1U);
    EXPECT_EQ(small.newest(100)[0].file, "3");
}

TEST_F(Journalling, ThreadsLoseNoLine) {
    constexpr int each = 50;
    std::vector<std::jthread> threads;
    for (const char name : {'a', 'b', 'c', 'd'}) {
        threads.emplace_back([&, name] {
            for (int i = 0; i < each; ++i)
                journal.append(sampleEntry(name, name));
        });
    }
    threads.clear();
    // Who finds another's line half written begins a new one: an empty line between is no loss.
    EXPECT_GE(lines(), 4U * each);
    EXPECT_EQ(journal.newest(1000).size(), 4U * each);
}

TEST_F(Journalling, TroubleNamesTheFile) {
    fs::create_directories(file);
    EXPECT_THROW(journal.append(sampleEntry('a', 'b')), FileError);
    EXPECT_THROW((void)find({a, b}), FileError);
    fs::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_THROW(journal.append(sampleEntry('a', 'b')), FileError) << "a pipe, and nobody waits for its end";
    fs::remove(file);
    fs::permissions(file.parent_path(), fs::perms::owner_read | fs::perms::owner_exec);
    const testing::OtherUser user;
    try {
        journal.append(sampleEntry('a', 'b'));
        FAIL();
    } catch (const FileError& error) {
        EXPECT_EQ(error.file(), file);
    }
}

TEST_F(Journalling, ReadingCanBeCancelled) {
    journal.append(sampleEntry('a', 'b'));
    std::stop_source stop;
    stop.request_stop();
    const FileDigests digests{a, b};
    EXPECT_THROW((void)journal.find(std::span(&digests, 1), stop.get_token()), CancellationError);
}

TEST(JournalPlace, IsBesideTheUsersModels) {
    const TempFolder folder;
    const testing::EnvironmentVariable data("XDG_DATA_HOME", folder.path().string());
    EXPECT_EQ(Journal::place(), folder / "Quillmere" / "journal.jsonl");
}

TEST(SoundDigest, DependsOnEverySampleAndTheRate) {
    const std::vector<float> samples{0, 0.5F, -0.5F};
    const std::vector<float> other{0, 0.5F, -0.25F};
    EXPECT_EQ(soundDigest(samples, 44100), soundDigest(samples, 44100));
    EXPECT_NE(soundDigest(samples, 44100), soundDigest(samples, 48000));
    EXPECT_NE(soundDigest(samples, 44100), soundDigest(other, 44100));
    // printf 'quillmere sound 1 8000\n\0\0\200\077' | sha256sum
    const std::vector<float> one{1};
    EXPECT_EQ(soundDigest(one, 8000), "0d6ce65fa4abd4a78ba0b1bb14bc2ba4040e60de4f26af264ff88561208d172a");
}

}  // namespace
}  // namespace quillmere
