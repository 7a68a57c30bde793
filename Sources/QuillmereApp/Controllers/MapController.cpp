#include "QuillmereApp/Controllers/MapController.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Origin/Likeness.h"

namespace quillmere {
namespace {

struct Placed {
    std::shared_ptr<const LatentMap> map;
    std::string identity;
};

}  // namespace

MapController::MapController(const Environment& environment, Links links)
    : Controller(environment), links_(std::move(links)) {}

MapController::~MapController() {
    if (cancel_) cancel_->cancel();
}

void MapController::setCorpus(std::shared_ptr<const CorpusSummary> corpus) {
    if (cancel_) std::exchange(cancel_, nullptr)->cancel();
    corpus_ = std::move(corpus);
    model_.reset();
    map_.reset();
    clearRegion();
    placeAll();
    emit canShowChanged();
    if (!canShow()) setShown(false);
    if (isShown_) makeMap();
}

void MapController::setShown(bool shown) {
    assign(*this, isShown_, shown && canShow(), &MapController::isShownChanged);
    if (isShown_) makeMap();
}

// Once for a model, when somebody wants to see it.
void MapController::makeMap() {
    if (map_ || cancel_) return;
    model_ = links_.model();
    cancel_ = std::make_shared<CancelFlag>();
    tasks_.run(
        [model = model_, stop = cancel_->token()] {
            const ModelBundle& bundle = model->bundle();
            return Placed{.map = std::make_shared<const LatentMap>(
                              bundle.latents, static_cast<std::size_t>(bundle.config.latentDim), stop),
                          .identity = model->identity()};
        },
        [this, wanted = cancel_](Placed placed) {
            if (wanted != cancel_) return;
            cancel_.reset();
            map_ = std::move(placed.map);
            identity_ = std::move(placed.identity);
            placeAll();
        },
        [this, wanted = cancel_](const TaskFailure& failure) {
            if (wanted != cancel_) return;
            cancel_.reset();
            report(failure);
        });
}

void MapController::setResults(const std::vector<GeneratedSample>& samples) {
    results_.clear();
    for (const GeneratedSample& sample : samples)
        results_.push_back(
            {.url = toUrl(sample.url), .name = toQString(sample.url.filename()), .origin = sample.origin});
    placeAll();
}

void MapController::placeAll() {
    places_.clear();
    shown_.clear();
    if (map_) {
        places_.assign(map_->places().begin(), map_->places().end());
        for (const Result& result : results_) {
            if (result.origin.model != identity_) continue;  // made by another one
            shown_.push_back(&result);
            places_.push_back(map_->placeOf(result.origin.latent));
        }
    }
    findFavourites();
    emit pointsChanged();
    if (region_) findSelected();
}

// ---- Favourites

void MapController::findFavourites() {
    favourites_.clear();
    for (int point = clips(); point < count(); ++point) {
        if (links_.isFavourite(urlAt(point))) favourites_.push_back(point);
    }
}

void MapController::lookAtFavourites() {
    if (!isShown_) return;
    findFavourites();
    emit favouritesChanged();
}

bool MapController::isFavouriteAt(int point) const {
    return std::ranges::binary_search(favourites_, point);
}

// ---- Several points

void MapController::selectBetween(QPointF one, QPointF other) {
    if (!map_) return;
    region_ = QRectF(one, other).normalized();
    findSelected();
}

void MapController::clearRegion() {
    if (!region_) return;
    region_.reset();
    selected_.clear();
    emit regionChanged();
}

void MapController::findSelected() {
    selected_.clear();
    const auto isWithin = [](double low, double value, double high) { return low <= value && value <= high; };
    for (int point = 0; point < count(); ++point) {
        const MapPlace& place = places_[static_cast<std::size_t>(point)];
        if (isWithin(region_->left(), place.x, region_->right()) &&
            isWithin(region_->top(), place.y, region_->bottom()))
            selected_.push_back(point);
    }
    emit regionChanged();
}

// A clip is its own and only source.
SampleOrigin MapController::originOf(int point) const {
    if (point >= clips()) return shown_[static_cast<std::size_t>(point - clips())]->origin;
    const ModelBundle& bundle = model_->bundle();
    const auto clip = static_cast<std::size_t>(point);
    const std::vector<std::string>& names = bundle.metadata.clipNames;
    SampleOrigin origin;
    origin.latent = bundle.latents[clip];
    origin.sources = {{.clip = clip, .name = clip < names.size() ? names[clip] : std::string(), .weight = 1}};
    origin.model = identity_;
    return origin;
}

// Of many those that lie evenly among them.
void MapController::moreLikeThese() {
    if (selected_.empty()) return;
    CandidatesRelation wanted{.way = CandidatesRelation::Way::inTurn};
    wanted.name = selected_.size() == 1 ? nameAt(selected_.front())
                                        : Words::keptNameOfMap(static_cast<int>(selected_.size()));
    const std::size_t parents = std::min<std::size_t>(selected_.size(), candidatesPerSet);
    for (std::size_t i = 0; i < parents; ++i)
        wanted.parents.push_back(makeRecipe(originOf(selected_[i * selected_.size() / parents]), {}));
    emit candidatesWanted(wanted);
}

// ---- One place

void MapController::audition(QPointF place) {
    if (!map_) return;
    links_.audition([map = map_, place = MapPlace{place.x(), place.y()}](const SampleGenerator& generator,
                                                                         std::uint64_t seed) {
        return Likeness::atPlace(generator, *map, place, 1, seed, 0);
    });
}

void MapController::leavePlace() {
    links_.dropAudition();
}

// ---- One point

QUrl MapController::urlAt(int point) const {
    if (point < 0 || point >= count()) return {};
    if (point >= clips()) return shown_[static_cast<std::size_t>(point - clips())]->url;
    return corpus_ ? QUrl::fromLocalFile(toQString(corpus_->directory) + QLatin1Char('/') + nameAt(point))
                   : QUrl();
}

QString MapController::nameAt(int point) const {
    if (point < 0 || point >= count()) return {};
    if (point >= clips()) return shown_[static_cast<std::size_t>(point - clips())]->name;
    const auto& names = model_->bundle().metadata.clipNames;
    const auto clip = static_cast<std::size_t>(point);
    return clip < names.size() ? toQString(names[clip]) : QString();
}

QString MapController::caption() const {
    if (!map_) return {};
    const double share = map_->shares()[0] + map_->shares()[1];
    return tr("Near one another is what sounds alike; the map shows %1 % of the differences.")
        .arg(std::lround(100 * share));
}

}  // namespace quillmere
