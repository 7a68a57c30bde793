#include "QuillmereApp/Controllers/PlaybackController.h"

#include <chrono>
#include <cmath>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"

namespace quillmere {

PlaybackController::PlaybackController(const Environment& environment)
    : Controller(environment), player_(environment.makePlayer()) {
    connect(player_.get(), &Player::started, this, &PlaybackController::started);
    connect(player_.get(), &Player::failed, this, &PlaybackController::failed);
    connect(player_.get(), &Player::ended, this, &PlaybackController::clearIfPlayed);
    playTimer_.setSingleShot(true);
    playTimer_.setTimerType(Qt::PreciseTimer);
    connect(&playTimer_, &QTimer::timeout, this, &PlaybackController::clearIfPlayed);
}

void PlaybackController::play(const QUrl& file) {
    stop();
    if (!file.isLocalFile()) return;
    openingURL_ = file;
    player_->play(file.toLocalFile());
}

void PlaybackController::playSound(const QUrl& name, const PlayableSound& sound) {
    stop();
    openingURL_ = name;
    player_->playSound(name.toString(), sound);
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
    setPlaying({});
}

}  // namespace quillmere
