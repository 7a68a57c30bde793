// Where the variations go, how many, and in which format.

#include <QObject>
#include <QThread>
#include <atomic>
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
        output.openChooser();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        output.setFolderText(world.path("home"));
        output.openChooser();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        output.setFolderText(world.path("home/not/there"));
        output.openChooser();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        output.setFolder(world.url("home/chosen"));
        QCOMPARE(output.folderText(), world.path("home/chosen"));
        QCOMPARE(output.chooserMessage(),
                 QStringLiteral("Choose a folder for the generated samples — use New Folder to create one"));
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
