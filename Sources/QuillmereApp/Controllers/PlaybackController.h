#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QUrl>
#include <memory>

#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Player.h"

namespace quillmere {

// What plays, and how long the window says so.
class PlaybackController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(QUrl playingURL READ playingURL NOTIFY playingURLChanged)
    // ---- How sounds are heard: kept from one start of the program to the next
    Q_PROPERTY(double volume READ volume WRITE setVolume NOTIFY volumeChanged)  // 0 ... 1, of the next sound
    // Results play when they are selected.
    Q_PROPERTY(bool playsAtOnce READ playsAtOnce WRITE setPlaysAtOnce NOTIFY playsAtOnceChanged)
    // A slider that rests is heard.
    Q_PROPERTY(bool followsSliders READ followsSliders WRITE setFollowsSliders NOTIFY followsSlidersChanged)
    // Candidates play one after the other as they come, and not the first alone.
    Q_PROPERTY(
        bool playsCandidates READ playsCandidates WRITE setPlaysCandidates NOTIFY playsCandidatesChanged)
    Q_PROPERTY(double level READ level NOTIFY levelChanged)  // now: 0 (-60 dB or less) ... 1 (full scale)
    Q_PROPERTY(double playingSeconds READ playingSeconds NOTIFY playingURLChanged)  // how long it lasts

public:
    explicit PlaybackController(const Environment& environment);

    // Stops what plays and begins with file. One that cannot be played ends as notice and fileFailed.
    Q_INVOKABLE void play(const QUrl& file);
    // The same with what is in memory. name: what playingURL says meanwhile; no file has it.
    void playSound(const QUrl& name, const PlayableSound& sound);
    void togglePlaySound(const QUrl& name, const PlayableSound& sound);
    // Plays file, or stops it if it is the one playing.
    Q_INVOKABLE void togglePlay(const QUrl& file);
    // Whether there was something to stop: a file that played or was about to.
    Q_INVOKABLE bool stop();

    // Silence, if that is what plays or is about to.
    void stopIfPlaying(const QUrl& url) { (void)stopped(url); }

    // A file has got another name: if it sounds, or is about to, it goes on under that one.
    void rename(const QUrl& from, const QUrl& to);

    [[nodiscard]] QUrl playingURL() const { return playingURL_; }
    [[nodiscard]] double playingSeconds() const { return playingSeconds_; }
    [[nodiscard]] double volume() const { return volume_; }
    void setVolume(double volume);
    [[nodiscard]] bool playsAtOnce() const { return playsAtOnce_; }
    void setPlaysAtOnce(bool plays);
    [[nodiscard]] bool followsSliders() const { return followsSliders_; }
    void setFollowsSliders(bool follows);
    [[nodiscard]] bool playsCandidates() const { return playsCandidates_; }
    void setPlaysCandidates(bool plays);
    [[nodiscard]] double level() const { return level_; }

signals:
    void playingURLChanged();
    void volumeChanged();
    void playsAtOnceChanged();
    void followsSlidersChanged();
    void playsCandidatesChanged();
    void levelChanged();
    // A sound is to be heard from now on, or none any more: an empty one.
    void asked(const QUrl& url);
    // A sound has come to its end, unless something else was to be heard before that.
    void finished(const QUrl& url);
    // A file could not be played: most likely it is gone.
    void fileFailed();

private:
    void started(const QString& file, double seconds);
    void failed(const QString& file, const QString& reason);
    void setPlaying(const QUrl& file);
    void clearIfPlayed();
    void measureLevel();
    bool silence();
    // Whether it played, or was about to, and is stopped now.
    bool stopped(const QUrl& url);

    std::unique_ptr<Player> player_;
    QUrl openingURL_;  // asked for, not yet started
    QUrl playingURL_;
    double playingSeconds_ = 0;
    QTimer playTimer_;
    QElapsedTimer clock_;  // since it started
    QTimer levelTimer_;
    double level_ = 0;
    double volume_ = 1;
    bool playsAtOnce_ = false;
    bool followsSliders_ = false;
    bool playsCandidates_ = false;
};

}  // namespace quillmere
