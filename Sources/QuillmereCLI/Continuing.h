#pragma once

#include "QuillmereCLI/Learning.h"
#include "QuillmereCore/Model/Training/Continuation.h"

namespace quillmere::cli {

// train --continue: goes on from the stored model, stores the result in its place with its sounds where these
// were kept, and tells what that bought. Throws as ModelTrainer::continueTraining and ModelStore::replace;
// the model stays as it is then.
void continueModel(const KnownCorpus& corpus, const ModelBundle& model, const TrainingStretch& stretch,
                   network::ChosenDevice& device, ProgressLine& progress, Console& console,
                   const CancelFlag& cancel);

}  // namespace quillmere::cli
