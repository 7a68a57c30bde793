#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCore/Network/Device/ChosenDevice.h"
#include "QuillmereCore/Origin/RecipeLookup.h"

namespace quillmere::cli {

// One file to make from a recipe.
struct RecipeOrder {
    std::filesystem::path source;  // where the recipe comes from
    Recipe recipe;
};

// The models that recipes need, each opened once.
class KnownModels {
public:
    KnownModels(std::filesystem::path root, network::ChosenDevice& device)
        : root_(std::move(root)), device_(device) {}

    // With the sounds that the recipe needs for detail. Throws Failure that names the source where there is
    // no model for it.
    SampleGenerator& of(const RecipeOrder& order, const CancelFlag& cancel);

private:
    std::unique_ptr<SampleGenerator> open(const RecipeOrder& order, const CancelFlag& cancel);

    std::filesystem::path root_;
    network::ChosenDevice& device_;
    std::map<std::tuple<std::string, bool, DetailBasis>, std::unique_ptr<SampleGenerator>> generators_;
};

// What is known of the files. Throws Failure for the first of which nothing is.
[[nodiscard]] std::vector<KnownFile> lookUpAll(const std::vector<std::filesystem::path>& files,
                                               const CancelFlag& cancel);

}  // namespace quillmere::cli
