#pragma once

#include <cstddef>
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
        record.message = Message("record");
        record.step = step;
        record.loss = loss;
        model.receive(record);
    }

    // So much memory may the sounds of candidates take.
    static void setMostBytes(CandidatesController& candidates, std::size_t bytes) {
        candidates.mostBytes_ = bytes;
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
        waitForWork(*app.runs());
        waitForWork(*app.measures());
        waitForWork(*app.drops());
        waitForWork(*app.kits());
        waitForWork(*app.sweep());
        waitForWork(*app.output());
        waitForWork(*app.character());
    }
};

}  // namespace quillmere
