#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/Console.h"
#include "QuillmereCLI/ParameterOptions.h"
#include "QuillmereCLI/RecipeOptions.h"

namespace quillmere::cli {

// Files to be made again from their recipes.
struct RemakingOrder {
    std::vector<std::filesystem::path> files;  // sounds with a known recipe, or documents of recipes
    std::filesystem::path output;              // folder
    std::filesystem::path models;              // root
    std::optional<std::string> prefix;         // absent: the corpus's name of each recipe
};

// Writes them in their order, each with its own latent vector and random numbers; parameters says what is to
// be different. Throws Failure that names the file that cannot be made again, before anything is written.
void remake(const RemakingOrder& order, const ParameterOptions& parameters, const RecipeOptions& recipes,
            network::ChosenDevice& device, Console& console, const CancelFlag& cancel);

}  // namespace quillmere::cli
