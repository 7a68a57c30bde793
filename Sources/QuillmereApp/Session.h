#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <map>
#include <utility>

#include "QuillmereApp/Controllers/CharacterController.h"
#include "QuillmereApp/Controllers/ModelController.h"
#include "QuillmereApp/Controllers/OutputController.h"
#include "QuillmereApp/Controllers/PlaybackController.h"
#include "QuillmereApp/Preferences.h"

namespace quillmere {

// What the user has set, from one start of the program to the next: quality, analysis and start of
// the next training, the parameters with their preset, the seed field, the output folder, count, format and
// detail, and how sounds are heard. What the preferences hold that makes no sense is as if it were not there.
//
// Threads: as for Controller.
class Session : public QObject {
public:
    // Sets what was stored, and stores what changes from now on, a moment after the last change and at the
    // end. What does not change is not written: another window may have chosen it. All must outlive it.
    Session(Preferences& preferences, ModelController& model, CharacterController& character,
            OutputController& output, PlaybackController& playback);
    ~Session() override;

private:
    using Store = std::function<void()>;
    using Character = std::pair<QString, QString>;  // parameters and name of the preset, as they are stored

    void restore();
    void restoreCharacter();
    void storeCharacter();
    [[nodiscard]] Character currentCharacter() const;
    void watchAll();
    // store is to be called some time after changed.
    template <typename Sender>
    void watch(const Sender& sender, void (Sender::*changed)(), const QString& key, Store store);
    void store();

    Preferences& preferences_;
    ModelController& model_;
    CharacterController& character_;
    OutputController& output_;
    PlaybackController& playback_;
    QTimer storeSoon_;
    std::map<QString, Store> changed_;  // what is to be stored, by its key
    Character storedCharacter_;         // as restored or last stored
};

}  // namespace quillmere
