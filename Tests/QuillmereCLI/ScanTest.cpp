#include <gtest/gtest.h>

#include <map>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/AudioFixtures.h"
#include "Support/OtherUser.h"

namespace quillmere::testing {
namespace {

class Scan : public CommandTest {
protected:
    [[nodiscard]] Outcome scan(const std::filesystem::path& path,
                               const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"scan", path.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
};

TEST_F(Scan, ReportsTheCorpusForPeople) {
    const Outcome outcome = scan(corpus);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    for (const char* part : {"Struck Bars", "3", "0.75 s", "22050 Hz", "fingerprint", "none yet"})
        EXPECT_NE(outcome.out.find(part), std::string::npos) << part << " in\n" << outcome.out;
}

TEST_F(Scan, ReportsTheCorpusAsOneResult) {
    const Outcome outcome = scan(corpus, {"--json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const cli::JSON result = outcome.event("result");
    EXPECT_EQ(result["corpus"], corpus.string());
    EXPECT_EQ(result["fileCount"], 3);
    EXPECT_EQ(result["unreadable"], 0);
    EXPECT_NEAR(result["totalSeconds"].get<double>(), 0.75, 1e-3);
    EXPECT_EQ(result["sampleRates"]["22050"], 3);
    EXPECT_EQ(result["dominantSampleRate"], 22050);
    EXPECT_NEAR(result["suggestedClipSeconds"].get<double>(), 0.3, 1e-3);
    EXPECT_EQ(result["modelStored"], false);
    EXPECT_EQ(result["files"].size(), 0U);
}

TEST_F(Scan, FindsTheStoredModel) {
    trainModel();
    const cli::JSON result = scan(corpus, {"--json"}).event("result");
    EXPECT_EQ(result["modelStored"], true);
    EXPECT_EQ(result["modelFolder"], modelFolder().string());
    EXPECT_EQ(modelFolder().filename().string(), "Struck Bars-" + result["fingerprint"].get<std::string>());
}

TEST_F(Scan, NamesTheFolderAlikeHoweverItsPathIsWritten) {
    const auto name = [&](const std::filesystem::path& path) {
        return scan(path, {"--json"}).event("result")["modelFolder"].get<std::string>();
    };
    EXPECT_EQ(name(corpus / ""), name(corpus));
    EXPECT_EQ(name(corpus / "."), name(corpus));
    EXPECT_EQ(name(corpus / ".." / "Struck Bars"), name(corpus));
}

TEST_F(Scan, TellsTheFateOfEveryFileThatIsNotUsedAsItIs) {
    for (int i = 0; i < 20; ++i)
        writeWAV(corpus / ("tone" + std::to_string(i) + ".wav"), struckTone(200 + 10 * i, 0.3, 22050), 22050);
    writeText(corpus / "notes.wav", "no audio at all");
    writeWAV(corpus / "quiet.wav", std::vector<float>(4000, 0.0F), 22050);
    writeWAV(corpus / "long.wav", std::vector<float>(22050 * 6, 0.5F), 22050);
    std::filesystem::copy_file(corpus / "one.wav", corpus / "zero.wav");

    const Outcome outcome = scan(corpus, {"--json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const cli::JSON result = outcome.event("result");
    std::map<std::string, cli::JSON> fates;
    for (const cli::JSON& file : result["files"])
        fates[file["path"]] = file;
    ASSERT_EQ(fates.size(), 4U) << outcome.out;
    EXPECT_EQ(fates["notes.wav"]["use"], "unreadable");
    EXPECT_TRUE(fates["notes.wav"]["reason"].get<std::string>().starts_with("Could not read notes.wav: "));
    EXPECT_EQ(fates["quiet.wav"]["use"], "silent");
    EXPECT_EQ(fates["long.wav"]["use"], "cut");
    EXPECT_EQ(fates["long.wav"]["seconds"], 6.0);
    EXPECT_EQ(fates["zero.wav"]["use"], "whole");
    EXPECT_EQ(fates["zero.wav"]["duplicateOf"], "one.wav");
    EXPECT_GT(result["clipSeconds"].get<double>(), 0.25);

    const Outcome human = scan(corpus);
    for (const char* part : {"left out: Could not read notes.wav: ", "left out: silent", "cut at ",
                             " of 6.00 s", "the same file as one.wav"})
        EXPECT_NE(human.out.find(part), std::string::npos) << part << " in\n" << human.out;
}

TEST_F(Scan, TellsOfDamage) {
    const std::string tone = readText(corpus / "one.wav");
    writeText(corpus / "cut.wav", tone.substr(0, tone.size() - 1000));
    std::string stream = readText(audioFixture("cbr-no-xing-mono.mp3"));
    stream.replace(626, 209, 209, '\0');
    writeText(corpus / "hole.mp3", stream);
    std::string lossless = readText(audioFixture("flac16-mono.flac"));
    lossless[1000] = static_cast<char>(lossless[1000] ^ 1);
    writeText(corpus / "hole.flac", lossless);

    std::map<std::string, cli::JSON> fates;
    const cli::JSON result = scan(corpus, {"--json"}).event("result");
    for (const cli::JSON& file : result["files"])
        fates[file["path"]] = file;
    EXPECT_EQ(fates["cut.wav"]["use"], "whole");
    EXPECT_EQ(fates["cut.wav"]["truncated"], true);
    EXPECT_FALSE(fates["cut.wav"].contains("silentSeconds"));
    EXPECT_NEAR(fates["hole.mp3"]["silentSeconds"].get<double>(), 1152 / 44100.0, 1e-9);
    EXPECT_FALSE(fates["hole.mp3"].contains("truncated"));
    EXPECT_EQ(fates["hole.flac"]["reason"], "Could not read hole.flac: it is damaged in the middle");

    const Outcome human = scan(corpus);
    for (const char* part : {"ends before it should", "damaged: 26 ms of silence for lost sound",
                             "left out: Could not read hole.flac: it is damaged in the middle"})
        EXPECT_NE(human.out.find(part), std::string::npos) << part << " in\n" << human.out;
}

TEST_F(Scan, NamesTheFoldersThatItPassesOver) {
    EXPECT_EQ(scan(corpus, {"--json"}).event("result")["passedOver"], cli::JSON::array());
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::create_directory(corpus / "closed");
    std::filesystem::permissions(corpus / "closed", std::filesystem::perms::none);
    const OtherUser user;
    const ThreadLimit ownThreadOnly(1);
    const cli::JSON closed{{"folder", "closed"}, {"reason", "Permission denied"}};
    EXPECT_EQ(scan(corpus, {"--json"}).event("result")["passedOver"], cli::JSON::array({closed}));
    const Outcome human = scan(corpus);
    EXPECT_NE(human.out.find("Not looked into:\n  closed: Permission denied\n"), std::string::npos)
        << human.out;
}

TEST_F(Scan, LooksIntoTheFolderThatThePathNames) {
    std::filesystem::create_directory(folder / "elsewhere");
    std::filesystem::create_directory(corpus / "inner");
    std::filesystem::create_directory_symlink(corpus / "inner", folder / "elsewhere/inner");
    const cli::JSON result = scan(folder / "elsewhere/inner/..", {"--json"}).event("result");
    EXPECT_EQ(result["fileCount"], 3);
    EXPECT_EQ(result["modelFolder"], scan(corpus, {"--json"}).event("result")["modelFolder"]);
}

TEST_F(Scan, FailsOnAMissingFolder) {
    const Outcome outcome = scan(folder / "nowhere");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("quillmere-cli: " + (folder / "nowhere").string() + " is not a folder\n"),
              std::string::npos)
        << outcome.err;
}

TEST_F(Scan, FailsOnAFileInsteadOfAFolder) {
    const Outcome outcome = scan(corpus / "one.wav");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("one.wav is not a folder\n"), std::string::npos) << outcome.err;
}

TEST_F(Scan, FailsOnAnEmptyFolder) {
    std::filesystem::create_directory(folder / "empty");
    const Outcome outcome = scan(folder / "empty", {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.event("result")["fileCount"], 0);
    EXPECT_EQ(outcome.event("error")["message"], "No audio files found in this folder.");
    EXPECT_NE(outcome.err.find("quillmere-cli: No audio files found in this folder.\n"), std::string::npos);
}

TEST_F(Scan, FailsWhenNoFileIsUsableButReportsWhy) {
    const auto useless = folder / "useless";
    writeText(useless / "notes.wav", "no audio at all");
    writeWAV(useless / "quiet.wav", std::vector<float>(4000, 0.0F), 22050);
    const Outcome outcome = scan(useless);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.out.find("notes.wav"), std::string::npos);
    EXPECT_NE(outcome.err.find("quillmere-cli: No usable audio files were found in that folder.\n"),
              std::string::npos)
        << outcome.err;
}

TEST_F(Scan, KeepsNamesWithLineBreaksOnOneLine) {
    writeText(corpus / "two\nlines \"quoted\" ü.wav", "no audio");
    const Outcome outcome = scan(corpus);
    EXPECT_NE(outcome.out.find("two\\nlines \"quoted\" ü.wav"), std::string::npos) << outcome.out;
    const Outcome json = scan(corpus, {"--json"});
    EXPECT_EQ(json.event("result")["files"][0]["path"], "two\nlines \"quoted\" ü.wav");
}

TEST_F(Scan, TakesAFolderNamedLikeACommand) {
    writeSmallCorpus(folder / "train");
    const auto previous = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    const Outcome outcome = runCommand(withModels({"scan", "train"}));
    std::filesystem::current_path(previous);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
}

}  // namespace
}  // namespace quillmere::testing
