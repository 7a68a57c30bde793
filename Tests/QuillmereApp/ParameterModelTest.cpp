#include "QuillmereApp/ParameterModel.h"

#include <QAbstractItemModelTester>
#include <QObject>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

// A model whose edits are simply taken over.
struct Parameters {
    ParameterModel model{[this](const Aesthetics& edited) { model.setValues(edited); }};

    [[nodiscard]] QVariant get(const QString& id, const QString& role) const { return model.get(id, role); }
    [[nodiscard]] double value(const QString& id) const { return get(id, "value").toDouble(); }
    [[nodiscard]] QString text(const QString& id) const { return get(id, "text").toString(); }
};

const ParameterSpec& spec(const char* id) {
    return *Aesthetics::spec(id);
}

}  // namespace

class ParameterModelTest : public QObject {
    Q_OBJECT

private slots:
    void hasARowForEverySpec() {
        Parameters parameters;
        const QAbstractItemModelTester tester(&parameters.model,
                                              QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(parameters.model.rowCount(), 20);
        for (int row = 0; row < 20; ++row) {
            const ParameterSpec& expected = Aesthetics::specs()[static_cast<std::size_t>(row)];
            const QModelIndex index = parameters.model.index(row);
            QCOMPARE(index.data(ParameterModel::IdRole).toString().toStdString(), std::string(expected.id));
            QCOMPARE(index.data(ParameterModel::TitleRole).toString().toStdString(),
                     std::string(expected.title));
            QCOMPARE(index.data(ParameterModel::HelpRole).toString().toStdString(),
                     std::string(expected.help));
            QCOMPARE(index.data(ParameterModel::UnitRole).toString().toStdString(),
                     std::string(expected.unit));
            QCOMPARE(index.data(ParameterModel::LowerRole).toDouble(), expected.lower);
            QCOMPARE(index.data(ParameterModel::UpperRole).toDouble(), expected.upper);
            QCOMPARE(index.data(ParameterModel::StepRole).toDouble(), expected.step);
            QCOMPARE(index.data(ParameterModel::LogarithmicRole).toBool(), expected.logarithmic);
            QVERIFY(index.data(ParameterModel::IsDefaultRole).toBool());
            QVERIFY(!index.data(ParameterModel::LockedRole).toBool());
        }
    }

    void groupsTheRows() {
        const Parameters parameters;
        QCOMPARE(parameters.model.groupTitles(), QStringList({"Departure from the corpus", "Spectral shaping",
                                                              "Signal & degradation", "Output"}));
        QCOMPARE(parameters.model.rowsOfGroup(0), QList<int>({0, 1, 2, 3}));
        QCOMPARE(parameters.model.rowsOfGroup(1).size(), 9);
        QCOMPARE(parameters.model.rowsOfGroup(2).size(), 6);
        QCOMPARE(parameters.model.rowsOfGroup(3), QList<int>({19}));
        QCOMPARE(parameters.model.rowsOfGroup(4), QList<int>());
        QCOMPARE(parameters.get("tilt", "group").toString(), QStringLiteral("Spectral shaping"));
        QCOMPARE(parameters.get("tilt", "groupIndex").toInt(), 1);
    }

    void valuesAreClampedIntoTheirRange() {
        Parameters parameters;
        parameters.model.setValue("crush-bits", 30);
        QCOMPARE(parameters.value("crush-bits"), 24.0);
        parameters.model.setValue("extrapolation", -2);
        QCOMPARE(parameters.value("extrapolation"), -0.9);
        parameters.model.setValue("drift", std::nan(""));
        QCOMPARE(parameters.value("drift"), 0.4);
        parameters.model.setValue("pitchJitter", 3);  // no identifier
        QVERIFY(parameters.model.allDefault() == false);
        QCOMPARE(parameters.value("pitch-jitter"), 0.0);
        QVERIFY(!parameters.get("pitchJitter", "value").isValid());
    }

    void tellsOfTheChangedRowOnly() {
        Parameters parameters;
        QSignalSpy changed(&parameters.model, &ParameterModel::dataChanged);
        parameters.model.setValue("drift", 1);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.at(0).at(0).toModelIndex().row(), 1);
        parameters.model.setValue("drift", 1);
        QCOMPARE(changed.count(), 1);
    }

    void textsAreTypedWithOrWithoutTheirUnit_data() {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("shown");
        QTest::newRow("unit") << "decay"
                              << "250 ms" << 250.0 << "250 ms";
        QTest::newRow("no unit") << "decay"
                                 << "250" << 250.0 << "250 ms";
        QTest::newRow("no blank") << "decay"
                                  << "250ms" << 250.0 << "250 ms";
        QTest::newRow("capitals") << "decay"
                                  << "250 MS" << 250.0 << "250 ms";
        QTest::newRow("blanks") << "decay"
                                << "  250  ms " << 250.0 << "250 ms";
        QTest::newRow("times") << "stretch"
                               << "2 ×" << 2.0 << "2.00 ×";
        QTest::newRow("times as x") << "stretch"
                                    << "2x" << 2.0 << "2.00 ×";
        QTest::newRow("compound unit") << "tilt"
                                       << "-3.5dB/oct" << -3.5 << "-3.5 dB/oct";
        QTest::newRow("short dB") << "tilt"
                                  << "-3.5 dB" << -3.5 << "-3.5 dB/oct";
        QTest::newRow("minus sign") << "normalize"
                                    << "−6 dBFS" << -6.0 << "-6.0 dBFS";
        QTest::newRow("comma") << "drift"
                               << "0,5" << 0.5 << "0.50";
        QTest::newRow("leading point") << "drift"
                                       << ".5" << 0.5 << "0.50";
        QTest::newRow("plus") << "pitch"
                              << "+7 st" << 7.0 << "7.0 st";
        QTest::newRow("above") << "drift"
                               << "99" << 4.0 << "4.00";
        QTest::newRow("exponent") << "decay"
                                  << "1e3" << 1000.0 << "1000 ms";
        QTest::newRow("count") << "sources"
                               << "3.4" << 3.0 << "3";
        QTest::newRow("between steps") << "decay"
                                       << "252" << 252.0 << "252 ms";
    }
    void textsAreTypedWithOrWithoutTheirUnit() {
        QFETCH(QString, id);
        QFETCH(QString, typed);
        QFETCH(double, value);
        QFETCH(QString, shown);
        Parameters parameters;
        QVERIFY(parameters.model.setText(id, typed));
        QCOMPARE(parameters.value(id), value);
        QCOMPARE(parameters.text(id), shown);
    }

    void otherTextsChangeNothing_data() {
        QTest::addColumn<QString>("typed");
        for (const char* typed :
             {"", " ", "ms", "loud", "2 st", "1.2.3", "inf", "nan", "1 000", "0x10", "--2"})
            QTest::newRow(typed) << typed;
    }
    void otherTextsChangeNothing() {
        QFETCH(QString, typed);
        Parameters parameters;
        QVERIFY(!parameters.model.setText("decay", typed));
        QVERIFY(parameters.model.allDefault());
    }

    void theShownTextKeepsAValueItRounds() {
        Parameters parameters;
        parameters.model.setValue("drift", 0.123);
        QVERIFY(parameters.model.setText("drift", parameters.text("drift")));
        QCOMPARE(parameters.value("drift"), 0.123);
    }

    void everyPositionIsAMultipleOfTheStep() {
        for (const ParameterSpec& row : Aesthetics::specs()) {
            for (int i = 0; i <= 1000; ++i) {
                const double value = row.snapped(ParameterScale::value(row, i / 1000.0));
                QVERIFY(value >= row.lower && value <= row.upper);
                const double steps = value / row.step;
                const bool isEnd = value == row.lower || value == row.upper;
                QVERIFY(isEnd || std::abs(steps - std::round(steps)) < 1e-9);
                QCOMPARE(row.snapped(value), value);
            }
        }
    }

    void theSliderReachesEveryDefault() {
        Parameters parameters;
        for (const ParameterSpec& row : Aesthetics::specs()) {
            const QString id = QString::fromUtf8(row.id.data());
            parameters.model.setPosition(id, 1);
            parameters.model.setPosition(id, parameters.get(id, "defaultPosition").toDouble());
            QVERIFY2(parameters.get(id, "isDefault").toBool(), row.id.data());
        }
    }

    void logarithmicSlidersGiveEachOctaveTheSameRoom() {
        QCOMPARE(ParameterScale::position(spec("decimate"), 1), 0.0);
        QCOMPARE(ParameterScale::position(spec("decimate"), 8), 0.5);
        QCOMPARE(ParameterScale::position(spec("decimate"), 64), 1.0);
        QCOMPARE(ParameterScale::position(spec("contrast"), 1), 0.5);
        QCOMPARE(ParameterScale::value(spec("decimate"), 0.5), 8.0);
    }

    void nudgesByItsStep() {
        Parameters parameters;
        parameters.model.nudge("pitch", 1);
        QCOMPARE(parameters.value("pitch"), 0.5);
        parameters.model.nudge("pitch", -10);
        QCOMPARE(parameters.value("pitch"), -4.5);
        parameters.model.nudge("drift", 1);
        QCOMPARE(parameters.value("drift"), 0.45);
        parameters.model.nudge("sources", 100);
        QCOMPARE(parameters.value("sources"), 8.0);
    }

    void resetsToTheDefault() {
        Parameters parameters;
        parameters.model.setValue("stretch", 3);
        parameters.model.setValue("grit", 0.5);
        QVERIFY(!parameters.get("stretch", "isDefault").toBool());
        parameters.model.reset("stretch");
        QCOMPARE(parameters.value("stretch"), 1.0);
        QCOMPARE(parameters.value("grit"), 0.5);
        parameters.model.reset("grit");
        QVERIFY(parameters.model.allDefault());
    }

    void locksAreShown() {
        Parameters parameters;
        QSignalSpy changed(&parameters.model, &ParameterModel::dataChanged);
        parameters.model.setLocked("drift", true);
        parameters.model.setLocked("drift", true);
        QVERIFY(parameters.get("drift", "locked").toBool());
        QCOMPARE(changed.count(), 1);
        parameters.model.setLocked("drift", false);
        QVERIFY(!parameters.model.isLocked("drift"));
        parameters.model.setLocked("nonsense", true);
        QVERIFY(!parameters.model.isLocked("nonsense"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::ParameterModelTest)
#include "ParameterModelTest.moc"
