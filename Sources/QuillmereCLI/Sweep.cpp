#include "QuillmereCore/Generate/Sweep.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/DetailReport.h"
#include "QuillmereCLI/Generating.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ParameterOptions.h"
#include "QuillmereCLI/PictureOption.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Generate/SoundFile.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Picture/ContactSheet.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Paths.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::int64_t mostPoints = 1000;

struct SweepOptions {
    CorpusOption corpus;
    fs::path output;
    ParameterOptions parameters;
    std::string prefix;
    PictureOption picture;
    RecipeOptions recipes;
    ComputeOptions compute;
    ModelsOption models;
    bool json = false;

    void addTo(CLI::App& app) {
        corpus.addTo(app);
        addPath(app, "--output", output, tr("Folder for the new files"))->type_name("DIR")->required();
        parameters.addTo(app, ParameterOptions::Ranges::taken);
        addPrefix(app, prefix);
        picture.addTo(app);
        recipes.addTo(app);
        compute.addTo(app);
        models.addTo(app);
        addJSON(app, json);
    }

    void check() const {
        const std::span<const Sweep::Axis> ranges = parameters.ranges();
        if (ranges.empty()) throwUsageError("--set", tr("must give one range or two, like pitch=-12:12:7"));
        if (ranges.size() > 2) throwUsageError("--set", tr("can give two ranges at most"));
        if (ranges.size() == 2 && ranges[0].spec == ranges[1].spec)
            throwUsageError("--set", tr("gives two ranges of one parameter"));
        std::int64_t count = 1;
        for (const Sweep::Axis& axis : ranges)
            count *= axis.count;
        if (count > mostPoints)
            throwUsageError("--set", tr("would make {0} sounds; {1} are the most", count, mostPoints));
    }
};

// A point of the sweep and the file that it becomes.
struct Step {
    Sweep::Point point;
    fs::path file;
    SampleOrigin origin;
};

std::vector<Step> stepsOf(const SweepOptions& options, const SampleGenerator& generator,
                          const fs::path& folder, std::uint64_t seed, Console& console) {
    const std::span<const Sweep::Axis> axes = options.parameters.ranges();
    const std::string prefix = Finishing::sanitisedPrefix(
        options.prefix.empty() ? generator.bundle().metadata.corpusName : options.prefix);
    std::vector<Step> steps;
    for (Sweep::Point& point : Sweep::points(options.parameters.aesthetics(console), axes)) {
        const std::string name = Sweep::fileName(prefix, point, axes);
        Step step{std::move(point), folder / std::u8string(name.begin(), name.end()), {}};
        step.origin = generator.draw(step.point.aesthetics, 0, seed);
        step.origin.detail = options.parameters.detail();
        steps.push_back(std::move(step));
    }
    return steps;
}

// Everything that the files of one sweep share.
struct Workplace {
    const SweepOptions& options;
    SampleGenerator& generator;
    RecipeCarriers carriers;
    RecipeBase base;
    GeneratingReport& report;
    Console& console;
};

// Writes the sounds of these steps and keeps them for the contact sheet.
void writeSteps(std::span<const Step> steps, std::vector<AuditionedSample> sounds, const Workplace& place,
                std::vector<GeneratedSample>& files, ContactSheet& sheet) {
    for (std::size_t i = 0; i < steps.size(); ++i) {
        RecipeBase base = place.base;
        base.aesthetics = steps[i].point.aesthetics;
        RecipeKeeper keeper(place.carriers, std::move(base));
        files.push_back(SoundFile::writeNew(
            {sounds[i].samples, place.generator.sampleRate(), place.base.format, std::move(sounds[i].origin)},
            steps[i].file, keeper.hooks()));
        // Once is enough.
        if (files.size() == 1) noteJournalProblem(keeper, place.console);
        place.report.report(std::ssize(files));
        if (place.options.picture.isGiven()) {
            sheet.cells.push_back({Sweep::title(steps[i].point, place.options.parameters.ranges()),
                                   std::move(sounds[i].samples)});
        }
    }
}

std::vector<GeneratedSample> makeAll(std::span<const Step> steps, const Workplace& place, ContactSheet& sheet,
                                     const CancelFlag& cancel) {
    std::vector<GeneratedSample> files;
    constexpr auto batch = static_cast<std::size_t>(SampleGenerator::batch);
    while (!steps.empty()) {
        cancel.check();
        const std::span<const Step> part = steps.first(std::min(batch, steps.size()));
        std::vector<VariationPlan> plans;
        plans.reserve(part.size());
        for (const Step& step : part)
            plans.push_back({step.origin, step.point.aesthetics});
        writeSteps(part, place.generator.remake(plans, cancel.token()), place, files, sheet);
        steps = steps.subspan(part.size());
    }
    return files;
}

// One range is shown in rows of eight, two as a grid with the first one across.
std::size_t columnsFor(std::span<const Sweep::Axis> axes) {
    constexpr std::int64_t mostOfOne = 8;
    return static_cast<std::size_t>(axes.size() > 1 ? axes[0].count : std::min(axes[0].count, mostOfOne));
}

JSON rangesJSON(std::span<const Sweep::Axis> axes) {
    JSON list = JSON::array();
    for (const Sweep::Axis& axis : axes)
        list.push_back({{"id", axis.spec->id}, {"from", axis.from}, {"to", axis.to}, {"count", axis.count}});
    return list;
}

JSON listJSON(const std::vector<GeneratedSample>& files, std::span<const Step> steps,
              std::span<const Sweep::Axis> axes) {
    JSON list = filesJSON(files);
    for (std::size_t i = 0; i < files.size(); ++i) {
        for (std::size_t axis = 0; axis < axes.size(); ++axis)
            list[i]["values"][std::string(axes[axis].spec->id)] = steps[i].point.values[axis];
    }
    return list;
}

void sweep(const SweepOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    const fs::path folder = Paths::plain(options.output);
    const std::uint64_t seed = options.parameters.seed();
    const std::span<const Sweep::Axis> axes = options.parameters.ranges();
    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    requireWritableFolder(folder);
    ModelBundle bundle = loadOrLearn(corpus, compute.device(), console, progress, cancel);
    const ClipSounds sounds = soundsFor(options.parameters.detail(), bundle, corpus);
    SampleGenerator generator(std::move(bundle), compute.device().backend(), sounds);
    const std::vector<Step> steps = stepsOf(options, generator, folder, seed, console);
    std::vector<fs::path> names;
    names.reserve(steps.size());
    for (const Step& step : steps)
        names.push_back(step.file);
    SoundFile::requireFree(names);

    const ModelMetadata& model = generator.bundle().metadata;
    RecipeBase base = recipeBase(compute.device(), model);
    base.format = options.parameters.format();
    GeneratingReport report(progress, std::ssize(steps));
    report.report(0);
    ContactSheet sheet{.title = model.corpusName + ", seed " + std::to_string(seed),
                       .sampleRate = static_cast<double>(generator.sampleRate()),
                       .columns = columnsFor(axes),
                       .cells = {}};
    const std::vector<GeneratedSample> files = makeAll(
        steps, {options, generator, options.recipes.carriers(console), std::move(base), report, console},
        sheet, cancel);
    if (const std::error_code unsafe = syncFolder(folder)) throw FileError(folder, unsafe);
    if (options.picture.isGiven()) options.picture.write(sheet.draw());
    progress.finish();

    console.print(trCounted(std::ssize(files),
                            "Wrote {0} sound to {1}:", "Wrote {0} sounds to {1}:", shownPath(folder)));
    printFiles(files, console);
    if (options.picture.isGiven()) console.print(tr("Drawn in {0}.", shownPath(options.picture.file())));
    console.print(tr("Seed {0}.", seed));
    DetailReport detail(options.parameters.detail(), sounds);
    for (const GeneratedSample& file : files)
        detail.count(file.origin);
    detail.print(console);

    JSON result = makeResult("sweep");
    result["seed"] = seed;
    result["output"] = toJSON(folder);
    result["format"] = rawValue(options.parameters.format());
    result["ranges"] = rangesJSON(axes);
    result["files"] = listJSON(files, steps, axes);
    if (options.picture.isGiven()) result["picture"] = toJSON(options.picture.file());
    result["seconds"] = progress.timesJSON();
    detail.addTo(result);
    console.emit(result);
}

}  // namespace

void addSweep(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<SweepOptions>();
    CLI::App* const command =
        app.add_subcommand("sweep", tr("Write one sound along the range of a parameter, or of two"));
    options->addTo(*command);
    command->callback([options, &invocation] {
        options->check();
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            sweep(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
