#pragma once

#include <QObject>
#include <QTimer>

#include "QuillmereApp/Controllers/CharacterController.h"
#include "QuillmereApp/Controllers/ModelController.h"
#include "QuillmereApp/Controllers/OutputController.h"
#include "QuillmereApp/Preferences.h"

namespace quillmere {

// What the user has set, from one start of the program to the next: quality and analysis of the next
// training, the parameters with their preset, the seed field, the output folder, count and format. What the
// preferences hold that makes no sense is as if it were not there.
//
// Threads: as for Controller.
class Session : public QObject {
public:
    // Sets what was stored, and stores what changes from now on, a moment after the last change and at the
    // end. All must outlive it.
    Session(Preferences& preferences, ModelController& model, CharacterController& character,
            OutputController& output);
    ~Session() override;

private:
    void restore();
    void restoreCharacter();
    void store();

    Preferences& preferences_;
    ModelController& model_;
    CharacterController& character_;
    OutputController& output_;
    QTimer storeSoon_;
};

}  // namespace quillmere
