#include "QuillmereApp/Session.h"

#include <chrono>
#include <string>

#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

const QString qualityKey = QStringLiteral("quality");
const QString analysisKey = QStringLiteral("analysis");
const QString formatKey = QStringLiteral("format");
const QString parametersKey = QStringLiteral("parameters");
const QString presetKey = QStringLiteral("preset");
const QString seedKey = QStringLiteral("seed");

}  // namespace

Session::Session(Preferences& preferences, ModelController& model, CharacterController& character,
                 OutputController& output)
    : preferences_(preferences), model_(model), character_(character), output_(output) {
    restore();
    storeSoon_.setSingleShot(true);
    storeSoon_.setInterval(500ms);
    connect(&storeSoon_, &QTimer::timeout, this, &Session::store);
    const auto soon = [this] { storeSoon_.start(); };
    connect(&model_, &ModelController::qualityChanged, this, soon);
    connect(&model_, &ModelController::analysisChanged, this, soon);
    connect(&character_, &CharacterController::presetChanged, this, soon);
    connect(&character_, &CharacterController::seedTextChanged, this, soon);
    connect(&output_, &OutputController::formatChanged, this, soon);
    connect(&output_, &OutputController::countChanged, this, soon);
    connect(&output_, &OutputController::folderTextChanged, this, soon);
}

Session::~Session() {
    if (storeSoon_.isActive()) store();
}

void Session::restore() {
    const auto stored = [this](const QString& key) {
        return preferences_.text(key).value_or(QString()).toStdString();
    };
    if (const auto quality = qualityNamed(stored(qualityKey)))
        model_.setQualityIndex(static_cast<int>(*quality));
    if (const auto profile = analysisProfile(stored(analysisKey)))
        model_.setAnalysisIndex(indexIn(allAnalysisProfiles, *profile));
    if (const auto format = outputFormat(stored(formatKey)))
        output_.setFormatIndex(indexIn(allOutputFormats, *format));
    character_.setSeedText(preferences_.text(seedKey).value_or(QString()));
    restoreCharacter();
}

void Session::restoreCharacter() {
    const auto stored = preferences_.text(parametersKey);
    if (!stored) return;
    try {
        const Aesthetics read = decodePreset(stored->toStdString());
        validate(read);
        Aesthetics inRange;
        for (const ParameterSpec& spec : Aesthetics::specs())
            inRange.set(spec, spec.value(read));
        character_.restore({inRange, preferences_.text(presetKey).value_or(QString())});
    } catch (const Failure&) {
        return;  // edited by hand, or of a program to come: the defaults do
    }
}

void Session::store() {
    preferences_.setValue(qualityKey, text(info(model_.quality()).name));
    preferences_.setValue(analysisKey, text(rawValue(model_.analysis())));
    preferences_.setValue(formatKey, text(rawValue(output_.format())));
    preferences_.setValue(seedKey, character_.seedText());
    preferences_.setValue(parametersKey, QString::fromStdString(encodePreset(character_.aesthetics())));
    preferences_.setValue(presetKey, character_.presetName());
    output_.store();
}

}  // namespace quillmere
