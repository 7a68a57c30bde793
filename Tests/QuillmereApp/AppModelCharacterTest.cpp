// The parameters: presets, undo, randomise and the user's own presets.

#include <QObject>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

QVariant presetRole(AppModel& model, const QString& name, int role) {
    return model.presets()->index(model.presets()->rowOf(name)).data(role);
}

QStringList presetNames(AppModel& model) {
    QStringList names;
    for (int row = 0; row < model.presets()->count(); ++row)
        names.append(model.presets()->index(row).data(PresetModel::NameRole).toString());
    return names;
}

}  // namespace

class AppModelCharacterTest : public QObject {
    Q_OBJECT

private slots:
    void applyingAPresetSetsAllValuesAndItsName() {
        TestWorld world;
        AppModel model(world.environment);
        for (const Preset& preset : Preset::all()) {
            model.apply(preset);
            QVERIFY(model.aesthetics() == preset.aesthetics);
            QCOMPARE(model.presetName(), QString::fromUtf8(preset.name.data()));
            QVERIFY(!model.presetEdited());
        }
        model.applyPreset("no such preset");
        QCOMPARE(model.presetName(), QStringLiteral("Robotic"));
    }

    void aPresetIsMarkedEditedWhileAValueDeparts() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy changed(&model, &AppModel::presetChanged);
        model.applyPreset("Wild");
        model.parameters()->setValue("drift", 2);
        QCOMPARE(model.presetName(), QStringLiteral("Wild"));
        QVERIFY(model.presetEdited());
        QVERIFY(presetRole(model, "Wild", PresetModel::IsEditedRole).toBool());
        QVERIFY(!presetRole(model, "Balanced", PresetModel::IsEditedRole).toBool());
        model.parameters()->setValue("drift", 1.6);
        QVERIFY(!model.presetEdited());
        QCOMPARE(changed.count(), 3);
    }

    void undoAndRedoGoThroughEditsAndPresets() {
        TestWorld world;
        AppModel model(world.environment);
        QVERIFY(!model.canUndo() && !model.canRedo());
        model.parameters()->setValue("drift", 1);
        model.applyPreset("Extreme");
        model.parameters()->reset("decay");  // is at its default: no step
        model.undo();
        QCOMPARE(model.presetName(), QStringLiteral("Balanced"));
        QCOMPARE(model.aesthetics().drift, 1.0);
        QVERIFY(model.presetEdited());
        model.undo();
        QVERIFY(model.aesthetics() == Aesthetics());
        QVERIFY(!model.canUndo() && model.canRedo());
        model.undo();
        model.redo();
        model.redo();
        QCOMPARE(model.presetName(), QStringLiteral("Extreme"));
        QVERIFY(!model.canRedo());
        model.undo();
        model.parameters()->setValue("pitch", 3);
        QVERIFY(!model.canRedo());
    }

    void aDragIsOneStep() {
        TestWorld world;
        AppModel model(world.environment);
        model.beginEdit();
        for (int i = 0; i <= 10; ++i)
            model.parameters()->setPosition("pitch", 0.5 + i / 20.0);
        model.endEdit();
        QCOMPARE(model.aesthetics().pitch, 36.0);
        model.undo();
        QCOMPARE(model.aesthetics().pitch, 0.0);
        QVERIFY(!model.canUndo());
    }

    void aDragThatComesBackIsNoStep() {
        TestWorld world;
        AppModel model(world.environment);
        model.beginEdit();
        model.parameters()->setValue("pitch", 5);
        model.parameters()->setValue("pitch", 0);
        model.endEdit();
        QVERIFY(!model.canUndo());
    }

    void randomiseMovesWhatIsNotLocked() {
        TestWorld world;
        AppModel model(world.environment);
        model.parameters()->setLocked("pitch", true);
        model.parameters()->setLocked("normalize", true);
        model.randomise(1);
        QCOMPARE(model.aesthetics().pitch, 0.0);
        QCOMPARE(model.aesthetics().normalize, -1.0);
        int moved = 0;
        for (const ParameterSpec& spec : Aesthetics::specs()) {
            const double value = spec.value(model.aesthetics());
            QVERIFY(value >= spec.lower && value <= spec.upper);
            QCOMPARE(value, ParameterScale::snapped(spec, value));
            moved += value != spec.value(Aesthetics()) ? 1 : 0;
        }
        QVERIFY2(moved > 12, qPrintable(QString::number(moved)));
        QVERIFY(model.presetEdited());
        model.undo();
        QVERIFY(model.aesthetics() == Aesthetics());
        QVERIFY(!model.canUndo());
    }

    void randomiseKeepsNearByASmallAmount() {
        TestWorld world;
        AppModel model(world.environment);
        model.randomise(0);
        model.randomise(-1);
        model.randomise(std::nan(""));
        QVERIFY(model.aesthetics() == Aesthetics());
        model.randomise(0.1);
        for (const ParameterSpec& spec : Aesthetics::specs()) {
            const double from = ParameterScale::position(spec, spec.value(Aesthetics()));
            const double stepAsPosition = spec.step / (spec.upper - spec.lower);
            const double to = ParameterScale::position(spec, spec.value(model.aesthetics()));
            // A logarithmic slider's steps are coarse at its lower end.
            if (!spec.logarithmic) QVERIFY2(std::abs(to - from) <= 0.1 + stepAsPosition, spec.id.data());
        }
    }

    void savesAnOwnPresetForTheNextStart() {
        TestWorld world;
        {
            AppModel model(world.environment);
            model.parameters()->setValue("drift", 2.5);
            QSignalSpy saved(&model, &AppModel::presetSaved);
            model.saveOwnPreset("  My kicks ");
            QTRY_COMPARE(saved.count(), 1);
            QCOMPARE(model.presetName(), QStringLiteral("My kicks"));
            QVERIFY(!model.presetEdited());
            QVERIFY(presetRole(model, "My kicks", PresetModel::IsOwnRole).toBool());
            QVERIFY(presetRole(model, "My kicks", PresetModel::IsCurrentRole).toBool());
        }
        const QByteArray json = TestWorld::read(world.path("config/Quillmere/presets/My kicks.json"));
        QCOMPARE(decodeAesthetics(json.toStdString()).drift, 2.5);
        AppModel restarted(world.environment);
        QTRY_COMPARE(restarted.presets()->count(), 9);
        restarted.applyPreset("My kicks");
        QCOMPARE(restarted.aesthetics().drift, 2.5);
        QCOMPARE(restarted.presetName(), QStringLiteral("My kicks"));
    }

    void neverOverwritesAPreset() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy saved(&model, &AppModel::presetSaved);
        model.saveOwnPreset("Mine");
        QTRY_COMPARE(saved.count(), 1);
        const QString file = world.path("config/Quillmere/presets/Mine.json");
        const QByteArray before = TestWorld::read(file);
        model.parameters()->setValue("pitch", 12);
        model.saveOwnPreset("Mine");
        QCOMPARE(model.errorMessage(), QStringLiteral("A preset of that name exists already."));
        QCOMPARE(TestWorld::read(file), before);

        TestWorld::write(world.path("config/Quillmere/presets/Newer.json"), before);  // by another instance
        model.dismissError();
        model.saveOwnPreset("Newer");
        QTRY_COMPARE(model.errorMessage(), QStringLiteral("A preset of that name exists already."));
        QCOMPARE(TestWorld::read(world.path("config/Quillmere/presets/Newer.json")), before);
        QCOMPARE(saved.count(), 1);
        QTRY_VERIFY(presetNames(model).contains("Newer"));  // now it can be seen why
    }

    void twoInstancesShareTheOwnPresets() {
        TestWorld world;
        AppModel one(world.environment);
        AppModel other(world.environment);
        QSignalSpy saved(&one, &AppModel::presetSaved);
        one.parameters()->setValue("pitch", 5);
        one.saveOwnPreset("Low");
        QTRY_COMPARE(saved.count(), 1);
        other.refresh();  // its window becomes active
        QTRY_VERIFY(presetNames(other).contains("Low"));
        other.applyPreset("Low");
        QCOMPARE(other.aesthetics().pitch, 5.0);

        one.deleteOwnPreset("Low");
        QTRY_COMPARE(one.presets()->count(), 8);
        other.parameters()->setValue("pitch", 7);
        other.deleteOwnPreset("Low");  // gone already
        QTRY_COMPARE(other.presets()->count(), 8);
        QCOMPARE(other.errorMessage(), QString());
        QCOMPARE(other.aesthetics().pitch, 7.0);
    }

    void twoInstancesSavingOneNameKeepTheFirst() {
        TestWorld world;
        AppModel one(world.environment);
        AppModel other(world.environment);
        QSignalSpy saved(&one, &AppModel::presetSaved);
        QSignalSpy savedByOther(&other, &AppModel::presetSaved);
        one.parameters()->setValue("pitch", 5);
        other.parameters()->setValue("pitch", -5);
        one.saveOwnPreset("Same");
        other.saveOwnPreset("Same");
        QTRY_COMPARE(saved.count() + savedByOther.count(), 1);
        AppModel& late = saved.count() == 1 ? other : one;
        QTRY_COMPARE(late.errorMessage(), QStringLiteral("A preset of that name exists already."));
        QTRY_COMPARE(late.presets()->count(), 9);
        const double kept = saved.count() == 1 ? 5.0 : -5.0;
        const QByteArray json = TestWorld::read(world.path("config/Quillmere/presets/Same.json"));
        QCOMPARE(decodeAesthetics(json.toStdString()).pitch, kept);
    }

    void lookingAgainLeavesUnchangedPresetsAlone() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy saved(&model, &AppModel::presetSaved);
        model.saveOwnPreset("Mine");
        QTRY_COMPARE(saved.count(), 1);
        QSignalSpy resets(model.presets(), &PresetModel::modelReset);
        model.refresh();
        AppModelProbe::waitForWork(model);
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
        AppModel model(world.environment);
        QVERIFY(!model.presetNameProblem(name).isEmpty());
        model.saveOwnPreset(name);
        QCOMPARE(model.errorMessage(), model.presetNameProblem(name));
        AppModelProbe::waitForWork(model);
        QVERIFY(!QFileInfo::exists(world.path("config/Quillmere/presets")));
    }

    void deletesAnOwnPresetOnly() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy saved(&model, &AppModel::presetSaved);
        model.saveOwnPreset("Mine");
        QTRY_COMPARE(saved.count(), 1);
        model.deleteOwnPreset("Wild");
        model.deleteOwnPreset("../../settings");
        model.deleteOwnPreset("Mine");
        QTRY_COMPARE(model.presets()->count(), 8);
        QVERIFY(!QFileInfo::exists(world.path("config/Quillmere/presets/Mine.json")));
        QVERIFY(!model.presetEdited());
    }

    void listsPresetFilesItCannotUse() {
        TestWorld world;
        TestWorld::write(world.path("config/Quillmere/presets/Broken.json"), "{\"sources\": 2");
        TestWorld::write(world.path("config/Quillmere/presets/Half.json"), "{\"sources\": 2}");
        TestWorld::write(world.path("config/Quillmere/presets/notes.txt"), "no preset");
        AppModel model(world.environment);
        QTRY_COMPARE(model.presets()->count(), 10);
        QCOMPARE(presetNames(model).mid(8), QStringList({"Broken", "Half"}));
        QVERIFY(!presetRole(model, "Half", PresetModel::IsUsableRole).toBool());
        QVERIFY(presetRole(model, "Half", PresetModel::BlurbRole).toString().contains("drift"));
        model.applyPreset("Half");
        QCOMPARE(model.errorMessage(), presetRole(model, "Half", PresetModel::BlurbRole).toString());
        QVERIFY(model.aesthetics() == Aesthetics());
        QCOMPARE(model.presetName(), QStringLiteral("Balanced"));
    }

    void bringsForeignValuesIntoRange() {
        TestWorld world;
        Aesthetics wild;
        wild.pitch = 1000;
        wild.crushBits = -4;
        TestWorld::write(world.path("config/Quillmere/presets/Foreign.json"),
                         QByteArray::fromStdString(encodeJSON(wild)));
        AppModel model(world.environment);
        QTRY_COMPARE(model.presets()->count(), 9);
        model.applyPreset("Foreign");
        QCOMPARE(model.aesthetics().pitch, 36.0);
        QCOMPARE(model.aesthetics().crushBits, 2.0);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelCharacterTest)
#include "AppModelCharacterTest.moc"
