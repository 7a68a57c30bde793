// The folders of a chooser of the program's own.

#include "QuillmereApp/FolderBrowser.h"

#include <QObject>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

struct Browser {
    explicit Browser(const TestWorld& world)
        : browser(world.environment.looks, world.environment.homeFolder) {}

    // Ends when a wish has been granted or refused.
    template <typename Wish>
    void wish(const Wish& act) {
        act();
        AppModelProbe::waitForWork(browser);
        deliverEvents();
    }

    FolderBrowser browser;
};

}  // namespace

class FolderBrowserTest : public QObject {
    Q_OBJECT

private slots:
    void showsFoldersAndCountsAudioFiles() {
        TestWorld world;
        for (const char* name : {"home/b", "home/A", "home/a10", "home/a2", "home/.hidden"})
            QDir().mkpath(world.path(name));
        for (const char* name :
             {"home/x.wav", "home/y.FLAC", "home/z.txt", "home/.h.wav", "home/b/in it.wav"})
            TestWorld::write(world.path(name), "x");
        Browser own(world);
        FolderBrowser& browser = own.browser;
        QVERIFY(browser.folder().isEmpty());
        own.wish([&] { browser.begin(world.url("home")); });
        QCOMPARE(browser.folder(), world.url("home"));
        QCOMPARE(browser.path(), QStringLiteral("~"));
        QCOMPARE(browser.names(), QStringList({"A", "a2", "a10", "b"}));
        QCOMPARE(browser.audioFiles(), 2);
        own.wish([&] { browser.enter("b"); });
        QCOMPARE(browser.path(), QStringLiteral("~/b"));
        QCOMPARE(browser.names(), QStringList());
        QCOMPARE(browser.audioFiles(), 1);
        own.wish([&] { browser.goUp(); });
        QCOMPARE(browser.folder(), world.url("home"));
    }

    void goesWhereSomebodyTypes_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("home") << "~/sub";
        QTest::newRow("path") << "%1/home/sub/";
        QTest::newRow("url") << "file://%1/home/sub";
        QTest::newRow("quoted") << " \"%1/home/sub\" ";
    }
    void goesWhereSomebodyTypes() {
        QFETCH(QString, text);
        TestWorld world;
        QDir().mkpath(world.path("home/sub"));
        Browser own(world);
        own.wish([&] { own.browser.goTo(text.replace("%1", QFileInfo(world.path("home")).path())); });
        QCOMPARE(own.browser.path(), QStringLiteral("~/sub"));
        QCOMPARE(own.browser.problem(), QString());
    }

    void saysWhyItStaysWhereItIs() {
        TestWorld world;
        TestWorld::write(world.path("home/file"), "x");
        Browser own(world);
        FolderBrowser& browser = own.browser;
        own.wish([&] { browser.begin(world.url("home")); });
        own.wish([&] { browser.goTo("~/none"); });
        QCOMPARE(browser.problem(), "There is no folder " + world.path("home/none") + ".");
        own.wish([&] { browser.goTo("~/file"); });
        QCOMPARE(browser.problem(), QStringLiteral("This is a file, not a folder."));
        QCOMPARE(browser.folder(), world.url("home"));
        own.wish([&] { browser.goTo("~"); });
        QCOMPARE(browser.problem(), QString());
    }

    void makesAFolderAndGoesThere() {
        TestWorld world;
        Browser own(world);
        FolderBrowser& browser = own.browser;
        own.wish([&] { browser.begin(world.url("home")); });
        own.wish([&] { browser.makeFolder(" new "); });
        QCOMPARE(browser.path(), QStringLiteral("~/new"));
        QVERIFY(QFileInfo(world.path("home/new")).isDir());
        own.wish([&] { browser.goUp(); });
        own.wish([&] { browser.makeFolder("new"); });
        QVERIFY2(browser.problem().contains(world.path("home/new")), qPrintable(browser.problem()));
        QCOMPARE(browser.path(), QStringLiteral("~"));
        for (const char* name : {"a/b", "..", "."}) {
            own.wish([&] { browser.makeFolder(name); });
            QVERIFY(!browser.problem().isEmpty());
            QCOMPARE(browser.path(), QStringLiteral("~"));
        }
    }

    void aFolderThatDoesNotAnswerIsToldOf() {
        TestWorld world;
        QDir().mkpath(world.path("home/dead"));
        world.cutOff("home/dead");
        Browser own(world);
        FolderBrowser& browser = own.browser;
        own.wish([&] { browser.begin(world.url("home")); });
        own.wish([&] { browser.enter("dead"); });
        QVERIFY2(browser.problem().contains("does not answer"), qPrintable(browser.problem()));
        QCOMPARE(browser.path(), QStringLiteral("~"));
    }

    void theNewestWishWins() {
        TestWorld world;
        QDir().mkpath(world.path("home/a"));
        QDir().mkpath(world.path("home/b"));
        Browser own(world);
        own.wish([&] {
            own.browser.goTo("~/a");
            own.browser.goTo("~/b");
        });
        QCOMPARE(own.browser.path(), QStringLiteral("~/b"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::FolderBrowserTest)
#include "FolderBrowserTest.moc"
