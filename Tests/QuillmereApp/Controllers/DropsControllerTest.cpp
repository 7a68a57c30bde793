// What is dropped on the window: what it is taken for, and what follows.

#include <QObject>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"

namespace quillmere::testing {
namespace {

// The application with a model, and two files that it has written with settings that are gone by now.
struct Workshop {
    Workshop() : told(*app.drops()) {
        QObject::connect(&app, &AppModel::notice, &app, [this](const QString& text) { notices += text; });
        prepareTrained(app, world.makeCorpus("Drums"));
        app.setOutputText(world.path("out"));
        app.setCount(2);
        app.setSeedText("7");
        app.apply(*Preset::named("Wild"));
        app.output()->setDetail(0.5);
        app.generate();
        wait();
        sound = app.results()->urlAt(1);
        latent = app.results()->all()[1].origin.latent;
        app.setSeedText("");
        app.apply(*Preset::named("Balanced"));
        app.output()->setDetail(0);
        app.results()->setSamples({});
        notices.clear();
    }

    void wait() { QVERIFY(waitUntilIdle(app)); }
    [[nodiscard]] DropsController& drops() { return *app.drops(); }
    // Its settings are set, and it is the only result.
    void verifyTaken(const QUrl& file) {
        QTRY_COMPARE(app.results()->rowOf(file), 0);
        QCOMPARE(app.results()->count(), 1);
        QCOMPARE(app.results()->all().front().origin.latent, latent);
        QVERIFY(app.results()->all().front().seconds > 0);
        QCOMPARE(app.seedText(), QStringLiteral("7"));
        QCOMPARE(app.presetName(), QStringLiteral("Wild"));
        QCOMPARE(app.aesthetics(), Preset::named("Wild")->aesthetics);
        QCOMPARE(app.output()->detail(), 0.5);
        QVERIFY(app.generation()->baseOf(file));
    }

    TestWorld world;
    AppModel app{world.environment};
    Told told;
    QStringList notices;
    QUrl sound;
    std::vector<float> latent;
};

QUrl foreignSound(const TestWorld& world) {
    QDir().mkpath(world.path("elsewhere"));
    AudioIO::write(sine(440, 8000, 2000, 0.5), toPath(world.path("elsewhere/tone.wav")), 8000,
                   OutputFormat::wav16);
    return world.url("elsewhere/tone.wav");
}

}  // namespace

class DropsControllerTest : public QObject {
    Q_OBJECT

private slots:
    void aFolderBecomesTheCorpus() {
        TestWorld world;
        AppModel app(world.environment);
        app.drops()->drop({world.makeCorpus("Drums")});
        QTRY_COMPARE(app.corpusURL(), world.url("Drums"));
        QVERIFY(waitUntilIdle(app));
    }

    void whatIsNoneOfTheseGetsASentence_data() {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QString>("sentence");
        QTest::newRow("several") << QStringList({"out/a", "out/b"})
                                 << "Drop one folder: the one that holds the samples.";
        QTest::newRow("no file") << QStringList() << "Drop one folder: the one that holds the samples.";
        QTest::newRow("text") << QStringList({"notes.txt"})
                              << "This is a file, not a folder. Drop the folder that holds it.";
        QTest::newRow("text called a sound")
            << QStringList({"notes.wav"}) << "This is a file, not a folder. Drop the folder that holds it.";
        QTest::newRow("nothing") << QStringList({"none"}) << "There is no folder ";
    }
    void whatIsNoneOfTheseGetsASentence() {
        QFETCH(QStringList, names);
        QFETCH(QString, sentence);
        Workshop workshop;
        for (const char* name : {"notes.txt", "notes.wav"})
            TestWorld::write(workshop.world.path(name), "text");
        QList<QUrl> urls;
        for (const QString& name : names)
            urls.append(workshop.world.url(name));
        workshop.drops().drop(urls);
        QTRY_COMPARE(workshop.told.notices.size(), 1);
        QVERIFY(workshop.told.notices.first().startsWith(sentence));
        QCOMPARE(workshop.told.error, QString());
        QCOMPARE(workshop.app.results()->count(), 0);
    }

    void aSoundBringsItsSettingsAndItsPlaceBack() {
        Workshop workshop;
        QSignalSpy taken(&workshop.app, &AppModel::soundTaken);
        workshop.drops().drop({workshop.sound});
        workshop.verifyTaken(workshop.sound);
        QCOMPARE(taken.count(), 1);
        QCOMPARE(workshop.notices, QStringList("This sound was made here: its settings are set again."));
        // All of it is one step back.
        workshop.app.character()->undo();
        QCOMPARE(workshop.app.presetName(), QStringLiteral("Balanced"));
        QCOMPARE(workshop.app.seedText(), QString());
        QCOMPARE(workshop.app.output()->detail(), 0.0);
        workshop.app.character()->redo();
        workshop.verifyTaken(workshop.sound);
        workshop.app.setSeedText("12");
        workshop.app.apply(*Preset::named("Balanced"));
        workshop.app.character()->undo();
        QCOMPARE(workshop.app.seedText(), QStringLiteral("12"));  // nothing of that step
        // A second time it is there already.
        workshop.drops().drop({workshop.sound});
        QTRY_COMPARE(taken.count(), 2);
        QCOMPARE(workshop.app.results()->count(), 1);
    }

    void isKnownWhereverItWasMoved() {
        Workshop workshop;
        QVERIFY(QFile::rename(workshop.sound.toLocalFile(), workshop.world.path("moved.wav")));
        workshop.drops().drop({workshop.world.url("moved.wav")});
        workshop.verifyTaken(workshop.world.url("moved.wav"));
    }

    void bringsItsModelBack() {
        Workshop workshop;
        prepareTrained(workshop.app, workshop.world.makeCorpus("Bells", 4));
        QSignalSpy offered(&workshop.app, &AppModel::modelOffered);
        workshop.drops().drop({workshop.sound});
        QVERIFY(offered.wait());
        QCOMPARE(offered.first().first().toString(), QStringLiteral("Drums"));
        workshop.verifyTaken(workshop.sound);
        QCOMPARE(workshop.app.corpusURL(), workshop.world.url("Bells"));
        workshop.app.openOfferedModel();
        QTRY_COMPARE(workshop.app.corpusURL(), workshop.world.url("Drums"));
        workshop.wait();
        QVERIFY(workshop.app.model()->isReady());
        workshop.verifyTaken(workshop.sound);
        workshop.app.openOfferedModel();  // there is none any more
        QVERIFY(!workshop.app.corpus()->isScanning());
    }

    void isOpenedAtOnceWhereNothingIsLost() {
        Workshop workshop;
        Environment fresh = workshop.world.environment;
        fresh.settingsFile = workshop.world.path("fresh.conf");
        AppModel another(fresh);
        QVERIFY(!another.corpus()->isChosen());
        another.drops()->drop({workshop.sound});
        QTRY_COMPARE(another.corpusURL(), workshop.world.url("Drums"));
        QTRY_COMPARE(another.results()->count(), 1);
        QVERIFY(waitUntilIdle(another));
    }

    void aFolderHasToWaitWhileSomethingRuns() {
        Workshop workshop;
        const QUrl other = workshop.world.makeCorpus("Bells", 4);
        workshop.world.steps = 100000;
        workshop.app.train();
        workshop.drops().drop({other});
        QTRY_VERIFY(workshop.notices.contains(Activity::waitNotice()));
        QCOMPARE(workshop.app.corpusURL(), workshop.world.url("Drums"));
        workshop.app.cancel();
        workshop.wait();
    }

    void anOlderModelOfTheFolderIsOpened() {
        Workshop workshop;
        const std::filesystem::path older = workshop.app.model()->storedFolder();
        workshop.world.makeCorpus("Drums", 5);  // two more files: another fingerprint
        prepareTrained(workshop.app, workshop.world.url("Drums"));
        workshop.app.corpus()->scanAgain();
        workshop.wait();
        workshop.app.train();
        workshop.wait();
        QVERIFY(workshop.app.model()->storedFolder() != older);
        QSignalSpy offered(&workshop.app, &AppModel::modelOffered);
        workshop.drops().drop({workshop.sound});
        QVERIFY(offered.wait());
        workshop.app.openOfferedModel();
        QTRY_COMPARE(workshop.app.model()->storedFolder(), older);
        workshop.verifyTaken(workshop.sound);
    }

    void aModelThatIsNotStoredIsStillItsModel() {
        Workshop workshop;
        QVERIFY(QDir(workshop.world.path("data/Quillmere/Models")).removeRecursively());
        workshop.drops().drop({workshop.sound});
        workshop.verifyTaken(workshop.sound);
        QCOMPARE(workshop.notices, QStringList("This sound was made here: its settings are set again."));
    }

    void withoutItsModelTheSettingsComeBack() {
        Workshop workshop;
        prepareTrained(workshop.app, workshop.world.makeCorpus("Bells", 4));
        QVERIFY(QDir(workshop.world.path("data/Quillmere/Models")).removeRecursively());
        workshop.drops().drop({workshop.sound});
        workshop.verifyTaken(workshop.sound);
        QVERIFY(
            workshop.notices.contains("This sound was made here: its settings are set again. Its model or "
                                      "the folder of that is gone."));
    }

    void nothingChangesWhileSomethingRuns() {
        Workshop workshop;
        workshop.world.steps = 100000;
        workshop.app.train();
        workshop.drops().drop({workshop.sound});
        QTRY_VERIFY(workshop.notices.contains(Activity::waitNotice()));
        QCOMPARE(workshop.app.presetName(), QStringLiteral("Balanced"));
        workshop.app.cancel();
        workshop.wait();
    }

    // ---- Sounds from elsewhere

    void offersToFindWhatIsLikeASoundFromElsewhere() {
        Workshop workshop;
        QSignalSpy offered(&workshop.drops(), &DropsController::foreignDropped);
        const QUrl foreign = foreignSound(workshop.world);
        workshop.drops().findSimilar();  // to nothing
        QVERIFY(!workshop.drops().isFinding());
        workshop.drops().drop({foreign});
        QVERIFY(offered.wait());
        QCOMPARE(workshop.drops().foreignName(), QStringLiteral("tone.wav"));
        QCOMPARE(workshop.drops().foreignUrl(), foreign);
        QVERIFY(!workshop.drops().isFound());
        workshop.drops().findSimilar();
        QVERIFY(workshop.drops().isFinding());
        QTRY_VERIFY(workshop.drops().isFound());
        QVERIFY(!workshop.drops().isFinding());
        QCOMPARE(workshop.drops().similar().size(), 3);
        double before = 0;
        for (const QVariant& row : workshop.drops().similar()) {
            const double distance = row.toMap().value("detail").toString().chopped(3).toDouble();
            QVERIFY(distance >= before);
            before = distance;
            QVERIFY(QFileInfo::exists(row.toMap().value("url").toUrl().toLocalFile()));
        }
        QCOMPARE(workshop.told.error, QString());
    }

    void aSampleOfTheCorpusIsLikeItself() {
        Workshop workshop;
        workshop.drops().drop({workshop.world.url("Drums/hit1.wav")});
        QTRY_VERIFY(!workshop.drops().foreignName().isEmpty());
        workshop.drops().findSimilar();
        QTRY_VERIFY(workshop.drops().isFound());
        const QVariantMap first = workshop.drops().similar().first().toMap();
        QCOMPARE(first.value("name").toString(), QStringLiteral("hit1.wav"));
        QCOMPARE(first.value("detail").toString(), QStringLiteral("0.0 dB"));
    }

    void withoutACorpusASoundIsAFileLikeOthers() {
        TestWorld world;
        AppModel app(world.environment);
        const Told told(*app.drops());
        app.drops()->drop({foreignSound(world)});
        QTRY_COMPARE(told.notices,
                     QStringList("This is a file, not a folder. Drop the folder that holds it."));
    }

    void silenceIsLikeNothing() {
        Workshop workshop;
        AudioIO::write(std::vector<float>(4000, 0.0F), toPath(workshop.world.path("silence.wav")), 8000,
                       OutputFormat::wav16);
        workshop.drops().drop({workshop.world.url("silence.wav")});
        QTRY_VERIFY(!workshop.drops().foreignName().isEmpty());
        workshop.drops().findSimilar();
        QTRY_COMPARE(workshop.told.error, QStringLiteral("This sound is silent: nothing is like it."));
        QVERIFY(!workshop.drops().isFinding());
    }

    void findingCanBeGivenUp() {
        Workshop workshop;
        workshop.drops().drop({foreignSound(workshop.world)});
        QTRY_VERIFY(!workshop.drops().foreignName().isEmpty());
        workshop.drops().findSimilar();
        QVERIFY(workshop.app.inspector()->isComparing());
        workshop.drops().cancel();
        QVERIFY(!workshop.drops().isFinding());
        QVERIFY(!workshop.app.inspector()->isComparing());
        AppModelProbe::waitForWork(workshop.drops());
        AppModelProbe::waitForWork(*workshop.app.inspector());
        deliverEvents();
        QVERIFY(!workshop.drops().isFound());
        QCOMPARE(workshop.told.error, QString());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::DropsControllerTest)
#include "DropsControllerTest.moc"
