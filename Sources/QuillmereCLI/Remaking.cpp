#include "QuillmereCLI/Remaking.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <span>
#include <tuple>
#include <utility>

#include "QuillmereCLI/Generating.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Origin/Likeness.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

// One file to make again.
struct Order {
    std::filesystem::path source;  // where its recipe comes from
    Recipe recipe;                 // with what is to be different
};

// The parameters that only decide which latent vector is drawn.
bool choosesPlace(const ParameterSpec& spec) {
    return spec.group == ParameterSpec::Group::latent;
}

void noteWithoutEffect(const RemakingOrder& order, const ParameterOptions& parameters, Console& console) {
    if (order.way == RemakingOrder::Way::skin) return;
    const char* const reason =
        order.way == RemakingOrder::Way::like
            ? " changes nothing here: --closeness says how far the new ones go."
            : " changes nothing here: a recipe keeps the place in the model that was drawn.";
    for (const ParameterSpec* const spec : parameters.assigned()) {
        if (choosesPlace(*spec)) {
            console.note("Note: " + std::string(spec->id) + reason);
        }
    }
}

void noteOtherDevice(const Recipe& recipe, const std::string& device, const std::filesystem::path& source,
                     Console& console) {
    if (recipe.device == device) return;
    console.note("Note: " + shownPath(source) + " was made on another device (" + printable(recipe.device) +
                 "); the last bits may differ.");
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

std::vector<KnownFile> lookUpAll(const std::vector<std::filesystem::path>& files, const CancelFlag& cancel) {
    std::vector<KnownFile> all = lookUp(files, cancel);
    for (const KnownFile& known : all) {
        if (!known.problem.empty()) throw Failure(known.problem);
    }
    return all;
}

std::vector<Order> ordersAgain(const std::vector<KnownFile>& files, const ParameterOptions& parameters,
                               Console& console) {
    std::vector<Order> orders;
    for (const KnownFile& known : files) {
        for (const Recipe& recipe : known.recipes)
            orders.push_back({known.file, changedRecipe(known, recipe, parameters, console)});
    }
    return orders;
}

// The models that the orders need.
class Models {
public:
    Models(std::filesystem::path root, network::ChosenDevice& device)
        : root_(std::move(root)), device_(device) {}

    // With the sounds that the order needs for detail.
    SampleGenerator& of(const Order& order, const CancelFlag& cancel) {
        const Recipe& recipe = order.recipe;
        const bool hasDetail = recipe.detail > 0;
        std::unique_ptr<SampleGenerator>& generator =
            generators_[{recipe.model, hasDetail, hasDetail ? recipe.detailBasis : DetailBasis::none}];
        if (!generator) generator = open(order, cancel);
        try {
            requireFit(order.recipe, generator->bundle());
        } catch (const RecipeError& error) {
            throw error.in(order.source);
        }
        return *generator;
    }

private:
    std::unique_ptr<SampleGenerator> open(const Order& order, const CancelFlag& cancel) {
        FoundModel found = findModel(order.recipe, root_, cancel.token());
        if (!found.bundle)
            throw Failure(Text::utf8(order.source) + ": " + missingModelText(order.recipe, found, root_));
        ClipSounds sounds = order.recipe.detail > 0
                                ? learnedSounds(found, order.recipe.detailBasis, cancel.token())
                                : ClipSounds();
        return std::make_unique<SampleGenerator>(std::move(*found.bundle), device_.backend(),
                                                 std::move(sounds));
    }

    std::filesystem::path root_;
    network::ChosenDevice& device_;
    std::map<std::tuple<std::string, bool, DetailBasis>, std::unique_ptr<SampleGenerator>> generators_;
};

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
std::vector<Order> ordersForNew(const RemakingOrder& order, const std::vector<KnownFile>& files,
                                const ParameterOptions& parameters, std::uint64_t seed, Models& models,
                                Console& console, const CancelFlag& cancel) {
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
                throw Failure(Text::utf8(file.file) + " was made with another model than " +
                              Text::utf8(files.front().file));
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
    std::vector<Order> orders;
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

JSON resultJSON(const RemakingOrder& order, std::span<const Order> orders, std::uint64_t seed,
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
std::size_t runLength(std::span<const Order> orders) {
    const auto other = std::ranges::find_if_not(
        orders, [&](const Order& one) { return belongTogether(orders.front().recipe, one.recipe); });
    return static_cast<std::size_t>(other - orders.begin());
}

// Everything that the jobs of one command share.
struct Workplace {
    const RemakingOrder& order;
    const RecipeOptions& recipes;
    network::ChosenDevice& device;
    ProgressLine& progress;
    GeneratingReport& report;
    Console& console;
    const CancelFlag& cancel;
};

std::vector<GeneratedSample> makeTogether(std::span<const Order> orders, SampleGenerator& generator,
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
    RecipeKeeper keeper(place.recipes.carriers(), std::move(base));
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
    Models models(order.models, device);
    const std::vector<Order> orders =
        isNew ? ordersForNew(order, known, parameters, seed, models, console, cancel)
              : ordersAgain(known, parameters, console);
    const std::string here = recipeBase(device, {}).device;
    for (const Order& one : orders) {
        (void)models.of(one, cancel);
        if (!isNew) noteOtherDevice(one.recipe, here, one.source, console);
    }
    requireWritableFolder(order.output);

    ProgressLine progress(console);
    GeneratingReport report(progress, std::ssize(orders));
    report.report(0);
    const Workplace place{order, recipes, device, progress, report, console, cancel};
    std::vector<GeneratedSample> files;
    for (std::span<const Order> rest = orders; !rest.empty();) {
        const std::span<const Order> together = rest.first(runLength(rest));
        std::ranges::move(makeTogether(together, models.of(together.front(), cancel), place),
                          std::back_inserter(files));
        rest = rest.subspan(together.size());
    }
    progress.finish();
    console.print(isNew ? "Wrote " + counted(std::ssize(files), "variation", "variations") + " to " +
                              shownPath(order.output) + ":"
                        : "Made " + counted(std::ssize(files), "file", "files") + " again in " +
                              shownPath(order.output) + ":");
    printFiles(files, console);
    if (isNew) console.print("Seed " + std::to_string(seed) + ".");
    console.emit(resultJSON(order, orders, seed, files, progress));
}

}  // namespace quillmere::cli
