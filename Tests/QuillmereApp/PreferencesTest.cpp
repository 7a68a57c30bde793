#include "QuillmereApp/Preferences.h"

#include <QObject>
#include <memory>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

class PreferencesTest : public QObject {
    Q_OBJECT

private slots:
    void whatWasSetIsFoundAgain() {
        const TestWorld world;
        {
            Preferences preferences(world.environment.settingsFile);
            preferences.setValue("count", 12);
            preferences.setValue("outputPath", "/out");
            QCOMPARE(preferences.integer("count"), std::optional(12));
        }
        const Preferences preferences(world.environment.settingsFile);
        QCOMPARE(preferences.integer("count"), std::optional(12));
        QCOMPARE(preferences.text("outputPath"), std::optional(QString("/out")));
        QVERIFY(!preferences.text("corpusPath"));
    }

    // Of two programs, the one that chose last.
    void theLastChoiceCountsAlsoWhenItWasMadeBefore() {
        const TestWorld world;
        const QString file = world.environment.settingsFile;
        auto one = std::make_unique<Preferences>(file);
        one->setValue("count", 5);
        QTRY_COMPARE(Preferences(file).integer("count"), std::optional(5));
        auto other = std::make_unique<Preferences>(file);
        other->setValue("count", 7);
        QTRY_COMPARE(Preferences(file).integer("count"), std::optional(7));
        one->setValue("count", 5);
        one.reset();
        other.reset();
        QCOMPARE(Preferences(file).integer("count"), std::optional(5));
    }

    void aProgramWritesOnlyWhatWasSetInIt() {
        const TestWorld world;
        const QString file = world.environment.settingsFile;
        world.writePreferences("count=3\noutputPath=/a\n");
        auto one = std::make_unique<Preferences>(file);
        auto other = std::make_unique<Preferences>(file);
        one->setValue("count", 4);
        other->setValue("outputPath", "/b");
        one.reset();
        other.reset();
        const Preferences after(file);
        QCOMPARE(after.integer("count"), std::optional(4));
        QCOMPARE(after.text("outputPath"), std::optional(QString("/b")));
    }

    void anEditSeesWhatOthersHaveWritten() {
        const TestWorld world;
        const QString file = world.environment.settingsFile;
        const auto add = [](Preferences& preferences, const QString& folder, QStringList& told) {
            preferences.edit(
                "recent",
                [folder](const QVariant& stored) { return QStringList(folder) + stored.toStringList(); },
                [&told](const QVariant& value) { told = value.toStringList(); });
        };
        QStringList told;
        auto one = std::make_unique<Preferences>(file);
        auto other = std::make_unique<Preferences>(file);
        for (int i = 0; i < 20; ++i) {  // at once, so that they would lose some
            add(*one, "one", told);
            add(*other, "other", told);
        }
        QTRY_COMPARE(told.size(), 40);
        QCOMPARE(told.count("one"), 20);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::PreferencesTest)
#include "PreferencesTest.moc"
