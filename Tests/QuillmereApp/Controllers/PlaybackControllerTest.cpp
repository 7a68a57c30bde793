// What plays, and how long the window says so.

#include <QObject>
#include <cmath>
#include <limits>

#include "QuillmereApp/Controllers/PlaybackController.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"

namespace quillmere::testing {
namespace {

QUrl makeSound(const TestWorld& world, const QString& name, double seconds) {
    AudioIO::write(sine(440, 8000, static_cast<std::size_t>(seconds * 8000), 0.5), toPath(world.path(name)),
                   8000, OutputFormat::wav16);
    return world.url(name);
}

}  // namespace

class PlaybackControllerTest : public QObject {
    Q_OBJECT

private slots:
    void playsAFile() {
        TestWorld world;
        PlaybackController playback(world.environment);
        const QUrl sound = makeSound(world, "a.wav", 0.05);
        playback.play(sound);
        QTRY_COMPARE(playback.playingURL(), sound);
        QCOMPARE(world.player->asked, QStringList({world.path("a.wav")}));
    }

    void playsWhatIsInMemory() {
        TestWorld world;
        PlaybackController playback(world.environment);
        const PlayableSound sound{.samples = std::make_shared<const std::vector<float>>(4000),
                                  .sampleRate = 8000};
        const QUrl name(QStringLiteral("candidate:7"));
        playback.togglePlaySound(name, sound);
        QTRY_COMPARE(playback.playingURL(), name);
        QCOMPARE(playback.playingSeconds(), 0.5);
        QCOMPARE(world.player->asked, QStringList("candidate:7"));
        playback.stopIfPlaying(QUrl(QStringLiteral("candidate:8")));
        QCOMPARE(playback.playingURL(), name);
        playback.togglePlaySound(name, sound);
        QCOMPARE(playback.playingURL(), QUrl());
        playback.playSound(name, sound);
        playback.stopIfPlaying(name);  // before it has begun
        deliverEvents();
        QCOMPARE(playback.playingURL(), QUrl());
    }

    void theMarkGoesATenthOfASecondAfterTheEnd() {
        TestWorld world;
        PlaybackController playback(world.environment);
        playback.play(makeSound(world, "a.wav", 0.2));
        QTRY_VERIFY(!playback.playingURL().isEmpty());
        QElapsedTimer clock;
        clock.start();
        world.player->finish();  // at once: a fast card
        QVERIFY(!playback.playingURL().isEmpty());
        QTRY_VERIFY(playback.playingURL().isEmpty());
        QVERIFY2(clock.elapsed() >= 280, qPrintable(QString::number(clock.elapsed())));
    }

    void theMarkStaysWhileTheCardStillPlays() {
        TestWorld world;
        PlaybackController playback(world.environment);
        playback.play(makeSound(world, "a.wav", 0.01));
        QTRY_VERIFY(!playback.playingURL().isEmpty());
        QVERIFY(!QTest::qWaitFor([&] { return playback.playingURL().isEmpty(); }, 250));
        world.player->finish();
        QVERIFY(playback.playingURL().isEmpty());
    }

    void anotherFileTakesOver() {
        TestWorld world;
        PlaybackController playback(world.environment);
        const QUrl first = makeSound(world, "a.wav", 0.05);
        const QUrl second = makeSound(world, "b.wav", 0.4);
        playback.play(first);
        QTRY_COMPARE(playback.playingURL(), first);
        playback.play(second);
        QTRY_COMPARE(playback.playingURL(), second);
        QElapsedTimer clock;
        clock.start();
        world.player->finish();
        QTRY_VERIFY(playback.playingURL().isEmpty());
        QVERIFY2(clock.elapsed() >= 450, "the first one's time was over before");
    }

    void pressingPlayOnThePlayingFileStopsIt() {
        TestWorld world;
        PlaybackController playback(world.environment);
        const QUrl sound = makeSound(world, "a.wav", 2);
        playback.togglePlay(sound);
        QTRY_COMPARE(playback.playingURL(), sound);
        playback.togglePlay(sound);
        QVERIFY(playback.playingURL().isEmpty());
        QVERIFY(!world.player->isPlaying());
        playback.togglePlay(sound);
        QTRY_COMPARE(playback.playingURL(), sound);
    }

    void aFileThatSoundsFollowsToItsNewName() {
        TestWorld world;
        PlaybackController playback(world.environment);
        const QUrl before = makeSound(world, "a.wav", 2);
        const QUrl now = world.url("b.wav");
        playback.play(before);
        playback.rename(before, now);  // not yet started
        QTRY_COMPARE(playback.playingURL(), now);
        playback.rename(before, world.url("c.wav"));  // another one
        QCOMPARE(playback.playingURL(), now);
        playback.rename(now, before);
        QCOMPARE(playback.playingURL(), before);
        QVERIFY(world.player->isPlaying());
        playback.togglePlay(before);
        QVERIFY(!world.player->isPlaying());
    }

    void pressingPlayTwiceQuicklyStopsIt() {
        TestWorld world;
        PlaybackController playback(world.environment);
        const QUrl sound = makeSound(world, "a.wav", 2);
        playback.togglePlay(sound);
        playback.togglePlay(sound);  // not yet started
        deliverEvents();
        QVERIFY(playback.playingURL().isEmpty());
        QVERIFY(!world.player->isPlaying());
    }

    void stoppingSaysWhetherAnythingSounded() {
        TestWorld world;
        PlaybackController playback(world.environment);
        QVERIFY(!playback.stop());
        playback.play(makeSound(world, "a.wav", 2));
        QVERIFY(playback.stop());  // it was about to
        deliverEvents();
        QVERIFY(!world.player->isPlaying());
        playback.play(world.url("a.wav"));
        QTRY_VERIFY(!playback.playingURL().isEmpty());
        QVERIFY(playback.stop());
        QVERIFY(playback.playingURL().isEmpty());
        QVERIFY(!playback.stop());
    }

    void withoutASoundCardNothingChanges() {
        TestWorld world;
        PlaybackController playback(world.environment);
        world.player->hasSoundCard = false;
        QSignalSpy playing(&playback, &PlaybackController::playingURLChanged);
        QSignalSpy failed(&playback, &PlaybackController::fileFailed);
        Told told(playback);
        playback.play(makeSound(world, "a.wav", 0.1));
        QTRY_COMPARE(told.notices.size(), 1);
        QCOMPARE(failed.count(), 1);
        QCOMPARE(playing.count(), 0);
        QCOMPARE(told.error, QString());
    }

    void ignoresWhatIsNoFile() {
        TestWorld world;
        PlaybackController playback(world.environment);
        playback.play(QUrl());
        playback.togglePlay(QUrl());
        playback.play(QUrl("https://example.org/a.wav"));
        deliverEvents();
        QCOMPARE(world.player->asked.size(), 0);
        QVERIFY(playback.playingURL().isEmpty());
    }

    // ---- How loud

    void theVolumeIsThatOfThePlayer() {
        TestWorld world;
        PlaybackController playback(world.environment);
        QSignalSpy changed(&playback, &PlaybackController::volumeChanged);
        QCOMPARE(playback.volume(), 1.0);
        playback.setVolume(0.5);
        QCOMPARE(world.player->volume, 0.25F);
        QCOMPARE(changed.count(), 1);
        playback.setVolume(7);
        QCOMPARE(playback.volume(), 1.0);
        playback.setVolume(-1);
        QCOMPARE(playback.volume(), 0.0);
        QCOMPARE(world.player->volume, 0.0F);
        playback.setVolume(std::numeric_limits<double>::quiet_NaN());
        QCOMPARE(playback.volume(), 0.0);
    }

    void theLevelIsThatOfWhatPlays() {
        TestWorld world;
        PlaybackController playback(world.environment);
        QCOMPARE(playback.level(), 0.0);
        world.player->peak = 0.1;  // -20 dB
        playback.play(makeSound(world, "a.wav", 5));
        QTRY_VERIFY(playback.level() > 0);
        QVERIFY(std::abs(playback.level() - 2.0 / 3) < 1e-9);
        world.player->peak = 0;
        QTRY_COMPARE(playback.level(), 0.0);
        world.player->peak = 1;
        QTRY_COMPARE(playback.level(), 1.0);
        playback.stop();
        QCOMPARE(playback.level(), 0.0);
    }

    void tellsWhenASoundHasEndedByItself() {
        TestWorld world;
        PlaybackController playback(world.environment);
        QSignalSpy finished(&playback, &PlaybackController::finished);
        const QUrl sound = makeSound(world, "a.wav", 0.05);
        playback.play(sound);
        QTRY_COMPARE(playback.playingURL(), sound);
        playback.stop();
        deliverEvents();
        QCOMPARE(finished.count(), 0);
        playback.play(sound);
        QTRY_COMPARE(playback.playingURL(), sound);
        world.player->finish();
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(finished.first().first().toUrl(), sound);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::PlaybackControllerTest)
#include "PlaybackControllerTest.moc"
