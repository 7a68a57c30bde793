#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "Support/Environment.h"
#include "Support/HeadStartFiles.h"
#include "Support/XMLDocument.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class Report : public CommandTest {
protected:
    [[nodiscard]] Outcome report(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"report", corpus.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
};

TEST_F(Report, TellsHowWellAFolderWasLearned) {
    trainModel();
    const Outcome words = report();
    EXPECT_EQ(words.exitCode, 0) << words.err;
    EXPECT_THAT(words.out, HasSubstr("The model has not learned its samples yet"));
    EXPECT_THAT(words.out, HasSubstr("- Learn it longer"));
    EXPECT_THAT(words.out, HasSubstr("Options of 'train' for this: --continue"));
    EXPECT_THAT(words.out, HasSubstr("Farthest off:"));
    const cli::JSON result = report({"--json"}).event("result");
    EXPECT_EQ(result["grade"], "poor");
    EXPECT_EQ(result["clips"].size(), 3U);
    EXPECT_EQ(result["worst"].size(), 3U);
    EXPECT_EQ(result["steps"], 2);
    EXPECT_FALSE(result.contains("heldBack"));
}

TEST_F(Report, NamesTheFilesThatCouldNotBeUsed) {
    writeText(corpus / "words.wav", "no sound");
    trainModel();
    const cli::JSON result = report({"--json"}).event("result");
    ASSERT_EQ(result["files"].size(), 1U);
    EXPECT_EQ(result["files"][0]["name"], "words.wav");
    EXPECT_EQ(result["files"][0]["kind"], "unreadable");
    EXPECT_THAT(report().out, HasSubstr("unreadable  words.wav"));
}

TEST_F(Report, IsAPageOnRequest) {
    trainModel();
    const fs::path page = folder / "report.html";
    const Outcome outcome = report({"--html", page.string(), "--examples", "2", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.event("result")["page"], page.string());
    EXPECT_EQ(XMLDocument(readText(page)).count("//*[local-name()='audio']"), 4U);
    const Outcome lost = report({"--html", (folder / "missing" / "report.html").string()});
    EXPECT_EQ(lost.exitCode, 1);
    EXPECT_THAT(lost.err, HasSubstr("report.html"));
}

TEST_F(Report, HoldsSamplesBackOnRequest) {
    trainModel();
    const Outcome outcome = report({"--hold-back", "--json"});
    EXPECT_EQ(outcome.event("result")["heldBack"]["clips"], 1);
    EXPECT_THAT(report({"--hold-back"}).out, HasSubstr("Held back: 1 sample"));
}

TEST_F(Report, TheTrialBeginsWhereTheModelBegan) {
    const fs::path headStart = folder / "head start";
    writeHeadStart(headStart);
    const EnvironmentVariable variable("QUILLMERE_HEAD_START", headStart.string());
    const std::vector<std::string> train{"train", corpus.string(), "--steps",   "1", "--batch-size",
                                         "1",     "--start",       "head-start"};
    ASSERT_EQ(runCommand(withModels(train)).exitCode, 0);
    const auto heldBackError = [&] {
        return report({"--hold-back", "--json"}).event("result")["heldBack"]["error"];
    };
    const cli::JSON onto = heldBackError();
    ModelBundle fresh = ModelStore::open(modelFolder());
    fresh.metadata.start.reset();
    const ModelBundle learned = ModelStore::open(modelFolder());
    ModelStore::replace(fresh, modelFolder());
    EXPECT_NE(heldBackError(), onto);

    ModelStore::replace(learned, modelFolder());
    fs::remove(headStart / "tonal.base");
    const Outcome outcome = report({"--hold-back"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("tonal.base"));
    EXPECT_EQ(report().exitCode, 0);
}

TEST_F(Report, TheTrialNeedsTheModelThatItBeganFrom) {
    trainModel();
    const fs::path first = modelFolder();
    const fs::path other = folder / "other";
    fs::copy(corpus, other);
    fs::remove(fs::directory_iterator(other)->path());
    const std::vector<std::string> train{
        "train", other.string(),   "--steps", "1",       "--batch-size",           "1", "--latent-dim",
        "4",     "--clip-seconds", "0.1",     "--start", first.filename().string()};
    ASSERT_EQ(runCommand(withModels(train)).exitCode, 0);
    const auto reportOther = [&] {
        return runCommand(withModels({"report", other.string(), "--hold-back"}));
    };
    EXPECT_EQ(reportOther().exitCode, 0) << reportOther().err;
    fs::remove_all(first);
    const Outcome outcome = reportOther();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("that this one was learned onto is no longer there as it was."));
}

TEST_F(Report, NeedsALearnedFolder) {
    const Outcome outcome = report();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("has not been learned"));
}

TEST_F(Report, CanBeCancelled) {
    trainModel();
    EXPECT_EQ(
        runCommandCancelledAt("\"phase\":\"analysing\"", withModels({"report", corpus.string(), "--json"}))
            .exitCode,
        130);
}

}  // namespace
}  // namespace quillmere::testing
