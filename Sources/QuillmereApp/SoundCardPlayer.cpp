// Playback through SDL2's audio subsystem.
#define SDL_MAIN_HANDLED
#include <SDL.h>
#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <functional>
#include <optional>
#include <thread>
#include <utility>
#include <variant>
#include <vector>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Player.h"
#include "QuillmereApp/QueuedCalls.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Samples per device buffer: 21 ms at 48 kHz.
constexpr Uint16 bufferSamples = 1024;
// Rates that sound servers take as they are; anything else is converted first.
constexpr double lowestRate = 4000;
constexpr double highestRate = 192000;
constexpr int fallbackRate = 48000;
// A queue that has not moved for this long belongs to a device that no longer plays.
constexpr auto patience = 2s;

struct Sound {
    std::vector<float> samples;
    int rate = 0;  // Hz
    double seconds = 0;
};

// Stretches of a sound whose peaks are kept for a meter.
constexpr double stretchSeconds = 0.02;
using Peaks = std::vector<float>;

Peaks peaksOf(const Sound& sound) {
    const auto stretch = std::max<std::size_t>(1, static_cast<std::size_t>(stretchSeconds * sound.rate));
    Peaks peaks((sound.samples.size() + stretch - 1) / stretch);
    for (std::size_t i = 0; i < sound.samples.size(); ++i)
        peaks[i / stretch] = std::max(peaks[i / stretch], std::abs(sound.samples[i]));
    return peaks;
}

Sound atPlayableRate(std::vector<float> samples, double rate) {
    const double seconds = static_cast<double>(samples.size()) / rate;
    const bool playsAsItIs = rate >= lowestRate && rate <= highestRate && rate == std::floor(rate);
    if (playsAsItIs) return {std::move(samples), static_cast<int>(rate), seconds};
    return {AudioIO::resample(std::move(samples), rate, fallbackRate), fallbackRate, seconds};
}

Sound readSound(const QString& file) {
    AudioIO::MonoAudio audio = AudioIO::readMono(toPath(file));
    return atPlayableRate(std::move(audio.samples), audio.sampleRate);
}

Sound readSound(const PlayableSound& sound) {
    std::vector<float> samples = *sound.samples;
    for (float& sample : samples)
        sample *= sound.gain;
    return atPlayableRate(std::move(samples), sound.sampleRate);
}

extern "C" void sayNothing(const char*, int, const char*, int, const char*, ...) {}

// Where there is no card, ALSA's library writes a page of its own about it to the standard error output. It
// is there if SDL uses it, and is none of our libraries.
void silenceALSA() {
    using Handler =
        void (*)(const char* file, int line, const char* function, int code, const char* format, ...);
    using SetHandler = int (*)(Handler);
    void* alsa = ::dlopen("libasound.so.2", RTLD_NOW | RTLD_NOLOAD);
    if (alsa == nullptr) return;
    if (const auto set = reinterpret_cast<SetHandler>(::dlsym(alsa, "snd_lib_error_set_handler")))
        set(sayNothing);
    ::dlclose(alsa);
}

// The sound card, open and silent. The subsystem lives as long as the device: after a failure the next play
// looks for a card afresh.
class Device {
public:
    explicit Device(int rate) {
        SDL_SetMainReady();
        SDL_SetHint(SDL_HINT_AUDIO_DEVICE_APP_NAME, "Quillmere");
        SDL_SetHint(SDL_HINT_AUDIO_DEVICE_STREAM_NAME, "Sample");
        silenceALSA();
        if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) throw Failure(reason().toStdString());
        silenceALSA();  // SDL may have loaded it only now
        SDL_AudioSpec wanted{};
        wanted.freq = rate;
        wanted.format = AUDIO_F32SYS;
        wanted.channels = 1;
        wanted.samples = bufferSamples;
        id_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, &obtained_, 0);
        if (id_ == 0) {
            const std::string why = reason().toStdString();
            SDL_QuitSubSystem(SDL_INIT_AUDIO);
            throw Failure(why);
        }
    }
    ~Device() {
        SDL_CloseAudioDevice(id_);
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    void queue(const std::vector<float>& samples) {
        const auto bytes = samples.size() * sizeof(float);
        if (bytes > UINT32_MAX || SDL_QueueAudio(id_, samples.data(), static_cast<Uint32>(bytes)) != 0)
            throw Failure((bytes > UINT32_MAX ? Words::tr("The file is too long to be played.") : reason())
                              .toStdString());
    }
    // What is in the device's own buffers when the queue runs empty is silence, not the end of the sound.
    void queueSilence() {
        queue(std::vector<float>(2 * std::size_t{obtained_.samples} +
                                 static_cast<std::size_t>(obtained_.freq) / 20));
    }
    void start() { SDL_PauseAudioDevice(id_, 0); }
    void silence() {
        SDL_PauseAudioDevice(id_, 1);
        SDL_ClearQueuedAudio(id_);
    }
    [[nodiscard]] Uint32 queuedBytes() const { return SDL_GetQueuedAudioSize(id_); }
    [[nodiscard]] bool isGone() const { return SDL_GetAudioDeviceStatus(id_) == SDL_AUDIO_STOPPED; }

private:
    static QString reason() {
        return Words::tr("There is no sound card to play through: %1").arg(QString::fromUtf8(SDL_GetError()));
    }

    SDL_AudioSpec obtained_{};
    SDL_AudioDeviceID id_ = 0;
};

// A file, or what is in memory.
using Source = std::variant<QString, PlayableSound>;

// What the window's thread and the playing thread share. It outlives the player when a sound server hangs
// while a device is being opened or closed: then the thread is left behind.
class Playback {
public:
    struct Events {
        std::function<void(quint64 play, double seconds, const Peaks& peaks)> started;
        std::function<void(quint64 play)> ended;
        std::function<void(quint64 play, const QString& reason)> failed;
    };
    explicit Playback(Events events) : events_(std::move(events)) {}

    void play(quint64 number, const Source& source, float volume) {
        const MutexLock lock(mutex_);
        newest_ = number;
        request_ = Request{number, source, volume};
        wake_.notify_all();
    }
    void stop(quint64 number) {
        const MutexLock lock(mutex_);
        newest_ = number;
        request_.reset();
        wake_.notify_all();
    }
    // No event follows. False when the thread did not end in time.
    bool quit(std::chrono::milliseconds time) {
        const MutexLock lock(mutex_);
        quit_ = true;
        wake_.notify_all();
        return wake_.wait_for(mutex_, time, [this]() QUILLMERE_REQUIRES(mutex_) { return over_; });
    }

    void run() {
        while (const auto request = nextRequest())
            playOne(*request);
        const MutexLock lock(mutex_);
        over_ = true;
        wake_.notify_all();
    }

private:
    struct Request {
        quint64 number;
        Source source;
        float volume;
    };

    // Waits for it. None when the player goes.
    std::optional<Request> nextRequest() {
        const MutexLock lock(mutex_);
        wake_.wait(mutex_, [this]() QUILLMERE_REQUIRES(mutex_) { return quit_ || request_; });
        if (quit_) return std::nullopt;
        return std::exchange(request_, std::nullopt);
    }

    void playOne(const Request& request) {
        const quint64 number = request.number;
        try {
            Sound sound = std::visit([](const auto& from) { return readSound(from); }, request.source);
            if (isSuperseded(number)) return;
            if (request.volume != 1.0F) {
                for (float& sample : sound.samples)
                    sample *= request.volume;
            }
            const Peaks peaks = peaksOf(sound);
            Device device(sound.rate);
            device.queue(sound.samples);
            device.queueSilence();
            sound.samples = {};
            if (isSuperseded(number)) return;
            device.start();
            tell([&] { events_.started(number, sound.seconds, peaks); });
            waitForTheEnd(number, device);
        } catch (const std::exception& error) {
            const QString reason = Words::of(error);
            tell([&] { events_.failed(number, reason); });
            return;
        }
        if (!isSuperseded(number)) tell([&] { events_.ended(number); });
    }

    void waitForTheEnd(quint64 number, Device& device) {
        Uint32 queued = device.queuedBytes();
        auto lastMove = Clock::now();
        while (queued > 0 && !device.isGone() && Clock::now() - lastMove < patience) {
            if (supersededWithin(number, 10ms)) {
                device.silence();
                return;
            }
            const Uint32 now = device.queuedBytes();
            if (std::exchange(queued, now) != now) lastMove = Clock::now();
        }
    }

    [[nodiscard]] bool isSuperseded(quint64 number) { return supersededWithin(number, 0ms); }
    [[nodiscard]] bool supersededWithin(quint64 number, std::chrono::milliseconds time) {
        const MutexLock lock(mutex_);
        return wake_.wait_for(mutex_, time,
                              [&]() QUILLMERE_REQUIRES(mutex_) { return quit_ || newest_ != number; });
    }
    // The player is there as long as quit_ is not set.
    template <typename Event>
    void tell(Event event) {
        const MutexLock lock(mutex_);
        if (!quit_) event();
    }

    const Events events_;

    Mutex mutex_;
    std::condition_variable_any wake_;
    std::optional<Request> request_ QUILLMERE_GUARDED_BY(mutex_);
    quint64 newest_ QUILLMERE_GUARDED_BY(mutex_) = 0;
    bool quit_ QUILLMERE_GUARDED_BY(mutex_) = false;
    bool over_ QUILLMERE_GUARDED_BY(mutex_) = false;
};

class SoundCardPlayer final : public Player {
public:
    SoundCardPlayer() {
        playback_ = std::make_shared<Playback>(Playback::Events{
            .started = [this](quint64 play, double seconds,
                              const Peaks& peaks) { post(play, [=, this] { onStarted(seconds, peaks); }); },
            .ended = [this](quint64 play) { post(play, [this] { onEnded(); }); },
            .failed = [this](quint64 play,
                             const QString& reason) { post(play, [=, this] { onFailed(reason); }); }});
        thread_ = std::thread([playback = playback_] {
            playback->run();
            SDL_TLSCleanup();  // SDL's own threads alone free what it keeps for a thread
        });
    }

    ~SoundCardPlayer() override {
        if (playback_->quit(1s)) {
            thread_.join();
        } else {
            thread_.detach();
        }
    }

    void play(const QString& file) override { begin(file, file); }
    void playSound(const QString& name, const PlayableSound& sound) override { begin(name, sound); }
    void stop() override {
        isPlaying_ = false;
        playback_->stop(++number_);
    }
    [[nodiscard]] bool isPlaying() const override { return isPlaying_; }
    void setVolume(float volume) override { volume_ = volume; }
    [[nodiscard]] double peakAt(double seconds) const override {
        const auto stretch = static_cast<std::size_t>(std::max(0.0, seconds) / stretchSeconds);
        return isPlaying_ && stretch < peaks_.size() ? double{peaks_[stretch]} : 0;
    }

private:
    void begin(const QString& name, const Source& source) {
        isPlaying_ = false;
        name_ = name;
        playback_->play(++number_, source, volume_);
    }
    // From the playing thread: event on this object's thread, unless another play or stop has come first.
    template <typename Event>
    void post(quint64 play, Event event) {
        calls_.add([this, play, event] {
            if (play == number_) event();
        });
    }
    void onStarted(double seconds, const Peaks& peaks) {
        isPlaying_ = true;
        peaks_ = peaks;
        emit started(name_, seconds);
    }
    void onEnded() {
        isPlaying_ = false;
        emit ended(name_);
    }
    void onFailed(const QString& reason) {
        isPlaying_ = false;
        emit failed(name_, reason);
    }

    QString name_;
    quint64 number_ = 0;  // of the newest play or stop
    bool isPlaying_ = false;
    float volume_ = 1;
    Peaks peaks_;  // of what plays
    QueuedCalls calls_;
    std::shared_ptr<Playback> playback_;
    std::thread thread_;
};

}  // namespace

std::unique_ptr<Player> Player::forSoundCard() {
    return std::make_unique<SoundCardPlayer>();
}

}  // namespace quillmere
