#include "QuillmereApp/Controllers/PlaybackController.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"

namespace quillmere {

using namespace std::chrono_literals;

PlaybackController::PlaybackController(const Environment& environment)
    : Controller(environment), player_(environment.makePlayer()) {
    connect(player_.get(), &Player::started, this, &PlaybackController::started);
    connect(player_.get(), &Player::failed, this, &PlaybackController::failed);
    connect(player_.get(), &Player::ended, this, &PlaybackController::clearIfPlayed);
    playTimer_.setSingleShot(true);
    playTimer_.setTimerType(Qt::PreciseTimer);
    connect(&playTimer_, &QTimer::timeout, this, &PlaybackController::clearIfPlayed);
    levelTimer_.setInterval(40ms);
    connect(&levelTimer_, &QTimer::timeout, this, &PlaybackController::measureLevel);
}

void PlaybackController::play(const QUrl& file) {
    silence();
    if (!file.isLocalFile()) return;
    openingURL_ = file;
    player_->play(file.toLocalFile());
    emit asked(file);
}

void PlaybackController::playSound(const QUrl& name, const PlayableSound& sound) {
    silence();
    openingURL_ = name;
    player_->playSound(name.toString(), sound);
    emit asked(name);
}

void PlaybackController::togglePlay(const QUrl& file) {
    if (!stopped(file)) play(file);
}

void PlaybackController::togglePlaySound(const QUrl& name, const PlayableSound& sound) {
    if (!stopped(name)) playSound(name, sound);
}

bool PlaybackController::stopped(const QUrl& url) {
    return !url.isEmpty() && (url == playingURL_ || url == openingURL_) && stop();
}

bool PlaybackController::stop() {
    const bool sounds = silence();
    if (sounds) emit asked({});
    return sounds;
}

bool PlaybackController::silence() {
    const bool sounds = !openingURL_.isEmpty() || !playingURL_.isEmpty();
    player_->stop();
    playTimer_.stop();
    openingURL_.clear();
    setPlaying({});
    return sounds;
}

void PlaybackController::rename(const QUrl& from, const QUrl& to) {
    if (openingURL_ == from) openingURL_ = to;
    if (playingURL_ == from) setPlaying(to);
}

void PlaybackController::setPlaying(const QUrl& file) {
    assign(*this, playingURL_, file, &PlaybackController::playingURLChanged);
    clock_.start();
    if (file.isEmpty()) {
        levelTimer_.stop();
        assign(*this, level_, 0, &PlaybackController::levelChanged);
    } else {
        levelTimer_.start();
    }
}

void PlaybackController::measureLevel() {
    constexpr double lowest = 60;  // dB below full scale
    const double peak = player_->peakAt(static_cast<double>(clock_.elapsed()) / 1000);
    const double level = peak > 0 ? std::clamp(1 + 20 * std::log10(peak) / lowest, 0.0, 1.0) : 0;
    assign(*this, level_, level, &PlaybackController::levelChanged);
}

void PlaybackController::setVolume(double volume) {
    if (!std::isfinite(volume)) return;
    const double rounded = std::round(std::clamp(volume, 0.0, 1.0) * 100) / 100;
    player_->setVolume(static_cast<float>(rounded * rounded));  // as loud as it looks
    assign(*this, volume_, rounded, &PlaybackController::volumeChanged);
}

void PlaybackController::setPlaysAtOnce(bool plays) {
    assign(*this, playsAtOnce_, plays, &PlaybackController::playsAtOnceChanged);
}

void PlaybackController::setFollowsSliders(bool follows) {
    assign(*this, followsSliders_, follows, &PlaybackController::followsSlidersChanged);
}

void PlaybackController::setPlaysCandidates(bool plays) {
    assign(*this, playsCandidates_, plays, &PlaybackController::playsCandidatesChanged);
}

void PlaybackController::started(const QString&, double seconds) {
    playingSeconds_ = seconds;
    setPlaying(std::exchange(openingURL_, QUrl()));
    playTimer_.start(std::chrono::milliseconds(std::llround((seconds + 0.1) * 1000)));
}

void PlaybackController::failed(const QString&, const QString& reason) {
    openingURL_.clear();
    emit fileFailed();
    emit notice(reason);
}

// The mark stays for the file's duration and 0.1 s, and longer while the sound card still plays.
void PlaybackController::clearIfPlayed() {
    if (playTimer_.isActive() || player_->isPlaying()) return;
    const QUrl played = playingURL_;
    setPlaying({});
    if (!played.isEmpty()) emit finished(played);
}

}  // namespace quillmere
