// Folders as people type, drop and read them.

#include "QuillmereApp/Controllers/Folders.h"

#include <QObject>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

class FoldersTest : public QObject {
    Q_OBJECT

private slots:
    void readsWhatIsTyped_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("path");
        QTest::newRow("nothing") << QString() << QString();
        QTest::newRow("blanks") << "  \t" << QString();
        QTest::newRow("blanks around") << "  /a b \n"
                                       << "/a b";
        QTest::newRow("home") << "~"
                              << "/home/me";
        QTest::newRow("below home") << "~/Kicks"
                                    << "/home/me/Kicks";
        QTest::newRow("no home") << "~you/Kicks" << QDir::current().absoluteFilePath("~you/Kicks");
        QTest::newRow("quoted") << "'/a b'"
                                << "/a b";
        QTest::newRow("quoted twice") << "\"~/a b\""
                                      << "/home/me/a b";
        QTest::newRow("one quotation mark") << "'/a" << QDir::current().absoluteFilePath("'/a");
        QTest::newRow("URL") << "file:///a%20b"
                             << "/a b";
        QTest::newRow("slashes") << "//a///b/"
                                 << "/a/b";
        QTest::newRow("up") << "/link/../b"
                            << "/link/../b";
    }
    void readsWhatIsTyped() {
        QFETCH(QString, text);
        QFETCH(QString, path);
        QCOMPARE(Folders::typed(text, "/home/me"), path);
    }

    void takesOneLocalThing() {
        QCOMPARE(Folders::dropped({QUrl("file:///a/b/")}).path, QStringLiteral("/a/b"));
        QCOMPARE(Folders::dropped({QUrl("file:///a/b/")}).refusal, QString());
        const QString one = "Drop one folder: the one that holds the samples.";
        QCOMPARE(Folders::dropped({}).refusal, one);
        QCOMPARE(Folders::dropped({QUrl("file:///a"), QUrl("file:///b")}).refusal, one);
        QCOMPARE(Folders::dropped({QUrl("https://example.org")}).refusal, Folders::onlyLocal());
    }

    void saysWhySomethingIsNotTaken() {
        QCOMPARE(Folders::refusal(Place::Kind::folder, "/a"), QString());
        QVERIFY(Folders::refusal(Place::Kind::file, "/a").contains("file, not a folder"));
        QVERIFY(Folders::refusal(Place::Kind::nothing, "/a").contains("/a"));
        QCOMPARE(Folders::refusal(Place::Kind::noAnswer, "/a"), Folders::noAnswer("/a"));
    }

    void namesAFolderBesideAnother() {
        QCOMPARE(Folders::beside("/Sounds/Drums", "variations"), QStringLiteral("/Sounds/Drums variations"));
        QCOMPARE(Folders::beside("/", "variations"), QStringLiteral("/variations"));
        QCOMPARE(Folders::beside("/link/../Drums", "variations"),
                 QStringLiteral("/link/../Drums variations"));
        QCOMPARE(Folders::beside("/a/..", "variations"), QStringLiteral("/a/../../variations"));
    }

    void showsHomeAsPeopleWriteIt() {
        QCOMPARE(Folders::displayed("/home/me", "/home/me"), QStringLiteral("~"));
        QCOMPARE(Folders::displayed("/home/me/a", "/home/me"), QStringLiteral("~/a"));
        QCOMPARE(Folders::displayed("/home/me2", "/home/me"), QStringLiteral("/home/me2"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::FoldersTest)
#include "FoldersTest.moc"
