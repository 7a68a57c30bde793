#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <vector>

namespace quillmere {

// A sound in memory, and how loud it is to be played.
struct PlayableSound {
    std::shared_ptr<const std::vector<float>> samples;  // mono, nominally within +-1
    double sampleRate = 0;                              // Hz
    float gain = 1;

    [[nodiscard]] double seconds() const { return static_cast<double>(samples->size()) / sampleRate; }
};

// Plays one sound at a time. Lives on the user-interface thread; no call blocks it.
class Player : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Stops what plays and begins with file: started or failed follows, unless another play or stop comes
    // first.
    virtual void play(const QString& file) = 0;
    // The same with what is in memory; name stands for it in the signals.
    virtual void playSound(const QString& name, const PlayableSound& sound) = 0;
    // Silence at once; neither ended nor failed follows for what was stopped.
    virtual void stop() = 0;
    [[nodiscard]] virtual bool isPlaying() const = 0;
    // 0 ... 1, a factor of the samples; of what is played from then on.
    virtual void setVolume(float volume) = 0;
    // The largest |sample| of what plays around that moment, in seconds from its start; 0 for silence and
    // where nothing plays.
    [[nodiscard]] virtual double peakAt(double seconds) const = 0;

    // Plays through the sound card, by SDL2's audio subsystem. The device is opened for each play, so that a
    // card that comes or goes is noticed; without one every play fails. Float and integer files of any rate
    // and number of channels, mixed to mono.
    [[nodiscard]] static std::unique_ptr<Player> forSoundCard();

signals:
    // The first sample is on its way; seconds is the file's duration.
    void started(const QString& file, double seconds);
    // The last sample has been played, or the device has stopped taking any.
    void ended(const QString& file);
    // Nothing plays: the file cannot be read, or there is no sound card.
    void failed(const QString& file, const QString& reason);
};

}  // namespace quillmere
