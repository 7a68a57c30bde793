#pragma once

#include <QImage>
#include <QObject>
#include <QQmlEngine>
#include <QUrl>
#include <cstdint>
#include <memory>
#include <stop_token>

#include "QuillmereApp/BackgroundTask.h"
#include "QuillmereApp/Environment.h"
#include "QuillmereCore/Model/Training/TrainingHooks.h"
#include "QuillmereCore/Network/Backend.h"

namespace quillmere {

// What a training sounds like while it goes on: one sound, always with the same seed and the parameters of
// "Balanced", made anew every few seconds from what has been learned by then.
//
// Threads: as for Controller. The sound is made in the background, on the processor.
class LearningSound : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("ModelController owns it")
    Q_PROPERTY(bool isThere READ isThere NOTIFY changed)
    Q_PROPERTY(int step READ step NOTIFY changed)           // after which the network was as it is heard
    Q_PROPERTY(QUrl url READ url CONSTANT)                  // of the file
    Q_PROPERTY(QImage picture READ picture NOTIFY changed)  // its mel image, lowest band at the bottom

public:
    static constexpr std::uint64_t seed = 1;

    // Both must outlive it; the backend runs on the processor.
    LearningSound(const Environment& environment, network::Backend& processor);

    // A training is about to begin: what it is to be given. The sound of the one before is gone.
    [[nodiscard]] TrainingHooks begin(const std::stop_token& enough);
    // The training has ended.
    void end();

    [[nodiscard]] bool isThere() const { return step_ > 0; }
    [[nodiscard]] int step() const { return step_; }
    [[nodiscard]] QUrl url() const;
    [[nodiscard]] QImage picture() const { return picture_; }

signals:
    void changed();
    // A sound could not be made: why. The present training gets no more.
    void notice(const QString& text);

private:
    struct Pace;
    struct Heard;

    void listen(const std::shared_ptr<const Glimpse>& glimpse);
    void show(const Heard& heard);

    const Environment& environment_;
    network::Backend& processor_;
    std::shared_ptr<Pace> pace_;  // of the present training
    int step_ = 0;
    QImage picture_;
    BackgroundTasks tasks_{1};  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
