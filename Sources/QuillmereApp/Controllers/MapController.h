#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Candidate.h"
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
    // A rectangle of the map, in its units, whose points are selected.
    Q_PROPERTY(bool hasRegion READ hasRegion NOTIFY regionChanged)
    Q_PROPERTY(QRectF region READ region NOTIFY regionChanged)
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY regionChanged)
    // "Near one another is what sounds alike. The plane shows 62 % of the differences."
    Q_PROPERTY(QString caption READ caption NOTIFY pointsChanged)

public:
    // What it asks of others.
    struct Links {
        std::function<std::shared_ptr<const SampleGenerator>()> model;  // the present one; null for none
        std::function<void(GenerationController::Origin)> audition;
        std::function<void()> dropAudition{};
        std::function<bool(const QUrl& file)> isFavourite = [](const QUrl&) { return false; };
    };

    MapController(const Environment& environment, Links links);
    ~MapController() override;

    // There is another model, of corpus, or none.
    void setCorpus(std::shared_ptr<const CorpusSummary> corpus);
    // The files of the last generation.
    void setResults(const std::vector<GeneratedSample>& samples);
    // Other results are favourites now. While it is not shown, it finds them when it is.
    void lookAtFavourites();

    // Makes a variation at that place and plays it.
    Q_INVOKABLE void audition(QPointF place);
    // Nobody wants to hear that any more, if it is not there yet.
    Q_INVOKABLE void leavePlace();
    // The file of a point; empty for none. Its name, relative to the folder it is in.
    Q_INVOKABLE [[nodiscard]] QUrl urlAt(int point) const;
    Q_INVOKABLE [[nodiscard]] QString nameAt(int point) const;
    // Whether it is a result that is one of the favourites.
    Q_INVOKABLE [[nodiscard]] bool isFavouriteAt(int point) const;

    // ---- Several points

    // Those in the rectangle between two places, and no others.
    Q_INVOKABLE void selectBetween(QPointF one, QPointF other);
    Q_INVOKABLE void clearRegion();
    // A set of candidates around those that are selected: each around one of them, in turn.
    Q_INVOKABLE void moreLikeThese();

    [[nodiscard]] bool canShow() const { return links_.model() != nullptr; }
    [[nodiscard]] bool isShown() const { return isShown_; }
    void setShown(bool shown);
    [[nodiscard]] bool isReady() const { return map_ != nullptr; }
    [[nodiscard]] int count() const { return static_cast<int>(places_.size()); }
    [[nodiscard]] int clips() const { return map_ ? static_cast<int>(map_->places().size()) : 0; }
    [[nodiscard]] QString caption() const;
    // Of all points; none before isReady.
    [[nodiscard]] const std::vector<MapPlace>& places() const { return places_; }
    [[nodiscard]] bool hasRegion() const { return region_.has_value(); }
    [[nodiscard]] QRectF region() const { return region_.value_or(QRectF()); }
    [[nodiscard]] int selectedCount() const { return static_cast<int>(selected_.size()); }
    // The points of favourites, the least first.
    [[nodiscard]] const std::vector<int>& favourites() const { return favourites_; }

signals:
    void canShowChanged();
    void isShownChanged();
    void pointsChanged();
    void favouritesChanged();
    void regionChanged();
    void candidatesWanted(const quillmere::CandidatesRelation& relation);

private:
    friend struct AppModelProbe;  // for tests

    // What the map needs of a result.
    struct Result {
        QUrl url;
        QString name;
        SampleOrigin origin;
    };

    void makeMap();
    void placeAll();
    void findFavourites();
    void findSelected();
    [[nodiscard]] SampleOrigin originOf(int point) const;

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
    std::vector<int> favourites_;
    std::optional<QRectF> region_;
    std::vector<int> selected_;  // the points in it
    BackgroundTasks tasks_;      // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
