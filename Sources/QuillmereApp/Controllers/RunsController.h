#pragma once

#include <QString>
#include <QUrl>
#include <QVariantList>
#include <functional>
#include <memory>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Candidate.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Origin/Runs.h"

namespace quillmere {

// What was made of this folder before, as the journal remembers it: to be seen and heard again.
class RunsController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool canShow READ canShow NOTIFY canShowChanged)  // a folder has been scanned
    Q_PROPERTY(bool isLooking READ isLooking NOTIFY isLookingChanged)
    // The newest first: {date, what ("12 files"), preset (empty for values of no preset), seed (decimal),
    // place (the folder of the files, or what they are like), isSet (only heard)}
    Q_PROPERTY(QVariantList runs READ runs NOTIFY runsChanged)

public:
    using PresetNamer = std::function<QString(const Aesthetics& values)>;

    // The model that is in use; null for none.
    using PresentModel = std::function<std::shared_ptr<const SampleGenerator>()>;

    // presetOf: the name of a preset with just these values; empty for none.
    RunsController(const Environment& environment, PresetNamer presetOf, PresentModel model);
    ~RunsController() override;

    // What was scanned; null while there is nothing. The runs of another one are forgotten.
    void setCorpus(std::shared_ptr<const CorpusSummary> corpus);

    // Reads the journal. Does nothing unless canShow.
    Q_INVOKABLE void look();
    // Nobody wants to see them any more: thousands of recipes take memory. What is being opened is.
    Q_INVOKABLE void forget();
    // The files of a row are the results again; a set is rendered once more. Refused while something runs.
    Q_INVOKABLE void open(int row);
    // The parameters, the seed and the detail of a row are set again.
    Q_INVOKABLE void useSettings(int row);

    [[nodiscard]] bool canShow() const { return corpus_ != nullptr; }
    [[nodiscard]] bool isLooking() const { return isLooking_; }
    [[nodiscard]] QVariantList runs() const;

signals:
    void canShowChanged();
    void isLookingChanged();
    void runsChanged();
    // base: of the recipes of all of them. folder: that they are in.
    void filesOpened(const std::vector<quillmere::GeneratedSample>& files,
                     const std::shared_ptr<const quillmere::RecipeBase>& base, const QUrl& folder);
    void setWanted(const quillmere::CandidatesOrder& order);
    void settingsWanted(const quillmere::Recipe& recipe);

private:
    friend struct AppModelProbe;  // for tests

    void cancel();
    void giveWay();
    void take(std::vector<JournalRun> runs);
    void setLooking(std::shared_ptr<CancelFlag> cancel);
    [[nodiscard]] const JournalRun* at(int row) const;
    void openFiles(int row);
    [[nodiscard]] QVariantMap shown(const JournalRun& run) const;

    const PresetNamer presetOf_;
    const PresentModel model_;
    std::shared_ptr<const CorpusSummary> corpus_;
    bool isLooking_ = false;
    bool isOpening_ = false;              // in place of reading the journal
    std::shared_ptr<CancelFlag> cancel_;  // of the newest look or opening
    std::shared_ptr<const std::vector<JournalRun>> runs_ = std::make_shared<const std::vector<JournalRun>>();
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
