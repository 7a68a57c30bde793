#include "QuillmereApp/Controllers/SweepController.h"

#include <QVariantMap>
#include <algorithm>
#include <cmath>
#include <utility>

#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereApp/ParameterModel.h"
#include "QuillmereApp/ResultsModel.h"
#include "QuillmereApp/Waveform.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere {
namespace {

// At equal distances along the slider, both ends included.
double valueAt(const ParameterSpec& spec, int place) {
    return spec.snapped(
        ParameterScale::value(spec, static_cast<double>(place) / (SweepController::places - 1)));
}

// Variation 0 of a request with that seed, as an audition is.
VariationPlan planOf(const SampleGenerator& generator, const AuditionRequest& request) {
    SampleOrigin origin =
        generator.draw(request.aesthetics, 0, SampleGenerator::variationSeed(request.seed, 0));
    origin.detail = request.detail;
    return {.origin = std::move(origin), .aesthetics = request.aesthetics};
}

}  // namespace

SweepController::SweepController(const Environment& environment, Links links)
    : Controller(environment), links_(std::move(links)) {}

SweepController::~SweepController() {
    if (cancel_) cancel_->cancel();
}

void SweepController::open(const QString& parameterId) {
    const ParameterSpec* const spec = Aesthetics::spec(parameterId.toStdString());
    if (!spec) return;
    close();
    if (activity().isBusy()) {
        emit notice(Activity::waitNotice());
        return;
    }
    if (!hasModel_) {
        emit notice(tr("There is no model to audition yet. Train one first, or press Generate."));
        return;
    }
    emit errorRaised({});
    const AuditionRequest request = links_.request();
    spec_ = spec;
    present_ = spec->value(request.aesthetics);
    ++opened_;
    for (int place = 0; place < places; ++place)
        tiles_.push_back({.value = valueAt(*spec, place),
                          .name = QUrl(QStringLiteral("sweep:%1/%2").arg(opened_).arg(place)),
                          .rendered = {}});
    emit openChanged();
    emit tilesChanged();
    render(request);
}

// As many at a time as there are processors, the first alone, so that it is heard soon.
void SweepController::render(const AuditionRequest& request) {
    cancel_ = std::make_shared<CancelFlag>();
    emit renderingChanged();
    std::vector<AuditionRequest> requests(tiles_.size(), request);
    for (std::size_t i = 0; i < tiles_.size(); ++i)
        requests[i].aesthetics.set(*spec_, tiles_[i].value);
    tasks_.run(
        [this, requests = std::move(requests), generator = links_.generator(), wanted = cancel_] {
            const auto ready = generator();
            const int atOnce = WorkerTeam().threads();
            for (int start = 0; start < places;) {
                const int end = start == 0 ? 1 : std::min(start + atOnce, places);
                std::vector<VariationPlan> plans;
                for (int place = start; place < end; ++place)
                    plans.push_back(planOf(*ready, requests[static_cast<std::size_t>(place)]));
                for (AuditionedSample& made : ready->remake(plans, wanted->token())) {
                    Rendered rendered{.sound = {.samples = std::make_shared<const std::vector<float>>(
                                                    std::move(made.samples)),
                                                .sampleRate = static_cast<double>(ready->sampleRate())},
                                      .peaks = {}};
                    rendered.peaks = Waveform::peaks(*rendered.sound.samples, ResultsModel::peakCount);
                    tasks_.post([this, wanted, place = start++, rendered = std::move(rendered)] {
                        if (!wanted->isCancelled()) arrived(place, rendered);
                    });
                    watched(Run::generation, start);
                }
            }
        },
        [this] { endRendering(); },
        [this](const TaskFailure& failure) {
            report(failure);
            endRendering();
        });
}

void SweepController::arrived(int place, Rendered rendered) {
    tiles_[static_cast<std::size_t>(place)].rendered = std::move(rendered);
    emit tilesChanged();
}

void SweepController::endRendering() {
    cancel_.reset();
    emit renderingChanged();
}

void SweepController::close() {
    if (!isOpen()) return;
    if (cancel_) cancel_->cancel();
    spec_ = nullptr;
    for (const Tile& tile : std::exchange(tiles_, {}))
        emit removed(tile.name);
    emit openChanged();
    emit tilesChanged();
}

// ---- Places

const SweepController::Tile* SweepController::at(int place) const {
    if (place < 0 || place >= std::ssize(tiles_)) return nullptr;
    const Tile& tile = tiles_[static_cast<std::size_t>(place)];
    return tile.rendered ? &tile : nullptr;
}

void SweepController::play(int place) {
    if (const Tile* const tile = at(place)) emit playRequested(tile->name, tile->rendered->sound);
}

void SweepController::togglePlay(int place) {
    if (const Tile* const tile = at(place)) emit togglePlayRequested(tile->name, tile->rendered->sound);
}

void SweepController::take(int place) {
    if (!isOpen() || place < 0 || place >= places) return;
    const QString parameter = parameterId();
    const double value = tiles_[static_cast<std::size_t>(place)].value;
    close();
    emit taken(parameter, value);
}

// ---- Values

QString SweepController::parameterId() const {
    return spec_ ? text(spec_->id) : QString();
}

QString SweepController::title() const {
    return spec_ ? Words::inTable(spec_->title) : QString();
}

int SweepController::currentPlace() const {
    if (!spec_) return -1;
    return static_cast<int>(std::lround(ParameterScale::position(*spec_, present_) * (places - 1)));
}

QVariantList SweepController::tiles() const {
    QVariantList rows;
    for (int place = 0; place < std::ssize(tiles_); ++place) {
        const Tile& tile = tiles_[static_cast<std::size_t>(place)];
        rows.append(QVariantMap{{QStringLiteral("text"), QString::fromStdString(spec_->format(tile.value))},
                                {QStringLiteral("peaks"),
                                 QVariant::fromValue(tile.rendered ? tile.rendered->peaks : QList<qreal>())},
                                {QStringLiteral("name"), tile.name},
                                {QStringLiteral("isCurrent"), place == currentPlace()}});
    }
    return rows;
}

}  // namespace quillmere
