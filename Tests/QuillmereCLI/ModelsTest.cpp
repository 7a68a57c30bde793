#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "Support/OtherUser.h"

namespace quillmere::testing {
namespace {

class Models : public CommandTest {
protected:
    Models() { trainModel(); }

    [[nodiscard]] Outcome list(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"models"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] Outcome remove(const std::string& name) const {
        return runCommand(withModels({"models", "remove", name}));
    }
    [[nodiscard]] std::string name() const { return modelFolder().filename().string(); }
    // As if it had been learned so: without digests that would tell.
    void removeLatents() const {
        std::filesystem::remove(modelFolder() / "SHA256SUMS");
        const auto file = modelFolder() / "model.json";
        cli::JSON manifest = cli::JSON::parse(readText(file));
        manifest["latents"] = cli::JSON::array();
        writeText(file, manifest.dump());
    }
};

TEST_F(Models, ListsWhatIsStoredForPeople) {
    const Outcome outcome = list();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    for (const std::string& part : {name(), corpus.string(), std::string("2 steps"), std::string("1 model,"),
                                    std::string("3 samples"), std::string("analysis")})
        EXPECT_NE(outcome.out.find(part), std::string::npos) << part << " in\n" << outcome.out;
}

TEST_F(Models, ListsWhatIsStoredAsOneResult) {
    const cli::JSON result = list({"--json"}).event("result");
    EXPECT_EQ(result["root"], models.string());
    ASSERT_EQ(result["models"].size(), 1U);
    const cli::JSON& model = result["models"][0];
    EXPECT_EQ(model["name"], name());
    EXPECT_EQ(model["corpusName"], "Struck Bars");
    EXPECT_EQ(model["corpusPath"], corpus.string());
    EXPECT_EQ(model["clipCount"], 3);
    EXPECT_EQ(model["steps"], 2);
    EXPECT_EQ(model["trainedAt"].get<std::string>().size(), 20U);
    EXPECT_TRUE(model["analysis"] == "percussive" || model["analysis"] == "tonal");
    EXPECT_EQ(model["bytes"], std::filesystem::file_size(modelFolder() / "model.json") +
                                  std::filesystem::file_size(modelFolder() / "weights.bin") +
                                  std::filesystem::file_size(modelFolder() / "SHA256SUMS"));
    EXPECT_FALSE(model.contains("remains"));
}

TEST_F(Models, ListsDamagedOnesWithTheReason) {
    const auto weights = modelFolder() / "weights.bin";
    std::filesystem::resize_file(weights, std::filesystem::file_size(weights) - 1);
    EXPECT_NE(list().out.find("damaged   Model weights do not match the saved configuration"),
              std::string::npos)
        << list().out;
    std::filesystem::remove(weights);
    const Outcome outcome = list({"--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.event("result")["models"][0]["damaged"], "weights.bin is missing");
    writeText(modelFolder() / "weights.bin", "");
    writeText(modelFolder() / "model.json", "{\"config\":");
    EXPECT_EQ(list().exitCode, 0);
    EXPECT_NE(list().out.find("damaged"), std::string::npos);
}

TEST_F(Models, ListsOnesWithoutLatentsAsDamaged) {
    removeLatents();
    EXPECT_NE(list({"--json"})
                  .event("result")["models"][0]["damaged"]
                  .get<std::string>()
                  .find("holds no latent vectors"),
              std::string::npos);
}

TEST_F(Models, WithoutLatentsAreNotGeneratedFrom) {
    removeLatents();
    const Outcome outcome =
        runCommand(withModels({"generate", corpus.string(), "--output", (folder / "out").string()}));
    EXPECT_NE(outcome.exitCode, 0);
    EXPECT_NE(outcome.err.find("holds no latent vectors"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("--retrain"), std::string::npos) << outcome.err;
}

TEST_F(Models, PassesOverOtherFoldersAndFiles) {
    std::filesystem::create_directory(models / "empty");
    writeText(models / "note.txt", "hello");
    std::filesystem::create_directory_symlink(modelFolder(), folder / "link");
    EXPECT_EQ(list({"--json"}).event("result")["models"].size(), 1U);
}

TEST_F(Models, AMissingRootIsAnEmptyList) {
    const Outcome outcome = runCommand({"models", "--models", (folder / "nowhere").string()});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("No models"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder / "nowhere"));
}

TEST_F(Models, ARootThatIsAFileFails) {
    writeText(folder / "file", "");
    const Outcome outcome = runCommand({"models", "--models", (folder / "file").string()});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find((folder / "file").string()), std::string::npos) << outcome.err;
}

TEST_F(Models, RemoveDeletesTheFolder) {
    const Outcome outcome = remove(name());
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(Models, RemoveTakesItsOptionsOnEitherSide) {
    const Outcome outcome = runCommand({"models", "--models", models.string(), "remove", name(), "--json"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_TRUE(outcome.event("result").contains("removed"));
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(Models, RemoveDeletesADamagedModelAndLeftoversOfACrash) {
    std::filesystem::remove(modelFolder() / "model.json");
    writeText(modelFolder() / ".quillmere-123-0.tmp", "half");
    EXPECT_EQ(remove(name()).exitCode, 0);
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(Models, RemoveRefusesNamesThatLeadElsewhere) {
    std::filesystem::create_directories(folder / "elsewhere");
    std::filesystem::copy(modelFolder(), folder / "elsewhere" / "copy");
    std::filesystem::create_directory_symlink(folder / "elsewhere" / "copy", models / "link");
    for (const std::string& path :
         {std::string("../elsewhere/copy"), (folder / "elsewhere" / "copy").string(), std::string("."),
          std::string(".."), name() + "/", std::string("link"), std::string(""), std::string("absent")}) {
        const Outcome outcome = remove(path);
        EXPECT_NE(outcome.exitCode, 0) << path;
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "elsewhere" / "copy" / "weights.bin"));
    EXPECT_TRUE(std::filesystem::exists(models / "link"));
}

TEST_F(Models, RemoveRefusesAFolderThatHoldsMore) {
    writeText(modelFolder() / "song.txt", "precious");
    const Outcome outcome = remove(name());
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("other files"), std::string::npos) << outcome.err;
    EXPECT_EQ(entriesIn(modelFolder()), 4U);
}

TEST_F(Models, ListsWhatAKilledProgramLeftAndRemoveDeletesIt) {
    const std::string model = name();
    writeText(models / ("." + model + ".new-7-0") / "weights.bin", "12345");
    writeText(models / ".Toms-2.new-7-0" / "weights.bin", std::string(2500, 'x'));
    const Outcome forPeople = list();
    EXPECT_NE(forPeople.out.find("  remains   5 B left behind"), std::string::npos) << forPeople.out;
    EXPECT_NE(forPeople.out.find("Toms-2\n  damaged   only remains of a model"), std::string::npos)
        << forPeople.out;
    const cli::JSON result = list({"--json"}).event("result");
    ASSERT_EQ(result["models"].size(), 2U);
    EXPECT_EQ(result["models"][0]["name"], model);
    EXPECT_EQ(result["models"][0]["remains"], 5);
    EXPECT_EQ(result["models"][0]["clipCount"], 3);
    EXPECT_EQ(result["models"][1]["name"], "Toms-2");
    EXPECT_EQ(result["models"][1]["remains"], 2500);
    EXPECT_EQ(remove("Toms-2").exitCode, 0);
    EXPECT_EQ(remove(model).exitCode, 0);
    EXPECT_EQ(entriesIn(models), 0U);
}

TEST_F(Models, DoesNotCallDamagedWhatMayNotBeRead) {
    for (const auto& path : {folder.path(), models, modelFolder()})
        std::filesystem::permissions(path, std::filesystem::perms(0755));
    std::filesystem::permissions(modelFolder() / "weights.bin", std::filesystem::perms(0600));
    if (::geteuid() != 0)
        std::filesystem::permissions(modelFolder() / "weights.bin", std::filesystem::perms(0));
    const OtherUser user;
    const Outcome outcome = list({"--json"});
    const cli::JSON model = outcome.event("result")["models"][0];
    EXPECT_FALSE(model.contains("damaged"));
    EXPECT_NE(model["unreadable"].get<std::string>().find("weights.bin: Permission denied"),
              std::string::npos);
    const Outcome generating =
        runCommand(withModels({"generate", corpus.string(), "--output", (folder / "out").string()}));
    EXPECT_EQ(generating.exitCode, 1);
    EXPECT_EQ(generating.err.find("--retrain"), std::string::npos) << generating.err;
}

TEST_F(Models, ThatMayNotBeLookedAtAreNotLearnedAgain) {
    for (const auto& path : {folder.path(), models, corpus})
        std::filesystem::permissions(path, std::filesystem::perms(0755));
    std::filesystem::permissions(modelFolder(), std::filesystem::perms(::geteuid() == 0 ? 0700 : 0));
    {
        const OtherUser user;
        const Outcome outcome = runCommand(trainArguments());
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_NE(outcome.err.find("Permission denied"), std::string::npos) << outcome.err;
        EXPECT_EQ(outcome.err.find("Training"), std::string::npos) << outcome.err;
    }
    std::filesystem::permissions(modelFolder(), std::filesystem::perms(0755));
}

}  // namespace
}  // namespace quillmere::testing
