#pragma once

#include <cstdint>

#include "QuillmereApp/AppModel.h"

namespace quillmere {

// What tests do to models beyond their public operations.
struct AppModelProbe {
    // Hands a progress record to a model as its training would.
    static void receive(AppModel& model, TrainingProgress::Phase phase, std::int64_t step, float loss) {
        TrainingProgress record;
        record.phase = phase;
        record.message = "record";
        record.step = step;
        record.loss = loss;
        model.receive(record);
    }

    // Returns when nothing runs in the background any more; the answers wait to be delivered.
    static void waitForWork(AppModel& model) { model.tasks_.waitForAll(); }
    static void waitForWork(ResultsModel& model) { model.tasks_.waitForAll(); }
};

}  // namespace quillmere
