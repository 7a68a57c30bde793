#pragma once

#include <QPointF>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/GenerationController.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Origin/LatentMap.h"

namespace quillmere {

// The corpus on a map (LatentMap), with the results where they were made: each of them and every place
// between them can be heard. The points are the clips of the model, in its order, then the results, in
// theirs.
class MapController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool canShow READ canShow NOTIFY canShowChanged)  // there is a model
    // In place of the sliders. Never without canShow.
    Q_PROPERTY(bool isShown READ isShown WRITE setShown NOTIFY isShownChanged)
    Q_PROPERTY(bool isReady READ isReady NOTIFY pointsChanged)  // the places are known
    Q_PROPERTY(int count READ count NOTIFY pointsChanged)       // of points
    Q_PROPERTY(int clips READ clips NOTIFY pointsChanged)       // of which are clips
    // "Near one another is what sounds alike. The plane shows 62 % of the differences."
    Q_PROPERTY(QString caption READ caption NOTIFY pointsChanged)

public:
    // What it asks of others.
    struct Links {
        std::function<std::shared_ptr<const SampleGenerator>()> model;  // the present one; null for none
        std::function<void(GenerationController::Origin)> audition;
    };

    MapController(const Environment& environment, Links links);
    ~MapController() override;

    // There is another model, of corpus, or none.
    void setCorpus(std::shared_ptr<const CorpusSummary> corpus);
    // The files of the last generation.
    void setResults(const std::vector<GeneratedSample>& samples);

    // Makes a variation at that place and plays it.
    Q_INVOKABLE void audition(QPointF place);
    // The file of a point; empty for none. Its name, relative to the folder it is in.
    Q_INVOKABLE [[nodiscard]] QUrl urlAt(int point) const;
    Q_INVOKABLE [[nodiscard]] QString nameAt(int point) const;

    [[nodiscard]] bool canShow() const { return links_.model() != nullptr; }
    [[nodiscard]] bool isShown() const { return isShown_; }
    void setShown(bool shown);
    [[nodiscard]] bool isReady() const { return map_ != nullptr; }
    [[nodiscard]] int count() const { return static_cast<int>(places_.size()); }
    [[nodiscard]] int clips() const { return map_ ? static_cast<int>(map_->places().size()) : 0; }
    [[nodiscard]] QString caption() const;
    // Of all points; none before isReady.
    [[nodiscard]] const std::vector<MapPlace>& places() const { return places_; }

signals:
    void canShowChanged();
    void isShownChanged();
    void pointsChanged();

private:
    friend struct AppModelProbe;  // for tests

    // What the map needs of a result.
    struct Result {
        QUrl url;
        QString name;
        std::string model;  // modelIdentity
        std::vector<float> latent;
    };

    void makeMap();
    void placeAll();

    const Links links_;
    bool isShown_ = false;
    std::shared_ptr<const CorpusSummary> corpus_;
    std::shared_ptr<const SampleGenerator> model_;  // of the map, or of the one that is being made
    std::shared_ptr<CancelFlag> cancel_;            // of the map that is being made
    std::shared_ptr<const LatentMap> map_;
    std::string identity_;  // of its model
    std::vector<Result> results_;
    std::vector<const Result*> shown_;  // in the order of their points
    std::vector<MapPlace> places_;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
