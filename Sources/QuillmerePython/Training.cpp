#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <cmath>

#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmerePython/Bindings.h"
#include "QuillmerePython/Compute.h"
#include "QuillmerePython/Interruption.h"

namespace quillmere::python {
namespace py = pybind11;
namespace {

using Start = std::shared_ptr<TrainingStart>;

// What the keywords of train say.
struct Wishes {
    std::string quality;
    std::optional<std::int64_t> steps;
    std::string analysis;
    std::optional<double> clipSeconds;
    std::int64_t latentDim;
    std::int64_t batchSize;
    std::optional<float> learningRate;
    float klWeight;
    std::uint64_t seed;
    Start start;
};

// The library stops the program for what it takes for a programming error.
void requirePossible(const TrainingOptions& options) {
    if (options.steps < 1) throw py::value_error("steps must be at least 1");
    if (options.batchSize < 1) throw py::value_error("batch_size must be at least 1");
    if (options.latentDim < 1) throw py::value_error("latent_dim must be at least 1");
    if (options.clipSeconds && !(std::isfinite(*options.clipSeconds) && *options.clipSeconds > 0))
        throw py::value_error("clip_seconds must be above 0");
    if (!std::isfinite(options.learningRate) || !std::isfinite(options.klWeight))
        throw py::value_error("learning_rate and kl_weight must be finite");
}

TrainingOptions optionsOf(const Wishes& wishes) {
    const std::optional<Quality> quality = qualityNamed(wishes.quality);
    if (!quality) throw py::value_error("There is no quality " + wishes.quality);
    const std::optional<AnalysisProfile> analysis = analysisProfile(wishes.analysis);
    if (!analysis) throw py::value_error("There is no analysis " + wishes.analysis);
    TrainingOptions options = info(*quality).training(wishes.start);
    options.steps = wishes.steps.value_or(options.steps);
    options.profile = *analysis;
    options.clipSeconds = wishes.clipSeconds;
    options.latentDim = wishes.latentDim;
    options.batchSize = wishes.batchSize;
    options.learningRate = wishes.learningRate.value_or(options.learningRate);
    options.klWeight = wishes.klWeight;
    options.seed = wishes.seed;
    requirePossible(options);
    return options;
}

std::shared_ptr<ModelBundle> train(const CorpusSummary& corpus, const Wishes& wishes,
                                   const std::string& device, const py::object& progress) {
    const TrainingOptions options = optionsOf(wishes);
    const ModelTrainer::ProgressCallback report = listener<const TrainingProgress&>(progress);
    return interruptibly([&](const std::stop_token& stop) {
        Compute compute(device);
        return std::make_shared<ModelBundle>(
            ModelTrainer::train(corpus, options, report, stop, compute.backend()));
    });
}

void bindProgress(py::module_& module) {
    py::class_<TrainingProgress>(module, "TrainingProgress", "One report of a training.")
        .def_property_readonly(
            "phase", [](const TrainingProgress& report) { return rawValue(report.phase); },
            "'analysing', 'training' or 'finishing'.")
        .def_property_readonly(
            "message", [](const TrainingProgress& report) { return report.message.english(); },
            "The same for people.")
        .def_readonly("step", &TrainingProgress::step, "The step that is done.")
        .def_readonly("total_steps", &TrainingProgress::totalSteps, "Of how many.")
        .def_readonly("loss", &TrainingProgress::loss, "Smoothed, as the next two.")
        .def_readonly("reconstruction", &TrainingProgress::reconstruction, "The part of the images.")
        .def_readonly("kl", &TrainingProgress::kl, "The part of the latent vectors.")
        .def_readonly("fraction", &TrainingProgress::fraction, "How much of the whole is done, from 0 to 1.")
        .def_readonly("seconds_remaining", &TrainingProgress::secondsRemaining,
                      "In the phase 'training', else None.");
}

void bindStart(py::module_& module) {
    py::class_<TrainingStart, Start>(module, "TrainingStart",
                                     "What a training begins from in place of random weights.")
        .def(py::init<const ModelBundle&>(), py::arg("model"), "What another folder has taught.")
        .def_property_readonly(
            "name", [](const TrainingStart& start) { return start.origin().name; },
            "Version of the head start, or name of the other folder.");
    module.def(
        "load_head_start",
        [](const std::filesystem::path& folder) {
            return std::make_shared<TrainingStart>(HeadStart::load(folder));
        },
        py::arg("folder"),
        "The head start in that folder: networks that know thousands of sounds made by rule. Raises "
        "FileError, "
        "DecodingError, CorruptModelError.");
}

constexpr const char* trainingText =
    "Learns a folder that was scanned, and returns its Model; stores nothing.\n\n"
    "quality: 'quick', 'standard' or 'thorough', which is a number of steps; steps is used in its place.\n"
    "analysis: 'percussive' (fine in time), 'tonal' (fine in frequency), or 'auto': what suits the folder.\n"
    "clip_seconds: how much of each file is learned; None: what suits the folder.\n"
    "learning_rate: peak step size; None: what suits the start. kl_weight: the pull towards an even latent "
    "space.\n"
    "start: a TrainingStart, or None for random weights, drawn from the seed.\n"
    "device: 'auto', 'cpu', 'gpu', or a number or a part of a name of quillmere-cli devices.\n"
    "progress(report) is called with a TrainingProgress, on another thread; what it raises ends the training "
    "and is "
    "raised here.\n\n"
    "The same folder, options and device give the same model, bit for bit. Ctrl-C ends it with "
    "KeyboardInterrupt after "
    "the step in hand. Raises TrainingError, AudioError, DeviceError, Failure.";

}  // namespace

void bindTraining(py::module_& module) {
    bindProgress(module);
    bindStart(module);
    const TrainingOptions usual;
    module.def(
        "train",
        [](const CorpusSummary& corpus, std::string quality, std::optional<std::int64_t> steps,
           std::string analysis, std::optional<double> clipSeconds, std::int64_t latentDim,
           std::int64_t batchSize, std::optional<float> learningRate, float klWeight, std::uint64_t seed,
           Start start, const std::string& device, const py::object& progress) {
            const Wishes wishes{std::move(quality), steps,     std::move(analysis),
                                clipSeconds,        latentDim, batchSize,
                                learningRate,       klWeight,  seed,
                                std::move(start)};
            return train(corpus, wishes, device, progress);
        },
        py::arg("corpus"), py::kw_only(), py::arg("quality") = info(Quality::standard).name,
        py::arg("steps") = py::none(), py::arg("analysis") = rawValue(AnalysisProfile::automatic),
        py::arg("clip_seconds") = py::none(), py::arg("latent_dim") = usual.latentDim,
        py::arg("batch_size") = usual.batchSize, py::arg("learning_rate") = py::none(),
        py::arg("kl_weight") = usual.klWeight, py::arg("seed") = usual.seed, py::arg("start") = py::none(),
        py::arg("device") = "auto", py::arg("progress") = py::none(), trainingText);
}

}  // namespace quillmere::python
