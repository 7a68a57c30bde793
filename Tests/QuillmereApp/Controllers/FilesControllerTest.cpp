// Files that go to the trash and come back.

#include <QObject>
#include <optional>

#include "QuillmereApp/Controllers/FilesController.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereApp/Trash.h"

namespace quillmere::testing {
namespace {

QStringList storedFavourites(const TestWorld& world) {
    return Preferences(world.environment.settingsFile).value(FilesController::favouritesKey).toStringList();
}

// The files out/a.wav and out/b.wav, and a trash that takes nothing while the gate is closed.
struct HeldTrash {
    TestWorld world;
    Gate gate;
    Preferences preferences{world.environment.settingsFile};
    FilesController files{prepared(), preferences};
    const Told told{files};

private:
    const Environment& prepared() {
        TestWorld::write(world.path("out/a.wav"), "one");
        TestWorld::write(world.path("out/b.wav"), "two");
        world.environment.moveToTrash = [this, move = world.environment.moveToTrash](const auto& file) {
            gate.pass();
            return move(file);
        };
        return world.environment;
    }
};

}  // namespace

class FilesControllerTest : public QObject {
    Q_OBJECT

private slots:
    void movesToTheTrashAndBack() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const Told told(files);
        QSignalSpy changed(&files, &FilesController::filesChanged);
        TestWorld::write(world.path("out/a.wav"), "one");
        TestWorld::write(world.path("out/b.wav"), "two");
        files.trash({world.url("out/a.wav")});
        files.trash({world.url("out/b.wav")});
        QTRY_COMPARE(changed.count(), 2);
        QVERIFY(!QFileInfo::exists(world.path("out/a.wav")) && !QFileInfo::exists(world.path("out/b.wav")));
        QVERIFY(files.canUndo());
        QVERIFY(files.undo());
        QTRY_COMPARE(changed.count(), 3);
        QCOMPARE(TestWorld::read(world.path("out/b.wav")), QByteArray("two"));
        QVERIFY(files.undo());
        QTRY_COMPARE(changed.count(), 4);
        QCOMPARE(TestWorld::read(world.path("out/a.wav")), QByteArray("one"));
        QVERIFY(!files.canUndo() && !files.undo());
        QCOMPARE(told.error, QString());
        QCOMPARE(told.notices, QStringList({"In the trash: a.wav", "In the trash: b.wav", "Back again: b.wav",
                                            "Back again: a.wav"}));
    }

    void severalGoAndComeBackTogether() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const Told told(files);
        QSignalSpy changed(&files, &FilesController::filesChanged);
        for (const char* name : {"out/a.wav", "out/b.wav", "out/c.wav"})
            TestWorld::write(world.path(name), name);
        files.trash({});
        files.trash({world.url("out/a.wav"), world.url("out/c.wav")});
        QTRY_COMPARE(changed.count(), 1);
        QVERIFY(!QFileInfo::exists(world.path("out/a.wav")) && !QFileInfo::exists(world.path("out/c.wav")));
        QVERIFY(files.undo());
        QTRY_COMPARE(changed.count(), 2);
        QCOMPARE(TestWorld::read(world.path("out/a.wav")), QByteArray("out/a.wav"));
        QCOMPARE(TestWorld::read(world.path("out/c.wav")), QByteArray("out/c.wav"));
        QVERIFY(!files.canUndo());
        QCOMPARE(told.notices, QStringList({"In the trash: 2 files", "Back again: 2 files"}));
        const QList<QUrl> both{world.url("out/a.wav"), world.url("out/b.wav")};
        files.setFavourites(both, true);
        QVERIFY(files.isFavourite(both[0]) && files.isFavourite(both[1]));
        files.setFavourites(both, false);
        QVERIFY(!files.isFavourite(both[0]) && !files.isFavourite(both[1]));
    }

    void thoseThatAreBeingMovedStopWhenAsked() {
        TestWorld world;
        QList<QUrl> all;
        for (int i = 0; i < 20; ++i) {
            const QString name = QStringLiteral("out/%1.wav").arg(i);
            TestWorld::write(world.path(name), "one");
            all.append(world.url(name));
        }
        Preferences preferences(world.environment.settingsFile);
        FilesController* moving = nullptr;
        world.environment.moveToTrash = [&, move = world.environment.moveToTrash](const auto& file) {
            if (file.filename() == "2.wav") moving->cancel();
            return move(file);
        };
        FilesController files(world.environment, preferences);
        moving = &files;
        const Told told(files);
        files.trash(all);
        QCOMPARE(files.toMove(), 20);
        QTRY_COMPARE(told.notices, QStringList("In the trash: 3 files. Not moved: 17 files"));
        const auto staying = [&] { return QDir(world.path("out")).entryList(QDir::Files).size(); };
        QCOMPARE(staying(), 17);
        QCOMPARE(told.error, QString());
        QVERIFY(files.undo());  // what begins later is not stopped
        QTRY_COMPARE(told.notices.size(), 2);
        QCOMPARE(staying(), 20);
    }

    void thoseThatHaveToWaitStayWhenAsked() {
        HeldTrash held;
        const TestWorld& world = held.world;
        FilesController& files = held.files;
        const Told& told = held.told;
        held.gate.close();
        files.trash({world.url("out/a.wav")});
        files.trash({world.url("out/b.wav")});
        QVERIFY(files.isMoving() && !files.isCancelling());
        QCOMPARE(files.toMove(), 2);
        files.cancel();
        QVERIFY(files.isCancelling());
        held.gate.open();
        QTRY_VERIFY(!files.isMoving());
        QVERIFY(!files.isCancelling());
        QVERIFY(QFileInfo::exists(world.path("out/b.wav")));
        QCOMPARE(told.notices.last(), QStringLiteral("Not moved: b.wav"));
        QCOMPARE(files.toMove(), 0);
    }

    void aRenameThatHasToWaitIsStopped() {
        HeldTrash held;
        const TestWorld& world = held.world;
        FilesController& files = held.files;
        const Told& told = held.told;
        held.gate.close();
        files.cancel();  // of nothing: what begins later does not know of it
        files.trash({world.url("out/a.wav")});
        files.rename(world.url("out/b.wav"), QStringLiteral("c"));
        QVERIFY(files.isMoving() && !files.isCancelling());
        files.cancel();
        held.gate.open();
        QTRY_VERIFY(!files.isMoving());
        QVERIFY(QFileInfo::exists(world.path("out/b.wav")));
        QCOMPARE(told.notices.last(), QStringLiteral("Not moved: b.wav"));
        QCOMPARE(told.error, QString());
        files.rename(world.url("out/b.wav"), QStringLiteral("c"));
        QVERIFY(!files.isCancelling());
        QTRY_VERIFY(!files.isMoving());
        QVERIFY(QFileInfo::exists(world.path("out/c.wav")));
    }

    void whatCannotGoStays() {
        TestWorld world;
        world.hasTrash = false;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const Told told(files);
        TestWorld::write(world.path("out/a.wav"), "one");
        files.trash({world.url("out/a.wav")});
        QTRY_COMPARE(told.error, QStringLiteral("a.wav could not be moved to the trash."));
        QVERIFY(QFileInfo::exists(world.path("out/a.wav")));
        QVERIFY(!files.canUndo());
    }

    void nothingIsOverwrittenOnTheWayBack() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const Told told(files);
        TestWorld::write(world.path("out/a.wav"), "one");
        files.trash({world.url("out/a.wav")});
        QTRY_VERIFY(!files.isMoving());
        TestWorld::write(world.path("out/a.wav"), "another");
        QVERIFY(files.undo());
        QTRY_COMPARE(told.error, QStringLiteral("Another file is called a.wav by now."));
        QCOMPARE(TestWorld::read(world.path("out/a.wav")), QByteArray("another"));
        // What could not come back yet can come later, before what was done earlier.
        QVERIFY(files.canUndo());
        QVERIFY(QFile::remove(world.path("out/a.wav")));
        QVERIFY(files.undo());
        QTRY_COMPARE(TestWorld::read(world.path("out/a.wav")), QByteArray("one"));
        QTRY_VERIFY(!files.canUndo());
    }

    void whatCouldNotComeBackKeepsItsPlace() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const Told told(files);
        QCOMPARE(files.lastChange(), 0.0);
        for (const char* name : {"a", "b"}) {
            const QString file = QStringLiteral("out/%1.wav").arg(name);
            TestWorld::write(world.path(file), name);
            const double before = files.lastChange();
            files.trash({world.url(file)});
            QVERIFY(files.lastChange() > before);
            QTRY_VERIFY(!files.isMoving());
        }
        TestWorld::write(world.path("out/b.wav"), "another");
        QVERIFY(files.undo());
        QTRY_COMPARE(told.error, QStringLiteral("Another file is called b.wav by now."));
        QVERIFY(QFile::remove(world.path("out/b.wav")));
        QVERIFY(files.undo());
        QTRY_COMPARE(TestWorld::read(world.path("out/b.wav")), QByteArray("b"));
        QVERIFY(files.undo());
        QTRY_COMPARE(TestWorld::read(world.path("out/a.wav")), QByteArray("a"));
    }

    // The name may be another sound's by then.
    void aFavouriteInTheTrashIsNone() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const QUrl file = world.url("out/a.wav");
        TestWorld::write(world.path("out/a.wav"), "one");
        files.setFavourite(file, true);
        files.trash({file});
        QTRY_VERIFY(!files.isFavourite(file));
        QVERIFY(files.undo());
        QTRY_VERIFY(files.isFavourite(file));
    }

    void twoOfOneNameGoToTheTrashAndBack() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        QSignalSpy changed(&files, &FilesController::filesChanged);
        TestWorld::write(world.path("out/a.wav"), "one");
        files.trash({world.url("out/a.wav")});
        QTRY_COMPARE(changed.count(), 1);
        TestWorld::write(world.path("out/a.wav"), "two");
        files.trash({world.url("out/a.wav")});
        QTRY_COMPARE(changed.count(), 2);
        for (const char* const text : {"two", "one"}) {
            QVERIFY(files.undo());
            QTRY_COMPARE(TestWorld::read(world.path("out/a.wav")), QByteArray(text));
            QVERIFY(QFile::remove(world.path("out/a.wav")));
        }
    }

    void aFolderThatDoesNotAnswerIsTold() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        Told told(files);
        TestWorld::write(world.path("out/a.wav"), "one");
        TestWorld::write(world.path("out/b.wav"), "two");
        files.trash({world.url("out/b.wav")});
        QTRY_VERIFY(!files.isMoving());
        world.cutOff("out");
        const auto verifyTold = [&] {
            QTRY_VERIFY2(told.error.contains("does not answer"), qPrintable(told.error));
            told.error.clear();
            QVERIFY(QFileInfo::exists(world.path("out/a.wav")));
            QVERIFY(!QFileInfo::exists(world.path("out/b.wav")));
        };
        files.trash({world.url("out/a.wav")});
        verifyTold();
        files.rename(world.url("out/a.wav"), QStringLiteral("c"));
        verifyTold();
        QVERIFY(files.undo());
        verifyTold();
    }

    // ---- Names

    void renamesAndBack() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        QSignalSpy renamed(&files, &FilesController::renamed);
        TestWorld::write(world.path("out/a.wav"), "one");
        files.rename(world.url("out/a.wav"), QStringLiteral(" Big kick "));
        QTRY_COMPARE(renamed.count(), 1);
        QCOMPARE(renamed.at(0).at(1).toUrl(), world.url("out/Big kick.wav"));
        QCOMPARE(TestWorld::read(world.path("out/Big kick.wav")), QByteArray("one"));
        QVERIFY(files.undo());
        QTRY_COMPARE(renamed.count(), 2);
        QCOMPARE(renamed.at(1).at(1).toUrl(), world.url("out/a.wav"));
        QCOMPARE(TestWorld::read(world.path("out/a.wav")), QByteArray("one"));
    }

    void aNameThatIsTakenOrNoneIsRefused() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const Told told(files);
        TestWorld::write(world.path("out/a.wav"), "one");
        TestWorld::write(world.path("out/b.wav"), "two");
        for (const char* name : {"", "  ", "..", "a/b", ".hidden"}) {
            files.rename(world.url("out/a.wav"), QString::fromLatin1(name));
            QVERIFY2(told.error.endsWith("is no name for a file."), name);
        }
        files.rename(world.url("out/a.wav"), QStringLiteral("b.wav"));
        QTRY_COMPARE(told.error, QStringLiteral("There is a file called b.wav already."));
        QCOMPARE(TestWorld::read(world.path("out/b.wav")), QByteArray("two"));
        QVERIFY(!files.canUndo());
        files.rename(world.url("out/a.wav"), QStringLiteral("a"));  // its own name
        deliverEvents();
        QVERIFY(!files.canUndo());
    }

    // ---- Favourites

    void favouritesAreRemembered() {
        TestWorld world;
        TestWorld::write(world.path("out/a.wav"), "one");
        {
            Preferences preferences(world.environment.settingsFile);
            FilesController files(world.environment, preferences);
            files.setFavourite(world.url("out/a.wav"), true);
            files.setFavourite(world.url("out/b.wav"), true);
            files.setFavourite(world.url("out/b.wav"), false);
            QVERIFY(files.isFavourite(world.url("out/a.wav")) && !files.isFavourite(world.url("out/b.wav")));
        }
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        QVERIFY(files.isFavourite(world.url("out/a.wav")) && !files.isFavourite(world.url("out/b.wav")));
        // Also under another name.
        QSignalSpy renamed(&files, &FilesController::renamed);
        files.rename(world.url("out/a.wav"), QStringLiteral("c"));
        QTRY_COMPARE(renamed.count(), 1);
        QVERIFY(files.isFavourite(world.url("out/c.wav")) && !files.isFavourite(world.url("out/a.wav")));
    }

    void marksOfSeveralAreTakenBackTogether() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const QUrl a = world.url("out/a.wav");
        const QUrl b = world.url("out/b.wav");
        const QUrl c = world.url("out/c.wav");
        const auto marked = [&] {
            return QList<bool>{files.isFavourite(a), files.isFavourite(b), files.isFavourite(c)};
        };
        files.setFavourite(a, true);
        const double first = files.lastChange();
        QVERIFY(files.canUndo() && first > 0);
        files.setFavourites({a, b, c}, true);
        files.setFavourites({a, b, c}, true);  // changes nothing
        QCOMPARE(marked(), QList<bool>({true, true, true}));
        QVERIFY(files.undo());
        QCOMPARE(marked(), QList<bool>({true, false, false}));
        QCOMPARE(files.lastChange(), first);
        QVERIFY(files.undo());
        QCOMPARE(marked(), QList<bool>({false, false, false}));
        QVERIFY(!files.canUndo());
        files.setFavourites({a, b}, true);
        files.setFavourites({a, b}, false);
        QVERIFY(files.undo());
        QCOMPARE(marked(), QList<bool>({true, true, false}));
        QTRY_COMPARE(storedFavourites(world),
                     QStringList({world.path("out/a.wav"), world.path("out/b.wav")}));
    }

    void marksThatHadToMakeRoomComeBack() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const QUrl old = world.url("out/old.wav");
        files.setFavourite(old, true);
        QList<QUrl> many;
        for (int i = 0; i < FilesController::mostFavourites; ++i)
            many.append(world.url(QStringLiteral("out/%1.wav").arg(i)));
        files.setFavourites(many, true);
        QVERIFY(!files.isFavourite(old));
        QVERIFY(files.undo());
        QVERIFY(files.isFavourite(old) && !files.isFavourite(many.first()));
    }

    void whatWasMarkedSinceStaysMarked() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        files.setFavourite(world.url("out/a.wav"), true);
        {
            Preferences others(world.environment.settingsFile);
            FilesController another(world.environment, others);
            another.setFavourite(world.url("out/b.wav"), true);
        }
        QVERIFY(files.undo());
        QTRY_COMPARE(storedFavourites(world), QStringList(world.path("out/b.wav")));
    }

    void aFavouriteKeepsItsPlaceUnderAnotherName() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        TestWorld::write(world.path("out/a.wav"), "one");
        files.setFavourites({world.url("out/z.wav"), world.url("out/a.wav"), world.url("out/b.wav")}, true);
        QSignalSpy changed(&files, &FilesController::favouritesChanged);
        bool isKnownByItsName = false;
        connect(&files, &FilesController::renamed, this,
                [&](const QUrl&, const QUrl& to) { isKnownByItsName = files.isFavourite(to); });
        files.rename(world.url("out/a.wav"), QStringLiteral("c"));
        QTRY_COMPARE(changed.count(), 1);
        QVERIFY(isKnownByItsName);
        QTRY_COMPARE(storedFavourites(world), QStringList({world.path("out/z.wav"), world.path("out/c.wav"),
                                                           world.path("out/b.wav")}));
        deliverEvents();
        QCOMPARE(changed.count(), 1);
    }

    // ---- What is asked for while files are on their way

    void marksAreTakenBackAfterTheFiles() {
        HeldTrash held;
        const TestWorld& world = held.world;
        FilesController& files = held.files;
        const Told& told = held.told;
        const QList<QUrl> both{world.url("out/a.wav"), world.url("out/b.wav")};
        files.setFavourites(both, true);
        held.gate.close();
        files.trash(both);
        QVERIFY(files.undo());  // the files, as soon as they are there
        QVERIFY(files.isFavourite(both[0]) && files.isFavourite(both[1]));
        held.gate.open();
        QTRY_COMPARE(told.notices, QStringList({"In the trash: 2 files", "Back again: 2 files"}));
        QVERIFY(QFileInfo::exists(world.path("out/a.wav")) && QFileInfo::exists(world.path("out/b.wav")));
        QVERIFY(files.isFavourite(both[0]) && files.isFavourite(both[1]));
        QVERIFY(files.undo());
        QVERIFY(!files.isFavourite(both[0]) && !files.isFavourite(both[1]));
        QVERIFY(!files.canUndo());
    }

    void quickStepsBackComeInTheirOrder() {
        HeldTrash held;
        const TestWorld& world = held.world;
        FilesController& files = held.files;
        const Told& told = held.told;
        held.gate.close();
        const QUrl file = world.url("out/a.wav");
        files.setFavourite(file, true);
        files.trash({file});
        QVERIFY(files.undo() && files.undo() && !files.undo());
        held.gate.open();
        QTRY_VERIFY(told.notices.contains("Back again: a.wav") && !files.isFavourite(file));
        QTRY_VERIFY(!files.isMoving());
        QVERIFY(QFileInfo::exists(world.path("out/a.wav")) && !files.isFavourite(file));
        QVERIFY(!files.canUndo());
    }

    void whatIsMarkedMeanwhileIsTakenBackFirst() {
        HeldTrash held;
        const TestWorld& world = held.world;
        FilesController& files = held.files;
        held.gate.close();
        const QUrl other = world.url("out/b.wav");
        files.trash({world.url("out/a.wav")});
        files.setFavourite(other, true);
        QVERIFY(files.undo());
        held.gate.open();
        QTRY_VERIFY(!files.isFavourite(other));
        QTRY_VERIFY(!files.isMoving());
        QVERIFY(!QFileInfo::exists(world.path("out/a.wav")));
        QVERIFY(files.undo());
        QTRY_VERIFY(QFileInfo::exists(world.path("out/a.wav")));
    }

    void noMoreStepsAreKeptThanThereIsRoomFor() {
        TestWorld world;
        TestWorld::write(world.path("file"), "one");
        Preferences preferences(world.path("file/no.conf"));  // a thousand writes take their time
        FilesController files(world.environment, preferences);
        for (std::size_t i = 0; i <= FilesController::mostSteps; ++i)
            files.setFavourite(world.url(QStringLiteral("out/%1.wav").arg(i)), true);
        for (std::size_t i = 0; i < FilesController::mostSteps; ++i)
            QVERIFY(files.undo());
        QVERIFY(!files.canUndo());
        QVERIFY(files.isFavourite(world.url("out/0.wav")) && !files.isFavourite(world.url("out/1.wav")));
    }

    void marksThatAreTakenAwayComeBackToTheirPlaces() {
        TestWorld world;
        Preferences preferences(world.environment.settingsFile);
        FilesController files(world.environment, preferences);
        const QList<QUrl> all{world.url("a.wav"), world.url("b.wav"), world.url("c.wav"), world.url("d.wav")};
        files.setFavourites(all, true);
        files.setFavourites({all[3], all[1]}, false);
        files.setFavourites({all[2], all[1]}, true);  // one of them is there and goes to the front
        QVERIFY(files.undo() && files.undo());
        QTRY_COMPARE(storedFavourites(world), QStringList({world.path("a.wav"), world.path("b.wav"),
                                                           world.path("c.wav"), world.path("d.wav")}));
    }

    // The desktop's own, in a home of its own.
    void theDesktopsTrashForgetsWhatCameBack() {
        TestWorld world;
        const QString file = world.path("home/a.wav");
        TestWorld::write(file, "one");
        qputenv("HOME", world.path("home").toUtf8());
        qputenv("XDG_DATA_HOME", world.path("home/data").toUtf8());
        QDir().mkpath(world.path("home/data"));
        QString trashed;
        QVERIFY(QFile::moveToTrash(file, &trashed));
        const std::filesystem::path place = toPath(trashed);
        QVERIFY(!QFileInfo::exists(file));
        QCOMPARE(TestWorld::read(trashed), QByteArray("one"));
        const QString info =
            QFileInfo(trashed).dir().filePath("../info/" + toQString(place.filename()) + ".trashinfo");
        QVERIFY(QFileInfo::exists(info));
        QVERIFY(Trash::restore(place, toPath(file)));
        QCOMPARE(TestWorld::read(file), QByteArray("one"));
        QVERIFY(!QFileInfo::exists(info));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::FilesControllerTest)
#include "FilesControllerTest.moc"
