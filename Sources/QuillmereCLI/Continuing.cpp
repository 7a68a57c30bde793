#include "QuillmereCLI/Continuing.h"

#include <cmath>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Detail/ClipSounds.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

// As reports have it: the root of the mean squared error, in decibels.
double errorOf(const ModelBundle& model) {
    const auto perUnit = static_cast<double>(Level::toDB(1) - Level::toDB(0));
    return perUnit * std::sqrt(static_cast<double>(model.metadata.finalReconstructionError));
}

std::string gainText(double before, double after, std::int64_t steps) {
    constexpr double noticeable = 0.02;  // of the error
    if (after < before * (1 - noticeable))
        return trCounted(steps, "That bought {1} % of the error with {0} more step.",
                         "That bought {1} % of the error with {0} more steps.",
                         Text::fixed(100 * (1 - after / before), 0));
    return trCounted(
        steps,
        "That bought next to nothing with {0} more step; more steps will hardly help. 'report' says "
        "what may.",
        "That bought next to nothing with {0} more steps; more steps will hardly help. 'report' "
        "says what may.");
}

}  // namespace

void continueModel(const KnownCorpus& corpus, const ModelBundle& model, const TrainingStretch& stretch,
                   network::ChosenDevice& device, ProgressLine& progress, Console& console,
                   const CancelFlag& cancel) {
    const bool keepsSounds =
        ClipSounds::keptWith(model, corpus.modelFolder).origin() != ClipSounds::Origin::none;
    const ModelBundle next = ModelTrainer::continueTraining(
        model, corpus.summary, stretch,
        [&](const TrainingProgress& training) { progress.report(workProgress(training)); }, cancel.token(),
        device.backend());
    cancel.check();
    if (keepsSounds) {
        (void)keepSounds(corpus, next, progress, cancel);
    } else {
        ModelStore::replace(next, corpus.modelFolder, cancel.token());
    }
    progress.finish();

    const double before = errorOf(model);
    const double after = errorOf(next);
    console.print(trCounted(model.metadata.steps,
                            "Went on from {0} step to {1}: error {2} dB before, {3} dB after.",
                            "Went on from {0} steps to {1}: error {2} dB before, {3} dB after.",
                            next.metadata.steps, Text::fixed(before, 2), Text::fixed(after, 2)));
    console.print(gainText(before, after, stretch.steps));
    console.print(tr("Stored in {0}.", shownPath(corpus.modelFolder)));
    console.print(tr("Files that were made before can no longer be made again with this model."));

    JSON result = makeResult("train");
    result["trained"] = true;
    result["modelFolder"] = toJSON(corpus.modelFolder);
    result["corpus"] = toJSON(corpus.summary.directory);
    result["continued"] = stretch.steps;
    result["steps"] = next.metadata.steps;
    result["finalLoss"] = next.metadata.finalLoss;
    result["finalReconstructionError"] = next.metadata.finalReconstructionError;
    result["errorBefore"] = before;
    result["errorAfter"] = after;
    result["seconds"] = progress.timesJSON();
    console.emit(result);
}

}  // namespace quillmere::cli
