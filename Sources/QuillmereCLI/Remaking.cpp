#include "QuillmereCLI/Remaking.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

#include "QuillmereCLI/Generating.h"
#include "QuillmereCLI/KnownModels.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Origin/Likeness.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

void noteWithoutEffect(const RemakingOrder& order, const ParameterOptions& parameters, Console& console) {
    if (order.way == RemakingOrder::Way::skin) return;
    parameters.notePlaceless(order.way == RemakingOrder::Way::like
                                 ? tr("--closeness says how far the new ones go.")
                                 : tr("a recipe keeps the place in the model that was drawn."),
                             console);
}

void noteOtherDevice(const Recipe& recipe, const std::string& device, const std::filesystem::path& source,
                     Console& console) {
    if (recipe.device == device) return;
    console.note(tr("Note: {0} was made on another device ({1}); the last bits may differ.",
                    shownPath(source), printable(recipe.device)));
}

double detailOf(const Recipe& recipe, const ParameterOptions& parameters) {
    return parameters.detailWasGiven() ? parameters.detail() : recipe.detail;
}

// What is made of a recipe with these parameters.
Recipe changedRecipe(const KnownFile& known, const Recipe& recipe, const ParameterOptions& parameters,
                     Console& console) {
    Recipe result = recipe;
    result.aesthetics = parameters.changed(recipe.aesthetics, console);
    if (parameters.formatWasGiven()) result.format = parameters.format();
    result.detail = detailOf(recipe, parameters);
    // Another amount is of what is there now.
    if (result.detail != recipe.detail) result.detailBasis = DetailBasis::none;
    if (result.aesthetics == recipe.aesthetics && result.detail == recipe.detail) return result;
    std::vector<std::string> parents;
    if (!known.digests.bytes.empty()) parents.push_back(known.digests.bytes);
    result.lineage = Lineage{.way = "recipe", .parents = std::move(parents), .values = {}};
    return result;
}

std::vector<RecipeOrder> ordersAgain(const std::vector<KnownFile>& files, const ParameterOptions& parameters,
                                     Console& console) {
    std::vector<RecipeOrder> orders;
    for (const KnownFile& known : files) {
        for (const Recipe& recipe : known.recipes)
            orders.push_back({known.file, changedRecipe(known, recipe, parameters, console)});
    }
    return orders;
}

std::string_view rawValue(RemakingOrder::Way way) {
    switch (way) {
        case RemakingOrder::Way::like:
            return "like";
        case RemakingOrder::Way::body:
            return "body";
        case RemakingOrder::Way::skin:
            return "skin";
        case RemakingOrder::Way::again:
            break;
    }
    return "recipe";
}

// Orders for new variations out of the files.
std::vector<RecipeOrder> ordersForNew(const RemakingOrder& order, const std::vector<KnownFile>& files,
                                      const ParameterOptions& parameters, std::uint64_t seed,
                                      KnownModels& models, Console& console, const CancelFlag& cancel) {
    Lineage lineage{.way = std::string(rawValue(order.way)), .parents = {}, .values = {}};
    if (order.way == RemakingOrder::Way::like) lineage.values["closeness"] = order.closeness;
    std::vector<Recipe> known;
    for (const KnownFile& file : files) {
        if (!file.digests.bytes.empty()) lineage.parents.push_back(file.digests.bytes);
        for (const Recipe& recipe : file.recipes) {
            known.push_back(recipe);
            known.back().detail = detailOf(recipe, parameters);
            known.back().detailBasis = DetailBasis::none;        // a new one takes what is there now
            (void)models.of({file.file, known.back()}, cancel);  // each has to fit its model
            if (recipe.model != known.front().model)
                throw Failure("{0} was made with another model than {1}", file.file, files.front().file);
        }
    }
    const Recipe& first = known.front();
    const SampleGenerator& generator = models.of({files.front().file, first}, cancel);
    const ModelMetadata& model = generator.bundle().metadata;
    const RecipeBase base{.corpusName = model.corpusName,
                          .fingerprint = model.fingerprint,
                          .aesthetics = parameters.changed(first.aesthetics, console),
                          .format = parameters.formatWasGiven() ? parameters.format() : first.format,
                          .lineage = lineage};
    const auto originOf = [&](std::int64_t index) {
        if (order.way == RemakingOrder::Way::like)
            return Likeness::around(generator, known, order.closeness, seed, index);
        if (order.way == RemakingOrder::Way::body) return Likeness::sameBody(first, seed, index);
        return Likeness::sameSkin(generator, first, base.aesthetics, seed, index);
    };
    std::vector<RecipeOrder> orders;
    for (std::int64_t index = 0; index < order.count; ++index) {
        orders.push_back({files.front().file, makeRecipe(originOf(index), base)});
        orders.back().recipe.detail = first.detail;
    }
    return orders;
}

// Whether one job can make both.
bool belongTogether(const Recipe& a, const Recipe& b) {
    return a.model == b.model && a.corpusName == b.corpusName && a.aesthetics == b.aesthetics &&
           a.detail == b.detail && a.detailBasis == b.detailBasis && a.format == b.format &&
           a.lineage == b.lineage;
}

JSON resultJSON(const RemakingOrder& order, std::span<const RecipeOrder> orders, std::uint64_t seed,
                const std::vector<GeneratedSample>& files, const ProgressLine& progress) {
    JSON result = makeResult("generate");
    if (order.way != RemakingOrder::Way::again) result["seed"] = seed;
    result["output"] = toJSON(order.output);
    JSON list = filesJSON(files);
    for (std::size_t i = 0; i < orders.size(); ++i) {
        list[i]["source"] = toJSON(orders[i].source);
        list[i]["format"] = rawValue(orders[i].recipe.format);
        list[i]["aesthetics"] = toJSON(orders[i].recipe.aesthetics);
    }
    result["files"] = std::move(list);
    result["seconds"] = progress.timesJSON();
    return result;
}

// Length of the run of orders at the beginning that one job can make.
std::size_t runLength(std::span<const RecipeOrder> orders) {
    const auto other = std::ranges::find_if_not(
        orders, [&](const RecipeOrder& one) { return belongTogether(orders.front().recipe, one.recipe); });
    return static_cast<std::size_t>(other - orders.begin());
}

// Everything that the jobs of one command share.
struct Workplace {
    const RemakingOrder& order;
    const RecipeCarriers& carriers;
    network::ChosenDevice& device;
    ProgressLine& progress;
    GeneratingReport& report;
    Console& console;
    const CancelFlag& cancel;
};

std::vector<GeneratedSample> makeTogether(std::span<const RecipeOrder> orders, SampleGenerator& generator,
                                          const Workplace& place) {
    const Recipe& head = orders.front().recipe;
    GenerationRequest request;
    request.count = std::ssize(orders);
    request.outputDirectory = place.order.output;
    request.aesthetics = head.aesthetics;
    request.detail = head.detail;
    request.format = head.format;
    request.namePrefix = place.order.prefix.value_or(head.corpusName);
    RecipeBase base = recipeBase(place.device, generator.bundle().metadata);
    base.aesthetics = head.aesthetics;
    base.format = head.format;
    base.lineage = head.lineage;
    RecipeKeeper keeper(place.carriers, std::move(base));
    GenerationHooks hooks = keeper.hooks();
    hooks.origin = [&](std::int64_t index) {
        return orders[static_cast<std::size_t>(index)].recipe.origin();
    };
    std::vector<GeneratedSample> files =
        generateFiles(generator, request, hooks, place.report, place.progress, place.console, place.cancel);
    noteJournalProblem(keeper, place.console);
    return files;
}

}  // namespace

void remake(const RemakingOrder& order, const ParameterOptions& parameters, const RecipeOptions& recipes,
            network::ChosenDevice& device, Console& console, const CancelFlag& cancel) {
    noteWithoutEffect(order, parameters, console);
    const bool isNew = order.way != RemakingOrder::Way::again;
    const std::uint64_t seed = parameters.seed();
    const std::vector<KnownFile> known = lookUpAll(order.files, cancel);
    KnownModels models(order.models, device);
    const std::vector<RecipeOrder> orders =
        isNew ? ordersForNew(order, known, parameters, seed, models, console, cancel)
              : ordersAgain(known, parameters, console);
    const std::string here = recipeBase(device, {}).device;
    for (const RecipeOrder& one : orders) {
        (void)models.of(one, cancel);
        if (!isNew) noteOtherDevice(one.recipe, here, one.source, console);
    }
    requireWritableFolder(order.output);

    ProgressLine progress(console);
    GeneratingReport report(progress, std::ssize(orders));
    report.report(0);
    const RecipeCarriers carriers = recipes.carriers(console);
    const Workplace place{order, carriers, device, progress, report, console, cancel};
    std::vector<GeneratedSample> files;
    for (std::span<const RecipeOrder> rest = orders; !rest.empty();) {
        const std::span<const RecipeOrder> together = rest.first(runLength(rest));
        std::ranges::move(makeTogether(together, models.of(together.front(), cancel), place),
                          std::back_inserter(files));
        rest = rest.subspan(together.size());
    }
    progress.finish();
    console.print(isNew ? wroteText(std::ssize(files), order.output)
                        : trCounted(std::ssize(files), "Made {0} file again in {1}:",
                                    "Made {0} files again in {1}:", shownPath(order.output)));
    printFiles(files, console);
    if (isNew) console.print(tr("Seed {0}.", seed));
    console.emit(resultJSON(order, orders, seed, files, progress));
}

}  // namespace quillmere::cli
