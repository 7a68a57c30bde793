#include "QuillmereCore/Model/Training/TrainingProgress.h"

#include <utility>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {

std::string_view rawValue(TrainingProgress::Phase phase) {
    switch (phase) {
        case TrainingProgress::Phase::analysing:
            return translatable("analysing");
        case TrainingProgress::Phase::training:
            return translatable("training");
        case TrainingProgress::Phase::finishing:
            return translatable("finishing");
    }
    fatal("unknown training phase");
}

namespace ModelTrainer {
namespace {

TrainingProgress ofAnalysis(Message message, double fraction = 0) {
    TrainingProgress record;
    record.message = std::move(message);
    record.fraction = fraction;
    return record;
}

}  // namespace

float Smoothing::add(float value) {
    const float weight = empty_ ? 1.0F : 0.05F;
    empty_ = false;
    value_ += weight * (value - value_);
    return value_;
}

void SmoothedLosses::add(const network::StepResult& result) {
    loss.add(result.loss);
    reconstruction.add(result.mse);
    kl.add(result.kl);
}

bool isReported(std::int64_t t, std::int64_t T) {
    return t == 1 || t % 10 == 0 || t == T;
}

double trainingFraction(std::int64_t t, std::int64_t T) {
    return 0.1 + 0.85 * static_cast<double>(t) / static_cast<double>(T);
}

TrainingProgress readingStarted(std::int64_t files) {
    return ofAnalysis(Message::counted(files, "Reading {0} samples…", "Reading {0} samples…"));
}

TrainingProgress fileRead(std::int64_t done, std::int64_t files) {
    return ofAnalysis(Message("Reading samples… {0}/{1}", done, files),
                      0.06 * static_cast<double>(done) / static_cast<double>(files));
}

TrainingProgress analysisStarted(AnalysisProfile profile, double clipSeconds) {
    return ofAnalysis(
        Message("Analysing ({0}, {1} s per sample)…", word(profile), Text::fixed(clipSeconds, 1)));
}

TrainingProgress stepDone(std::int64_t t, std::int64_t T, const SmoothedLosses& losses,
                          double elapsedSeconds) {
    return {.phase = TrainingProgress::Phase::training,
            .message = Message("Training model…"),
            .step = t,
            .totalSteps = T,
            .loss = losses.loss.value(),
            .reconstruction = losses.reconstruction.value(),
            .kl = losses.kl.value(),
            .fraction = trainingFraction(t, T),
            .secondsRemaining = static_cast<double>(T - t) * elapsedSeconds / static_cast<double>(t)};
}

TrainingProgress encodingStarted(std::int64_t t, std::int64_t T, float loss) {
    return {.phase = TrainingProgress::Phase::finishing,
            .message = Message("Encoding corpus…"),
            .step = t,
            .totalSteps = T,
            .loss = loss,
            .fraction = 0.96,
            .secondsRemaining = std::nullopt};
}

}  // namespace ModelTrainer
}  // namespace quillmere
