#pragma once

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelStore.h"
#include "Reliability/ForkedCommand.h"
#include "Support/Environment.h"
#include "Support/SmallCorpus.h"
#include "Support/TempFolder.h"

namespace quillmere::testing {

// In memory where there is such a folder: thousands of runs force their files to the disk.
inline std::filesystem::path fastFolder() {
    const std::filesystem::path inMemory = "/dev/shm";
    return ::access(inMemory.c_str(), W_OK | X_OK) == 0 ? inMemory
                                                        : std::filesystem::path(::testing::TempDir());
}

// All that a user's commands touch, in one folder: samples, models, what is generated, and the journal.
class Studio {
public:
    // The model of a studio that is used has random weights of this seed, so that models can be told apart.
    static constexpr int oldSeed = 1;
    static constexpr int newSeed = 2;

    Studio() {
        writeSmallCorpus(corpus);
        std::filesystem::create_directories(models);
        std::filesystem::create_directories(output);
    }

    [[nodiscard]] std::vector<std::string> train(int seed, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"train",
                                           corpus.string(),
                                           "--steps",
                                           "1",
                                           "--batch-size",
                                           "1",
                                           "--latent-dim",
                                           "2",
                                           "--clip-seconds",
                                           "0.05",
                                           "--retrain",
                                           "--seed",
                                           std::to_string(seed),
                                           "--models",
                                           models.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    [[nodiscard]] std::vector<std::string> generate(int count) const {
        return {"generate", corpus.string(),
                "--output", output.string(),
                "--models", models.string(),
                "--count",  std::to_string(count),
                "--seed",   "9"};
    }
    [[nodiscard]] std::vector<std::string> audition() const {
        return {"audition", corpus.string(), "--output", (output / "one.wav").string(),
                "--models", models.string(), "--seed",   "9"};
    }
    [[nodiscard]] std::vector<std::string> removeModel() const {
        return {"models", "remove", modelFolder().filename().string(), "--models", models.string()};
    }

    // Where the corpus's model is or would be.
    [[nodiscard]] std::filesystem::path modelFolder() const { return models / ("corpus-" + fingerprint_); }
    // Learns the corpus with the old seed, which tells where its model is.
    void learn() {
        const auto result = ForkedCommand(train(oldSeed)).finish();
        if (result.exitCode != 0) throw std::runtime_error(result.err);
        fingerprint_ = std::filesystem::directory_iterator(models)->path().filename().string().substr(7);
    }

    // Everything becomes as it is in another studio.
    void become(const Studio& other) {
        fingerprint_ = other.fingerprint_;
        for (const auto& sample : std::filesystem::directory_iterator(other.corpus))
            std::filesystem::last_write_time(corpus / sample.path().filename(), sample.last_write_time());
        for (const auto& [mine, its] : {std::pair(models, other.models), std::pair(output, other.output),
                                        std::pair(data, other.data)}) {
            std::filesystem::remove_all(mine);
            if (std::filesystem::exists(its))
                std::filesystem::copy(its, mine, std::filesystem::copy_options::recursive);
        }
    }

    // What programs leave that are killed: names that no user gave or sees.
    [[nodiscard]] std::vector<std::string> remains() const {
        std::vector<std::string> remains;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path())) {
            if (entry.path().filename().string().starts_with('.')) remains.push_back(entry.path().string());
        }
        return remains;
    }

    // The weights of the model if it is whole. Throws what opening it throws.
    [[nodiscard]] static std::string weights(const std::filesystem::path& modelFolder) {
        return ModelStore::weightsBlob(ModelStore::open(modelFolder).weights);
    }

    // The files below a folder, by their names.
    [[nodiscard]] static std::map<std::string, std::string> contents(const std::filesystem::path& place) {
        std::map<std::string, std::string> contents;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(place)) {
            if (entry.is_regular_file())
                contents[entry.path().lexically_relative(place).string()] = readText(entry.path());
        }
        return contents;
    }

    const TempFolder folder{fastFolder()};
    const std::filesystem::path corpus = folder / "corpus";
    const std::filesystem::path models = folder / "models";
    const std::filesystem::path output = folder / "output";
    const std::filesystem::path data = folder / "data";
    const std::filesystem::path preferences = folder / "preferences";
    const std::filesystem::path journal = data / "Quillmere" / "journal.jsonl";

    // While it lives, the commands' journal and preferences are this studio's.
    struct OwnFolders {
        EnvironmentVariable data, preferences;
    };
    [[nodiscard]] OwnFolders asOwnFolders() const {
        return {{"XDG_DATA_HOME", data.string()}, {"XDG_CONFIG_HOME", preferences.string()}};
    }

private:
    std::string fingerprint_;
};

}  // namespace quillmere::testing
