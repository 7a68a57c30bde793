#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/Console.h"
#include "QuillmereCore/Network/Device/ChosenDevice.h"
#include "QuillmereCore/Origin/RecipeKeeper.h"
#include "QuillmereCore/Origin/RecipeLookup.h"

// What the commands that write or read recipes have in common.
namespace quillmere::cli {

// Where the recipes of new files go: --no-journal, --embed-recipe and --recipes FILE.jsonl.
class RecipeOptions {
public:
    void addTo(CLI::App& app);
    // The journal is none of them where the user wants none; console hears when that cannot be told.
    [[nodiscard]] RecipeCarriers carriers(Console& console) const;

private:
    bool noJournal_ = false;
    bool embedded_ = false;
    std::filesystem::path document_;
};

// What all files of a job on that device and model have in common.
[[nodiscard]] RecipeBase recipeBase(network::ChosenDevice& device, const ModelMetadata& model);

// Says so when the journal could not be written.
void noteJournalProblem(const std::optional<Message>& problem, Console& console);
void noteJournalProblem(const RecipeKeeper& keeper, Console& console);

// The user's own journal; nothing for a user without a home directory.
[[nodiscard]] std::optional<Journal> ownJournal();

// What is known of the files.
[[nodiscard]] std::vector<KnownFile> lookUp(const std::vector<std::filesystem::path>& files,
                                            const CancelFlag& cancel);

// "62 % one.wav and 38 % two.wav".
[[nodiscard]] std::string blendText(const Recipe& recipe);

// A positional FILE..., or an option of that name: one path or more.
CLI::Option* addFiles(CLI::App& app, const std::string& name, std::vector<std::filesystem::path>& target,
                      const std::string& help);

}  // namespace quillmere::cli
