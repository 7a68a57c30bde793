#pragma once

#include <QString>

#include "QuillmereApp/Words.h"

namespace quillmere {

// What runs at a moment.
struct Activity {
    bool isTraining = false;
    bool isGenerating = false;
    bool isScanning = false;
    bool isAuditioning = false;
    bool isTrying = false;     // candidates are rendered
    bool isMakingKit = false;  // of sounds
    bool isSweeping = false;   // a slider's sounds are rendered

    [[nodiscard]] bool isBusy() const { return isComputing() || isScanning; }
    // The device that learns is in use.
    [[nodiscard]] bool isComputing() const {
        return isTraining || isGenerating || isAuditioning || isTrying || isMakingKit || isSweeping;
    }

    // What to tell the user whose wish has to wait until it has ended.
    [[nodiscard]] static QString waitNotice() {
        return Words::tr("Wait until the present run has ended, or cancel it.");
    }

    friend bool operator==(const Activity&, const Activity&) = default;
};

}  // namespace quillmere
