#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QUrl>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/PreparedGenerator.h"
#include "QuillmereApp/ResultsModel.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Network/Device/ChosenDevice.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere {

// Generations and auditions: how far they have come, and the files that the last one wrote.
class GenerationController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool isGenerating READ isGenerating NOTIFY isGeneratingChanged)
    Q_PROPERTY(bool isAuditioning READ isAuditioning NOTIFY isAuditioningChanged)
    Q_PROPERTY(
        bool isCancelling READ isCancelling NOTIFY isCancellingChanged)  // asked to stop, still running
    // Nothing runs, and a corpus is chosen.
    Q_PROPERTY(bool canGenerate READ canGenerate NOTIFY canGenerateChanged)
    // Nothing runs, and there is a model; or nothing but a training, and the folder can be heard before it.
    Q_PROPERTY(bool canAudition READ canAudition NOTIFY canGenerateChanged)
    Q_PROPERTY(int done READ done NOTIFY progressed)
    Q_PROPERTY(int total READ total NOTIFY progressed)
    Q_PROPERTY(QString timeLeft READ timeLeft NOTIFY progressed)  // "about 2 min left", or empty
    // A generation follows as soon as there is a model: one is being opened or trained for it.
    Q_PROPERTY(bool isWaiting READ isWaiting NOTIFY isWaitingChanged)
    Q_PROPERTY(QUrl auditionURL READ auditionURL CONSTANT)  // of the file that auditions go to
    Q_PROPERTY(quillmere::ResultsModel* results READ results CONSTANT)

public:
    using Returned = std::function<void()>;  // called when an operation has ended, however it ended

    // Which of the things that a run needs are there.
    struct Supplies {
        bool corpusIsChosen = false;
        bool hasSummary = false;
        bool modelIsLoading = false;
        bool modelIsUnopened = false;  // there may be one, but it could not be opened
        bool hasModel = false;
        bool canPreview =
            false;  // without a model: something of the folder can be heard before it is learned
    };

    // What a run asks of others. The functions that give a request are called once for each run, when it
    // starts. An audition has the seed that it is given, else that of a run that starts.
    struct Links {
        std::function<std::optional<QUrl>()> outputFolder;
        std::function<GenerationRequest(const QUrl& outputFolder)> generationRequest;
        std::function<AuditionRequest(std::optional<std::uint64_t> seed)> auditionRequest;
        std::function<std::uint64_t()> presentSeed;    // of what is compared with the last run
        std::function<PreparedGenerator()> generator;  // of the model, which is there
        std::function<PreparedGenerator()> preview;    // of the model, or of what there is before it
        std::function<void()> cancelPreview;
        std::function<void()> openModelAgain;
        std::function<void(Returned)> whenModelIsLoaded;
        std::function<void(Returned)> train;
        // What the generator runs on; empty, or null, for the processor.
        std::function<std::shared_ptr<network::ChosenDevice>()> device{};
    };

    GenerationController(const Environment& environment, Links links);
    ~GenerationController() override;

    void setSupplies(const Supplies& supplies);

    // Writes the variations into the output folder, training first when there is no model. A stored model
    // that could not be opened is tried again, and nothing is trained in its place. While another run is
    // active, and without a summary to train on, nothing happens but notice(). Of a run that is cancelled or
    // fails, results() shows what it has written, if anything.
    Q_INVOKABLE void generate();
    // As generate(); returned is called when everything it started has ended.
    void generate(Returned returned);
    // Renders one variation into a temporary file, which auditionFinished hands on. Does nothing while busy.
    Q_INVOKABLE void audition();
    // The same with the seed of the last audition, if there was one, and with its origin.
    void auditionAgain();
    // Where a variation comes from, in place of a draw: asked in the background.
    using Origin = std::function<SampleOrigin(const SampleGenerator& generator, std::uint64_t seed)>;
    // Renders one variation of that origin, with the seed of the last audition, as audition does. While
    // another audition runs, the newest wish waits for its end. Does nothing without a model and while
    // something else runs.
    void auditionAt(Origin origin);
    // Nobody wants to hear the audition that runs, and what waits for its end.
    void dropAudition();
    // There is another model, or none: origins that were of the one before mean nothing any more.
    void forgetOrigins();
    // An audition with the settings as they are now, and the seed and the place of the last one. While
    // another runs, it is not heard any more, and one with the settings of its end follows. Does nothing
    // without a model and while something else runs.
    void follow();
    // A file that was kept joins the results.
    void addKept(const GeneratedSample& sample, const std::shared_ptr<const RecipeBase>& base);
    // Files of an earlier run are the results, base is that of their recipes. Does nothing while something
    // generates.
    void showEarlier(std::vector<GeneratedSample> samples, std::shared_ptr<const RecipeBase> base,
                     const QUrl& folder);
    // A result has got another name.
    void rename(const QUrl& from, const QUrl& to);
    // Of the recipe of a result; null where it is none of them.
    [[nodiscard]] std::shared_ptr<const RecipeBase> baseOf(const QUrl& result) const;
    // Stops whichever of the two runs. An audition is one unit of work: it is rendered to its end and not
    // played.
    void cancel();

    [[nodiscard]] bool isGenerating() const { return isGenerating_; }
    [[nodiscard]] bool isAuditioning() const { return isAuditioning_; }
    [[nodiscard]] bool isCancelling() const { return isCancelling_; }
    [[nodiscard]] bool canGenerate() const { return supplies_.corpusIsChosen && !activity().isBusy(); }
    [[nodiscard]] bool canAudition() const;
    [[nodiscard]] int done() const { return done_; }
    [[nodiscard]] int total() const { return total_; }
    [[nodiscard]] QString timeLeft() const;
    [[nodiscard]] ResultsModel* results() { return &results_; }
    [[nodiscard]] QUrl lastOutputFolder() const { return lastOutputFolder_; }
    [[nodiscard]] bool isWaiting() const { return isWaiting_; }
    [[nodiscard]] QUrl auditionURL() const;

signals:
    void isGeneratingChanged();
    void isAuditioningChanged();
    void isCancellingChanged();
    void canGenerateChanged();
    void progressed();
    void isWaitingChanged();
    // The user wants a generation or an audition: time to take what is being typed.
    void commanded();
    // A generation needs a folder to write to: time to lead the user to where it is set.
    void outputFolderMissing();
    // A generation is about to start.
    void generationStarting();
    // A generation has ended well: something to announce.
    void generationFinished(int files);
    // An audition has ended well: something to play.
    void auditionFinished(const QUrl& file);

private:
    friend struct AppModelProbe;  // for tests

    // A generation as far as it came.
    struct Ended {
        std::vector<GeneratedSample> written;  // and there still, by name
        int withNoise = 0;                     // of those that were written, in place of detail
        QString noteProblem;                   // why the journal lacks some; empty if it lacks none
        std::shared_ptr<const RecipeBase> base;
        std::optional<TaskFailure> failure;
    };

    void begin(Returned returned);
    void beginAudition(std::optional<std::uint64_t> seed, const Origin& origin);
    void startAudition(const AuditionRequest& request, const PreparedGenerator& generator, Origin origin);
    void waitForModel(const Returned& returned);
    void start(const QUrl& folder, const Returned& returned);
    void ended(Ended run, const QUrl& folder);
    void endedEarly(TaskFailure failure, int files);
    void generationEnded(const Returned& returned);
    void auditionEnded();

    const Links links_;
    Supplies supplies_;
    bool isGenerating_ = false;
    int done_ = 0;
    int total_ = 0;
    QElapsedTimer clock_;  // since the generation started
    std::shared_ptr<CancelFlag> generateCancel_;
    bool isAuditioning_ = false;
    bool auditionIsDropped_ = false;
    std::optional<std::uint64_t> auditionedSeed_;  // of the last audition
    Origin auditionedOrigin_;                      // of the last audition; empty for a draw
    Origin next_;                                  // of the audition that is to follow; empty for none
    bool followsNext_ = false;                     // the settings have changed during an audition
    bool isCancelling_ = false;
    bool isWaiting_ = false;
    ResultsModel results_;
    std::shared_ptr<const RecipeBase> base_;                    // of the last generation's recipes
    QHash<QUrl, std::shared_ptr<const RecipeBase>> keptBases_;  // of those that were kept since
    QUrl lastOutputFolder_;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
