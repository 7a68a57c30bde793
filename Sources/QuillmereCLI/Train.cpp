#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Continuing.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/StartOption.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Detail/ClipSounds.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

std::vector<std::string> qualityNames() {
    std::vector<std::string> names;
    names.reserve(allQualities.size());
    for (const QualityInfo& quality : allQualities)
        names.emplace_back(quality.name);
    return names;
}

// "800, 2000 or 5000"
std::string qualitySteps(std::int64_t QualityInfo::*steps) {
    std::string text;
    for (std::size_t i = 0; i < allQualities.size(); ++i) {
        const std::string one = std::to_string(allQualities[i].*steps);
        if (i == 0) {
            text = one;
        } else {
            text = i + 1 == allQualities.size() ? tr("{0} or {1}", text, one) : tr("{0}, {1}", text, one);
        }
    }
    return text;
}

struct TrainOptions {
    CorpusOption corpus;
    ModelsOption models;
    ComputeOptions compute;
    std::string quality{info(Quality::standard).name};
    std::int64_t steps = 0;  // 0: by quality
    std::string analysis{rawValue(AnalysisProfile::automatic)};
    std::optional<double> clipSeconds;
    std::int64_t latentDim = TrainingOptions().latentDim;
    std::int64_t batchSize = TrainingOptions().batchSize;
    std::optional<double> learningRate;
    std::optional<double> klWeight;
    std::optional<std::uint64_t> seed;
    StartOption start;
    bool retrain = false;
    bool keepSounds = false;
    std::int64_t continued = 0;  // steps to go on; 0: none
    bool json = false;

    void addTo(CLI::App& app) {
        corpus.addTo(app);
        addChoice(app, "--quality", quality, qualityNames(),
                  tr("How long to train: {0} steps, from a start {1}", qualitySteps(&QualityInfo::steps),
                     qualitySteps(&QualityInfo::stepsFromStart)))
            ->default_str(quality);
        addWholeNumber(app, "--steps", steps, {1, 10'000'000},
                       tr("Training steps, instead of the quality's"));
        addChoice(app, "--analysis", analysis, {"auto", "percussive", "tonal"},
                  tr("Fine in time (percussive) or in frequency (tonal)"))
            ->default_str(analysis);
        addReal(app, "--clip-seconds", clipSeconds, {0.01, 60}, tr("Length to learn of each sample"))
            ->default_str(tr("chosen from the samples"));
        addWholeNumber(app, "--latent-dim", latentDim, {1, 4096}, tr("Size of the latent vector"))
            ->default_str(std::to_string(latentDim));
        addWholeNumber(app, "--batch-size", batchSize, {1, 1024}, tr("Samples per step"))
            ->default_str(std::to_string(batchSize));
        addReal(app, "--learning-rate", learningRate, {1e-6, 1}, tr("Peak step size"))
            ->default_str(
                tr("0.001, from a start {0}", Text::fixed(static_cast<double>(startLearningRate), 4)));
        addReal(app, "--kl-weight", klWeight, {0, 1000}, tr("Pull towards an even latent space"))
            ->default_str("0.002");
        addSeed(app, seed, tr("The same number trains the same model"))->default_str("1");
        start.addTo(app);
        compute.addTo(app);
        models.addTo(app);
        app.add_flag("--retrain", retrain, tr("Train even if a model is stored, and replace it"));
        app.add_flag(
            "--keep-sounds", keepSounds,
            tr("Keep the samples with the model, for --detail when the folder is gone or has changed"));
        addJSON(app, json);
        CLI::Option* const more =
            addWholeNumber(app, "--continue", continued, {1, 10'000'000},
                           tr("Go on from the stored model by so many steps, and tell what they bought"));
        for (const char* const decided : {"--quality", "--steps", "--analysis", "--clip-seconds",
                                          "--latent-dim", "--start", "--retrain", "--keep-sounds"})
            more->excludes(app.get_option(decided));
    }

    // What follows on a stored model.
    [[nodiscard]] TrainingStretch stretch(const ModelBundle& model) const {
        TrainingStretch next = ModelTrainer::nextStretch(model, continued);
        next.batchSize = batchSize;
        if (learningRate) next.learningRate = static_cast<float>(*learningRate);
        if (klWeight) next.klWeight = static_cast<float>(*klWeight);
        if (seed) next.seed = *seed;
        return next;
    }

    // from: what the training begins from; null for random weights.
    [[nodiscard]] TrainingOptions training(std::shared_ptr<const TrainingStart> from) const {
        TrainingOptions options = info(*qualityNamed(quality)).training(std::move(from));
        if (steps > 0) options.steps = steps;
        options.batchSize = batchSize;
        options.latentDim = latentDim;
        options.clipSeconds = clipSeconds;
        options.profile = *analysisProfile(analysis);
        if (learningRate) options.learningRate = static_cast<float>(*learningRate);
        if (klWeight) options.klWeight = static_cast<float>(*klWeight);
        if (seed) options.seed = *seed;
        return options;
    }
};

JSON toJSON(const ModelStart& start) {
    JSON object = JSON::object();
    object["kind"] = rawValue(start.kind);
    object["name"] = start.name;
    object["identity"] = start.identity;
    return object;
}

JSON modelJSON(const KnownCorpus& corpus, const ModelBundle& bundle, bool trained) {
    JSON result = makeResult("train");
    result["trained"] = trained;
    result["modelFolder"] = cli::toJSON(corpus.modelFolder);
    result["corpus"] = cli::toJSON(corpus.summary.directory);
    result["fileCount"] = corpus.summary.fileCount();
    result["clipCount"] = bundle.metadata.clipNames.size();
    result["steps"] = bundle.metadata.steps;
    result["analysis"] = rawValue(bundle.config.profile);
    result["clipSeconds"] = bundle.config.clipSeconds();
    result["finalLoss"] = bundle.metadata.finalLoss;
    result["finalReconstructionError"] = bundle.metadata.finalReconstructionError;
    if (bundle.metadata.start) result["start"] = toJSON(*bundle.metadata.start);
    return result;
}

void announceSounds(const CorpusSummary& corpus, const TrainOptions& options, ProgressLine& progress,
                    Console& console) {
    progress.finish();
    console.print(tr("The sounds will take up to {0} with the model.",
                     byteSize(ClipSounds::mostToKeep(corpus, options.training(nullptr)))));
}

void reportKept(std::optional<std::uint64_t> bytes, Console& console) {
    if (bytes) console.print(tr("The sounds are kept with the model ({0}).", byteSize(*bytes)));
}

void reportStored(const KnownCorpus& corpus, const ModelBundle& bundle,
                  std::optional<std::uint64_t> soundBytes, Console& console) {
    console.print(trCounted(bundle.metadata.steps,
                            "A model of this folder is stored already, trained {1} with {0} step.",
                            "A model of this folder is stored already, trained {1} with {0} steps.",
                            ModelStore::isoDate(bundle.metadata.trainedAt)));
    console.print(tr("Use --retrain to replace it."));
    reportKept(soundBytes, console);
    JSON result = modelJSON(corpus, bundle, false);
    if (soundBytes) result["soundBytes"] = *soundBytes;
    console.emit(result);
}

void reportTrained(const KnownCorpus& corpus, const ModelBundle& bundle,
                   std::optional<std::uint64_t> soundBytes, const ProgressLine& progress, Console& console) {
    console.print(learnedText(bundle));
    if (const std::string leftOut = leftOutText(corpus, bundle); !leftOut.empty()) console.print(leftOut);
    console.print(trCounted(bundle.metadata.steps, "Loss {1}, reconstruction error {2} after {0} step.",
                            "Loss {1}, reconstruction error {2} after {0} steps.",
                            Text::fixed(static_cast<double>(bundle.metadata.finalLoss), 5),
                            Text::fixed(static_cast<double>(bundle.metadata.finalReconstructionError), 5)));
    console.print(tr("Stored in {0}.", shownPath(corpus.modelFolder)));
    reportKept(soundBytes, console);
    console.print(progress.tookText());
    console.print(tr("Next: {0}", "quillmere-cli generate " + corpus.arguments + " --output FOLDER"));

    JSON result = modelJSON(corpus, bundle, true);
    if (soundBytes) result["soundBytes"] = *soundBytes;
    result["seconds"] = progress.timesJSON();
    console.emit(result);
}

void train(const TrainOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    if (options.continued > 0) {
        const ModelBundle model = storedModel(corpus, console);
        return continueModel(corpus, model, options.stretch(model), compute.device(), progress, console,
                             cancel);
    }
    if (options.keepSounds) announceSounds(corpus.summary, options, progress, console);
    const bool isStored = corpus.hasModel() && !options.retrain;
    const auto trainNow = [&] {
        const TrainingOptions training = options.training(options.start.open(options.models, console));
        return learn(corpus, training, compute.device(), progress, cancel);
    };
    const ModelBundle bundle = isStored ? loadModel(corpus, console) : trainNow();
    std::optional<std::uint64_t> soundBytes;
    if (options.keepSounds) soundBytes = keepSounds(corpus, bundle, progress, cancel);
    progress.finish();
    if (isStored) {
        reportStored(corpus, bundle, soundBytes, console);
    } else {
        reportTrained(corpus, bundle, soundBytes, progress, console);
    }
}

}  // namespace

void addTrain(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<TrainOptions>();
    CLI::App* const command =
        app.add_subcommand("train", tr("Learn a folder of samples and store the model"));
    options->addTo(*command);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            train(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
