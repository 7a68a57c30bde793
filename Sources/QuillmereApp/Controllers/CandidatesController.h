#pragma once

#include <QString>
#include <QUrl>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/CandidatesModel.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/PreparedGenerator.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Network/Device/ChosenDevice.h"

namespace quillmere {

// Sets of twelve variations that are heard before any is written. They are those of a generation with the
// same seed: one that is kept becomes the file that the generation would have written. The last sets stay in
// memory until the program ends, as many as there is room for.
class CandidatesController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool isTrying READ isTrying NOTIFY isTryingChanged)
    Q_PROPERTY(bool isCancelling READ isCancelling NOTIFY isTryingChanged)  // asked to stop, still rendering
    // Nothing runs, and there is a model.
    Q_PROPERTY(bool canTry READ canTry NOTIFY canTryChanged)
    Q_PROPERTY(int perSet READ perSet CONSTANT)        // candidates of a whole set
    Q_PROPERTY(int done READ done NOTIFY progressed)   // of the set that is being made, or was last
    Q_PROPERTY(int sets READ sets NOTIFY setsChanged)  // how many there are
    // The set in list: from 1 (oldest), 0 for none.
    Q_PROPERTY(int shown READ shown NOTIFY setsChanged)
    Q_PROPERTY(QString seed READ seed NOTIFY setsChanged)        // of the shown set, decimal
    Q_PROPERTY(QString about READ about NOTIFY setsChanged)      // what it is: "Seed 42", "Like Candidate 3"
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)  // something was discarded
    Q_PROPERTY(quillmere::CandidatesModel* list READ list CONSTANT)  // the shown set

public:
    static constexpr int candidatesPerSet = quillmere::candidatesPerSet;
    // So many are kept in mind, and fewer where they are long: a set takes 2 MB per second of its sounds.
    static constexpr std::size_t mostSets = 16;
    static constexpr std::size_t mostBytes = std::size_t{256} << 20;

    // What a set asks of others. order is called once for each set, when it starts.
    struct Links {
        std::function<CandidatesOrder()> order;
        std::function<PreparedGenerator()> generator;  // of the model, which is there
        std::function<void()> openModelAgain;          // if there is one that could not be opened
        std::function<void(std::function<void()>)> whenModelIsLoaded;
        std::function<std::optional<QUrl>()> outputFolder;  // for what is kept
        std::function<OutputFormat()> format;
        std::function<bool()> playsAll = [] { return false; };  // as they come, not the first alone
        // What the generator runs on; empty, or null, for the processor.
        std::function<std::shared_ptr<network::ChosenDevice>()> device{};
    };

    CandidatesController(const Environment& environment, Links links);
    ~CandidatesController() override;

    void setHasModel(bool hasModel);

    // Renders a set, one candidate after the other into list; the first is played as soon as it is there, and
    // the others after it, if that is wanted.
    // While another run is active, and without a model, nothing happens but notice().
    Q_INVOKABLE void start() { start(std::nullopt); }
    // A set of relatives, with the parameters and the detail of their parent; those of several sounds have
    // the present ones, and the journal has no note of them.
    void startRelated(const CandidatesRelation& relation) { start(relation); }
    // A set of an earlier time once more.
    void startEarlier(const CandidatesOrder& order);
    // What has come by then stays.
    void cancel();

    // ---- Of the shown set, by rows of list. What is not there is passed over.

    Q_INVOKABLE void play(int row);
    Q_INVOKABLE void togglePlay(int row);
    // Writes the file, in the background, with the format and into the folder of the output.
    Q_INVOKABLE void keep(int row);
    // Takes it out of its set. One that is kept stays.
    Q_INVOKABLE void discard(int row);
    // The last one that was discarded comes back, and its set with it: broughtBack tells where. False when
    // there is none.
    Q_INVOKABLE bool undo();
    // When that one was discarded, in seconds of a clock that all undoing goes by; 0 when there is none.
    Q_INVOKABLE [[nodiscard]] double lastDiscarded() const;
    // number: as shown.
    Q_INVOKABLE void show(int number);
    // A sound has come to its end.
    void finished(const QUrl& name);
    // A sound is to be played, or none any more: who stops the candidates that follow one another, or plays
    // something else, wants no more of them.
    void asked(const QUrl& name);
    // A file that was kept has got another name.
    void rename(const QUrl& from, const QUrl& to);
    // A file that was kept has gone to the trash: the candidate can be kept again. Or it has come back from
    // there.
    void fileTrashed(const QUrl& file);
    void fileCameBack(const QUrl& file);
    // seed into the clipboard.
    Q_INVOKABLE void copySeed();

    [[nodiscard]] bool isTrying() const { return trialCancel_ != nullptr; }
    [[nodiscard]] bool isCancelling() const { return isTrying() && trialCancel_->isCancelled(); }
    [[nodiscard]] bool canTry() const { return hasModel_ && !activity().isBusy(); }
    [[nodiscard]] int perSet() const { return candidatesPerSet; }
    [[nodiscard]] int done() const { return done_; }
    [[nodiscard]] int sets() const { return static_cast<int>(sets_.size()); }
    [[nodiscard]] int shown() const { return shown_; }
    [[nodiscard]] QString seed() const;
    [[nodiscard]] QString about() const;
    [[nodiscard]] bool canUndo() const { return !discarded_.empty(); }
    [[nodiscard]] CandidatesModel* list() { return &list_; }

signals:
    void isTryingChanged();
    void canTryChanged();
    void progressed();
    void setsChanged();
    void canUndoChanged();
    // The user wants a set: time to take what is being typed.
    void commanded();
    void playRequested(const QUrl& name, const quillmere::PlayableSound& sound);
    void togglePlayRequested(const QUrl& name, const quillmere::PlayableSound& sound);
    // One of the shown set plays by itself.
    void heard(int row);
    // A candidate that may be playing is gone.
    void removed(const QUrl& name);
    void broughtBack(int row);
    // A file was written.
    void kept(const quillmere::GeneratedSample& sample,
              const std::shared_ptr<const quillmere::RecipeBase>& base);

private:
    friend struct AppModelProbe;  // for tests

    using SetHandle = std::shared_ptr<CandidateSet>;
    struct Discarded {
        SetHandle set;
        CandidateHandle candidate;
        std::chrono::steady_clock::time_point when{};
    };

    using OrderSource = std::function<CandidatesOrder()>;  // asked when the set starts

    void start(const std::optional<CandidatesRelation>& relation);
    void startAs(const OrderSource& order);
    void begin(const OrderSource& order);
    void note(const CandidatesOrder& order, const Candidate& first);
    void render(const SetHandle& set);
    void addSet(const SetHandle& set);
    void arrived(const SetHandle& set, const CandidateHandle& candidate);
    void hear(const CandidateHandle& candidate);
    void hearNext();
    void hearNoMore();
    void ended(const SetHandle& set, int withNoise);
    void showSet(const SetHandle& set);
    void forget(const SetHandle& set);
    [[nodiscard]] std::vector<CandidateHandle> allCandidates() const;
    void makeRoom();
    [[nodiscard]] std::size_t bytes() const;  // of all sounds in memory

    const Links links_;
    bool hasModel_ = false;
    std::shared_ptr<CancelFlag> trialCancel_;  // of the set that is being made
    int done_ = 0;
    CandidateHandle heard_;       // of the newest set, what played by itself last
    bool isHeardOver_ = false;    // and has come to its end
    std::deque<SetHandle> sets_;  // oldest first
    int shown_ = 0;
    std::vector<Discarded> discarded_;  // the last one last
    std::size_t mostBytes_ = mostBytes;
    quint64 candidates_ = 0;  // that there have been, for their names
    CandidatesModel list_;
    BackgroundTasks writing_{1};  // files get their numbers in the order in which they are wanted; notes too
    BackgroundTasks tasks_;       // last: their destructors wait for work that knows the members above
};

}  // namespace quillmere
