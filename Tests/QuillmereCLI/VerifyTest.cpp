#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Audio/AudioIO.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class Verify : public CommandTest {
protected:
    Verify() {
        trainModel();
        const Outcome made = runCommand(withModels(
            {"generate", corpus.string(), "--output", output.string(), "--seed", "5", "--count", "3"}));
        EXPECT_EQ(made.exitCode, 0) << made.err;
    }

    [[nodiscard]] Outcome verify(std::vector<std::string> paths, const std::string& more = {}) const {
        paths.insert(paths.begin(), "verify");
        if (!more.empty()) paths.push_back(more);
        return runCommand(withModels(paths));
    }
    [[nodiscard]] std::string file(int number) const {
        return (output / ("Struck_Bars_var_000" + std::to_string(number) + ".wav")).string();
    }
};

TEST_F(Verify, SucceedsWhereEveryFileIsAsMade) {
    fs::create_directories(output / "deep");
    AudioIO::write(AudioIO::readMono(file(3)).samples, output / "deep" / "float.wav", 22050,
                   OutputFormat::wav32float);
    const Outcome words = verify({output.string()});
    EXPECT_EQ(words.exitCode, 0) << words.err;
    EXPECT_THAT(words.out, HasSubstr(file(1) + ": same bytes"));
    EXPECT_THAT(words.out, HasSubstr("float.wav: same samples in another container"));
    EXPECT_THAT(words.out, HasSubstr("4 files are as made, 0 are not, 0 files are unknown."));
    const Outcome outcome = verify({file(1), file(2)}, "--json");
    const cli::JSON result = outcome.event("result");
    EXPECT_EQ(result["counts"], (cli::JSON{{"sameBytes", 2}}));
    EXPECT_EQ(result["files"][1]["path"], file(2));
    EXPECT_EQ(result["files"][1]["verdict"], "sameBytes");
    EXPECT_EQ(result["files"][1]["device"], "cpu");
}

TEST_F(Verify, ForeignSoundsFailOnlyWhereTheyAreNamed) {
    fs::copy_file(corpus / "one.wav", output / "one.wav");
    writeText(output / ".hidden.wav", "no sound");
    writeText(output / "notes.txt", "no sound");
    const Outcome byFolder = verify({output.string()});
    EXPECT_EQ(byFolder.exitCode, 0) << byFolder.err;
    EXPECT_THAT(byFolder.out, HasSubstr("3 files are as made, 0 are not, 1 file is unknown."));
    const Outcome named = verify({(output / "one.wav").string(), file(1)});
    EXPECT_EQ(named.exitCode, 1);
    EXPECT_THAT(named.err, HasSubstr("1 file is not what the recipe gives."));
}

TEST_F(Verify, FailsForWhatCannotBeMadeAgain) {
    fs::remove_all(models);
    const Outcome outcome = verify({output.string()}, "--json");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.event("result")["counts"], (cli::JSON{{"modelMissing", 3}}));
    EXPECT_EQ(outcome.event("error")["message"], "3 files are not what the recipe gives.");
}

TEST_F(Verify, NamesWhatCannotBeRead) {
    writeText(folder / "noise.wav", "no sound");
    writeText(folder / "recipe.json", "{}");
    for (const std::string& path : {(folder / "noise.wav").string(), (folder / "recipe.json").string(),
                                    (folder / "missing.wav").string()}) {
        const Outcome outcome = verify({path});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_THAT(outcome.out, HasSubstr(path + ": cannot be made again: ")) << outcome.out;
    }
}

TEST_F(Verify, CanBeCancelled) {
    const Outcome outcome =
        runCommandCancelledAt("\"phase\":\"verifying\"",
                              withModels({"verify", file(1), (folder / "missing.wav").string(), "--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
}

}  // namespace
}  // namespace quillmere::testing
