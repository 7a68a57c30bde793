#include "QuillmereApp/Controllers/LearningSound.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/PixelImage.h"
#include "QuillmereApp/TemporarySound.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Picture/SoundPictures.h"

namespace quillmere {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t pictureColumns = 160;

}  // namespace

// When the next glimpse is due. The time belongs to the thread that trains.
struct LearningSound::Pace {
    std::atomic<bool> isBusy = false;  // with the glimpse before, or for ever when it cannot be heard
    Clock::time_point last = Clock::now();
};

struct LearningSound::Heard {
    std::int64_t step = 0;
    QImage picture;
};

LearningSound::LearningSound(const Environment& environment, network::Backend& processor)
    : environment_(environment), processor_(processor) {}

QUrl LearningSound::url() const {
    return toUrl(environment_.temporaryFolder / "Quillmere-learning.wav");
}

TrainingHooks LearningSound::begin(const std::stop_token& enough) {
    end();
    pace_ = std::make_shared<Pace>();
    return {.enough = enough,
            .wantsGlimpse =
                [pace = pace_, interval = environment_.glimpseInterval] {
                    if (pace->isBusy || Clock::now() - pace->last < interval) return false;
                    pace->last = Clock::now();
                    return true;
                },
            .glimpsed =
                [this, pace = pace_](Glimpse glimpse) {
                    pace->isBusy = true;
                    tasks_.post([this, pace, shared = std::make_shared<const Glimpse>(std::move(glimpse))] {
                        if (pace == pace_) listen(shared);
                    });
                }};
}

void LearningSound::end() {
    pace_.reset();
    if (!isThere()) return;
    step_ = 0;
    picture_ = {};
    emit changed();
}

void LearningSound::listen(const std::shared_ptr<const Glimpse>& glimpse) {
    tasks_.run(
        [this, glimpse, file = toPath(url())] {
            SampleGenerator generator(ModelTrainer::modelOf(*glimpse, processor_), processor_);
            const std::vector<float> samples = generator.audition(Aesthetics(), seed);
            writeTemporarySound(samples, file, generator.sampleRate());
            const SoundPictures::MelPainter painter(generator.sampleRate(), glimpse->config.clipSeconds(),
                                                    pictureColumns);
            return Heard{.step = glimpse->step, .picture = imageOf(painter.paint(samples))};
        },
        [this, pace = pace_](const Heard& heard) {
            if (pace != pace_) return;
            pace->isBusy = false;
            show(heard);
        },
        [this, pace = pace_](const TaskFailure& failure) {
            if (pace == pace_) emit notice(failure.message);
        });
}

void LearningSound::show(const Heard& heard) {
    step_ = static_cast<int>(heard.step);
    picture_ = heard.picture;
    emit changed();
}

}  // namespace quillmere
