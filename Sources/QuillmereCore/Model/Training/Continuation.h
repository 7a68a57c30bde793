#pragma once

#include <cstdint>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Model/Training/TrainingProgress.h"

namespace quillmere::ModelTrainer {

// The stretch of so many steps that follows on a model's training, with everything else as it is best left:
// the usual batch and KL weight, the step size of a training from a start (startLearningRate), and a seed
// that depends on the steps so far, so that each stretch sees other batches.
[[nodiscard]] TrainingStretch nextStretch(const ModelBundle& model, std::int64_t steps);

// Goes on from a model where its training ended. The schedule is that of a training of stretch.steps steps:
// the step size warms up over a hundred of them and falls along a cosine to a twentieth of its peak; the
// moments of the optimiser begin anew; but the KL weight is at its full height from the first step on, so
// that the latent vectors stay in order. The model says what was done (ModelMetadata::continued): the same
// model and stretch give the same model again, trainedAt apart, for any number of threads.
//
// corpus: the folder of the model, unchanged; Failure where it is another one. Everything else as train.
[[nodiscard]] ModelBundle continueTraining(const ModelBundle& model, const CorpusSummary& corpus,
                                           const TrainingStretch& stretch, const ProgressCallback& progress,
                                           const std::stop_token& stop, network::Backend& backend);

}  // namespace quillmere::ModelTrainer
