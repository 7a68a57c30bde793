// Where the variations go, how many, and in which format.

#include <QElapsedTimer>
#include <QObject>
#include <QThread>
#include <atomic>
#include <limits>
#include <memory>

#include "QuillmereApp/Controllers/OutputController.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::testing {

class OutputControllerTest : public QObject {
    Q_OBJECT

private slots:
    void offersTheFormats() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        QCOMPARE(output.formatLabels(), QStringList({"WAV 16-bit", "WAV 24-bit", "WAV 32-bit float"}));
        QCOMPARE(output.formatIndex(), 1);
        QCOMPARE(output.format(), OutputFormat::wav24);
        output.setFormatIndex(2);
        QCOMPARE(output.format(), OutputFormat::wav32float);
        output.setFormatIndex(3);
        QCOMPARE(output.formatIndex(), 2);
    }

    void expandsTheHomeFolder() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.setFolderText("  ~/takes/one \n");
        QCOMPARE(*output.folder(), world.url("home/takes/one"));
        output.setFolderText("~");
        QCOMPARE(*output.folder(), world.url("home"));
        output.setFolderText("/a/~b");
        QCOMPARE(*output.folder(), QUrl::fromLocalFile("/a/~b"));
        output.setFolderText("relative");
        QCOMPARE(*output.folder(), QUrl::fromLocalFile(QDir::current().absoluteFilePath("relative")));
    }

    void tellsWhatIsAtTheOutputPath() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.setFolderText(world.path("new/folder"));
        QTRY_COMPARE(output.status(), OutputController::WillBeCreated);
        output.setFolderText(world.path("home"));
        QTRY_COMPARE(output.status(), OutputController::Exists);
        TestWorld::write(world.path("file"), "x");
        output.setFolderText(world.path("file"));
        QTRY_COMPARE(output.status(), OutputController::IsNoFolder);
        output.setFolderText(" ");
        QCOMPARE(output.status(), OutputController::NoFolder);
        output.setFolderText(world.path("later"));
        QTRY_COMPARE(output.status(), OutputController::WillBeCreated);
        QDir().mkpath(world.path("later"));
        output.look();
        QTRY_COMPARE(output.status(), OutputController::Exists);
    }

    void theOutputChooserStartsAtTheFolderOrAboveItOrAtHome() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        QSignalSpy chooser(&output, &OutputController::chooserRequested);
        const auto start = [&] {
            output.openChooser();
            return QTest::qWaitFor([&] { return chooser.count() > 0; }) ? chooser.takeFirst().at(0).toUrl()
                                                                        : QUrl();
        };
        QCOMPARE(start(), world.url("home"));
        output.setFolderText(world.path("home"));
        QCOMPARE(start(), world.url("home"));
        output.setFolderText(world.path("home/not/there"));
        QCOMPARE(start(), world.url("home"));
        output.setFolder(world.url("home/chosen"));
        QCOMPARE(output.folderText(), world.path("home/chosen"));
        QCOMPARE(output.chooserMessage(),
                 QStringLiteral("Choose a folder for the generated samples — use New Folder to create one"));
    }

    void understandsWhatPeoplePaste_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("path");
        QTest::newRow("url") << "file:///a/b%20c"
                             << "/a/b c";
        QTest::newRow("url with blanks") << "file:///a/b c"
                                         << "/a/b c";
        QTest::newRow("quoted") << " \"/a/b c\" "
                                << "/a/b c";
        QTest::newRow("single") << "'/a/b'"
                                << "/a/b";
        QTest::newRow("apostrophe") << "/a/it's"
                                    << "/a/it's";
        QTest::newRow("half") << "\"/a" << QDir::current().absoluteFilePath("\"/a");
        QTest::newRow("empty quotes") << "\"\""
                                      << "";
        QTest::newRow("slashes") << "/a//b/./c/"
                                 << "/a/b/c";
        QTest::newRow("dots") << "/a/link/../b"
                              << "/a/link/../b";
    }
    void understandsWhatPeoplePaste() {
        QFETCH(QString, text);
        QFETCH(QString, path);
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.setFolderText(text);
        QCOMPARE(output.folder().value_or(QUrl()).toLocalFile(), path);
        QCOMPARE(output.folderText(), text);
    }

    // ---- The corpus

    void suggestsAFolderBesideTheCorpusUntilOneIsSet() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        QCOMPARE(output.suggestion(), QString());
        output.setCorpus(world.url("home/kits/Kicks"));
        QCOMPARE(output.folderText(), QStringLiteral("~/kits/Kicks variations"));
        QVERIFY(!QFileInfo::exists(world.path("home/kits")));
        output.setCorpus(world.url("Snares"));
        QCOMPARE(output.folderText(), world.path("Snares variations"));
        output.setCorpus({});
        QCOMPARE(output.folderText(), QString());
        output.setFolderText("/my/own");
        output.setCorpus(world.url("Kicks"));
        QCOMPARE(output.folderText(), QStringLiteral("/my/own"));
        output.useSuggestion();
        QCOMPARE(output.folderText(), world.path("Kicks variations"));
    }

    void aSuggestionThatNobodyHasUsedIsNotStored() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.setCorpus(world.url("Kicks"));
        output.storeFolder();
        QVERIFY(!preferences.text("outputPath"));
        output.setFolderText("~/typed");
        output.storeFolder();
        QCOMPARE(preferences.text("outputPath"), QStringLiteral("~/typed"));
    }

    void aSuggestionOfTheLastTimeGoesWithTheCorpus() {
        TestWorld world;
        world.writePreferences("outputPath=" + world.path("home/Kicks variations").toUtf8() + "\n");
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.setCorpus(world.url("home/Kicks"));
        QCOMPARE(output.folderText(), world.path("home/Kicks variations"));
        output.setCorpus(world.url("home/Snares"));
        QCOMPARE(output.folderText(), QStringLiteral("~/Snares variations"));
    }

    void saysThatTheFolderIsTheCorpusOrInIt() {
        TestWorld world;
        world.makeCorpus("corpus");
        QDir().mkpath(world.path("corpus/sub"));
        QDir().mkpath(world.path("corpus too"));
        QVERIFY(QFile::link(world.path("corpus/sub"), world.path("link")));
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.setCorpus(world.url("corpus"));
        for (const char* name : {"corpus", "corpus/sub", "corpus/new/folder", "link", "link/new"}) {
            output.setFolderText(world.path("corpus too"));
            QTRY_VERIFY(!output.isInCorpus());
            output.setFolderText(world.path(name));
            QTRY_VERIFY2(output.isInCorpus(), name);
        }
        output.useSuggestion();
        QTRY_VERIFY(!output.isInCorpus());
    }

    // ---- Folders that do not answer

    void aFolderThatDoesNotAnswerIsToldOfAndLookedAtOnce() {
        TestWorld world;
        world.cutOff("dead");
        QElapsedTimer clock;
        {
            Preferences preferences(world.environment.settingsFile);
            OutputController output(world.environment, preferences);
            output.setFolderText(world.path("dead"));
            QTRY_COMPARE(output.status(), OutputController::NoAnswer);
            for (int i = 0; i < 50; ++i)
                output.look();
            output.setFolderText(world.path("home"));
            QTRY_COMPARE(output.status(), OutputController::Exists);
            QCOMPARE(world.looksAtDead->load(), 1);
            clock.start();
        }
        QVERIFY(clock.elapsed() < 10000);  // nothing waits for the dead
    }

    void takesADroppedFolderAndSaysWhyItTakesNothingElse() {
        TestWorld world;
        TestWorld::write(world.path("file"), "x");
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        const Told told(output);
        output.drop({world.url("home")});
        QTRY_COMPARE(output.folderText(), world.path("home"));
        output.drop({world.url("file")});
        QTRY_COMPARE(told.notices.size(), 1);
        QCOMPARE(output.folderText(), world.path("home"));
    }

    void theCountHasALimit() {
        TestWorld world;
        world.writePreferences("count=2000000000\n");
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        QCOMPARE(output.count(), output.mostVariations());
        output.setCount(20000);
        QCOMPARE(output.count(), 20000);
    }

    void theCountIsAtLeastOne() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.setCount(0);
        QCOMPARE(output.count(), 1);
        output.setCount(-5);
        QCOMPARE(output.count(), 1);
    }

    void restoresWhatItRemembered() {
        TestWorld world;
        {
            Preferences preferences(world.environment.settingsFile);
            OutputController output(world.environment, preferences);
            output.setFolderText(world.path("typed"));
            output.setCount(25);
            output.remember(world.url("used"));
        }
        Preferences preferences(world.environment.settingsFile);
        const OutputController output(world.environment, preferences);
        QCOMPARE(output.folderText(), world.path("used"));
        QCOMPARE(output.count(), 25);
    }

    void ignoresAStoredCountBelowOne() {
        for (const QByteArray count : {"0", "-3"}) {
            TestWorld world;
            world.writePreferences("count=" + count + "\n");
            Preferences preferences(world.environment.settingsFile);
            QCOMPARE(OutputController(world.environment, preferences).count(), 10);
        }
    }

    void detailIsAShareInHundredths() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        QCOMPARE(output.detail(), 0.0);
        output.setDetail(0.3333);
        QCOMPARE(output.detail(), 0.33);
        output.setDetail(7);
        QCOMPARE(output.detail(), 1.0);
        output.setDetail(-1);
        QCOMPARE(output.detail(), 0.0);
        output.setDetail(0.5);
        output.setDetail(std::numeric_limits<double>::quiet_NaN());
        QCOMPARE(output.detail(), 0.5);
    }

    void detailIsSwitchedToWhatItWas() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        output.switchDetail();
        QCOMPARE(output.detail(), 1.0);
        output.setDetail(0.4);
        output.switchDetail();
        QCOMPARE(output.detail(), 0.0);
        output.switchDetail();
        QCOMPARE(output.detail(), 0.4);
    }

    void refusesWhatIsNotOnThisComputer() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        const Told told(output);
        output.setFolder(QUrl("https://example.org/samples"));
        QCOMPARE(told.error, QStringLiteral("Only folders on this computer can be used."));
        QCOMPARE(output.folderText(), QString());
    }

    void showsFilesInTheFileManager() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        OutputController output(world.environment, preferences);
        const Told told(output);
        output.show(world.url("out"), {world.url("out/a.wav")});
        QTRY_COMPARE(world.shownFolder, world.url("out"));
        QCOMPARE(world.shownFiles, QList<QUrl>({world.url("out/a.wav")}));
        QCOMPARE(told.error, QString());
        world.hasFileManager = false;
        output.show(world.url("out"), {});
        QTRY_VERIFY(told.error.contains(world.path("out")));
    }

    void closingDoesNotWaitForAFileManagerThatHangs() {
        TestWorld world;
        std::atomic<bool> isAsked = false;
        world.environment.showFiles = [&](const QUrl&, const QList<QUrl>&, const std::stop_token& stop) {
            isAsked = true;
            while (!stop.stop_requested())
                QThread::msleep(1);
            throwIfCancelled(stop);
            return true;
        };
        Preferences preferences(world.environment.settingsFile);
        auto output = std::make_unique<OutputController>(world.environment, preferences);
        output->show(world.url("out"), {});
        QTRY_VERIFY(isAsked);
        output.reset();  // comes back
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::OutputControllerTest)
#include "OutputControllerTest.moc"
