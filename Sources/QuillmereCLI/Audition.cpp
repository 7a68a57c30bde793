#include <memory>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/DetailReport.h"
#include "QuillmereCLI/Generating.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ParameterOptions.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/StartOption.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Generate/SoundFile.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Paths.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

struct AuditionOptions {
    CorpusOption corpus;
    std::filesystem::path output;
    ParameterOptions parameters;
    StartOption start;
    RecipeOptions recipes;
    ComputeOptions compute;
    ModelsOption models;
    bool json = false;

    void addTo(CLI::App& app) {
        corpus.addTo(app);
        addPath(app, "--output", output, tr("The file to write; replaced if it is there"))
            ->type_name("FILE.wav")
            ->required();
        parameters.addTo(app);
        start.addTo(app);
        recipes.addTo(app);
        compute.addTo(app);
        models.addTo(app);
        addJSON(app, json);
    }

    void checkOutput() const {
        const std::string extension = Text::lowercase(Text::utf8(output.extension()));
        if (extension != ".wav" && extension != ".wave")
            throwUsageError("--output", tr("must name a .wav file, not \"{0}\"", shownPath(output)));
    }
};

// Trouble that would otherwise show only after minutes of training.
void requireWritableFile(const std::filesystem::path& file) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        throw FileError(file, std::make_error_code(std::errc::is_a_directory));
    requireWritableFolder(file.parent_path());
    removeAbandonedFiles(file.parent_path());
}

// The stored model; without one what --start asks for, before it has learned anything; else one that is
// learned now.
ModelBundle modelFor(const AuditionOptions& options, const KnownCorpus& corpus, network::ChosenDevice& device,
                     Console& console, ProgressLine& progress, const CancelFlag& cancel) {
    if (!corpus.hasModel()) {
        TrainingOptions training;
        training.start = options.start.open(options.models, console);
        if (training.start) return beforeLearning(corpus, training, device, progress, cancel);
    }
    return loadOrLearn(corpus, device, console, progress, cancel);
}

// Nothing for what is heard before learning: it comes from a model that is stored nowhere.
RecipeCarriers carriersFor(const AuditionOptions& options, bool isBeforeLearning, Console& console) {
    return isBeforeLearning ? RecipeCarriers() : options.recipes.carriers(console);
}

void audition(const AuditionOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    const std::filesystem::path output = Paths::plain(options.output);
    const Aesthetics aesthetics = options.parameters.aesthetics(console);
    const std::uint64_t seed = options.parameters.seed();
    const OutputFormat format = options.parameters.format();

    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    requireWritableFile(output);
    ModelBundle bundle = modelFor(options, corpus, compute.device(), console, progress, cancel);
    const std::optional<ModelStart> heard = bundle.metadata.steps == 0 ? bundle.metadata.start : std::nullopt;
    const ClipSounds sounds = soundsFor(options.parameters.detail(), bundle, corpus);
    RecipeBase base = recipeBase(compute.device(), bundle.metadata);
    base.aesthetics = aesthetics;
    base.format = format;
    RecipeKeeper keeper(carriersFor(options, heard.has_value(), console), std::move(base));
    SampleGenerator generator(std::move(bundle), compute.device().backend(), sounds);

    WorkProgress work;
    work.phase = translatable("generating");
    work.message = Message("Generating…");
    work.unit = WorkProgress::Unit::variation;
    work.totalSteps = 1;
    progress.report(work);
    cancel.check();
    const auto [samples, origin] = generator.audition(
        {.aesthetics = aesthetics, .seed = seed, .detail = options.parameters.detail()}, cancel.token());
    cancel.check();
    const double seconds =
        SoundFile::replace({samples, generator.sampleRate(), format, origin}, output, keeper.hooks()).seconds;
    progress.finish();
    noteJournalProblem(keeper, console);

    console.print(tr("Wrote {0} ({1}).", shownPath(output), duration(seconds)));
    if (heard) console.print(tr("Before learning: what {0} makes of the folder.", startText(*heard)));
    console.print(seedText(seed, options.parameters.seedWasGiven()));
    DetailReport detail(options.parameters.detail(), sounds);
    detail.count(origin);
    detail.print(console);
    JSON result = makeResult("audition");
    result["seed"] = seed;
    result["path"] = toJSON(output);
    result["durationSeconds"] = seconds;
    result["format"] = rawValue(format);
    result["aesthetics"] = toJSON(aesthetics);
    detail.addTo(result);
    if (heard) result["beforeLearning"] = true;
    result["seconds"] = progress.timesJSON();
    console.emit(result);
}

}  // namespace

void addAudition(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<AuditionOptions>();
    CLI::App* const command =
        app.add_subcommand("audition", tr("Write a single variation to a file of your choice"));
    options->addTo(*command);
    command->callback([options, &invocation] {
        options->checkOutput();
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            audition(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
