#pragma once

#include <QString>
#include <cstdint>
#include <optional>

#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/EditHistory.h"
#include "QuillmereApp/ParameterModel.h"
#include "QuillmereApp/PresetModel.h"
#include "QuillmereCore/Generate/Aesthetics.h"

namespace quillmere {

// How the variations depart from the corpus: the parameters with their undo history, the presets, and the
// seed. Values are edited through parameters().
class CharacterController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(quillmere::ParameterModel* parameters READ parameters CONSTANT)
    Q_PROPERTY(quillmere::PresetModel* presets READ presets CONSTANT)
    Q_PROPERTY(QString presetName READ presetName NOTIFY presetChanged)
    Q_PROPERTY(bool presetEdited READ presetEdited NOTIFY presetChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY historyChanged)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY historyChanged)
    // What is shown and rendered is the state before the last edit.
    Q_PROPERTY(bool isComparing READ isComparing NOTIFY isComparingChanged)
    Q_PROPERTY(QString seedText READ seedText WRITE setSeedText NOTIFY seedTextChanged)
    Q_PROPERTY(bool seedIsFixed READ seedIsFixed NOTIFY seedTextChanged)  // seedText is a usable number
    // Runs without a seed of their own take that of the last one.
    Q_PROPERTY(bool keepsSeed READ keepsSeed WRITE setKeepsSeed NOTIFY keepsSeedChanged)
    Q_PROPERTY(QString lastSeed READ lastSeed NOTIFY lastSeedChanged)  // decimal; of the last run or audition

public:
    explicit CharacterController(const Environment& environment);

    // The values and the preset of another time, without a way back to what was here before.
    void restore(Character character);

    // ---- Edits

    // All edits between the two are one undo step (a drag on a slider). Calls nest.
    Q_INVOKABLE void beginEdit();
    Q_INVOKABLE void endEdit();
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    // These values, which may be those of a preset, with the seed and the detail of a sound, as one edit.
    void take(const Aesthetics& values, const TakenSettings& settings);
    // The state before the last edit, until endComparison; an edit meanwhile ends it, too. False when there
    // is none before.
    bool beginComparison();
    void endComparison();
    // Moves every parameter that is not locked towards a random place on its slider: 0 not at all, 1 all the
    // way.
    Q_INVOKABLE void randomise(double amount);

    // ---- Presets

    // A built-in or own preset by its name; unknown names do nothing. An own preset whose file cannot be used
    // changes nothing and ends as an error.
    Q_INVOKABLE void applyPreset(const QString& name);
    void apply(const Preset& preset);
    // Saves the values under a new name; presetName becomes it. An existing name is never overwritten: that
    // and unusable names end as an error. presetSaved tells of success.
    Q_INVOKABLE void saveOwnPreset(const QString& name);
    Q_INVOKABLE void deleteOwnPreset(const QString& name);
    // Why a preset cannot be saved under name ("" when it can), for a dialog to show while typing.
    Q_INVOKABLE [[nodiscard]] QString presetNameProblem(const QString& name) const;
    // Looks again for the own presets, which other programs may have changed.
    void reloadPresets();

    // ---- The seed

    // lastSeed into the seed field, and into the clipboard.
    Q_INVOKABLE void reuseSeed();
    Q_INVOKABLE void copySeed();
    // The seed of a run that starts: the number in the field, else, with keepsSeed, that of the last run,
    // else a fresh one. It becomes lastSeed.
    [[nodiscard]] std::uint64_t drawSeed();
    // The same, but that of the last run also without keepsSeed: for what is compared with it.
    [[nodiscard]] std::uint64_t presentSeed();

    // ---- Values
    [[nodiscard]] const Aesthetics& aesthetics() const { return parameters_.values(); }
    [[nodiscard]] ParameterModel* parameters() { return &parameters_; }
    [[nodiscard]] PresetModel* presets() { return &presets_; }
    [[nodiscard]] QString presetName() const { return history_.current().presetName; }
    [[nodiscard]] bool presetEdited() const;
    [[nodiscard]] bool canUndo() const { return history_.canUndo(); }
    [[nodiscard]] bool canRedo() const { return history_.canRedo(); }
    [[nodiscard]] QString seedText() const { return seedText_; }
    void setSeedText(const QString& text);
    [[nodiscard]] bool seedIsFixed() const { return typedSeed().has_value(); }
    [[nodiscard]] QString lastSeed() const { return lastSeed_; }
    [[nodiscard]] bool isComparing() const { return isComparing_; }
    [[nodiscard]] bool keepsSeed() const { return keepsSeed_; }
    void setKeepsSeed(bool keeps);

signals:
    void presetChanged();
    void historyChanged();
    void seedTextChanged();
    void lastSeedChanged();
    void isComparingChanged();
    void keepsSeedChanged();
    void presetSaved(const QString& name);
    // By settings that are taken, and where that is undone or redone.
    void detailWanted(double detail);

private:
    friend struct AppModelProbe;  // for tests

    void edit(const Aesthetics& aesthetics);
    void change(Character next);
    void show();
    void set(const SoundSettings& settings);
    [[nodiscard]] std::optional<std::uint64_t> typedSeed() const;
    [[nodiscard]] std::uint64_t seedOfRun(bool keeps);

    EditHistory history_{{Aesthetics(), QStringLiteral("Balanced")}};
    ParameterModel parameters_;
    PresetModel presets_;
    QString seedText_;
    QString lastSeed_;
    bool isComparing_ = false;
    bool keepsSeed_ = false;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
