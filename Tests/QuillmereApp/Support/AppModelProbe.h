#pragma once

#include <cstdint>

#include "QuillmereApp/AppModel.h"

namespace quillmere {

// What tests do to the application beyond its public operations.
struct AppModelProbe {
    // Hands a progress record to a controller as its training would.
    static void receive(ModelController& model, TrainingProgress::Phase phase, std::int64_t step,
                        float loss) {
        TrainingProgress record;
        record.phase = phase;
        record.message = "record";
        record.step = step;
        record.loss = loss;
        model.receive(record);
    }

    // Returns when nothing runs in the background any more; the answers wait to be delivered.
    template <typename Owner>
    static void waitForWork(Owner& owner) {
        owner.tasks_.waitForAll();
    }
    static void waitForWork(AppModel& app) {
        waitForWork(*app.corpus());
        waitForWork(*app.model());
        waitForWork(*app.generation());
        waitForWork(*app.candidates());
        waitForWork(*app.output());
        waitForWork(*app.character());
    }
};

}  // namespace quillmere
