#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/Console.h"
#include "QuillmereCLI/ParameterOptions.h"
#include "QuillmereCLI/RecipeOptions.h"

namespace quillmere::cli {

// Files to be made out of known ones.
struct RemakingOrder {
    enum class Way {
        again,  // each as it was
        like,   // new ones around all of them (Likeness)
        body,   // the first one's place, with another skin
        skin,   // the first one's skin, at another place
    };
    Way way = Way::again;
    std::vector<std::filesystem::path> files;  // sounds with a known recipe, or documents of recipes
    std::int64_t count = 0;                    // of new ones
    double closeness = 0;                      // of those around others
    std::filesystem::path output;              // folder
    std::filesystem::path models;              // root
    std::optional<std::string> prefix;         // absent: the corpus's name of each recipe
};

// Writes them in their order; parameters says what is to be different from the recipes, for new ones from the
// first, and gives their seed. Throws Failure that names the file that cannot be made again, before anything
// is written.
void remake(const RemakingOrder& order, const ParameterOptions& parameters, const RecipeOptions& recipes,
            network::ChosenDevice& device, Console& console, const CancelFlag& cancel);

}  // namespace quillmere::cli
