#include "QuillmereApp/PresetModel.h"

#include <QAbstractItemModelTester>
#include <QObject>

#include "QuillmereApp/PresetFolder.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

class PresetModelTest : public QObject {
    Q_OBJECT

private slots:
    void beginsWithTheBuiltInPresets() {
        PresetModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(model.count(), 8);
        for (int row = 0; row < 8; ++row) {
            const Preset& preset = Preset::all()[static_cast<std::size_t>(row)];
            QCOMPARE(model.index(row).data(PresetModel::NameRole).toString().toStdString(),
                     std::string(preset.name));
            QCOMPARE(model.index(row).data(PresetModel::BlurbRole).toString().toStdString(),
                     std::string(preset.blurb));
            QVERIFY(!model.index(row).data(PresetModel::IsOwnRole).toBool());
            QVERIFY(model.index(row).data(PresetModel::IsUsableRole).toBool());
        }
    }

    void ownPresetsFollow() {
        PresetModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy count(&model, &PresetModel::countChanged);
        Aesthetics values;
        values.drift = 3;
        model.setOwn({{"Mine", values, {}}, {"Broken", std::nullopt, "It is broken."}});
        QCOMPARE(count.count(), 1);
        QCOMPARE(model.count(), 10);
        QCOMPARE(model.find("Mine")->drift, 3.0);
        QVERIFY(!model.find("Broken"));
        QVERIFY(!model.find("None"));
        QCOMPARE(model.index(9).data(PresetModel::BlurbRole).toString(), QStringLiteral("It is broken."));
        QVERIFY(!model.index(9).data(PresetModel::IsUsableRole).toBool());
    }

    void knowsThePresetOfItsValues() {
        PresetModel model;
        Aesthetics values = *model.find("Wild");
        QCOMPARE(model.nameOf(values), QStringLiteral("Wild"));
        values.drift += 0.5;
        QCOMPARE(model.nameOf(values), QString());
        model.setOwn({{"Broken", std::nullopt, "It is broken."}, {"Mine", values, {}}});
        QCOMPARE(model.nameOf(values), QStringLiteral("Mine"));
    }

    void marksTheCurrentOne() {
        PresetModel model;
        QSignalSpy changed(&model, &PresetModel::dataChanged);
        model.setCurrent("Wild", false);
        model.setCurrent("Ghostly", true);
        QCOMPARE(changed.count(), 3);  // Wild on, Wild off, Ghostly on
        QVERIFY(!model.index(3).data(PresetModel::IsCurrentRole).toBool());
        QVERIFY(model.index(6).data(PresetModel::IsCurrentRole).toBool());
        QVERIFY(model.index(6).data(PresetModel::IsEditedRole).toBool());
    }

    void theFolderListsByName() {
        TestWorld world;
        const QString folder = world.path("presets");
        QCOMPARE(PresetFolder::list(folder).size(), 0);
        for (const char* name : {"b", "A", "Größe 1"})
            QVERIFY(PresetFolder::save(folder, name, Aesthetics()));
        QVERIFY(!PresetFolder::save(folder, "A", Aesthetics()));
        QStringList names;
        for (const OwnPreset& preset : PresetFolder::list(folder))
            names.append(preset.name);
        QCOMPARE(names, QStringList({"A", "b", "Größe 1"}));
        PresetFolder::remove(folder, PresetFolder::list(folder).first());
        QCOMPARE(PresetFolder::list(folder).size(), 2);
    }

    void whatIsListedCanBeDeletedWhateverItsCase() {
        TestWorld world;
        const QString folder = world.path("presets");
        QVERIFY(PresetFolder::save(folder, "saved", Aesthetics()));
        TestWorld::write(folder + "/brought.JSON", TestWorld::read(folder + "/saved.json"));
        const QList<OwnPreset> presets = PresetFolder::list(folder);
        QCOMPARE(presets.size(), 2);
        for (const OwnPreset& preset : presets)
            PresetFolder::remove(folder, preset);
        QCOMPARE(PresetFolder::list(folder).size(), 0);
    }

    void theFolderReadsFilesOfAllVersions() {
        TestWorld world;
        const QString folder = world.path("presets");
        const Aesthetics wild = Preset::named("Wild")->aesthetics;
        const auto write = [&](const char* name, const std::string& json) {
            TestWorld::write(folder + "/" + name + ".json", QByteArray::fromStdString(json));
        };
        QVERIFY(PresetFolder::save(folder, "a present", wild));
        write("b before versions", encodeJSON(wild));
        write("c later", "{\"version\": 2, \"drift\": 1.6, \"shimmer\": {\"amount\": 1}}");
        write("d incomplete", "{\"drift\": 1.6}");
        const QList<OwnPreset> presets = PresetFolder::list(folder);
        QCOMPARE(presets.size(), 4);
        QVERIFY(presets[0].aesthetics == wild);
        QVERIFY(presets[1].aesthetics == wild);
        QVERIFY(presets[2].aesthetics == Aesthetics{.drift = 1.6});
        QVERIFY(!presets[3].aesthetics);
        QCOMPARE(presets[3].problem, QStringLiteral("\"sources\" is missing"));
    }

    void anUnwritableFolderIsReported() {
        TestWorld world;
        TestWorld::write(world.path("presets"), "a file");
        QVERIFY_THROWS_EXCEPTION(FileError,
                                 (void)PresetFolder::save(world.path("presets"), "a", Aesthetics()));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::PresetModelTest)
#include "PresetModelTest.moc"
