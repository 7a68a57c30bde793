// The map of the samples and the results, and what is made from its places.

#include "QuillmereApp/Controllers/MapController.h"

#include <QColor>
#include <QImage>
#include <QObject>
#include <QPainter>
#include <QRegularExpression>
#include <algorithm>
#include <array>
#include <cmath>

#include "QuillmereApp/Items/PointMapItem.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

bool waitUntilReady(const MapController& map) {
    return QTest::qWaitFor([&] { return map.isReady(); }, longestWait);
}

// A model with its map.
struct Mapped {
    explicit Mapped(int files = 5) : app(world.environment) {
        prepareTrained(app, world.makeCorpus("corpus", files));
        map().setShown(true);
        QVERIFY(waitUntilReady(map()));
    }
    [[nodiscard]] MapController& map() { return *app.map(); }

    TestWorld world;
    AppModel app;
};

}  // namespace

class MapControllerTest : public QObject {
    Q_OBJECT

private slots:
    void thereIsNoMapWithoutAModel() {
        TestWorld world;
        AppModel app(world.environment);
        QVERIFY(!app.map()->canShow());
        app.map()->setShown(true);
        QVERIFY(!app.map()->isShown());
        QCOMPARE(app.map()->urlAt(0), QUrl());
        app.map()->audition({0, 0});
        QVERIFY(!app.isBusy());
    }

    void everyClipHasItsPlace() {
        Mapped mapped;
        const MapController& map = mapped.map();
        QCOMPARE(map.count(), 5);
        QCOMPARE(map.clips(), 5);
        const ModelBundle& bundle = *mapped.app.bundle();
        const LatentMap expected(bundle.latents, static_cast<std::size_t>(bundle.config.latentDim));
        QVERIFY(std::ranges::equal(map.places(), expected.places()));
        QCOMPARE(map.nameAt(1), QStringLiteral("hit1.wav"));
        QCOMPARE(map.urlAt(1), mapped.world.url("corpus/hit1.wav"));
        QCOMPARE(map.nameAt(5), QString());
        QCOMPARE(map.urlAt(-1), QUrl());
        QVERIFY(map.caption().contains(QRegularExpression("shows \\d+ % of")));
    }

    void resultsAppearWhereTheyWereMade() {
        Mapped mapped;
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(3);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        const MapController& map = mapped.map();
        QCOMPARE(map.count(), 8);
        QCOMPARE(map.clips(), 5);
        const auto& samples = mapped.app.results()->all();
        const ModelBundle& bundle = *mapped.app.bundle();
        const LatentMap expected(bundle.latents, static_cast<std::size_t>(bundle.config.latentDim));
        for (int i = 0; i < 3; ++i) {
            const GeneratedSample& sample = samples[static_cast<std::size_t>(i)];
            QVERIFY(map.places()[static_cast<std::size_t>(5 + i)] == expected.placeOf(sample.origin.latent));
            QCOMPARE(map.urlAt(5 + i), toUrl(sample.url));
            QCOMPARE(map.nameAt(5 + i), toQString(sample.url.filename()));
        }
        // Those of another model have no place on this one's map.
        mapped.world.steps = 3;
        mapped.app.train();
        QVERIFY(waitUntilIdle(mapped.app));
        QVERIFY(waitUntilReady(map));
        QCOMPARE(map.count(), 5);
        QVERIFY(map.isShown());
    }

    void whileItIsNotShownResultsCostNothing() {
        Mapped mapped;
        mapped.map().setShown(false);
        QSignalSpy points(&mapped.map(), &MapController::pointsChanged);
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(3);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        QCOMPARE(points.count(), 0);
        mapped.map().setShown(true);
        QCOMPARE(mapped.map().count(), 8);
    }

    void aRenamedResultStaysOnIt() {
        Mapped mapped;
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(1);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        mapped.app.files()->rename(mapped.map().urlAt(5), "Other");
        QTRY_COMPARE(mapped.map().nameAt(5), QStringLiteral("Other.wav"));
        QCOMPARE(mapped.map().urlAt(5), mapped.world.url("out/Other.wav"));
    }

    void goesWithTheModel() {
        Mapped mapped;
        prepare(mapped.app, mapped.world.makeCorpus("other"));
        QVERIFY(!mapped.map().canShow());
        QVERIFY(!mapped.map().isShown());
        QVERIFY(!mapped.map().isReady());
        QCOMPARE(mapped.map().count(), 0);
        QCOMPARE(mapped.map().caption(), QString());
    }

    void aPlaceCanBeHeard() {
        Mapped mapped;
        const MapPlace there = mapped.map().places()[2];
        QSignalSpy played(mapped.app.generation(), &GenerationController::auditionFinished);
        mapped.app.setSeedText("7");
        mapped.map().audition({there.x, there.y});
        QVERIFY(mapped.app.isAuditioning());
        QVERIFY(waitUntilIdle(mapped.app));
        QCOMPARE(played.count(), 1);
        const QByteArray first = TestWorld::read(played.first().first().toUrl().toLocalFile());
        QVERIFY(first.size() > 100);

        // The same place with the same seed is the same sound; another place is another one.
        mapped.map().audition({there.x, there.y});
        QVERIFY(waitUntilIdle(mapped.app));
        QVERIFY(TestWorld::read(played.first().first().toUrl().toLocalFile()) == first);
        const MapPlace elsewhere = mapped.map().places()[4];
        mapped.map().audition({elsewhere.x, elsewhere.y});
        QVERIFY(waitUntilIdle(mapped.app));
        QVERIFY(TestWorld::read(played.first().first().toUrl().toLocalFile()) != first);
    }

    void whileOneIsMadeTheNewestPlaceWaits() {
        Mapped mapped;
        QSignalSpy played(mapped.app.generation(), &GenerationController::auditionFinished);
        const auto bytes = [&] {
            return TestWorld::read(mapped.app.generation()->auditionURL().toLocalFile());
        };
        // Those of clips differ.
        const std::vector<MapPlace> places = mapped.map().places();
        const auto auditionAt = [&](std::size_t clip) {
            mapped.map().audition({places[clip].x, places[clip].y});
        };
        auditionAt(4);
        QVERIFY(waitUntilIdle(mapped.app));
        const QByteArray newest = bytes();
        auditionAt(0);
        QVERIFY(waitUntilIdle(mapped.app));
        QVERIFY(bytes() != newest);
        played.clear();
        for (std::size_t clip = 0; clip < 5; ++clip)
            auditionAt(clip);
        QVERIFY(QTest::qWaitFor([&] { return played.count() == 2 && !mapped.app.isBusy(); }, longestWait));
        deliverEvents();
        QCOMPARE(played.count(), 2);
        QVERIFY(bytes() == newest);
        // Cancelling drops what waits.
        mapped.map().audition({0, 0});
        mapped.map().audition({1, 0});
        mapped.app.cancel();
        QVERIFY(waitUntilIdle(mapped.app));
        deliverEvents();
        QVERIFY(!mapped.app.isBusy());
        QCOMPARE(played.count(), 2);
    }

    void whatWaitsIsForgottenWithItsModel() {
        Gate gate;
        Mapped mapped;
        prepareTrained(mapped.app, mapped.world.makeCorpus("small", 2));
        prepare(mapped.app, mapped.world.url("corpus"));
        QVERIFY(waitUntilIdle(mapped.app));
        mapped.map().setShown(true);
        QVERIFY(waitUntilReady(mapped.map()));
        QSignalSpy played(mapped.app.generation(), &GenerationController::auditionFinished);
        gate.close();
        mapped.app.generation()->auditionAt([&gate](const SampleGenerator& generator, std::uint64_t seed) {
            gate.pass();
            return generator.draw({}, 0, seed);
        });
        mapped.map().audition({0, 0});
        mapped.app.setCorpus(mapped.world.url("small"));
        const bool isOther = QTest::qWaitFor(
            [&] { return mapped.app.bundle() && mapped.app.bundle()->latents.size() == 2; }, longestWait);
        gate.open();
        QVERIFY(isOther);
        QVERIFY(waitUntilIdle(mapped.app));
        deliverEvents();
        QVERIFY(!mapped.app.isBusy());
        QCOMPARE(played.count(), 1);
    }

    void aPlaceIsHeardWithDetailAndWithoutIt() {
        Mapped mapped;
        const QString file = mapped.app.generation()->auditionURL().toLocalFile();
        const MapPlace there = mapped.map().places()[2];
        mapped.map().audition({there.x, there.y});
        QVERIFY(waitUntilIdle(mapped.app));
        const QByteArray without = TestWorld::read(file);
        mapped.app.compareDetail();
        QVERIFY(waitUntilIdle(mapped.app));
        QVERIFY(TestWorld::read(file) != without);
        mapped.app.compareDetail();
        QVERIFY(waitUntilIdle(mapped.app));
        QVERIFY(TestWorld::read(file) == without);
    }

    void onAPointWhatIsMadeOfAPlaceIsNotHeard() {
        Mapped mapped;
        QSignalSpy played(mapped.app.generation(), &GenerationController::auditionFinished);
        mapped.map().audition({0, 0});
        mapped.map().audition({1, 0});
        mapped.map().leavePlace();
        QVERIFY(waitUntilIdle(mapped.app));
        deliverEvents();
        QVERIFY(!mapped.app.isBusy());
        QCOMPARE(played.count(), 0);
        mapped.map().audition({0, 0});
        QVERIFY(waitUntilIdle(mapped.app));
        QCOMPARE(played.count(), 1);
    }

    // ---- Several points

    void aRegionHasThePointsThatLieInIt() {
        Mapped mapped;
        MapController& map = mapped.map();
        QSignalSpy changed(&map, &MapController::regionChanged);
        QVERIFY(!map.hasRegion());
        const MapPlace second = map.places()[1];
        map.selectBetween({second.x, second.y}, {second.x, second.y});  // the edges, too
        QVERIFY(map.hasRegion());
        const int there = static_cast<int>(std::ranges::count(map.places(), second));
        QCOMPARE(map.selectedCount(), there);
        map.selectBetween({1e6, -1e6}, {-1e6, 1e6});
        QCOMPARE(map.selectedCount(), 5);
        QCOMPARE(map.region(), QRectF(QPointF(-1e6, -1e6), QPointF(1e6, 1e6)));
        map.selectBetween({1e6, 1e6}, {2e6, 2e6});
        QCOMPARE(map.selectedCount(), 0);
        QCOMPARE(changed.count(), 3);
        map.clearRegion();
        map.clearRegion();
        QVERIFY(!map.hasRegion());
        QCOMPARE(changed.count(), 4);
        // It goes with the map.
        map.selectBetween({1e6, -1e6}, {-1e6, 1e6});
        prepare(mapped.app, mapped.world.makeCorpus("other"));
        QVERIFY(!map.hasRegion());
        QCOMPARE(map.selectedCount(), 0);
    }

    void resultsThatComeAreInTheRegion() {
        Mapped mapped;
        mapped.map().selectBetween({1e6, -1e6}, {-1e6, 1e6});
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(2);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        QCOMPARE(mapped.map().selectedCount(), 7);
    }

    void candidatesComeAroundThePointsOfTheRegionInTurn() {
        Mapped mapped;
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(2);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        QSignalSpy wanted(&mapped.map(), &MapController::candidatesWanted);
        mapped.map().moreLikeThese();
        QCOMPARE(wanted.count(), 0);  // of nothing
        mapped.map().selectBetween({1e6, -1e6}, {-1e6, 1e6});
        mapped.app.character()->randomise(1);
        mapped.map().moreLikeThese();
        QCOMPARE(wanted.count(), 1);
        const auto relation = wanted.first().first().value<CandidatesRelation>();
        QCOMPARE(relation.parents.size(), std::size_t{7});
        QCOMPARE(relation.parents[3].latent, mapped.app.bundle()->latents[3]);
        QCOMPARE(relation.parents[6].latent, mapped.app.results()->all()[1].origin.latent);
        QVERIFY(waitUntilIdle(mapped.app));
        QCOMPARE(mapped.app.errorMessage(), QString());
        CandidatesController& candidates = *mapped.app.candidates();
        QCOMPARE(candidates.list()->count(), 12);
        QCOMPARE(candidates.about(), QStringLiteral("Like 7 sounds of the map"));
        for (int row = 0; row < 12; ++row) {
            const CandidateHandle candidate = candidates.list()->at(row);
            const int point = row % 7;
            if (point < 5) {
                QCOMPARE(candidate->origin.sources.size(), std::size_t{1});
                QCOMPARE(candidate->origin.sources[0].name,
                         QStringLiteral("hit%1.wav").arg(point).toStdString());
            }
            QCOMPARE(candidate->base->aesthetics, mapped.app.aesthetics());
        }
    }

    void ofManyPointsThoseAreTakenThatLieEvenlyAmongThem() {
        Mapped mapped(24);
        QSignalSpy wanted(&mapped.map(), &MapController::candidatesWanted);
        mapped.map().selectBetween({1e6, -1e6}, {-1e6, 1e6});
        mapped.map().moreLikeThese();
        const auto relation = wanted.first().first().value<CandidatesRelation>();
        QCOMPARE(relation.parents.size(), std::size_t{candidatesPerSet});
        for (std::size_t i = 0; i < relation.parents.size(); ++i)
            QCOMPARE(relation.parents[i].sources.front().clip, 2 * i);
        QVERIFY(waitUntilIdle(mapped.app));
    }

    // ---- Favourites

    void favouritesAreKnown() {
        Mapped mapped;
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(2);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        MapController& map = mapped.map();
        QSignalSpy changed(&map, &MapController::favouritesChanged);
        mapped.app.files()->setFavourite(map.urlAt(6), true);
        QCOMPARE(changed.count(), 1);
        for (int point = -1; point < 8; ++point)
            QCOMPARE(map.isFavouriteAt(point), point == 6);
        mapped.app.files()->undo();
        QVERIFY(!map.isFavouriteAt(6));
    }

    // ---- What is seen of it

    void theWholeMapFitsAtFirst() {
        Mapped mapped;
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        const QRectF inside(20, 20, 360, 260);
        for (int point = 0; point < 5; ++point) {
            const QPointF position = item.positionOf(point);
            QVERIFY(inside.contains(position));
            const QPointF place = item.placeAt(position);
            QVERIFY(std::abs(place.x() - mapped.map().places()[static_cast<std::size_t>(point)].x) < 1e-9);
            QVERIFY(std::abs(place.y() - mapped.map().places()[static_cast<std::size_t>(point)].y) < 1e-9);
            QCOMPARE(item.positionOf(item.pointAt(position)), position);
        }
        QCOMPARE(item.pointAt({2, 2}), -1);
    }

    void zoomsAroundThePointer() {
        Mapped mapped;
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        const QPointF pointer(100, 80);
        const QPointF place = item.placeAt(pointer);
        item.zoomAt(pointer, 3);
        QCOMPARE(item.zoom(), 3.0);
        QVERIFY((item.placeAt(pointer) - place).manhattanLength() < 1e-9);
        item.zoomAt(pointer, 1e9);
        QCOMPARE(item.zoom(), PointMapItem::mostZoom);
        item.zoomAt(pointer, 0);
        QCOMPARE(item.zoom(), 1.0);
    }

    void pansAndComesBackToAPoint() {
        Mapped mapped;
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        item.zoomAt({200, 150}, 20);
        item.pan({1e6, 1e6});  // something is always seen
        const QPointF middle = item.placeAt({200, 150});
        const auto& places = mapped.map().places();
        const auto smallest = std::ranges::min(places, {}, &MapPlace::x);
        QVERIFY(std::abs(middle.x() - smallest.x) < 1e-9);
        for (int point = 0; point < 5; ++point) {
            item.reveal(point);
            QVERIFY(QRectF(0, 0, 400, 300).contains(item.positionOf(point)));
        }
    }

    void anotherMapIsSeenWhole() {
        Mapped mapped;
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        item.zoomAt({200, 150}, 20);
        item.pan({1e6, 1e6});
        mapped.world.steps = 3;
        mapped.app.train();
        QVERIFY(waitUntilIdle(mapped.app));
        QVERIFY(waitUntilReady(mapped.map()));
        QCOMPARE(item.zoom(), 1.0);
        for (int point = 0; point < 5; ++point)
            QVERIFY(QRectF(20, 20, 360, 260).contains(item.positionOf(point)));
    }

    void whatIsSeenOfItStaysWhenResultsCome() {
        Mapped mapped;
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        item.zoomAt(item.positionOf(1), 3);
        const QPointF before = item.positionOf(1);
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(1);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        QCOMPARE(mapped.map().count(), 6);
        QCOMPARE(item.zoom(), 3.0);
        QCOMPARE(item.positionOf(1), before);
    }

    void arrowsGoToTheNearestThatWay() {
        Mapped mapped;
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        QVERIFY(item.neighbour(-1, 1, 0) >= 0);
        const auto& places = mapped.map().places();
        for (const QPoint way : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)}) {
            const auto along = [&](int point) {
                const MapPlace& place = places[static_cast<std::size_t>(point)];
                return place.x * way.x() + place.y * way.y();
            };
            int moves = 0;
            for (int from = 0; from < 5; ++from) {
                const int next = item.neighbour(from, way.x(), way.y());
                if (next == from) continue;
                QVERIFY(along(next) > along(from));
                ++moves;
            }
            QVERIFY2(moves > 0, "nobody goes that way");
        }
        // From end to end along x, in which the points differ most.
        constexpr std::array numbers{0, 1, 2, 3, 4};
        int point = *std::ranges::min_element(numbers, {}, [&](int i) { return item.positionOf(i).x(); });
        int visited = 1;
        for (int next = item.neighbour(point, 1, 0); next != point; next = item.neighbour(point, 1, 0)) {
            QVERIFY(item.positionOf(next).x() > item.positionOf(point).x());
            point = next;
            ++visited;
        }
        QVERIFY2(visited > 1, qPrintable(QString::number(visited)));
    }

    void paintsClipsAndResults() {
        Mapped mapped;
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(2);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        item.setClipColor(Qt::red);
        item.setResultColor(Qt::blue);
        QImage image(400, 300, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        item.paint(&painter);
        painter.end();
        const QColor result = image.pixelColor(item.positionOf(6).toPoint());
        QVERIFY2(result.blue() > 200 && result.red() < 120, qPrintable(result.name()));
        QCOMPARE(image.pixelColor(1, 1), QColor(Qt::white));
        int reds = 0;
        for (int point = 0; point < 5; ++point) {
            const QColor clip = image.pixelColor(item.positionOf(point).toPoint());
            reds += clip.red() > 200 && clip.blue() < 120 ? 1 : 0;
        }
        QVERIFY(reds > 0);  // a result may lie on some of them
    }

    void paintsARingAroundFavourites() {
        Mapped mapped;
        mapped.app.setOutputText(mapped.world.path("out"));
        mapped.app.setCount(1);
        mapped.app.generate();
        QVERIFY(waitUntilIdle(mapped.app));
        PointMapItem item;
        item.setSize({400, 300});
        item.setMap(&mapped.map());
        item.setClipColor(Qt::white);
        item.setResultColor(Qt::blue);
        const auto blues = [&] {
            QImage image(400, 300, QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            item.paint(&painter);
            painter.end();
            const QPointF position = item.positionOf(5);
            const QPoint middle(static_cast<int>(position.x()), static_cast<int>(position.y()));
            int found = 0;
            for (const QPoint& way : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)})
                found += image.pixelColor(middle + 8 * way).red() < 160 ? 1 : 0;
            return found;
        };
        QCOMPARE(blues(), 0);
        mapped.app.files()->setFavourite(mapped.map().urlAt(5), true);
        QCOMPARE(blues(), 4);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::MapControllerTest)
#include "MapControllerTest.moc"
