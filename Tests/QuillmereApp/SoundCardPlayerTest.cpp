// The real player, on SDL's driver that writes what it plays into a file, and without any card.

#include <unistd.h>

#include <QElapsedTimer>
#include <QObject>
#include <QTemporaryFile>
#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "QuillmereApp/Player.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "Support/WAVBytes.h"

namespace quillmere::testing {
namespace {

// The samples that reached the card, from the first that is not silence: the card runs before the sound
// begins.
std::vector<float> played(const QString& file) {
    const QByteArray bytes = TestWorld::read(file);
    std::vector<float> samples(static_cast<std::size_t>(bytes.size()) / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    samples.erase(samples.begin(),
                  std::find_if(samples.begin(), samples.end(), [](float x) { return x != 0; }));
    return samples;
}

// The first sample that differs, or -1 when all are as written and only silence follows.
qsizetype firstDifference(const std::vector<float>& got, const std::vector<float>& expected) {
    for (std::size_t i = 0; i < std::max(got.size(), expected.size()); ++i) {
        const float want = i < expected.size() ? expected[i] : 0.0F;
        if (i >= got.size() || got[i] != want) return static_cast<qsizetype>(i);
    }
    return -1;
}

// What work writes to the standard error output, past Qt and C++.
template <typename Work>
QByteArray standardErrorOf(Work work) {
    QTemporaryFile file;
    if (!file.open()) qFatal("no temporary file");
    const int kept = ::dup(STDERR_FILENO);
    ::dup2(file.handle(), STDERR_FILENO);
    work();
    ::dup2(kept, STDERR_FILENO);
    ::close(kept);
    file.seek(0);
    return file.readAll();
}

}  // namespace

class SoundCardPlayerTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        world_ = std::make_unique<TestWorld>();
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIOFILE", world_->path("played.raw").toUtf8());
    }

    void everySampleReachesTheCard_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("rate");
        QTest::addColumn<int>("samples");
        QTest::newRow("16-bit, 44.1 kHz") << 0 << 44100 << 8820;
        QTest::newRow("24-bit, 48 kHz") << 1 << 48000 << 9600;
        QTest::newRow("float, 96 kHz") << 2 << 96000 << 19200;
        QTest::newRow("float, 8 kHz") << 2 << 8000 << 1601;
        QTest::newRow("float, odd rate") << 2 << 23456 << 2345;
        QTest::newRow("one sample") << 2 << 44100 << 1;
    }
    void everySampleReachesTheCard() {
        QFETCH(int, format);
        QFETCH(int, rate);
        QFETCH(int, samples);
        const QString file = world_->path("sound.wav");
        AudioIO::write(noise(7, static_cast<std::size_t>(samples), 0.9F), toPath(file), rate,
                       allOutputFormats[static_cast<std::size_t>(format)]);
        const auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        QSignalSpy ended(player.get(), &Player::ended);
        player->play(file);
        QVERIFY(!player->isPlaying());
        QTRY_COMPARE(started.count(), 1);
        QVERIFY(player->isPlaying());
        QCOMPARE(started.at(0).at(0).toString(), file);
        QCOMPARE(started.at(0).at(1).toDouble(), static_cast<double>(samples) / rate);
        QTRY_COMPARE(ended.count(), 1);
        QVERIFY(!player->isPlaying());
        QCOMPARE(firstDifference(played(world_->path("played.raw")), AudioIO::readMono(toPath(file)).samples),
                 -1);
    }

    void whatIsInMemoryIsPlayedAtItsOwnLevel() {
        const std::vector<float> samples = noise(9, 4000, 0.5F);
        const auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        QSignalSpy ended(player.get(), &Player::ended);
        player->playSound(QStringLiteral("candidate:1"),
                          {.samples = std::make_shared<const std::vector<float>>(samples),
                           .sampleRate = 8000,
                           .gain = 0.5F});
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(started.at(0).at(0).toString(), QStringLiteral("candidate:1"));
        QCOMPARE(started.at(0).at(1).toDouble(), 0.5);
        std::vector<float> expected = samples;
        for (float& sample : expected)
            sample *= 0.5F;
        QCOMPARE(firstDifference(played(world_->path("played.raw")), expected), -1);
    }

    void theVolumeIsThatOfTheNextSound() {
        std::vector<float> samples = noise(9, 4000, 0.5F);
        const auto player = Player::forSoundCard();
        QSignalSpy ended(player.get(), &Player::ended);
        player->setVolume(0.25F);
        player->playSound(
            QStringLiteral("candidate:1"),
            {.samples = std::make_shared<const std::vector<float>>(samples), .sampleRate = 8000});
        QTRY_COMPARE(ended.count(), 1);
        for (float& sample : samples)
            sample *= 0.25F;
        QCOMPARE(firstDifference(played(world_->path("played.raw")), samples), -1);
    }

    void thePeaksAreThoseOfTheMoment() {
        std::vector<float> samples(8000, 0.1F);
        std::fill_n(samples.begin(), 1600, -0.8F);  // the first fifth of a second
        const auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        QCOMPARE(player->peakAt(0), 0.0);
        player->setVolume(0.5F);
        player->playSound(
            QStringLiteral("candidate:1"),
            {.samples = std::make_shared<const std::vector<float>>(std::move(samples)), .sampleRate = 8000});
        QTRY_COMPARE(started.count(), 1);
        QCOMPARE(player->peakAt(0.1), double{0.4F});
        QCOMPARE(player->peakAt(0.5), double{0.05F});
        QCOMPARE(player->peakAt(-1), double{0.4F});
        QCOMPARE(player->peakAt(9), 0.0);
        player->stop();
        QCOMPARE(player->peakAt(0.1), 0.0);
    }

    void stereoIsMixed() {
        const QString file = world_->path("stereo.wav");
        TestWorld::write(file, QByteArray::fromStdString(floatWAV({{0.5F, 0.25F}, {0.25F, 0.0F}})));
        const auto player = Player::forSoundCard();
        QSignalSpy ended(player.get(), &Player::ended);
        player->play(file);
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(firstDifference(played(world_->path("played.raw")), {0.375F, 0.125F}), -1);
    }

    void ratesNoCardHasAreConverted() {
        const QString file = world_->path("slow.wav");
        AudioIO::write(sine(100, 1000, 200, 0.5), toPath(file), 1000, OutputFormat::wav32float);
        const auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        QSignalSpy ended(player.get(), &Player::ended);
        player->play(file);
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(started.at(0).at(1).toDouble(), 0.2);
        QVERIFY(played(world_->path("played.raw")).size() >= 9600);
    }

    void stopsAtOnceAndTellsNothing() {
        const QString file = world_->path("long.wav");
        AudioIO::write(std::vector<float>(441000, 0.5F), toPath(file), 44100, OutputFormat::wav16);
        const auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        QSignalSpy ended(player.get(), &Player::ended);
        player->play(file);
        QTRY_COMPARE(started.count(), 1);
        QElapsedTimer clock;
        clock.start();
        player->stop();
        QVERIFY2(clock.elapsed() < 50, "stop must not wait for the card");
        QVERIFY(!player->isPlaying());
        // Files are played one after the other: when the next has failed the first is over.
        QSignalSpy failed(player.get(), &Player::failed);
        player->play(world_->path("none.wav"));
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(ended.count(), 0);
        QVERIFY(played(world_->path("played.raw")).size() < 100000);
    }

    void anotherFileTakesOver() {
        const QString first = world_->path("first.wav");
        const QString second = world_->path("second.wav");
        AudioIO::write(std::vector<float>(441000, 0.5F), toPath(first), 44100, OutputFormat::wav16);
        AudioIO::write(std::vector<float>(4410, 0.25F), toPath(second), 44100, OutputFormat::wav16);
        const auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        QSignalSpy ended(player.get(), &Player::ended);
        player->play(first);
        QTRY_COMPARE(started.count(), 1);
        player->play(second);
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(started.count(), 2);
        QCOMPARE(ended.at(0).at(0).toString(), second);
        QCOMPARE(firstDifference(played(world_->path("played.raw")), std::vector<float>(4410, 0.25F)), -1);
    }

    void onlyTheNewestOfManyRequestsPlays() {
        const QString file = world_->path("short.wav");
        AudioIO::write(std::vector<float>(441, 0.5F), toPath(file), 44100, OutputFormat::wav16);
        const auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        QSignalSpy ended(player.get(), &Player::ended);
        for (int i = 0; i < 20; ++i)
            player->play(file);
        QTRY_COMPARE(ended.count(), 1);
        QCOMPARE(started.count(), 1);
    }

    void aMissingFileFails() {
        const auto player = Player::forSoundCard();
        QSignalSpy failed(player.get(), &Player::failed);
        player->play(world_->path("none.wav"));
        QTRY_COMPARE(failed.count(), 1);
        QVERIFY(failed.at(0).at(1).toString().contains("none.wav"));
        QVERIFY(!player->isPlaying());
    }

    void withoutASoundCardPlayingFailsAndTheNextTryLooksAgain() {
        const QString file = world_->path("short.wav");
        AudioIO::write(std::vector<float>(441, 0.5F), toPath(file), 44100, OutputFormat::wav16);
        const auto player = Player::forSoundCard();
        QSignalSpy failed(player.get(), &Player::failed);
        QSignalSpy ended(player.get(), &Player::ended);
        qputenv("SDL_AUDIODRIVER", "nonesuch");
        player->play(file);
        QTRY_COMPARE(failed.count(), 1);
        QVERIFY(failed.at(0).at(1).toString().contains("no sound card"));
        qputenv("SDL_AUDIODRIVER", "disk");
        qputenv("SDL_DISKAUDIOFILE", world_->path("no/such/folder/played.raw").toUtf8());
        player->play(file);
        QTRY_COMPARE(failed.count(), 2);
        qputenv("SDL_DISKAUDIOFILE", world_->path("played.raw").toUtf8());
        player->play(file);
        QTRY_COMPARE(ended.count(), 1);
    }

    void theLibrariesBelowWriteNothingOfTheirOwn() {
        const QString file = world_->path("short.wav");
        AudioIO::write(std::vector<float>(441, 0.5F), toPath(file), 44100, OutputFormat::wav16);
        TestWorld::write(world_->path("no-cards.conf"), "# no card is described here\n");
        qputenv("SDL_AUDIODRIVER", "alsa");
        qputenv("ALSA_CONFIG_PATH", world_->path("no-cards.conf").toUtf8());
        const auto player = Player::forSoundCard();
        QSignalSpy failed(player.get(), &Player::failed);
        const QByteArray written = standardErrorOf([&] {
            player->play(file);
            QTRY_COMPARE(failed.count(), 1);
        });
        qunsetenv("ALSA_CONFIG_PATH");
        QCOMPARE(written, QByteArray());
    }

    void closingWhilePlayingEndsQuickly() {
        const QString file = world_->path("long.wav");
        AudioIO::write(std::vector<float>(441000, 0.5F), toPath(file), 44100, OutputFormat::wav16);
        auto player = Player::forSoundCard();
        QSignalSpy started(player.get(), &Player::started);
        player->play(file);
        QTRY_COMPARE(started.count(), 1);
        QElapsedTimer clock;
        clock.start();
        player.reset();
        QVERIFY(clock.elapsed() < 900);
    }

private:
    std::unique_ptr<TestWorld> world_;
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::SoundCardPlayerTest)
#include "SoundCardPlayerTest.moc"
