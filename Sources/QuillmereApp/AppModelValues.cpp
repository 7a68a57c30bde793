// What AppModel's properties say about its state; nothing here changes anything.

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <limits>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/TimeText.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

template <typename Values>
QStringList labelsOf(const Values& values) {
    QStringList labels;
    for (const auto value : values)
        labels.append(text(label(value)));
    return labels;
}

template <typename Values, typename Value>
int indexIn(const Values& values, Value value) {
    return static_cast<int>(std::find(values.begin(), values.end(), value) - values.begin());
}

int clampedToInt(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, 0, std::numeric_limits<int>::max()));
}

// A path as people write it.
QString displayed(const QString& path, const QString& home) {
    if (path == home) return QStringLiteral("~");
    return path.startsWith(home + QLatin1Char('/')) ? QLatin1Char('~') + path.mid(home.size()) : path;
}

// The time that the rest takes if it goes on as it went; empty before anything is done.
QString timeLeft(const QElapsedTimer& clock, int done, int total) {
    if (done <= 0 || done >= total || !clock.isValid()) return {};
    const double elapsed = static_cast<double>(clock.elapsed()) / 1000;
    return TimeText::left(elapsed / done * (total - done));
}

}  // namespace

QString AppModel::corpusPath() const {
    return displayed(corpusURL_.toLocalFile(), environment_.homeFolder);
}

QString AppModel::corpusName() const {
    return hasCorpus() ? QDir(corpusURL_.toLocalFile()).dirName() : QString();
}

QString AppModel::scanTimeLeft() const {
    return isScanning_ ? timeLeft(scanClock_, scanDone_, scanTotal_) : QString();
}

int AppModel::fileCount() const {
    return summary_ ? summary_->fileCount() : 0;
}

double AppModel::totalSeconds() const {
    return summary_ ? summary_->totalSeconds : 0;
}

QString AppModel::totalDuration() const {
    return summary_ ? TimeText::duration(summary_->totalSeconds) : QString();
}

QStringList AppModel::sampleRates() const {
    QStringList rates;
    if (!summary_) return rates;
    for (const auto& [rate, files] : summary_->sampleRates)
        rates.append(QStringLiteral("%1 kHz").arg(rate / 1000.0, 0, 'g', 6));
    return rates;
}

int AppModel::unreadable() const {
    return summary_ ? summary_->unreadable : 0;
}

bool AppModel::corpusIsEmpty() const {
    return summary_ && summary_->files.empty();
}

bool AppModel::hasFewSamples() const {
    return summary_ && !summary_->files.empty() && fileCount() - unreadable() < fewSamplesLimit;
}

QVariantList AppModel::recentCorpora() const {
    QVariantList entries;
    for (const QString& path : recentCorpora_) {
        entries.append(QVariantMap{{QStringLiteral("url"), QUrl::fromLocalFile(path)},
                                   {QStringLiteral("path"), displayed(path, environment_.homeFolder)},
                                   {QStringLiteral("name"), QDir(path).dirName()}});
    }
    return entries;
}

QString AppModel::corpusChooserMessage() const {
    return QStringLiteral("Choose the folder of audio samples to learn from");
}

QString AppModel::outputChooserMessage() const {
    return QStringLiteral("Choose a folder for the generated samples — use New Folder to create one");
}

QString AppModel::chooserButton() const {
    return QStringLiteral("Use Folder");
}

const ModelBundle* AppModel::bundle() const {
    return generator_ ? &generator_->bundle() : nullptr;
}

QString AppModel::modelAnalysis() const {
    return bundle() ? text(label(bundle()->config.profile)) : QString();
}

double AppModel::modelClipSeconds() const {
    return bundle() ? bundle()->config.clipSeconds() : 0;
}

QString AppModel::modelClipSecondsText() const {
    return bundle() ? QString::fromStdString(Text::fixed(modelClipSeconds(), 1)) : QString();
}

QDateTime AppModel::modelTrainedAt() const {
    if (!bundle()) return {};
    return QDateTime::fromSecsSinceEpoch(bundle()->metadata.trainedAt.time_since_epoch().count());
}

int AppModel::modelSteps() const {
    return bundle() ? clampedToInt(bundle()->metadata.steps) : 0;
}

int AppModel::modelClipCount() const {
    return bundle() ? static_cast<int>(bundle()->latents.size()) : 0;
}

QStringList AppModel::qualityLabels() const {
    QStringList labels;
    for (const QualityInfo& quality : allQualities)
        labels.append(QString::fromUtf8(quality.label));
    return labels;
}

QStringList AppModel::qualityHelps() const {
    QStringList helps;
    for (const QualityInfo& quality : allQualities)
        helps.append(QString::fromUtf8(quality.help));
    return helps;
}

QStringList AppModel::analysisLabels() const {
    return labelsOf(allAnalysisProfiles);
}

QString AppModel::analysisHelp() const {
    return QStringLiteral(
        "Automatic picks a fine-frequency analysis for sustained, pitched samples and a fine-time analysis "
        "for percussive ones.");
}

int AppModel::analysisIndex() const {
    return indexIn(allAnalysisProfiles, analysis_);
}

bool AppModel::canTrain() const {
    return summary_ && !summary_->files.empty() && !isBusy();
}

QString AppModel::trainHint() const {
    if (!hasCorpus()) return QStringLiteral("Choose a corpus first.");
    if (corpusIsEmpty()) return QStringLiteral("No audio files found in this folder.");
    return {};
}

QString AppModel::trainingPhase() const {
    return training_ ? text(rawValue(training_->phase)) : QString();
}

QString AppModel::trainingMessage() const {
    return training_ ? QString::fromStdString(training_->message) : QString();
}

int AppModel::trainingStep() const {
    return training_ ? clampedToInt(training_->step) : 0;
}

int AppModel::trainingTotalSteps() const {
    return training_ ? clampedToInt(training_->totalSteps) : 0;
}

double AppModel::trainingLoss() const {
    return training_ ? double{training_->loss} : 0;
}

double AppModel::trainingReconstruction() const {
    return training_ ? double{training_->reconstruction} : 0;
}

double AppModel::trainingFraction() const {
    return training_ ? training_->fraction : 0;
}

QString AppModel::trainingTimeLeft() const {
    if (!training_ || !training_->secondsRemaining) return {};
    return TimeText::left(*training_->secondsRemaining);
}

std::optional<QUrl> AppModel::outputFolder() const {
    QString path = outputText_.trimmed();
    if (path.isEmpty()) return std::nullopt;
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        path.replace(0, 1, environment_.homeFolder);
    return QUrl::fromLocalFile(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
}

QStringList AppModel::formatLabels() const {
    return labelsOf(allOutputFormats);
}

int AppModel::formatIndex() const {
    return indexIn(allOutputFormats, format_);
}

bool AppModel::presetEdited() const {
    const std::optional<Aesthetics> preset = presets_.find(presetName());
    return preset && *preset != aesthetics();
}

std::optional<std::uint64_t> AppModel::typedSeed() const {
    QString digits = seedText_.trimmed();
    if (digits.startsWith(QLatin1Char('+'))) digits.remove(0, 1);
    return Text::parseUnsigned(digits.toStdString());
}

QString AppModel::generationTimeLeft() const {
    return isGenerating_ ? timeLeft(generationClock_, generationDone_, generationTotal_) : QString();
}

bool AppModel::isPlayingAudition() const {
    return !playingURL_.isEmpty() && playingURL_ == auditionURL();
}

QUrl AppModel::auditionURL() const {
    return toUrl(environment_.temporaryFolder / "Quillmere-audition.wav");
}

}  // namespace quillmere
