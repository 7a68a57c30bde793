#include "QuillmereApp/WindowLanguage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QObject>
#include <QTemporaryDir>
#include <filesystem>
#include <string>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Language.h"

namespace quillmere::testing {
namespace {

const std::filesystem::path built = QUILLMERE_CATALOGUES;

// The core speaks as this locale asks, and English again afterwards.
class Speaking {
public:
    Speaking(const std::filesystem::path& catalogues, const char* locale) {
        Language::take(catalogues, [locale](const char* name) {
            return std::string_view(name) == "LC_ALL" ? locale : nullptr;
        });
    }
    ~Speaking() { Language::take({}, {}); }
    Speaking(const Speaking&) = delete;
    Speaking& operator=(const Speaking&) = delete;
};

QString ofTheWindow() {
    return Words::tr("Graphics card");
}
QString ofTheCore() {
    return Words::inTable("Pitch jitter");
}
QString showing() {
    return QCoreApplication::translate("ResultsStrip", "Show in Finder");
}

// Catalogues of one language, of which the window's can be missing.
class SomeCatalogues {
public:
    explicit SomeCatalogues(const char* language) : language_(QString::fromLatin1(language)) {
        QDir(folder_.path()).mkpath(language_ + "/LC_MESSAGES");
        copy("quillmere.mo");
    }

    void copy(const QString& name) const {
        const QString file = language_ + "/LC_MESSAGES/" + name;
        if (!QFile::copy(QDir(toQString(built)).filePath(file), folder_.filePath(file)))
            qFatal("cannot copy %s", qPrintable(file));
    }
    void write(const QString& name, const QByteArray& bytes) const {
        TestWorld::write(folder_.filePath(language_ + "/LC_MESSAGES/" + name), bytes);
    }
    [[nodiscard]] std::filesystem::path path() const { return toPath(folder_.path()); }

private:
    QTemporaryDir folder_;
    QString language_;
};

}  // namespace

class WindowLanguageTest : public QObject {
    Q_OBJECT

private slots:
    void itIsThatOfTheCoreForAsLongAsItLives_data() {
        QTest::addColumn<QString>("locale");
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("core");
        QTest::newRow("German") << "de_AT.UTF-8"
                                << "Grafikkarte"
                                << "Tonhöhenstreuung";
        QTest::newRow("Spanish") << "es_MX.UTF-8"
                                 << "Tarjeta gráfica"
                                 << "";
        QTest::newRow("French") << "fr_FR.UTF-8"
                                << "Carte graphique"
                                << "";
        QTest::newRow("Japanese") << "ja_JP.UTF-8"
                                  << "グラフィックカード"
                                  << "";
        QTest::newRow("English") << "C"
                                 << "Graphics card"
                                 << "Pitch jitter";
    }
    void itIsThatOfTheCoreForAsLongAsItLives() {
        QFETCH(QString, locale);
        QFETCH(QString, window);
        QFETCH(QString, core);
        const QByteArray name = locale.toLatin1();
        const Speaking speaking(built, name.constData());
        {
            const WindowLanguage language(built);
            QCOMPARE(ofTheWindow(), window);
            if (core.isEmpty()) {
                QVERIFY(ofTheCore() != QLatin1String("Pitch jitter"));
            } else {
                QCOMPARE(ofTheCore(), core);
            }
        }
        QCOMPARE(ofTheWindow(), QStringLiteral("Graphics card"));
    }

    void anEnglishDesktopHasItsOwnWords() {
        const Speaking speaking(built, "en_GB.UTF-8");
        const WindowLanguage language(built);
        QCOMPARE(showing(), QStringLiteral("Show in File Manager"));
        QCOMPARE(ofTheWindow(), QStringLiteral("Graphics card"));
    }

    void withoutACatalogueOfTheWindowTheCoreSpeaksEnglishToo() {
        const SomeCatalogues catalogues("de");
        const Speaking speaking(catalogues.path(), "de_DE.UTF-8");
        QVERIFY(ofTheCore() != QLatin1String("Pitch jitter"));
        const WindowLanguage language(catalogues.path());
        QCOMPARE(ofTheCore(), QStringLiteral("Pitch jitter"));
        QCOMPARE(ofTheWindow(), QStringLiteral("Graphics card"));
        QCOMPARE(Language::name(), std::string());
    }

    void aDamagedCatalogueIsNone() {
        const SomeCatalogues catalogues("de");
        catalogues.write("quillmere.qm", "no catalogue");
        const Speaking speaking(catalogues.path(), "de_DE.UTF-8");
        const WindowLanguage language(catalogues.path());
        QCOMPARE(ofTheCore(), QStringLiteral("Pitch jitter"));
    }

    void aWholeOneIsTaken() {
        const SomeCatalogues catalogues("de");
        catalogues.copy("quillmere.qm");
        const Speaking speaking(catalogues.path(), "de_DE.UTF-8");
        const WindowLanguage language(catalogues.path());
        QCOMPARE(ofTheWindow(), QStringLiteral("Grafikkarte"));
        QCOMPARE(Language::name(), std::string("de"));
    }

    void englishNeedsNone() {
        const SomeCatalogues catalogues("en");
        const Speaking speaking(catalogues.path(), "en_US.UTF-8");
        const WindowLanguage language(catalogues.path());
        QCOMPARE(Language::name(), std::string("en"));
        QCOMPARE(showing(), QStringLiteral("Show in Finder"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::WindowLanguageTest)
#include "WindowLanguageTest.moc"
