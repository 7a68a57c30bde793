#pragma once

#include <QString>
#include <memory>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/CorpusFilesModel.h"
#include "QuillmereCore/Model/Corpus.h"

namespace quillmere {

// What becomes of each file of the corpus when it is learned, found out when somebody wants to see it: that
// takes as long as reading all of them.
class CorpusFilesController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool canShow READ canShow NOTIFY canShowChanged)  // a folder has been scanned
    Q_PROPERTY(bool isReading READ isReading NOTIFY isReadingChanged)
    Q_PROPERTY(bool isRead READ isRead NOTIFY isReadChanged)
    // "42 files: 39 fine, 1 cut, 2 silent"
    Q_PROPERTY(QString summary READ summary NOTIFY isReadChanged)
    Q_PROPERTY(int conspicuous READ conspicuous NOTIFY isReadChanged)  // files that are not fine
    Q_PROPERTY(bool showsAll READ showsAll WRITE setShowsAll NOTIFY showsAllChanged)
    Q_PROPERTY(quillmere::CorpusFilesModel* files READ files CONSTANT)

public:
    explicit CorpusFilesController(const Environment& environment) : Controller(environment) {}
    ~CorpusFilesController() override;

    // What was scanned; null while there is nothing. What was read of another one is forgotten.
    void setCorpus(std::shared_ptr<const CorpusSummary> corpus);

    // Reads the files, once for a corpus. Does nothing without one.
    Q_INVOKABLE void read();
    // Nobody wants to see it any more.
    Q_INVOKABLE void cancel();

    [[nodiscard]] bool canShow() const { return corpus_ && !corpus_->files.empty(); }
    [[nodiscard]] bool isReading() const { return isReading_; }
    [[nodiscard]] bool isRead() const { return isRead_; }
    [[nodiscard]] QString summary() const;
    [[nodiscard]] int conspicuous() const;
    [[nodiscard]] bool showsAll() const { return files_.showsAll(); }
    void setShowsAll(bool all);
    [[nodiscard]] CorpusFilesModel* files() { return &files_; }

signals:
    void canShowChanged();
    void isReadingChanged();
    void isReadChanged();
    void showsAllChanged();

private:
    friend struct AppModelProbe;  // for tests

    std::shared_ptr<const CorpusSummary> corpus_;
    bool isReading_ = false;
    bool isRead_ = false;
    std::shared_ptr<CancelFlag> cancel_;  // of the reading
    CorpusFilesModel files_;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
