// What plays, and how long the model says so.

#include <QObject>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

QUrl makeSound(const TestWorld& world, const QString& name, double seconds) {
    AudioIO::write(sine(440, 8000, static_cast<std::size_t>(seconds * 8000), 0.5), toPath(world.path(name)),
                   8000, OutputFormat::wav16);
    return world.url(name);
}

}  // namespace

class AppModelPlaybackTest : public QObject {
    Q_OBJECT

private slots:
    void playsAFile() {
        TestWorld world;
        AppModel model(world.environment);
        const QUrl sound = makeSound(world, "a.wav", 0.05);
        model.play(sound);
        QTRY_COMPARE(model.playingURL(), sound);
        QCOMPARE(world.player->asked, QStringList({world.path("a.wav")}));
        QVERIFY(!model.isPlayingAudition());
    }

    void theMarkGoesATenthOfASecondAfterTheEnd() {
        TestWorld world;
        AppModel model(world.environment);
        model.play(makeSound(world, "a.wav", 0.2));
        QTRY_VERIFY(!model.playingURL().isEmpty());
        QElapsedTimer clock;
        clock.start();
        world.player->finish();  // at once: a fast card
        QVERIFY(!model.playingURL().isEmpty());
        QTRY_VERIFY(model.playingURL().isEmpty());
        QVERIFY2(clock.elapsed() >= 280, qPrintable(QString::number(clock.elapsed())));
    }

    void theMarkStaysWhileTheCardStillPlays() {
        TestWorld world;
        AppModel model(world.environment);
        model.play(makeSound(world, "a.wav", 0.01));
        QTRY_VERIFY(!model.playingURL().isEmpty());
        QVERIFY(!QTest::qWaitFor([&] { return model.playingURL().isEmpty(); }, 250));
        world.player->finish();
        QVERIFY(model.playingURL().isEmpty());
    }

    void anotherFileTakesOver() {
        TestWorld world;
        AppModel model(world.environment);
        const QUrl first = makeSound(world, "a.wav", 0.05);
        const QUrl second = makeSound(world, "b.wav", 0.4);
        model.play(first);
        QTRY_COMPARE(model.playingURL(), first);
        model.play(second);
        QTRY_COMPARE(model.playingURL(), second);
        QElapsedTimer clock;
        clock.start();
        world.player->finish();
        QTRY_VERIFY(model.playingURL().isEmpty());
        QVERIFY2(clock.elapsed() >= 450, "the first one's time was over before");
    }

    void pressingPlayOnThePlayingFileStopsIt() {
        TestWorld world;
        AppModel model(world.environment);
        const QUrl sound = makeSound(world, "a.wav", 2);
        model.togglePlay(sound);
        QTRY_COMPARE(model.playingURL(), sound);
        model.togglePlay(sound);
        QVERIFY(model.playingURL().isEmpty());
        QVERIFY(!world.player->isPlaying());
        model.togglePlay(sound);
        QTRY_COMPARE(model.playingURL(), sound);
    }

    void pressingPlayTwiceQuicklyStopsIt() {
        TestWorld world;
        AppModel model(world.environment);
        const QUrl sound = makeSound(world, "a.wav", 2);
        model.togglePlay(sound);
        model.togglePlay(sound);  // not yet started
        deliverEvents();
        QVERIFY(model.playingURL().isEmpty());
        QVERIFY(!world.player->isPlaying());
    }

    void withoutASoundCardNothingChanges() {
        TestWorld world;
        AppModel model(world.environment);
        world.player->hasSoundCard = false;
        QSignalSpy playing(&model, &AppModel::playingURLChanged);
        QSignalSpy notice(&model, &AppModel::notice);
        model.play(makeSound(world, "a.wav", 0.1));
        QTRY_COMPARE(notice.count(), 1);
        QCOMPARE(playing.count(), 0);
        QCOMPARE(model.errorMessage(), QString());
        QVERIFY(!model.isBusy());
    }

    void aResultDeletedBeforeItIsPlayedIsMarked() {
        TestWorld world;
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        model.setOutputText(world.path("out"));
        model.setCount(2);
        model.generate();
        QVERIFY(waitUntilIdle(model));
        const QUrl deleted = model.results()->urlAt(0);
        QVERIFY(QFile::remove(deleted.toLocalFile()));
        model.togglePlay(deleted);
        QTRY_VERIFY(!model.results()->existsAt(0));
        QVERIFY(model.results()->existsAt(1));
        QVERIFY(model.playingURL().isEmpty());
        QCOMPARE(model.errorMessage(), QString());
        model.togglePlay(model.results()->urlAt(1));
        QTRY_COMPARE(model.playingURL(), model.results()->urlAt(1));
        QVERIFY(model.results()->index(1).data(ResultsModel::IsPlayingRole).toBool());
        QVERIFY(!model.results()->index(0).data(ResultsModel::IsPlayingRole).toBool());
    }

    void ignoresWhatIsNoFile() {
        TestWorld world;
        AppModel model(world.environment);
        model.play(QUrl());
        model.togglePlay(QUrl());
        model.play(QUrl("https://example.org/a.wav"));
        deliverEvents();
        QCOMPARE(world.player->asked.size(), 0);
        QVERIFY(model.playingURL().isEmpty());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelPlaybackTest)
#include "AppModelPlaybackTest.moc"
