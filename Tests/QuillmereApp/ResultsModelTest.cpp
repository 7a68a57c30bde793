#include "QuillmereApp/ResultsModel.h"

#include <QAbstractItemModelTester>
#include <QElapsedTimer>
#include <QObject>
#include <QPersistentModelIndex>
#include <algorithm>
#include <atomic>
#include <memory>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

std::vector<GeneratedSample> makeSamples(const TestWorld& world, int count) {
    QDir().mkpath(world.path("out"));
    std::vector<GeneratedSample> samples;
    for (int i = 0; i < count; ++i) {
        const auto file =
            toPath(world.path(QStringLiteral("out/take_%1.wav").arg(i, 5, 10, QLatin1Char('0'))));
        AudioIO::write(std::vector<float>(800, 0.5F), file, 8000, OutputFormat::wav16);
        samples.push_back({file, 0.1});
    }
    return samples;
}

QList<qreal> peaksOf(const ResultsModel& model, int row) {
    return model.index(row).data(ResultsModel::PeaksRole).value<QList<qreal>>();
}

// Files b, d, a and c, of which much is known.
struct Sortable {
    Sortable() {
        QDir().mkpath(world.path("out"));
        std::vector<GeneratedSample> samples;
        for (const auto& [name, seconds] :
             {std::pair("b", 0.2), std::pair("d", 0.3), std::pair("a", 0.4), std::pair("c", 0.1)}) {
            const auto file = toPath(world.path(QStringLiteral("out/%1.wav").arg(QLatin1String(name))));
            AudioIO::write(std::vector<float>(800, 0.5F), file, 8000, OutputFormat::wav16);
            samples.push_back({file, seconds});
        }
        model.setFavourites([this](const QUrl& file) { return favourites.contains(nameOf(file)); });
        model.setMeasures([this](const QUrl& file) { return measures.value(nameOf(file)); });
        model.setSamples(std::move(samples));
    }

    static QString nameOf(const QUrl& file) { return file.fileName().chopped(4); }
    [[nodiscard]] QStringList labels() const {
        QStringList found;
        for (int row = 0; row < model.count(); ++row)
            found.append(model.index(row).data(ResultsModel::LabelRole).toString());
        return found;
    }

    TestWorld world;
    QStringList favourites;
    QHash<QString, SoundMeasure> measures{{"a", {.brightness = 0.3, .novelty = 1}},
                                          {"c", {.brightness = 0.2, .novelty = -1}},
                                          {"d", {.brightness = 0.1, .novelty = 2}},
                                          {"b", {.brightness = -1, .novelty = 3}}};
    ResultsModel model;
};

}  // namespace

class ResultsModelTest : public QObject {
    Q_OBJECT

private slots:
    void listsTheFiles() {
        TestWorld world;
        ResultsModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy count(&model, &ResultsModel::countChanged);
        model.setSamples(makeSamples(world, 3));
        QCOMPARE(count.count(), 1);
        QCOMPARE(model.count(), 3);
        const QModelIndex second = model.index(1);
        QCOMPARE(second.data(ResultsModel::FileNameRole).toString(), QStringLiteral("take_00001.wav"));
        QCOMPARE(second.data(ResultsModel::UrlRole).toUrl(), world.url("out/take_00001.wav"));
        QCOMPARE(second.data(ResultsModel::SecondsRole).toDouble(), 0.1);
        QCOMPARE(second.data(ResultsModel::DurationTextRole).toString(), QStringLiteral("0.10 s"));
        QVERIFY(second.data(ResultsModel::ExistsRole).toBool());
        QVERIFY(!second.data(ResultsModel::IsPlayingRole).toBool());
        QCOMPARE(model.rowOf(model.urlAt(2)), 2);
        QCOMPARE(model.urlAt(3), QUrl());
        QCOMPARE(model.rowOf(QUrl()), -1);
    }

    void computesAThumbnailWhenItIsRead() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 2));
        QSignalSpy changed(&model, &ResultsModel::dataChanged);
        QCOMPARE(peaksOf(model, 1), QList<qreal>());
        QVERIFY(changed.wait());
        QCOMPARE(changed.at(0).at(0).toModelIndex().row(), 1);
        QCOMPARE(peaksOf(model, 1).size(), ResultsModel::peakCount);
        QCOMPARE(peaksOf(model, 1).first(), 0.5);
        AppModelProbe::waitForWork(model);
        deliverEvents();
        QCOMPARE(changed.count(), 1);  // kept, and no other row was computed
    }

    void marksThePlayingRow() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 2));
        model.setPlaying(model.urlAt(1));
        QVERIFY(model.index(1).data(ResultsModel::IsPlayingRole).toBool());
        model.setPlaying(QUrl::fromLocalFile("/elsewhere.wav"));
        QVERIFY(!model.index(1).data(ResultsModel::IsPlayingRole).toBool());
    }

    void tellsWhenWhatPlaysIsGone() {
        TestWorld world;
        ResultsModel model;
        const std::vector<GeneratedSample> samples = makeSamples(world, 2);
        QSignalSpy gone(&model, &ResultsModel::playingGone);
        model.setSamples(samples);
        model.setPlaying(QUrl::fromLocalFile("/elsewhere.wav"));
        model.setSamples({samples[0]});
        QCOMPARE(gone.count(), 0);  // it was none of them
        model.setPlaying(model.urlAt(0));
        model.setSamples(samples);
        QCOMPARE(gone.count(), 0);
        model.setSamples({samples[1]});
        QCOMPARE(gone.count(), 1);
        model.setSamples({});
        QCOMPARE(gone.count(), 1);  // told once
    }

    void noticesAFileThatIsDeleted() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 3));
        QVERIFY(QFile::remove(model.urlAt(1).toLocalFile()));
        QTRY_VERIFY(!model.existsAt(1));
        QVERIFY(model.existsAt(0) && model.existsAt(2));
        QVERIFY(!model.existsAt(-1) && !model.existsAt(3));
    }

    // Neither a look nor the closing waits for a mount whose server is gone.
    void filesThatDoNotAnswerAreGoneUntilTheyDo() {
        TestWorld world;
        const std::vector<GeneratedSample> samples = makeSamples(world, 3);
        world.cutOff("out");
        auto model = std::make_unique<ResultsModel>(world.environment.looks);
        model->setSamples(samples);
        for (int i = 0; i < 50; ++i)
            model->refresh();
        QTRY_VERIFY(!model->existsAt(0));
        QCOMPARE(peaksOf(*model, 0), QList<qreal>());
        AppModelProbe::waitForWork(*model);
        QCOMPARE(world.looksAtDead->load(), 1);
        world.reconnect();
        model->refresh();
        QTRY_VERIFY(model->existsAt(0) && model->existsAt(2));
        world.cutOff("out");
        model->refresh();
        model.reset();  // comes back
    }

    void noticesAFolderThatIsDeleted() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 2));
        QVERIFY(QDir(world.path("out")).removeRecursively());
        model.refresh();
        QTRY_VERIFY(!model.existsAt(0) && !model.existsAt(1));
    }

    void aThumbnailOfADeletedFileStaysEmpty() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 1));
        QVERIFY(QFile::remove(model.urlAt(0).toLocalFile()));
        QCOMPARE(peaksOf(model, 0), QList<qreal>());
        QTRY_VERIFY(!model.existsAt(0));
        QCOMPARE(peaksOf(model, 0), QList<qreal>());
    }

    void lateAnswersForOldRowsAreDropped() {
        TestWorld world;
        const std::vector<GeneratedSample> present = makeSamples(world, 5);
        std::vector<GeneratedSample> gone = present;
        for (GeneratedSample& sample : gone)
            sample.url += ".gone";
        ResultsModel model;
        model.setSamples(gone);
        model.refresh();
        AppModelProbe::waitForWork(model);  // the answer waits to be delivered: none of them exists
        model.setSamples(present);
        (void)peaksOf(model, 0);
        AppModelProbe::waitForWork(model);  // and so do the peaks of a row
        model.setSamples(std::vector(present.rbegin(), present.rend()));
        QSignalSpy changed(&model, &ResultsModel::dataChanged);
        deliverEvents();
        QCOMPARE(changed.count(), 0);
        for (int row = 0; row < model.count(); ++row)
            QVERIFY(model.existsAt(row));
    }

    void heldRowsChangeWhenTheyAreReleased() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 3));
        const QUrl held = model.urlAt(2);
        QSignalSpy reset(&model, &ResultsModel::modelReset);
        model.hold();
        model.hold();
        model.setSamples(makeSamples(world, 1));
        model.setSamples(makeSamples(world, 2));
        QCOMPARE(model.count(), 3);
        QCOMPARE(model.urlAt(2), held);
        model.release();
        QCOMPARE(model.count(), 3);
        model.release();
        QCOMPARE(model.count(), 2);  // the last ones that came
        QCOMPARE(reset.count(), 1);
        model.hold();
        model.release();
        QCOMPARE(reset.count(), 1);
    }

    void aRowIsAddedAtTheEnd() {
        TestWorld world;
        ResultsModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        std::vector<GeneratedSample> samples = makeSamples(world, 4);
        const GeneratedSample last = samples.back();
        samples.pop_back();
        model.setSamples(samples);
        QSignalSpy reset(&model, &ResultsModel::modelReset);
        model.refresh();  // answers for three rows
        model.add(last);
        QCOMPARE(model.count(), 4);
        QCOMPARE(reset.count(), 0);
        QCOMPARE(model.urlAt(3), toUrl(last.url));
        QCOMPARE(model.rowOf(toUrl(last.url)), 3);
        AppModelProbe::waitForWork(model);
        deliverEvents();
        QVERIFY(model.existsAt(3));
        // While the rows are held it waits, too.
        model.hold();
        GeneratedSample another = samples.front();
        another.url = last.url.parent_path() / "another.wav";
        model.add(another);
        QCOMPARE(model.count(), 4);
        model.release();
        QCOMPARE(model.count(), 5);
    }

    // The first file went to the trash; a sound that is written afterwards may get its name.
    void aFileHasOneRow() {
        TestWorld world;
        ResultsModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const std::vector<GeneratedSample> samples = makeSamples(world, 3);
        model.setSamples(samples);
        GeneratedSample anew = samples[1];
        anew.origin.seed = 7777;
        model.add(anew);
        QCOMPARE(model.count(), 3);
        QCOMPARE(model.rowOf(toUrl(anew.url)), 2);
        QCOMPARE(model.all()[2].origin.seed, std::uint64_t{7777});
        QCOMPARE(model.urlAt(1), toUrl(samples[2].url));

        model.rename(toUrl(samples[0].url), toUrl(anew.url));
        QCOMPARE(model.count(), 2);
        QCOMPARE(model.urlAt(0), toUrl(anew.url));
        QVERIFY(model.all()[0].origin.seed != 7777);

        model.hold();
        model.add(anew);
        model.release();
        QCOMPARE(model.count(), 2);
        QCOMPARE(model.all()[1].origin.seed, std::uint64_t{7777});
    }

    void aRowFollowsItsFileToAnotherName() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 2));
        const QUrl before = model.urlAt(0);
        const QUrl now = world.url("out/other.wav");
        model.hold();
        model.setSamples(model.all());
        QVERIFY(QFile::rename(before.toLocalFile(), now.toLocalFile()));
        model.rename(before, now);
        for (const bool isHeld : {true, false}) {
            QCOMPARE(model.urlAt(0), now);
            QCOMPARE(model.index(0).data(ResultsModel::FileNameRole).toString(), QStringLiteral("other.wav"));
            QCOMPARE(model.rowOf(now), 0);
            QCOMPARE(model.rowOf(before), -1);
            QCOMPARE(model.all().front().url, toPath(now));
            if (isHeld) model.release();
        }
        model.rename(before, now);  // none of them
        QCOMPARE(model.count(), 2);
    }

    void whatPlaysFollowsItsFileToAnotherName() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 2));
        model.setPlaying(model.urlAt(0));
        model.rename(model.urlAt(0), world.url("out/other.wav"));
        QVERIFY(model.index(0).data(ResultsModel::IsPlayingRole).toBool());
        QSignalSpy gone(&model, &ResultsModel::playingGone);
        model.setSamples({});
        QCOMPARE(gone.count(), 1);
    }

    void onlyANewFolderIsLookedAt() {
        TestWorld world;
        std::vector<GeneratedSample> samples = makeSamples(world, 3);
        const GeneratedSample last = samples.back();
        samples.pop_back();
        const auto looks = std::make_shared<std::atomic<int>>(0);
        ResultsModel model(std::make_shared<FolderLooks>([looks](const std::filesystem::path& path) {
            ++*looks;
            return FolderLooks::onDisk(path);
        }));
        model.setSamples(samples);
        AppModelProbe::waitForWork(model);
        deliverEvents();
        AppModelProbe::waitForWork(model);
        const int before = *looks;
        model.add(last);
        AppModelProbe::waitForWork(model);
        deliverEvents();
        AppModelProbe::waitForWork(model);
        QCOMPARE(looks->load(), before);
        const auto elsewhere = toPath(world.path("elsewhere.wav"));
        AudioIO::write(std::vector<float>(800, 0.5F), elsewhere, 8000, OutputFormat::wav16);
        model.add({elsewhere, 0.1});
        AppModelProbe::waitForWork(model);
        QVERIFY(*looks > before);
    }

    void asksWhichRowsAreFavourites() {
        TestWorld world;
        ResultsModel model;
        model.setSamples(makeSamples(world, 2));
        const auto isFavourite = [&](int row) {
            return model.index(row).data(ResultsModel::IsFavouriteRole).toBool();
        };
        QVERIFY(!isFavourite(1));
        const QUrl favourite = model.urlAt(1);
        model.setFavourites([&](const QUrl& file) { return file == favourite; });
        QVERIFY(!isFavourite(0) && isFavourite(1));
        QSignalSpy changed(&model, &ResultsModel::dataChanged);
        model.favouritesChanged();
        QCOMPARE(changed.count(), 1);
    }

    void takesThousandsOfFilesAtOnce() {
        TestWorld world;
        std::vector<GeneratedSample> samples = makeSamples(world, 1);
        for (int i = 1; i < 5000; ++i)
            samples.push_back({toPath(world.path(QStringLiteral("out/gone_%1.wav").arg(i))), 0.1});
        ResultsModel model;
        model.setSamples(samples);
        QCOMPARE(model.count(), 5000);
        model.refresh();
        QTRY_VERIFY(!model.existsAt(4999));
        QVERIFY(model.existsAt(0));
        QCOMPARE(model.existingFiles(), QList<QUrl>({model.urlAt(0)}));
        QCOMPARE(model.rowOf(model.urlAt(4321)), 4321);
    }

    // ---- Order and favourites

    void sortsByWhatIsWanted_data() {
        QTest::addColumn<int>("order");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("as made") << int(ResultsModel::AsMade) << QStringList({"b", "d", "a", "c"});
        QTest::newRow("name") << int(ResultsModel::ByName) << QStringList({"a", "b", "c", "d"});
        QTest::newRow("length") << int(ResultsModel::ByLength) << QStringList({"c", "b", "d", "a"});
        QTest::newRow("brightness") << int(ResultsModel::ByBrightness) << QStringList({"d", "c", "a", "b"});
        QTest::newRow("novelty") << int(ResultsModel::ByNovelty) << QStringList({"a", "d", "b", "c"});
    }
    void sortsByWhatIsWanted() {
        QFETCH(int, order);
        QFETCH(QStringList, expected);
        Sortable sortable;
        sortable.model.setOrder(static_cast<ResultsModel::Order>(order));
        QCOMPARE(sortable.labels(), expected);
        QCOMPARE(sortable.model.rowOf(sortable.model.urlAt(2)), 2);
        QCOMPARE(toUrl(sortable.model.sampleAt(1).url), sortable.model.urlAt(1));
        QCOMPARE(sortable.model.all().front().url, toPath(sortable.world.path("out/b.wav")));
        sortable.model.setOrder(ResultsModel::AsMade);
        QCOMPARE(sortable.labels(), QStringList({"b", "d", "a", "c"}));
    }

    void newMeasuresChangeTheOrderOnlyWhereItIsTheirs() {
        Sortable sortable;
        QSignalSpy moved(&sortable.model, &ResultsModel::layoutChanged);
        sortable.measures["c"].novelty = 0.5;
        sortable.model.measuresChanged();
        QCOMPARE(moved.count(), 0);
        sortable.model.setOrder(ResultsModel::ByNovelty);
        QCOMPARE(sortable.labels(), QStringList({"c", "a", "d", "b"}));
        QCOMPARE(moved.count(), 1);
        sortable.model.measuresSettled();
        QCOMPARE(moved.count(), 1);
        sortable.measures["b"].novelty = 0.1;
        sortable.model.measuresChanged();  // no new places before it is over
        QCOMPARE(moved.count(), 1);
        sortable.model.measuresSettled();
        QCOMPARE(sortable.labels().first(), QStringLiteral("b"));
    }

    // One move after the other would take a view seconds.
    void thousandsOfRowsAreShownAnewInAnotherOrder() {
        TestWorld world;
        ResultsModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        std::vector<GeneratedSample> samples;
        for (int i = 0; i < static_cast<int>(ResultsModel::mostMoved); ++i)
            samples.push_back({toPath(world.path(QStringLiteral("%1.wav").arg(i))), 1.0 / (i + 1)});
        QSignalSpy moved(&model, &ResultsModel::layoutChanged);
        QSignalSpy reset(&model, &ResultsModel::modelReset);
        model.setSamples(samples);
        QCOMPARE(reset.count(), 1);
        model.setOrder(ResultsModel::ByLength);
        QCOMPARE(QList<qsizetype>({moved.count(), reset.count()}), QList<qsizetype>({1, 1}));
        samples.push_back({toPath(world.path(QStringLiteral("last.wav"))), 1e-6});
        model.setOrder(ResultsModel::AsMade);
        model.setSamples(samples);
        const QUrl first = model.urlAt(0);
        model.toggleSelected(0);
        model.setOrder(ResultsModel::ByLength);
        QCOMPARE(QList<qsizetype>({moved.count(), reset.count()}), QList<qsizetype>({2, 3}));
        QCOMPARE(model.urlAt(0).fileName(), QStringLiteral("last.wav"));
        QCOMPARE(model.rowOf(first), model.count() - 1);
        QVERIFY(model.isSelected(model.count() - 1));
    }

    void whatIsKnownOfARowStaysKnown() {
        Sortable sortable;
        QSignalSpy changed(&sortable.model, &ResultsModel::dataChanged);
        QCOMPARE(peaksOf(sortable.model, 0), QList<qreal>());
        QTRY_VERIFY(!peaksOf(sortable.model, 0).isEmpty());
        sortable.model.setOrder(ResultsModel::ByName);
        QVERIFY(!peaksOf(sortable.model, 1).isEmpty());  // b
    }

    void anotherOrderMovesTheRowsAndKeepsThem() {
        Sortable sortable;
        const QAbstractItemModelTester tester(&sortable.model,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy reset(&sortable.model, &ResultsModel::modelReset);
        sortable.model.toggleSelected(0);
        const QPersistentModelIndex b(sortable.model.index(0));
        sortable.model.setOrder(ResultsModel::ByLength);
        QCOMPARE(b.row(), 1);
        QCOMPARE(b.data(ResultsModel::LabelRole).toString(), QStringLiteral("b"));
        QVERIFY(sortable.model.isSelected(1) && sortable.model.selectedCount() == 1);
        QCOMPARE(b.data(ResultsModel::SecondsRole).toDouble(), 0.2);
        QCOMPARE(reset.count(), 0);
    }

    void whatIsFoundOutGoesWhereTheFileIsByThen() {
        Sortable sortable;
        QVERIFY(QFile::remove(sortable.world.path("out/d.wav")));
        QSignalSpy changed(&sortable.model, &ResultsModel::dataChanged);
        QCOMPARE(peaksOf(sortable.model, 0), QList<qreal>());  // b
        sortable.model.refresh();
        sortable.model.setOrder(ResultsModel::ByName);
        QTRY_VERIFY(!sortable.model.existsAt(3));  // d
        QVERIFY(sortable.model.existsAt(1));
        QTRY_VERIFY(std::ranges::any_of(changed, [](const QList<QVariant>& change) {
            return change[0].value<QModelIndex>().row() == 1 &&
                   change[2].value<QList<int>>() == QList<int>{ResultsModel::PeaksRole};
        }));
        QVERIFY(!peaksOf(sortable.model, 1).isEmpty());
    }

    void tellsWhenAllFilesAreOthers() {
        Sortable sortable;
        QSignalSpy replaced(&sortable.model, &ResultsModel::replaced);
        sortable.model.setOrder(ResultsModel::ByName);
        sortable.model.setOnlyFavourites(true);
        QCOMPARE(replaced.count(), 0);
        sortable.model.setSamples(sortable.model.all());
        QCOMPARE(replaced.count(), 1);
    }

    void whatIsAddedMayBeHidden() {
        Sortable sortable;
        sortable.favourites = {"a", "y"};
        sortable.model.setOnlyFavourites(true);
        for (const char* const name : {"out/x.wav", "out/y.wav"}) {
            GeneratedSample sample = sortable.model.all().front();
            sample.url = toPath(sortable.world.path(name));
            sortable.model.add(sample);
        }
        QCOMPARE(sortable.labels(), QStringList({"a", "y"}));
        QCOMPARE(sortable.model.total(), 6);
    }

    void favouritesCanBeSeenAlone() {
        Sortable sortable;
        const QAbstractItemModelTester tester(&sortable.model,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        sortable.favourites = {"a", "d"};
        sortable.model.setOnlyFavourites(true);
        QCOMPARE(sortable.labels(), QStringList({"d", "a"}));
        QCOMPARE(sortable.model.total(), 4);
        sortable.favourites = {"c"};
        sortable.model.favouritesChanged();
        QCOMPARE(sortable.labels(), QStringList({"c"}));
        sortable.favourites.clear();
        sortable.model.favouritesChanged();
        QCOMPARE(sortable.model.count(), 0);
        QCOMPARE(sortable.model.total(), 4);
        sortable.model.setOnlyFavourites(false);
        QCOMPARE(sortable.labels(), QStringList({"b", "d", "a", "c"}));
    }

    void newFilesAreAllSeen() {
        Sortable sortable;
        sortable.model.setOnlyFavourites(true);
        QCOMPARE(sortable.model.count(), 0);
        sortable.model.setSamples(sortable.model.all());
        QVERIFY(!sortable.model.onlyFavourites());
        QCOMPARE(sortable.model.count(), 4);
    }

    void whatIsAddedTakesItsPlace() {
        Sortable sortable;
        sortable.model.setOrder(ResultsModel::ByName);
        GeneratedSample sample = sortable.model.all().front();
        sample.url = toPath(sortable.world.path("out/aa.wav"));
        const QAbstractItemModelTester tester(&sortable.model,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy reset(&sortable.model, &ResultsModel::modelReset);
        sortable.model.add(sample);
        QCOMPARE(sortable.labels(), QStringList({"a", "aa", "b", "c", "d"}));
        QCOMPARE(reset.count(), 0);
        QCOMPARE(sortable.model.total(), 5);
        sortable.model.rename(sortable.world.url("out/aa.wav"), sortable.world.url("out/x.wav"));
        QCOMPARE(sortable.labels(), QStringList({"a", "b", "c", "d", "x"}));
        sortable.model.setOrder(ResultsModel::AsMade);
        QCOMPARE(sortable.labels().last(), QStringLiteral("x"));
    }

    void heldRowsWaitForTheirOrder() {
        Sortable sortable;
        sortable.model.hold();
        sortable.model.setOrder(ResultsModel::ByName);
        QCOMPARE(sortable.labels(), QStringList({"b", "d", "a", "c"}));
        sortable.model.release();
        QCOMPARE(sortable.labels(), QStringList({"a", "b", "c", "d"}));
    }

    // ---- Several rows

    void rowsAreSelected() {
        Sortable sortable;
        ResultsModel& model = sortable.model;
        QSignalSpy changed(&model, &ResultsModel::selectionChanged);
        QCOMPARE(model.chosenFiles(1), QList<QUrl>({model.urlAt(1)}));
        QCOMPARE(model.chosenFiles(-1), QList<QUrl>());
        model.toggleSelected(3);
        model.toggleSelected(0);
        model.toggleSelected(7);
        QCOMPARE(model.selectedCount(), 2);
        QCOMPARE(changed.count(), 2);
        QVERIFY(model.index(0).data(ResultsModel::IsSelectedRole).toBool());
        QVERIFY(!model.index(1).data(ResultsModel::IsSelectedRole).toBool());
        QCOMPARE(model.chosenFiles(1), QList<QUrl>({model.urlAt(0), model.urlAt(3)}));
        model.toggleSelected(0);
        QCOMPARE(model.chosenFiles(1), QList<QUrl>({model.urlAt(3)}));
        model.selectRange(2, 1);
        QCOMPARE(model.chosenFiles(0), QList<QUrl>({model.urlAt(1), model.urlAt(2)}));
        model.selectRange(-5, 50);
        QCOMPARE(model.selectedCount(), 4);
        model.clearSelection();
        QCOMPARE(model.selectedCount(), 0);
        model.selectAll();
        QCOMPARE(model.selectedCount(), 4);
    }

    void theSelectionGoesWithItsFiles() {
        Sortable sortable;
        ResultsModel& model = sortable.model;
        model.selectRange(0, 1);  // b and d
        model.setOrder(ResultsModel::ByName);
        QCOMPARE(model.chosenFiles(0),
                 QList<QUrl>({sortable.world.url("out/b.wav"), sortable.world.url("out/d.wav")}));
        model.rename(sortable.world.url("out/d.wav"), sortable.world.url("out/e.wav"));
        QVERIFY(model.isSelected(model.rowOf(sortable.world.url("out/e.wav"))));
        sortable.favourites = {"b"};
        model.setOnlyFavourites(true);
        QCOMPARE(model.selectedCount(), 1);
        model.setSamples({});
        QCOMPARE(model.selectedCount(), 0);
    }

    void filesThatAreGoneAreNotChosen() {
        Sortable sortable;
        QVERIFY(QFile::remove(sortable.world.path("out/d.wav")));
        sortable.model.refresh();
        QTRY_VERIFY(!sortable.model.existsAt(1));
        sortable.model.selectAll();
        QCOMPARE(sortable.model.chosenFiles(0).size(), 3);
        sortable.model.clearSelection();
        QVERIFY(sortable.model.chosenFiles(1).isEmpty());
    }

    void labelsTellWhatDiffers_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("label");
        QTest::newRow("numbered") << "Drums_var_0007.wav"
                                  << "7";
        QTest::newRow("many") << "Drums_var_12345.wav"
                              << "12345";
        QTest::newRow("none") << "Drums_var_0000.wav"
                              << "0";
        QTest::newRow("renamed") << "my kick.WAV"
                                 << "my kick";
        QTest::newRow("another") << "Drums_var_0007 (copy).wav"
                                 << "Drums_var_0007 (copy)";
        QTest::newRow("no ending") << "kick"
                                   << "kick";
    }
    void labelsTellWhatDiffers() {
        QFETCH(QString, name);
        QFETCH(QString, label);
        TestWorld world;
        ResultsModel model;
        model.setSamples({{toPath(world.path("out/" + name)), 0.1}});
        QCOMPARE(model.index(0).data(ResultsModel::LabelRole).toString(), label);
        QCOMPARE(model.index(0).data(ResultsModel::NoveltyRole).toString(), QString());
    }

    void saysHowNewAFileIs() {
        Sortable sortable;
        sortable.measures["b"].novelty = 1.9;
        QCOMPARE(sortable.model.index(0).data(ResultsModel::NoveltyRole).toString(), QStringLiteral("copy"));
        sortable.measures["b"].novelty = 8;
        QCOMPARE(sortable.model.index(0).data(ResultsModel::NoveltyRole).toString(), QStringLiteral("new"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::ResultsModelTest)
#include "ResultsModelTest.moc"
