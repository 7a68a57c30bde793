// The parameters: presets, undo, randomise and the user's own presets; and the seed.

#include <QObject>

#include "QuillmereApp/Controllers/CharacterController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"

namespace quillmere::testing {
namespace {

QVariant presetRole(CharacterController& character, const QString& name, int role) {
    return character.presets()->index(character.presets()->rowOf(name)).data(role);
}

QStringList presetNames(CharacterController& character) {
    QStringList names;
    for (int row = 0; row < character.presets()->count(); ++row)
        names.append(character.presets()->index(row).data(PresetModel::NameRole).toString());
    return names;
}

}  // namespace

class CharacterControllerTest : public QObject {
    Q_OBJECT

private slots:
    void applyingAPresetSetsAllValuesAndItsName() {
        TestWorld world;
        CharacterController character(world.environment);
        for (const Preset& preset : Preset::all()) {
            character.apply(preset);
            QVERIFY(character.aesthetics() == preset.aesthetics);
            QCOMPARE(character.presetName(), QString::fromUtf8(preset.name.data()));
            QVERIFY(!character.presetEdited());
        }
        character.applyPreset("no such preset");
        QCOMPARE(character.presetName(), QStringLiteral("Robotic"));
    }

    void aPresetIsMarkedEditedWhileAValueDeparts() {
        TestWorld world;
        CharacterController character(world.environment);
        QSignalSpy changed(&character, &CharacterController::presetChanged);
        character.applyPreset("Wild");
        character.parameters()->setValue("drift", 2);
        QCOMPARE(character.presetName(), QStringLiteral("Wild"));
        QVERIFY(character.presetEdited());
        QVERIFY(presetRole(character, "Wild", PresetModel::IsEditedRole).toBool());
        QVERIFY(!presetRole(character, "Balanced", PresetModel::IsEditedRole).toBool());
        character.parameters()->setValue("drift", 1.6);
        QVERIFY(!character.presetEdited());
        QCOMPARE(changed.count(), 3);
    }

    void undoAndRedoGoThroughEditsAndPresets() {
        TestWorld world;
        CharacterController character(world.environment);
        QVERIFY(!character.canUndo() && !character.canRedo());
        character.parameters()->setValue("drift", 1);
        character.applyPreset("Extreme");
        character.parameters()->reset("decay");  // is at its default: no step
        character.undo();
        QCOMPARE(character.presetName(), QStringLiteral("Balanced"));
        QCOMPARE(character.aesthetics().drift, 1.0);
        QVERIFY(character.presetEdited());
        character.undo();
        QVERIFY(character.aesthetics() == Aesthetics());
        QVERIFY(!character.canUndo() && character.canRedo());
        character.undo();
        character.redo();
        character.redo();
        QCOMPARE(character.presetName(), QStringLiteral("Extreme"));
        QVERIFY(!character.canRedo());
        character.undo();
        character.parameters()->setValue("pitch", 3);
        QVERIFY(!character.canRedo());
    }

    void aDragIsOneStep() {
        TestWorld world;
        CharacterController character(world.environment);
        character.beginEdit();
        for (int i = 0; i <= 10; ++i)
            character.parameters()->setPosition("pitch", 0.5 + i / 20.0);
        character.endEdit();
        QCOMPARE(character.aesthetics().pitch, 36.0);
        character.undo();
        QCOMPARE(character.aesthetics().pitch, 0.0);
        QVERIFY(!character.canUndo());
    }

    void aDragThatComesBackIsNoStep() {
        TestWorld world;
        CharacterController character(world.environment);
        character.beginEdit();
        character.parameters()->setValue("pitch", 5);
        character.parameters()->setValue("pitch", 0);
        character.endEdit();
        QVERIFY(!character.canUndo());
    }

    void randomiseMovesWhatIsNotLocked() {
        TestWorld world;
        CharacterController character(world.environment);
        character.parameters()->setLocked("pitch", true);
        character.parameters()->setLocked("normalize", true);
        character.randomise(1);
        QCOMPARE(character.aesthetics().pitch, 0.0);
        QCOMPARE(character.aesthetics().normalize, -1.0);
        int moved = 0;
        for (const ParameterSpec& spec : Aesthetics::specs()) {
            const double value = spec.value(character.aesthetics());
            QVERIFY(value >= spec.lower && value <= spec.upper);
            QCOMPARE(value, spec.snapped(value));
            moved += value != spec.value(Aesthetics()) ? 1 : 0;
        }
        QVERIFY2(moved > 12, qPrintable(QString::number(moved)));
        QVERIFY(character.presetEdited());
        character.undo();
        QVERIFY(character.aesthetics() == Aesthetics());
        QVERIFY(!character.canUndo());
    }

    void randomiseKeepsNearByASmallAmount() {
        TestWorld world;
        CharacterController character(world.environment);
        character.randomise(0);
        character.randomise(-1);
        character.randomise(std::nan(""));
        QVERIFY(character.aesthetics() == Aesthetics());
        character.randomise(0.1);
        for (const ParameterSpec& spec : Aesthetics::specs()) {
            const double from = ParameterScale::position(spec, spec.value(Aesthetics()));
            const double stepAsPosition = spec.step / (spec.upper - spec.lower);
            const double to = ParameterScale::position(spec, spec.value(character.aesthetics()));
            // A logarithmic slider's steps are coarse at its lower end.
            if (!spec.logarithmic) QVERIFY2(std::abs(to - from) <= 0.1 + stepAsPosition, spec.id.data());
        }
    }

    void savesAnOwnPresetForTheNextStart() {
        TestWorld world;
        {
            CharacterController character(world.environment);
            character.parameters()->setValue("drift", 2.5);
            QSignalSpy saved(&character, &CharacterController::presetSaved);
            character.saveOwnPreset("  My kicks ");
            QTRY_COMPARE(saved.count(), 1);
            QCOMPARE(character.presetName(), QStringLiteral("My kicks"));
            QVERIFY(!character.presetEdited());
            QVERIFY(presetRole(character, "My kicks", PresetModel::IsOwnRole).toBool());
            QVERIFY(presetRole(character, "My kicks", PresetModel::IsCurrentRole).toBool());
        }
        const QByteArray json = TestWorld::read(world.path("config/Quillmere/presets/My kicks.json"));
        QCOMPARE(decodeAesthetics(json.toStdString()).drift, 2.5);
        CharacterController restarted(world.environment);
        restarted.reloadPresets();
        QTRY_COMPARE(restarted.presets()->count(), 9);
        restarted.applyPreset("My kicks");
        QCOMPARE(restarted.aesthetics().drift, 2.5);
        QCOMPARE(restarted.presetName(), QStringLiteral("My kicks"));
    }

    void neverOverwritesAPreset() {
        TestWorld world;
        CharacterController character(world.environment);
        Told told(character);
        QSignalSpy saved(&character, &CharacterController::presetSaved);
        character.saveOwnPreset("Mine");
        QTRY_COMPARE(saved.count(), 1);
        const QString file = world.path("config/Quillmere/presets/Mine.json");
        const QByteArray before = TestWorld::read(file);
        character.parameters()->setValue("pitch", 12);
        character.saveOwnPreset("Mine");
        QCOMPARE(told.error, QStringLiteral("A preset of that name exists already."));
        QCOMPARE(TestWorld::read(file), before);

        TestWorld::write(world.path("config/Quillmere/presets/Newer.json"), before);  // by another instance
        told.error.clear();
        character.saveOwnPreset("Newer");
        QTRY_COMPARE(told.error, QStringLiteral("A preset of that name exists already."));
        QCOMPARE(TestWorld::read(world.path("config/Quillmere/presets/Newer.json")), before);
        QCOMPARE(saved.count(), 1);
        QTRY_VERIFY(presetNames(character).contains("Newer"));  // now it can be seen why
    }

    void twoInstancesShareTheOwnPresets() {
        TestWorld world;
        CharacterController one(world.environment);
        CharacterController other(world.environment);
        const Told told(other);
        QSignalSpy saved(&one, &CharacterController::presetSaved);
        one.parameters()->setValue("pitch", 5);
        one.saveOwnPreset("Low");
        QTRY_COMPARE(saved.count(), 1);
        other.reloadPresets();  // its window becomes active
        QTRY_VERIFY(presetNames(other).contains("Low"));
        other.applyPreset("Low");
        QCOMPARE(other.aesthetics().pitch, 5.0);

        one.deleteOwnPreset("Low");
        QTRY_COMPARE(one.presets()->count(), 8);
        other.parameters()->setValue("pitch", 7);
        other.deleteOwnPreset("Low");  // gone already
        QTRY_COMPARE(other.presets()->count(), 8);
        QCOMPARE(told.error, QString());
        QCOMPARE(other.aesthetics().pitch, 7.0);
    }

    void twoInstancesSavingOneNameKeepTheFirst() {
        TestWorld world;
        CharacterController one(world.environment);
        CharacterController other(world.environment);
        const Told told(one);
        const Told toldByOther(other);
        QSignalSpy saved(&one, &CharacterController::presetSaved);
        QSignalSpy savedByOther(&other, &CharacterController::presetSaved);
        one.parameters()->setValue("pitch", 5);
        other.parameters()->setValue("pitch", -5);
        one.saveOwnPreset("Same");
        other.saveOwnPreset("Same");
        QTRY_COMPARE(saved.count() + savedByOther.count(), 1);
        CharacterController& late = saved.count() == 1 ? other : one;
        QTRY_COMPARE(saved.count() == 1 ? toldByOther.error : told.error,
                     QStringLiteral("A preset of that name exists already."));
        QTRY_COMPARE(late.presets()->count(), 9);
        const double kept = saved.count() == 1 ? 5.0 : -5.0;
        const QByteArray json = TestWorld::read(world.path("config/Quillmere/presets/Same.json"));
        QCOMPARE(decodeAesthetics(json.toStdString()).pitch, kept);
    }

    void lookingAgainLeavesUnchangedPresetsAlone() {
        TestWorld world;
        CharacterController character(world.environment);
        QSignalSpy saved(&character, &CharacterController::presetSaved);
        character.saveOwnPreset("Mine");
        QTRY_COMPARE(saved.count(), 1);
        QSignalSpy resets(character.presets(), &PresetModel::modelReset);
        character.reloadPresets();
        AppModelProbe::waitForWork(character);
        deliverEvents();
        QCOMPARE(resets.count(), 0);
    }

    void refusesUnusableNames_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("empty") << "";
        QTest::newRow("blank") << "   ";
        QTest::newRow("path") << "../evil";
        QTest::newRow("hidden") << ".hidden";
        QTest::newRow("built-in") << "wild";
        QTest::newRow("control") << "a\nb";
        QTest::newRow("long") << QString(300, 'x');
    }
    void refusesUnusableNames() {
        QFETCH(QString, name);
        TestWorld world;
        CharacterController character(world.environment);
        const Told told(character);
        QVERIFY(!character.presetNameProblem(name).isEmpty());
        character.saveOwnPreset(name);
        QCOMPARE(told.error, character.presetNameProblem(name));
        AppModelProbe::waitForWork(character);
        QVERIFY(!QFileInfo::exists(world.path("config/Quillmere/presets")));
    }

    void deletesAnOwnPresetOnly() {
        TestWorld world;
        CharacterController character(world.environment);
        QSignalSpy saved(&character, &CharacterController::presetSaved);
        character.saveOwnPreset("Mine");
        QTRY_COMPARE(saved.count(), 1);
        character.deleteOwnPreset("Wild");
        character.deleteOwnPreset("../../settings");
        character.deleteOwnPreset("Mine");
        QTRY_COMPARE(character.presets()->count(), 8);
        QVERIFY(!QFileInfo::exists(world.path("config/Quillmere/presets/Mine.json")));
        QVERIFY(!character.presetEdited());
    }

    void listsPresetFilesItCannotUse() {
        TestWorld world;
        TestWorld::write(world.path("config/Quillmere/presets/Broken.json"), "{\"sources\": 2");
        TestWorld::write(world.path("config/Quillmere/presets/Half.json"), "{\"sources\": 2}");
        TestWorld::write(world.path("config/Quillmere/presets/notes.txt"), "no preset");
        CharacterController character(world.environment);
        const Told told(character);
        character.reloadPresets();
        QTRY_COMPARE(character.presets()->count(), 10);
        QCOMPARE(presetNames(character).mid(8), QStringList({"Broken", "Half"}));
        QVERIFY(!presetRole(character, "Half", PresetModel::IsUsableRole).toBool());
        QVERIFY(presetRole(character, "Half", PresetModel::BlurbRole).toString().contains("drift"));
        character.applyPreset("Half");
        QCOMPARE(told.error, presetRole(character, "Half", PresetModel::BlurbRole).toString());
        QVERIFY(character.aesthetics() == Aesthetics());
        QCOMPARE(character.presetName(), QStringLiteral("Balanced"));
    }

    void bringsForeignValuesIntoRange() {
        TestWorld world;
        Aesthetics wild;
        wild.pitch = 1000;
        wild.crushBits = -4;
        TestWorld::write(world.path("config/Quillmere/presets/Foreign.json"),
                         QByteArray::fromStdString(encodeJSON(wild)));
        CharacterController character(world.environment);
        character.reloadPresets();
        QTRY_COMPARE(character.presets()->count(), 9);
        character.applyPreset("Foreign");
        QCOMPARE(character.aesthetics().pitch, 36.0);
        QCOMPARE(character.aesthetics().crushBits, 2.0);
    }

    // ---- The seed

    void aNumberAsSeedIsTheSeedOfEveryRun() {
        TestWorld world;
        CharacterController character(world.environment);
        character.setSeedText(" 42 ");
        QVERIFY(character.seedIsFixed());
        QCOMPARE(character.drawSeed(), 42U);
        QCOMPARE(character.drawSeed(), 42U);
        QCOMPARE(character.lastSeed(), QStringLiteral("42"));
    }

    void anyOtherSeedTextIsAFreshRoll_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("word") << "abc";
        QTest::newRow("empty") << "";
        QTest::newRow("negative") << "-1";
        QTest::newRow("beyond 64 bits") << "18446744073709551616";
        QTest::newRow("fraction") << "4.2";
    }
    void anyOtherSeedTextIsAFreshRoll() {
        QFETCH(QString, text);
        TestWorld world;
        CharacterController character(world.environment);
        character.setSeedText(text);
        QVERIFY(!character.seedIsFixed());
        const std::uint64_t first = character.drawSeed();
        QCOMPARE(character.lastSeed(), QString::number(first));
        QVERIFY(character.drawSeed() != first);
    }

    void theLastSeedCanBeCopiedAndPutBack() {
        TestWorld world;
        world.environment.freshSeed = [] { return UINT64_MAX; };
        CharacterController character(world.environment);
        character.reuseSeed();
        QCOMPARE(character.seedText(), QString());
        QCOMPARE(character.drawSeed(), UINT64_MAX);
        QCOMPARE(character.lastSeed(), QStringLiteral("18446744073709551615"));
        character.copySeed();
        QCOMPARE(world.clipboard, character.lastSeed());
        character.reuseSeed();
        QCOMPARE(character.seedText(), character.lastSeed());
        QCOMPARE(character.drawSeed(), UINT64_MAX);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::CharacterControllerTest)
#include "CharacterControllerTest.moc"
