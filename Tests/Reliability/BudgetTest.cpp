// Files that promise, or hold, far more than anybody needs, and many files: each within the same memory, time
// and number of open files. The limits are generous; what exceeds them was never meant to end.
//
// QUILLMERE_MANY=N scales the large numbers: 20000 samples and half as many variations with N = 20000.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "Reliability/ForkedCommand.h"
#include "Reliability/Studio.h"
#include "Reliability/Subjects.h"
#include "Support/FLACBytes.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t mebi = 1 << 20;

void limit(__rlimit_resource resource, std::uint64_t most) {
    const rlimit limit{most, most};
    if (::setrlimit(resource, &limit) != 0) ::_exit(99);
}

std::size_t many() {
    constexpr std::size_t some = 600;
    const char* const wanted = std::getenv("QUILLMERE_MANY");
    return wanted == nullptr ? some : static_cast<std::size_t>(std::atoi(wanted));
}

// In the child. Memory that it writes to, stacks of its threads included: half a gibibyte for all samples
// that are decoded at once, and a small network. A hundredth of a second for each of many files on top of a
// minute, of a program as users have it.
void keepTheBudget() {
    limit(RLIMIT_DATA, 768 * mebi);
    limit(RLIMIT_CPU, (60 + many() / 100) * QUILLMERE_SLOWNESS);
    limit(RLIMIT_NOFILE, 64);
}

class BudgetTest : public ::testing::Test {
protected:
    [[nodiscard]] ForkedCommand::Result run(const std::vector<std::string>& arguments) const {
        return ForkedCommand(arguments, keepTheBudget).finish();
    }
    // The command does its work or says why not.
    void expectAnswer(const std::vector<std::string>& arguments) const {
        const auto result = run(arguments);
        EXPECT_TRUE(result.exitCode == 0 || (result.exitCode == 1 && endsWithSentence(result)))
            << arguments.front() << ": " << result.exitCode << " " << result.err;
    }
    [[nodiscard]] std::vector<std::string> scan() const {
        return {"scan", studio.corpus.string(), "--models", studio.models.string()};
    }
    // The corpus with this sample in it.
    void expectSampleWithinBudget(const std::string& name, const std::string& bytes,
                                  std::uintmax_t size = 0) const {
        writeText(studio.corpus / name, bytes);
        if (size > 0) fs::resize_file(studio.corpus / name, size);
        expectAnswer(scan());
        expectAnswer(studio.train(Studio::newSeed));
    }

    Studio studio;

private:
    const Studio::OwnFolders folders_ = studio.asOwnFolders();
};

TEST_F(BudgetTest, IsEnoughForOrdinaryWork) {
    studio.learn();
    EXPECT_EQ(run(studio.train(Studio::newSeed)).exitCode, 0);
    EXPECT_EQ(run(studio.generate(2)).exitCode, 0);
}

TEST_F(BudgetTest, IsNotEndless) {
    const auto result =
        ForkedCommand(studio.train(Studio::newSeed), [] { limit(RLIMIT_DATA, 8 * mebi); }).finish();
    EXPECT_NE(result.exitCode, 0);
}

TEST_F(BudgetTest, HoldsForASlowSampleBesideFastOnes) {
    const std::string fast = readText(studio.corpus / "one.wav");
    std::string header = fast;
    const std::uint32_t rate = 768000;
    header.replace(24, 4, reinterpret_cast<const char*>(&rate), 4);
    for (const char* const name : {"one.wav", "two.wav", "three.wav"})
        writeText(studio.corpus / name, header);
    expectSampleWithinBudget("slow.flac", constantFLAC(1000, 65535 * 10));
}

TEST_F(BudgetTest, HoldsForHoursOfOneLevel) {
    constexpr std::uint64_t ninetyMinutes = std::uint64_t{44100} * 60 * 90;  // 908 MiB as samples
    expectSampleWithinBudget("level.flac", constantFLAC(44100, ninetyMinutes));
}

TEST_F(BudgetTest, HoldsForZerosWithoutEndBehindTheSound) {
    expectSampleWithinBudget("endless.wav", readText(studio.corpus / "one.wav"), 65536 * mebi);
}

TEST_F(BudgetTest, HoldsForASoundThatClaimsTheLargestSize) {
    std::string claims = readText(studio.corpus / "one.wav");
    claims.replace(40, 4, "\xF0\xFF\xFF\xFF");
    expectSampleWithinBudget("large.wav", claims, 256 * mebi);
}

TEST_F(BudgetTest, HoldsForFoldersInFoldersInFolders) {
    fs::path inner = studio.corpus;
    constexpr int deep = 900;
    for (int i = 0; i < deep; ++i)
        inner /= "d";
    fs::create_directories(inner);
    expectAnswer(scan());
    expectAnswer(studio.train(Studio::newSeed));
}

TEST_F(BudgetTest, HoldsForAModelOfNothingButBrackets) {
    studio.learn();
    writeText(studio.modelFolder() / "model.json", std::string(2 * mebi, '['));
    expectAnswer(studio.generate(1));
    expectAnswer({"models", "--models", studio.models.string()});
}

TEST_F(BudgetTest, HoldsForARecipeWithoutEnd) {
    const fs::path file = studio.folder / "endless.jsonl";
    writeText(file, "{");
    fs::resize_file(file, 4096 * mebi);
    expectAnswer({"recipe", file.string()});
}

TEST_F(BudgetTest, HoldsForManySamples) {
    const std::string bytes = readText(studio.corpus / "one.wav");
    for (std::size_t i = 0; i < many(); ++i)
        writeText(studio.corpus / (std::to_string(i) + ".wav"), bytes);
    EXPECT_EQ(run(scan()).exitCode, 0);
    EXPECT_EQ(run(studio.train(Studio::newSeed)).exitCode, 0);
}

// As many long samples among short ones as leave the learned length short: 0.9 GB of samples, 0.2 GB of
// images.
TEST_F(BudgetTest, HoldsForLongSamplesAmongManyShortOnes) {
    constexpr int rate = 384000;
    constexpr int longOnes = 150;
    constexpr int shortOnes = 10 * longOnes;
    fs::remove_all(studio.corpus);
    fs::create_directories(studio.corpus);
    for (int i = 0; i < longOnes + shortOnes; ++i)
        writeText(studio.corpus / (std::to_string(i) + ".flac"),
                  constantFLAC(rate, i < longOnes ? rate * 4 : rate / 20));
    const auto result =
        run({"train", studio.corpus.string(), "--steps", "1", "--batch-size", "1", "--latent-dim", "2",
             "--analysis", "percussive", "--models", studio.models.string()});
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST_F(BudgetTest, HoldsForManyVariations) {
    studio.learn();
    const auto result = run(studio.generate(static_cast<int>(many() / 2)));
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(entriesIn(studio.output), many() / 2);
}

}  // namespace
}  // namespace quillmere::testing
