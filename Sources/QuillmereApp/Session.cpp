#include "QuillmereApp/Session.h"

#include <QStringList>
#include <chrono>
#include <string>
#include <utility>

#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

const QString qualityKey = QStringLiteral("quality");
const QString analysisKey = QStringLiteral("analysis");
const QString startKey = QStringLiteral("start");
const QString soundsKey = QStringLiteral("sounds");
const QString formatKey = QStringLiteral("format");
const QString detailKey = QStringLiteral("detail");
const QString parametersKey = QStringLiteral("parameters");
const QString presetKey = QStringLiteral("preset");
const QString seedKey = QStringLiteral("seed");
const QString volumeKey = QStringLiteral("volume");
const QString playsAtOnceKey = QStringLiteral("playsAtOnce");
const QString followsSlidersKey = QStringLiteral("followsSliders");
const QString playsCandidatesKey = QStringLiteral("playsCandidates");

// In the order of ModelController::Start; as on a command line.
const QStringList startNames{QStringLiteral("fresh"), QStringLiteral("head-start")};

QString yesOrNo(bool is) {
    return is ? QStringLiteral("yes") : QStringLiteral("no");
}

}  // namespace

Session::Session(Preferences& preferences, ModelController& model, CharacterController& character,
                 OutputController& output, PlaybackController& playback)
    : preferences_(preferences), model_(model), character_(character), output_(output), playback_(playback) {
    restore();
    storedCharacter_ = currentCharacter();
    storeSoon_.setSingleShot(true);
    storeSoon_.setInterval(500ms);
    connect(&storeSoon_, &QTimer::timeout, this, &Session::store);
    watchAll();
}

Session::~Session() {
    store();
}

template <typename Sender>
void Session::watch(const Sender& sender, void (Sender::*changed)(), const QString& key, Store store) {
    connect(&sender, changed, this, [this, key, store = std::move(store)] {
        changed_.insert_or_assign(key, store);
        storeSoon_.start();
    });
}

void Session::watchAll() {
    watch(model_, &ModelController::qualityChanged, qualityKey,
          [this] { preferences_.setValue(qualityKey, text(info(model_.quality()).name)); });
    watch(model_, &ModelController::analysisChanged, analysisKey,
          [this] { preferences_.setValue(analysisKey, text(rawValue(model_.analysis()))); });
    watch(model_, &ModelController::startChanged, startKey,
          [this] { preferences_.setValue(startKey, startNames.at(model_.startIndex())); });
    watch(model_, &ModelController::keepsSoundsChanged, soundsKey,
          [this] { preferences_.setValue(soundsKey, yesOrNo(model_.keepsSounds())); });
    watch(character_, &CharacterController::presetChanged, presetKey, [this] { storeCharacter(); });
    watch(character_, &CharacterController::seedTextChanged, seedKey,
          [this] { preferences_.setValue(seedKey, character_.seedText()); });
    watch(output_, &OutputController::formatChanged, formatKey,
          [this] { preferences_.setValue(formatKey, text(rawValue(output_.format()))); });
    watch(output_, &OutputController::detailChanged, detailKey,
          [this] { preferences_.setValue(detailKey, QString::number(output_.detail())); });
    watch(playback_, &PlaybackController::volumeChanged, volumeKey,
          [this] { preferences_.setValue(volumeKey, QString::number(playback_.volume())); });
    watch(playback_, &PlaybackController::playsAtOnceChanged, playsAtOnceKey,
          [this] { preferences_.setValue(playsAtOnceKey, yesOrNo(playback_.playsAtOnce())); });
    watch(playback_, &PlaybackController::followsSlidersChanged, followsSlidersKey,
          [this] { preferences_.setValue(followsSlidersKey, yesOrNo(playback_.followsSliders())); });
    watch(playback_, &PlaybackController::playsCandidatesChanged, playsCandidatesKey,
          [this] { preferences_.setValue(playsCandidatesKey, yesOrNo(playback_.playsCandidates())); });
    watch(output_, &OutputController::countChanged, OutputController::countKey,
          [this] { output_.storeCount(); });
    watch(output_, &OutputController::folderTextChanged, OutputController::folderKey,
          [this] { output_.storeFolder(); });
}

void Session::restore() {
    const auto stored = [this](const QString& key) {
        return preferences_.text(key).value_or(QString()).toStdString();
    };
    if (const auto quality = qualityNamed(stored(qualityKey)))
        model_.setQualityIndex(static_cast<int>(*quality));
    if (const auto profile = analysisProfile(stored(analysisKey)))
        model_.setAnalysisIndex(indexIn(allAnalysisProfiles, *profile));
    model_.setStartIndex(
        static_cast<int>(startNames.indexOf(preferences_.text(startKey).value_or(QString()))));
    model_.setKeepsSounds(stored(soundsKey) == "yes");
    if (const auto format = outputFormat(stored(formatKey)))
        output_.setFormatIndex(indexIn(allOutputFormats, *format));
    if (const auto detail = preferences_.text(detailKey)) output_.setDetail(detail->toDouble());
    if (const auto volume = preferences_.text(volumeKey)) {
        bool isNumber = false;
        const double value = volume->toDouble(&isNumber);
        if (isNumber) playback_.setVolume(value);
    }
    playback_.setPlaysAtOnce(stored(playsAtOnceKey) == "yes");
    playback_.setFollowsSliders(stored(followsSlidersKey) == "yes");
    playback_.setPlaysCandidates(stored(playsCandidatesKey) == "yes");
    character_.setSeedText(preferences_.text(seedKey).value_or(QString()));
    restoreCharacter();
}

void Session::restoreCharacter() {
    const auto stored = preferences_.text(parametersKey);
    if (!stored) return;
    try {
        character_.restore(
            {inRange(decodePreset(stored->toStdString())), preferences_.text(presetKey).value_or(QString())});
    } catch (const Failure&) {
        return;  // edited by hand, or of a program to come: the defaults do
    }
}

Session::Character Session::currentCharacter() const {
    return {QString::fromStdString(encodePreset(character_.aesthetics())), character_.presetName()};
}

// The presets also change when those in the folder have been read, and then nobody has set anything.
void Session::storeCharacter() {
    const Character now = currentCharacter();
    if (now == storedCharacter_) return;
    preferences_.setValue(parametersKey, now.first);
    preferences_.setValue(presetKey, now.second);
    storedCharacter_ = now;
}

void Session::store() {
    for (const auto& [key, storeValue] : std::exchange(changed_, {}))
        storeValue();
}

}  // namespace quillmere
