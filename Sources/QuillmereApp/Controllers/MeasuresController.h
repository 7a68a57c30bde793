#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/Inspection.h"
#include "QuillmereApp/Player.h"
#include "QuillmereApp/SoundMeasure.h"
#include "QuillmereCore/Model/Corpus.h"

namespace quillmere {

// How bright and how new the sounds of the window are, measured one after the other while nothing else runs.
class MeasuresController : public Controller {
    Q_OBJECT

public:
    // Files of a corpus that sounds are compared with unasked: more take too long for what nobody may want.
    static constexpr std::size_t mostUnasked = 500;

    // What it asks of others.
    struct Links {
        std::function<std::shared_ptr<const Inspection::CorpusPrints>()> prints;  // null until they are made
        std::function<void(bool isAsked)> makePrints;                             // of the present corpus
        std::function<void()> withdrawPrints;                                     // that nobody has asked for
    };

    MeasuresController(const Environment& environment, Links links);

    // What new sounds are compared with: another corpus, or other prints of it.
    void setCorpus(const std::shared_ptr<const CorpusSummary>& corpus);
    void comparisonChanged();
    // The prints cannot be made.
    void comparisonFailed(const QString& reason);
    // Somebody wants to know how new the sounds are, however long it takes.
    void compareAnyway();
    // A sound is gone for good; all files are but those that stay. What is known of them takes memory.
    void forget(const QUrl& name);
    void keepFiles(const std::function<bool(const QUrl& file)>& stays);

    // What is known of a sound; what is not is measured, and changed() follows.
    [[nodiscard]] SoundMeasure of(const QUrl& file);
    // The same of one in memory; name: as while it plays.
    [[nodiscard]] SoundMeasure of(const QUrl& name, const PlayableSound& sound);

signals:
    // Some sounds are known better now.
    void changed();
    // The same less often: nothing more is being measured, or that takes long.
    void settled();

private:
    friend struct AppModelProbe;  // for tests

    struct Known {
        SoundMeasure measure;
        std::shared_ptr<const SoundPrint> print;  // null while it is not made, and for silence
        const Inspection::CorpusPrints* comparedWith = nullptr;
        bool isWaiting = false;   // to be measured
        bool isHopeless = false;  // it cannot be read
    };
    struct Job {
        QUrl url;
        PlayableSound sound;  // without samples for a file
    };

    [[nodiscard]] SoundMeasure find(const QUrl& url, const PlayableSound& sound);
    void announce();
    void activityTurned();
    void learn(const QUrl& url, Known known);
    void goOn();
    void wantComparison();

    const Links links_;
    std::size_t corpusFiles_ = 0;
    bool isAsked_ = false;      // whatever the size of the corpus
    bool hasWanted_ = false;    // prints of the present corpus
    bool hasGivenWay_ = false;  // these, to something that runs
    bool hasFailed_ = false;    // these cannot be made
    std::filesystem::path corpusFolder_;
    QHash<QUrl, Known> known_;
    std::deque<Job> waiting_;
    bool isMeasuring_ = false;
    bool isDue_ = false;  // goOn is to be called
    QTimer announceSoon_;
    QElapsedTimer sinceSettled_;
    BackgroundTasks tasks_{1};  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
