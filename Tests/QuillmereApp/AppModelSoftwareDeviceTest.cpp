// The application on a real Vulkan driver: Mesa's software driver, which ctest makes the only one.

#include <QObject>
#include <algorithm>

#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Network/Vulkan/FaultyDriver/FaultyDriver.h"

namespace quillmere::testing {
namespace {

constexpr int patience = 250000;  // milliseconds; compiling shaders takes long under a sanitizer

// The fakes of a world give way to the machine itself.
void useRealDevices(TestWorld& world) {
    world.environment.machine = Environment::standard().machine;
}

// In the picker; 0 without any.
int softwareDevice(AppModel& model) {
    const QVariantList devices = model.devices()->devices();
    const auto found = std::find_if(devices.begin(), devices.end(), [](const QVariant& device) {
        return device.toMap().value("type").toString() == QLatin1String("software");
    });
    return found == devices.end() ? 0 : static_cast<int>(found - devices.begin()) + 1;
}

// 0 where this program was not started by ctest.
int choose(AppModel& model) {
    model.devices()->list();
    if (!QTest::qWaitFor([&] { return model.devices()->isListed(); }, patience)) return 0;
    const int index = softwareDevice(model);
    if (index > 0) model.chooseDevice(index);
    return index;
}

bool train(AppModel& model) {
    model.train();
    return waitUntilIdle(model, patience);
}

}  // namespace

class AppModelSoftwareDeviceTest : public QObject {
    Q_OBJECT

private slots:
    void learnsAndGeneratesOnItAndChoosesItAgain() {
        TestWorld world;
        useRealDevices(world);
        const QUrl corpus = world.makeCorpus("corpus");
        QString name;
        {
            AppModel model(world.environment);
            const int index = choose(model);
            QVERIFY2(index > 0, "There is no software device; run this test through ctest.");
            QCOMPARE(model.devices()->automaticName(), QStringLiteral("Processor"));
            name = model.devices()->devices().at(index - 1).toMap().value("name").toString();

            prepare(model, corpus);
            FaultyDriver::behave();
            QVERIFY(train(model));
            QVERIFY2(model.model()->isReady(), qPrintable(model.errorMessage()));
            QVERIFY(FaultyDriver::submissions() > 0);
            QCOMPARE(model.devices()->name(), name);
            QCOMPARE(model.devices()->problem(), QString());
            QVERIFY(model.training()->loss > 0);

            model.setOutputText(world.path("out"));
            model.setCount(2);
            model.generate();
            QVERIFY(waitUntilIdle(model, patience));
            QCOMPARE(model.errorMessage(), QString());
            QCOMPARE(model.results()->count(), 2);
        }
        FaultyDriver::behave();
        AppModel restarted(world.environment);
        QVERIFY(waitUntilIdle(restarted, patience));
        QVERIFY(restarted.model()->isReady());
        QCOMPARE(restarted.devices()->name(), name);
        QVERIFY(FaultyDriver::submissions() > 0);
    }

    void aLossInTheMiddleOfTrainingEndsTheRunAndTheNextOneLearnsAgain() {
        TestWorld world;
        world.steps = 5;
        useRealDevices(world);
        AppModel model(world.environment);
        QVERIFY(choose(model) > 0);
        const QString name = model.devices()->name();
        prepare(model, world.makeCorpus("corpus"));
        FaultyDriver::loseDeviceAt(4);
        QVERIFY(train(model));
        FaultyDriver::behave();
        QVERIFY2(model.errorMessage().contains(QLatin1String("was lost while computing")),
                 qPrintable(model.errorMessage()));
        QCOMPARE(model.devices()->problem(), model.errorMessage());
        QVERIFY(!model.model()->isReady());
        QVERIFY(model.model()->step() > 0);
        QSignalSpy notices(&model, &AppModel::notice);
        QVERIFY(train(model));
        QVERIFY2(model.model()->isReady(), qPrintable(model.errorMessage()));
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.devices()->name(), name);
        QCOMPARE(model.devices()->problem(), QString());
        QCOMPARE(notices.count(), 0);
    }

    void aFullDeviceLeavesTheWorkToTheProcessorAndSaysSo() {
        TestWorld world;
        useRealDevices(world);
        AppModel model(world.environment);
        QVERIFY(choose(model) > 0);
        prepare(model, world.makeCorpus("corpus"));
        QSignalSpy notices(&model, &AppModel::notice);
        FaultyDriver::failAllocationsFrom(1);
        QVERIFY(train(model));
        FaultyDriver::behave();
        QVERIFY2(model.model()->isReady(), qPrintable(model.errorMessage()));
        QCOMPARE(model.errorMessage(), QString());
        QVERIFY(notices.count() > 0);
        QVERIFY(model.devices()->problem().endsWith(QLatin1String("The processor is used instead.")));
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelSoftwareDeviceTest)
#include "AppModelSoftwareDeviceTest.moc"
