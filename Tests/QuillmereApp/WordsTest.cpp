#include "QuillmereApp/Words.h"

#include <QCoreApplication>
#include <QObject>
#include <QTranslator>
#include <stdexcept>

#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::testing {
namespace {

// German for what is kept in English, for as long as this lives.
class German : public QTranslator {
public:
    German() : QTranslator(nullptr) { QCoreApplication::installTranslator(this); }
    ~German() override { QCoreApplication::removeTranslator(this); }
    German(const German&) = delete;
    German& operator=(const German&) = delete;

    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* source, const char*,
                                    int n) const override {
        if (qstrcmp(context, "Words") != 0) return {};
        if (qstrcmp(source, "Candidate %1") == 0) return QStringLiteral("Kandidat %1");
        if (qstrcmp(source, "%n sounds of the map") == 0)
            return n == 1 ? QStringLiteral("%n Klang der Karte") : QStringLiteral("%n Klänge der Karte");
        return {};
    }
};

}  // namespace

class WordsTest : public QObject {
    Q_OBJECT

private slots:
    void keptNamesAreTheSameInEveryLanguage() {
        const German german;
        QCOMPARE(Words::keptName(3), QStringLiteral("Candidate 3"));
        QCOMPARE(Words::keptNameOfMap(1), QStringLiteral("1 sounds of the map"));
        QCOMPARE(Words::keptNameOfMap(12), QStringLiteral("12 sounds of the map"));
    }

    void keptNamesAreShownInTheUsersLanguage() {
        const German german;
        QCOMPARE(Words::ofSound(Words::keptName(3)), QStringLiteral("Kandidat 3"));
        QCOMPARE(Words::ofSound(Words::keptName(120)), QStringLiteral("Kandidat 120"));
        QCOMPARE(Words::ofSound(Words::keptNameOfMap(1)), QStringLiteral("1 Klang der Karte"));
        QCOMPARE(Words::ofSound(Words::keptNameOfMap(12)), QStringLiteral("12 Klänge der Karte"));
    }

    void withoutACatalogueTheyAreWhatTheSourcesSay() {
        QCOMPARE(Words::ofSound(Words::keptName(3)), QStringLiteral("Candidate 3"));
        QCOMPARE(Words::ofSound(Words::keptNameOfMap(12)), QStringLiteral("12 sounds of the map"));
    }

    void namesOfFilesStayAsTheyAre_data() {
        QTest::addColumn<QString>("name");
        for (const char* name :
             {"", "kick.wav", "Candidate 3.wav", "Candidate", "Candidate ", "Candidate x", "Candidate 3 b",
              "candidate 3", " sounds of the map", "some sounds of the map", "3 sounds of the map.wav",
              "3 sounds of the maps", "Candidate 99999999999999999999", "Kandidat 3", "%1", "%n"})
            QTest::newRow(*name == '\0' ? "nothing" : name) << QString::fromLatin1(name);
    }
    void namesOfFilesStayAsTheyAre() {
        QFETCH(QString, name);
        const German german;
        QCOMPARE(Words::ofSound(name), name);
    }

    void errorsAreTold() {
        QCOMPARE(Words::of(Failure("{0} is silent", "a.wav")), QStringLiteral("a.wav is silent"));
        QCOMPARE(Words::of(std::runtime_error("not made for people: ü")),
                 QStringLiteral("not made for people: ü"));
        QCOMPARE(Words::inTable("Pitch"), QStringLiteral("Pitch"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::WordsTest)
#include "WordsTest.moc"
