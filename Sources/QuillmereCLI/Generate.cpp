#include <memory>
#include <optional>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/DetailReport.h"
#include "QuillmereCLI/Generating.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ParameterOptions.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Remaking.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Origin/Likeness.h"
#include "QuillmereCore/Util/Paths.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

constexpr double closenessToFiles = 0.7;  // unless another one is given
constexpr double closenessToPlace = 1;

struct GenerateOptions {
    CorpusOption corpus;
    std::vector<std::filesystem::path> recipeFiles;
    std::vector<std::filesystem::path> likedFiles;
    std::optional<double> closeness;
    std::filesystem::path body;
    std::filesystem::path skin;
    std::optional<MapPlace> place;
    std::filesystem::path output;
    std::int64_t count = 10;
    std::int64_t first = 0;  // 0: none is given
    ParameterOptions parameters;
    std::string prefix;
    RecipeOptions recipes;
    ComputeOptions compute;
    ModelsOption models;
    bool json = false;

    void addTo(CLI::App& app) {
        CLI::Option* const folder = corpus.addTo(app)->required(false);
        addPath(app, "--output", output, tr("Folder for the new files"))->type_name("DIR")->required();
        CLI::Option* const howMany =
            addWholeNumber(app, "--count", count, {1, 1'000'000}, tr("How many variations"))
                ->default_str(std::to_string(count));
        constexpr std::int64_t mostVariations = 1'000'000'000'000;
        CLI::Option* const start =
            addWholeNumber(app, "--first", first, {1, mostVariations},
                           tr("Number of the first variation, for a part of a larger job"));
        parameters.addTo(app);
        CLI::Option* const seed = app.get_option("--seed");
        start->needs(seed);
        CLI::Option* const recipe =
            addFiles(app, "--recipe", recipeFiles,
                     tr("Make these files again, or those of these recipes; --set changes them"));
        CLI::Option* const like =
            addFiles(app, "--like", likedFiles, tr("Make new variations around these files"));
        CLI::Option* const at = addPlace(
            app, "--at", place, tr("Make variations of this place on the map of the samples; see 'map'"));
        addReal(app, "--closeness", closeness, {0, 1},
                tr("How close to the files of --like or to the place: 1 between or at them, 0 far and wide"))
            ->default_str(tr("0.7; 1 with --at"));
        CLI::Option* const sameBody =
            addPath(app, "--body", body, tr("Make variations at the place of this file, all else drawn anew"))
                ->type_name("FILE");
        CLI::Option* const sameSkin =
            addPath(app, "--skin", skin, tr("The reverse: other places, all else drawn as for this file"))
                ->type_name("FILE");
        for (CLI::Option* const other : {folder, howMany, start, seed})
            recipe->excludes(other);
        const std::vector<CLI::Option*> sources{folder, recipe, like, sameBody, sameSkin};
        for (CLI::Option* const source : sources) {
            if (source != folder) source->excludes(start);
            for (CLI::Option* const other : sources) {
                if (other != source) source->excludes(other);
            }
        }
        for (CLI::Option* const file : {recipe, like, sameBody, sameSkin})
            at->excludes(file);
        addPrefix(app, prefix);
        recipes.addTo(app);
        compute.addTo(app);
        models.addTo(app);
        addJSON(app, json);
    }

    void check() const {
        if (!isFromFiles() && !corpus.isGiven()) throw CLI::RequiredError("FOLDER");
        if (closeness && likedFiles.empty() && !place)
            throwUsageError("--closeness", tr("says something only with --like or --at"));
    }

    // Whether known files are to be worked from, and not a corpus.
    [[nodiscard]] bool isFromFiles() const {
        return !recipeFiles.empty() || !likedFiles.empty() || !body.empty() || !skin.empty();
    }
};

JSON resultJSON(const GenerationRequest& request, const std::vector<GeneratedSample>& files,
                const ProgressLine& progress) {
    JSON result = makeResult("generate");
    result["seed"] = request.seed;
    if (request.first) result["first"] = *request.first + 1;
    result["output"] = toJSON(request.outputDirectory);
    result["format"] = rawValue(request.format);
    result["aesthetics"] = toJSON(request.aesthetics);
    result["files"] = filesJSON(files);
    result["seconds"] = progress.timesJSON();
    return result;
}

void printResult(const GenerationRequest& request, const std::vector<GeneratedSample>& files,
                 bool seedWasGiven, const ProgressLine& progress, Console& console) {
    console.print(wroteText(request.count, request.outputDirectory));
    printFiles(files, console);
    console.print(seedText(request.seed, seedWasGiven));
    console.print(progress.tookText());
}

// Draws from around the place, if one is given, and notes it in what the files have in common.
class PlaceDrawing {
public:
    PlaceDrawing(const GenerateOptions& options, Console& console)
        : place_(options.place), closeness_(options.closeness.value_or(closenessToPlace)) {
        if (place_) options.parameters.notePlaceless(tr("--at gives the place in the model."), console);
    }
    void noteIn(RecipeBase& base) const {
        if (!place_) return;
        base.lineage = Lineage{.way = "place",
                               .parents = {},
                               .values = {{"x", place_->x}, {"y", place_->y}, {"closeness", closeness_}}};
    }
    void addTo(JSON& result) const {
        if (!place_) return;
        result["at"] = {{"x", place_->x}, {"y", place_->y}};
        result["closeness"] = closeness_;
    }
    // generator must outlive the hook.
    void hook(GenerationHooks& hooks, const SampleGenerator& generator, std::uint64_t seed,
              const CancelFlag& cancel) const {
        if (!place_) return;
        const ModelBundle& bundle = generator.bundle();
        const auto map = std::make_shared<const LatentMap>(
            bundle.latents, static_cast<std::size_t>(bundle.config.latentDim), cancel.token());
        hooks.origin = [&generator, map, seed, place = *place_, closeness = closeness_](std::int64_t index) {
            return Likeness::atPlace(generator, *map, place, closeness, seed, index);
        };
    }

private:
    std::optional<MapPlace> place_;
    double closeness_;
};

void generateFromCorpus(const GenerateOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    GenerationRequest request;
    request.count = options.count;
    request.outputDirectory = Paths::plain(options.output);
    request.aesthetics = options.parameters.aesthetics(console);
    request.detail = options.parameters.detail();
    request.seed = options.parameters.seed();
    request.format = options.parameters.format();
    if (!options.prefix.empty()) request.namePrefix = options.prefix;
    if (options.first > 0) request.first = options.first - 1;

    const PlaceDrawing place(options, console);
    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    requireWritableFolder(request.outputDirectory);
    ModelBundle bundle = loadOrLearn(corpus, compute.device(), console, progress, cancel);
    const ClipSounds sounds = soundsFor(request.detail, bundle, corpus);
    RecipeBase base = recipeBase(compute.device(), bundle.metadata);
    base.aesthetics = request.aesthetics;
    base.format = request.format;
    place.noteIn(base);
    RecipeKeeper keeper(options.recipes.carriers(console), std::move(base));
    SampleGenerator generator(std::move(bundle), compute.device().backend(), sounds);
    GeneratingReport report(progress, request.count);
    report.report(0);
    GenerationHooks hooks = keeper.hooks();
    place.hook(hooks, generator, request.seed, cancel);
    const auto files = generateFiles(generator, request, hooks, report, progress, console, cancel);
    progress.finish();
    noteJournalProblem(keeper, console);
    DetailReport detail(request.detail, sounds);
    for (const GeneratedSample& file : files)
        detail.count(file.origin);
    printResult(request, files, options.parameters.seedWasGiven(), progress, console);
    detail.print(console);
    JSON result = resultJSON(request, files, progress);
    place.addTo(result);
    detail.addTo(result);
    console.emit(result);
}

// What is to be made, and of which files.
RemakingOrder orderOf(const GenerateOptions& options) {
    using Way = RemakingOrder::Way;
    RemakingOrder order;
    order.count = options.count;
    order.closeness = options.closeness.value_or(closenessToFiles);
    if (!options.likedFiles.empty()) {
        order.way = Way::like;
        order.files = options.likedFiles;
    } else if (!options.body.empty()) {
        order.way = Way::body;
        order.files = {options.body};
    } else if (!options.skin.empty()) {
        order.way = Way::skin;
        order.files = {options.skin};
    } else {
        order.files = options.recipeFiles;
    }
    return order;
}

void generateFromFiles(const GenerateOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    RemakingOrder order = orderOf(options);
    order.output = Paths::plain(options.output);
    order.models = options.models.root();
    if (!options.prefix.empty()) order.prefix = options.prefix;
    remake(order, options.parameters, options.recipes, compute.device(), console, cancel);
}

}  // namespace

void addGenerate(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<GenerateOptions>();
    CLI::App* const command =
        app.add_subcommand("generate", tr("Write new samples; learns the folder first if need be"));
    options->addTo(*command);
    command->callback([options, &invocation] {
        options->check();
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            if (options->isFromFiles()) {
                generateFromFiles(*options, console, cancel);
            } else {
                generateFromCorpus(*options, console, cancel);
            }
        };
    });
}

}  // namespace quillmere::cli
