#include "QuillmereApp/Controllers/CharacterController.h"

#include <algorithm>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereApp/PresetFolder.h"
#include "QuillmereCore/Util/RNG.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {

CharacterController::CharacterController(const Environment& environment)
    : Controller(environment), parameters_([this](const Aesthetics& aesthetics) { edit(aesthetics); }) {
    show();
}

// ---- Edits

void CharacterController::show() {
    parameters_.setValues(history_.current().aesthetics);
    presets_.setCurrent(presetName(), presetEdited());
    emit presetChanged();
    emit historyChanged();
}

void CharacterController::restore(Character character) {
    history_ = EditHistory(std::move(character));
    show();
}

void CharacterController::change(Character next) {
    endComparison();
    // What changes nothing is no step.
    const Character& now = history_.current();
    if (!next.taken && next.aesthetics == now.aesthetics && next.presetName == now.presetName)
        next.taken = now.taken;
    history_.change(std::move(next));
    show();
}

void CharacterController::edit(const Aesthetics& aesthetics) {
    change({aesthetics, presetName()});
}

void CharacterController::beginEdit() {
    history_.begin();
}

void CharacterController::endEdit() {
    history_.end();
    emit historyChanged();
}

void CharacterController::undo() {
    endComparison();
    const auto taken = history_.current().taken;
    if (!history_.undo()) return;
    show();
    if (taken) set(taken->before);
}

void CharacterController::redo() {
    endComparison();
    if (!history_.redo()) return;
    show();
    if (const auto taken = history_.current().taken) set(taken->after);
}

void CharacterController::set(const SoundSettings& settings) {
    setSeedText(settings.seedText);
    emit detailWanted(settings.detail);
}

// The history itself goes back and forth: nothing is between the two.
bool CharacterController::beginComparison() {
    if (isComparing_ || !history_.undo()) return false;
    isComparing_ = true;
    show();
    emit isComparingChanged();
    return true;
}

void CharacterController::endComparison() {
    if (!isComparing_) return;
    if (history_.redo()) show();
    isComparing_ = false;
    emit isComparingChanged();
}

void CharacterController::take(const Aesthetics& values, const TakenSettings& settings) {
    const QString preset = presets_.nameOf(values);
    change(
        {values, preset.isEmpty() ? presetName() : preset, std::make_shared<const TakenSettings>(settings)});
    set(settings.after);
}

void CharacterController::randomise(double amount) {
    if (!(amount > 0)) return;
    SeededRNG rng(environment().freshSeed());
    Aesthetics next = aesthetics();
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const double target = double{rng.uniform()};
        if (parameters_.isLocked(text(spec.id))) continue;
        const double from = ParameterScale::position(spec, spec.value(next));
        const double to = from + std::min(amount, 1.0) * (target - from);
        next.set(spec, spec.snapped(ParameterScale::value(spec, to)));
    }
    edit(next);
}

// ---- Presets

void CharacterController::apply(const Preset& preset) {
    change({preset.aesthetics, text(preset.name)});
}

void CharacterController::applyPreset(const QString& name) {
    if (const auto values = presets_.find(name)) {
        change({*values, name});
    } else if (const QString problem = presets_.problemOf(name); !problem.isEmpty()) {
        emit errorRaised(problem);
    }
}

bool CharacterController::presetEdited() const {
    const std::optional<Aesthetics> preset = presets_.find(presetName());
    return preset && *preset != aesthetics();
}

void CharacterController::reloadPresets() {
    tasks_.run([folder = environment().presetsFolder] { return PresetFolder::list(folder); },
               [this](QList<OwnPreset> own) {
                   presets_.setOwn(std::move(own));
                   show();
               },
               [this](const TaskFailure& failure) { report(failure); });
}

QString CharacterController::presetNameProblem(const QString& name) const {
    const QString trimmed = name.trimmed();
    if (QString problem = PresetFolder::problemWithName(trimmed); !problem.isEmpty()) return problem;
    if (presets_.rowOf(trimmed) >= 0) return tr("A preset of that name exists already.");
    return {};
}

void CharacterController::saveOwnPreset(const QString& name) {
    if (const QString problem = presetNameProblem(name); !problem.isEmpty()) {
        emit errorRaised(problem);
        return;
    }
    const QString trimmed = name.trimmed();
    const Aesthetics values = aesthetics();
    tasks_.run(
        [folder = environment().presetsFolder, trimmed, values] {
            if (!PresetFolder::save(folder, trimmed, values))
                throw Failure(tr("A preset of that name exists already.").toStdString());
            return PresetFolder::list(folder);
        },
        [this, trimmed](QList<OwnPreset> own) {
            presets_.setOwn(std::move(own));
            change({aesthetics(), trimmed});
            emit presetSaved(trimmed);
        },
        [this](const TaskFailure& failure) {
            report(failure);
            reloadPresets();  // another program may have saved one of that name
        });
}

void CharacterController::deleteOwnPreset(const QString& name) {
    const QList<OwnPreset>& own = presets_.own();
    const auto preset = std::ranges::find(own, name, &OwnPreset::name);
    if (preset == own.end()) return;
    tasks_.run(
        [folder = environment().presetsFolder, preset = *preset] {
            PresetFolder::remove(folder, preset);
            return PresetFolder::list(folder);
        },
        [this](QList<OwnPreset> left) {
            presets_.setOwn(std::move(left));
            show();
        },
        [this](const TaskFailure& failure) { report(failure); });
}

// ---- The seed

std::optional<std::uint64_t> CharacterController::typedSeed() const {
    QString digits = seedText_.trimmed();
    if (digits.startsWith(QLatin1Char('+'))) digits.remove(0, 1);
    return Text::parseUnsigned(digits.toStdString());
}

void CharacterController::setSeedText(const QString& text) {
    assign(*this, seedText_, text, &CharacterController::seedTextChanged);
}

void CharacterController::reuseSeed() {
    if (!lastSeed_.isEmpty()) setSeedText(lastSeed_);
}

void CharacterController::copySeed() {
    if (!lastSeed_.isEmpty()) environment().copyText(lastSeed_);
}

void CharacterController::setKeepsSeed(bool keeps) {
    assign(*this, keepsSeed_, keeps, &CharacterController::keepsSeedChanged);
}

std::uint64_t CharacterController::drawSeed() {
    return seedOfRun(keepsSeed_);
}

std::uint64_t CharacterController::presentSeed() {
    return seedOfRun(true);
}

std::uint64_t CharacterController::seedOfRun(bool keeps) {
    std::optional<std::uint64_t> known = typedSeed();
    if (!known && keeps) known = Text::parseUnsigned(lastSeed_.toStdString());
    const std::uint64_t seed = known ? *known : environment().freshSeed();
    assign(*this, lastSeed_, QString::number(seed), &CharacterController::lastSeedChanged);
    return seed;
}

}  // namespace quillmere
