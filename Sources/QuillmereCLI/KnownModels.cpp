#include "QuillmereCLI/KnownModels.h"

#include <utility>

#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {

SampleGenerator& KnownModels::of(const RecipeOrder& order, const CancelFlag& cancel) {
    const Recipe& recipe = order.recipe;
    const bool hasDetail = recipe.detail > 0;
    std::unique_ptr<SampleGenerator>& generator =
        generators_[{recipe.model, hasDetail, hasDetail ? recipe.detailBasis : DetailBasis::none}];
    if (!generator) generator = open(order, cancel);
    try {
        requireFit(recipe, generator->bundle());
    } catch (const RecipeError& error) {
        throw error.in(order.source);
    }
    return *generator;
}

std::unique_ptr<SampleGenerator> KnownModels::open(const RecipeOrder& order, const CancelFlag& cancel) {
    FoundModel found = findModel(order.recipe, root_, cancel.token());
    if (!found.bundle) throw Failure("{0}: {1}", order.source, missingModelText(order.recipe, found, root_));
    ClipSounds sounds = order.recipe.detail > 0
                            ? learnedSounds(found, order.recipe.detailBasis, cancel.token())
                            : ClipSounds();
    return std::make_unique<SampleGenerator>(std::move(*found.bundle), device_.backend(), std::move(sounds));
}

std::vector<KnownFile> lookUpAll(const std::vector<std::filesystem::path>& files, const CancelFlag& cancel) {
    std::vector<KnownFile> all = lookUp(files, cancel);
    for (const KnownFile& known : all) {
        if (!known.problem.empty()) throw Failure(known.problem);
    }
    return all;
}

}  // namespace quillmere::cli
