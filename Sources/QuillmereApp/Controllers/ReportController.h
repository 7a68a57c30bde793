#pragma once

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Origin/ReportCard.h"

namespace quillmere {

// How well the folder was learned: made when somebody wants to see it, on the processor.
class ReportController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool canMake READ canMake NOTIFY canMakeChanged)  // there is a model of a scanned folder
    Q_PROPERTY(bool isMaking READ isMaking NOTIFY isMakingChanged)
    Q_PROPERTY(QString message READ message NOTIFY progressed)   // what is being done
    Q_PROPERTY(double fraction READ fraction NOTIFY progressed)  // of it, 0 ... 1
    Q_PROPERTY(bool isThere READ isThere NOTIFY reportChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY reportChanged)  // why it could not be made, or empty
    Q_PROPERTY(QString grade READ grade NOTIFY reportChanged)      // "good", "fair", "poor"
    Q_PROPERTY(QString verdict READ verdict NOTIFY reportChanged)
    Q_PROPERTY(QStringList advice READ advice NOTIFY reportChanged)
    Q_PROPERTY(QString errorText READ errorText NOTIFY reportChanged)  // "3.2 dB"
    // {name, errorText, originalUrl, learnedUrl}, the worst first
    Q_PROPERTY(QVariantList worst READ worst NOTIFY reportChanged)
    // {first, second, distanceText, firstUrl, secondUrl}, the nearest first; at most mostRows
    Q_PROPERTY(QVariantList nearDuplicates READ nearDuplicates NOTIFY reportChanged)
    // {name, distanceText, url}, the farthest first; at most mostRows
    Q_PROPERTY(QVariantList outliers READ outliers NOTIFY reportChanged)

public:
    static constexpr std::size_t mostRows = 50;

    // The model that is reported on, with its bundle; null for none. Asked when a report is to be made.
    using Subject = std::function<std::shared_ptr<const SampleGenerator>()>;

    ReportController(const Environment& environment, Subject subject);
    ~ReportController() override;

    // There is another subject, a model of corpus, or none: a report of the one before is forgotten.
    void setCorpus(std::shared_ptr<const CorpusSummary> corpus);

    // Makes the report, once for a model. Does nothing unless canMake.
    Q_INVOKABLE void make();
    // Nobody wants to see it any more.
    Q_INVOKABLE void cancel();

    [[nodiscard]] bool canMake() const { return corpus_ != nullptr && subject_() != nullptr; }
    [[nodiscard]] bool isMaking() const { return cancel_ != nullptr; }
    [[nodiscard]] QString message() const;
    [[nodiscard]] double fraction() const;
    [[nodiscard]] bool isThere() const { return card_.has_value(); }
    [[nodiscard]] const std::optional<ReportCard>& card() const { return card_; }
    [[nodiscard]] QString problem() const { return problem_; }
    [[nodiscard]] QString grade() const;
    [[nodiscard]] QString verdict() const;
    [[nodiscard]] QStringList advice() const;
    [[nodiscard]] QString errorText() const;
    [[nodiscard]] QVariantList worst() const;
    [[nodiscard]] QVariantList nearDuplicates() const;
    [[nodiscard]] QVariantList outliers() const;

signals:
    void canMakeChanged();
    void isMakingChanged();
    void progressed();
    void reportChanged();

private:
    friend struct AppModelProbe;  // for tests

    void setCancel(std::shared_ptr<CancelFlag> cancel);
    void show(std::optional<ReportCard> card, const QString& problem);
    // Of a clip's original, and of what the model makes of it.
    [[nodiscard]] QUrl original(const std::string& name) const;
    [[nodiscard]] std::filesystem::path exampleFile(const char* kind, std::size_t index) const;

    std::shared_ptr<const CorpusSummary> corpus_;
    const Subject subject_;
    const std::unique_ptr<network::Backend> processor_;
    std::shared_ptr<CancelFlag> cancel_;  // of what is being made
    ReportProgress progress_;
    std::optional<ReportCard> card_;
    QString problem_;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
