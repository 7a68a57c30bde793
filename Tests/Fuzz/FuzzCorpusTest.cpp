// The inputs that the fuzzer begins with, and those it has found something with, in every build.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "Fuzz/FuzzTargets.h"
#include "Support/TempFolder.h"

namespace quillmere::testing {
namespace {

struct Target {
    const char* name;  // and of its folder
    void (*run)(fuzz::Bytes);
};

class FuzzCorpusTest : public ::testing::TestWithParam<Target> {
protected:
    static std::vector<std::string> inputsIn(const std::filesystem::path& folder) {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            files.push_back(entry.path());
        std::ranges::sort(files);
        std::vector<std::string> inputs;
        for (const std::filesystem::path& file : files)
            inputs.push_back(readText(file));
        return inputs;
    }
    static std::vector<std::string> inputs() {
        return inputsIn(std::filesystem::path(QUILLMERE_TESTS_DIR) / "Fuzz/Corpus" / GetParam().name);
    }
    static void run(const std::string& input) { GetParam().run(bytesOf(input)); }
};

INSTANTIATE_TEST_SUITE_P(Targets, FuzzCorpusTest,
                         ::testing::Values(Target{"audio", fuzz::audio}, Target{"model", fuzz::model},
                                           Target{"parameters", fuzz::parameters},
                                           Target{"recipes", fuzz::recipes}, Target{"names", fuzz::names},
                                           Target{"catalogues", fuzz::catalogues}),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(FuzzCorpusTest, EveryInputIsAnswered) {
    const std::vector<std::string> all = inputs();
    EXPECT_GE(all.size(), 3U);
    for (const std::string& input : all)
        run(input);
}

TEST_P(FuzzCorpusTest, EveryInputIsAnsweredWhenItIsCutShort) {
    constexpr std::size_t cuts = 40;  // of each
    for (const std::string& input : inputs()) {
        const std::size_t step = std::max<std::size_t>(1, input.size() / cuts);
        for (std::size_t length = 0; length < input.size(); length += step)
            run(input.substr(0, length));
    }
}

TEST_P(FuzzCorpusTest, EveryInputIsAnsweredWithOneByteChanged) {
    constexpr std::size_t changes = 40;  // of each
    for (std::string input : inputs()) {
        const std::size_t step = std::max<std::size_t>(1, input.size() / changes);
        for (std::size_t place = 0; place < input.size(); place += step) {
            const char before = input[place];
            for (const char changed : {'\0', '\x7F', '\xFF'}) {
                input[place] = changed;
                run(input);
            }
            input[place] = before;
        }
    }
}

}  // namespace
}  // namespace quillmere::testing
