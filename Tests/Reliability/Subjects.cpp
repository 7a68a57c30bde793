#include "Reliability/Subjects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

namespace quillmere::testing {
namespace {

using Result = ForkedCommand::Result;

bool succeeded(const Result* ended) {
    return ended != nullptr && ended->exitCode == 0;
}

bool isHidden(const std::filesystem::path& path) {
    return path.filename().string().starts_with('.');
}

// A sample that may not be read is left out, and the command says so.
bool isOfFewerSamples(const std::filesystem::path& modelFolder, const Result* ended) {
    return succeeded(ended) && ended->out.find(" left out") != std::string::npos &&
           ModelStore::open(modelFolder).metadata.clipNames.size() == 2;
}

// The model is the old one or the new one, and whole. An old one that could not be read stays beside a new
// one.
void expectOldOrNew(const Studio& studio, const Result* ended, bool mayBeMissing, bool mustBeNew) {
    const Undisturbed& undisturbed = Undisturbed::get();
    bool isThere = false;
    for (const auto& entry : std::filesystem::directory_iterator(studio.models)) {
        if (isHidden(entry.path())) continue;
        const std::string weights = Studio::weights(entry.path());
        if (entry.path() == studio.modelFolder()) {
            isThere = true;
            EXPECT_TRUE(weights == undisturbed.newWeights ||
                        (!mustBeNew && weights == undisturbed.oldWeights) ||
                        isOfFewerSamples(entry.path(), ended));
        } else {
            EXPECT_EQ(entry.path(), studio.modelFolder().string() + ".damaged");
            EXPECT_EQ(weights, undisturbed.oldWeights);
        }
    }
    EXPECT_TRUE(isThere || mayBeMissing);
}

void checkLearned(const Studio&, const Studio& after, const Result* ended) {
    expectOldOrNew(after, ended, !succeeded(ended), true);
}

void checkLearnedAgain(const Studio&, const Studio& after, const Result* ended) {
    expectOldOrNew(after, ended, false, succeeded(ended));
}

// Nobody who only generates changes a model.
void expectSameModels(const Studio& before, const Studio& after) {
    EXPECT_EQ(Studio::contents(before.models), Studio::contents(after.models));
}

// Sounds under their final names: nothing but whole ones, and all of them after a success.
void checkGenerated(const Studio& before, const Studio& after, const Result* ended) {
    expectSameModels(before, after);
    std::set<std::string> sounds;
    for (const auto& [name, content] : Studio::contents(after.output)) {
        if (isHidden(name)) continue;
        EXPECT_TRUE(Undisturbed::get().variations.contains(content)) << name;
        sounds.insert(content);
    }
    if (succeeded(ended)) {
        EXPECT_EQ(sounds, Undisturbed::get().variations);
    }
}

void checkAuditioned(const Studio& before, const Studio& after, const Result* ended) {
    expectSameModels(before, after);
    const std::filesystem::path file = after.output / "one.wav";
    const bool isThere = std::filesystem::exists(file);
    if (isThere) {
        EXPECT_EQ(readText(file), Undisturbed::get().audition);
    }
    EXPECT_TRUE(isThere || !succeeded(ended));
}

void checkRemoved(const Studio& before, const Studio& after, const Result* ended) {
    const bool isThere = std::filesystem::exists(after.modelFolder());
    if (isThere) {
        EXPECT_EQ(Studio::contents(before.modelFolder()), Studio::contents(after.modelFolder()));
    }
    EXPECT_FALSE(isThere && succeeded(ended));
}

void runUndisturbed(const std::vector<std::string>& arguments) {
    const Result result = ForkedCommand(arguments).finish();
    if (result.exitCode != 0) throw std::runtime_error(result.err);
}

std::set<std::string> soundsIn(const std::filesystem::path& folder) {
    std::set<std::string> sounds;
    for (const auto& [name, content] : Studio::contents(folder))
        sounds.insert(content);
    return sounds;
}

std::vector<std::string> learnAnew(const Studio& studio) {
    return studio.train(Studio::newSeed);
}

}  // namespace

Undisturbed::Undisturbed() {
    learned.learn();
    Studio studio;
    const Studio::OwnFolders folders = studio.asOwnFolders();
    studio.become(learned);
    oldWeights = Studio::weights(studio.modelFolder());
    runUndisturbed(studio.generate(2));
    variations = soundsIn(studio.output);
    runUndisturbed(studio.audition());
    audition = readText(studio.output / "one.wav");
    runUndisturbed(studio.train(Studio::newSeed));
    newWeights = Studio::weights(studio.modelFolder());
    std::filesystem::remove_all(studio.output);
    runUndisturbed(studio.generate(2));
    newVariations = soundsIn(studio.output);
}

const Undisturbed& Undisturbed::get() {
    static const Undisturbed undisturbed;
    return undisturbed;
}

void Subject::prepare(Studio& studio) const {
    studio.become(Undisturbed::get().learned);
    if (!startsWithModel) std::filesystem::remove_all(studio.modelFolder());
}

void Subject::expectNextRunClearsUp(const Studio& studio) const {
    const Result next = ForkedCommand(arguments(studio)).finish();
    const bool wasRemoved = next.err.find("There is no model named") != std::string::npos;
    EXPECT_TRUE(next.exitCode == 0 || wasRemoved) << "the next run: " << next.err;
    EXPECT_THAT(studio.remains(), ::testing::IsEmpty());
}

const std::vector<Subject>& subjects() {
    static const std::vector<Subject> subjects{
        {"learning", false, learnAnew, checkLearned},
        {"learningAgain", true, learnAnew, checkLearnedAgain},
        {"generating", true, [](const Studio& studio) { return studio.generate(2); }, checkGenerated},
        {"auditioning", true, [](const Studio& studio) { return studio.audition(); }, checkAuditioned},
        {"removing", true, [](const Studio& studio) { return studio.removeModel(); }, checkRemoved}};
    return subjects;
}

const Subject& subjectNamed(std::string_view name) {
    return *std::ranges::find(subjects(), name, &Subject::name);
}

bool endsWithSentence(const Result& result) {
    if (result.err.size() < 2) return false;
    const std::size_t before = result.err.rfind('\n', result.err.size() - 2);
    const std::string last = result.err.substr(before == std::string::npos ? 0 : before + 1);
    constexpr std::string_view program = "quillmere-cli: ";
    constexpr std::size_t shortest = 10;
    return last.starts_with(program) && last.ends_with('\n') && last.size() > program.size() + shortest;
}

}  // namespace quillmere::testing
