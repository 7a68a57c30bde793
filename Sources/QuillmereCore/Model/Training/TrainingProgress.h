#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// One report of a run.
struct TrainingProgress {
    enum class Phase { analysing, training, finishing };
    Phase phase = Phase::analysing;
    Message message;
    std::int64_t step = 0;
    std::int64_t totalSteps = 0;
    float loss = 0;  // smoothed, as the next two
    float reconstruction = 0;
    float kl = 0;
    double fraction = 0;                     // of the whole run, 0 ... 1
    std::optional<double> secondsRemaining;  // in the training phase only
};

[[nodiscard]] std::string_view rawValue(TrainingProgress::Phase phase);

namespace ModelTrainer {

using ProgressCallback = std::function<void(const TrainingProgress&)>;

// Exponential smoothing of the reported losses; the first value is taken as it is.
class Smoothing {
public:
    float add(float value);  // returns the smoothed value
    [[nodiscard]] float value() const { return value_; }

private:
    bool empty_ = true;
    float value_ = 0;
};

struct SmoothedLosses {
    Smoothing loss, reconstruction, kl;
    void add(const network::StepResult& result);
};

// Whether step t of T is reported: the first, every tenth and the last.
[[nodiscard]] bool isReported(std::int64_t t, std::int64_t T);
// How much of the run is done after step t of T.
[[nodiscard]] double trainingFraction(std::int64_t t, std::int64_t T);

// The reports, in the order of a run.
[[nodiscard]] TrainingProgress readingStarted(std::int64_t files);
[[nodiscard]] TrainingProgress fileRead(std::int64_t done, std::int64_t files);
[[nodiscard]] TrainingProgress analysisStarted(AnalysisProfile profile, double clipSeconds);
// elapsedSeconds: since the first step began.
[[nodiscard]] TrainingProgress stepDone(std::int64_t t, std::int64_t T, const SmoothedLosses& losses,
                                        double elapsedSeconds);
// t: the last step that was done; T, unless the training ended early.
[[nodiscard]] TrainingProgress encodingStarted(std::int64_t t, std::int64_t T, float loss);

}  // namespace ModelTrainer
}  // namespace quillmere
