// The application on a real Vulkan driver: Mesa's software driver, which ctest makes the only one.

#include <QObject>
#include <algorithm>

#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Network/GPU.h"

namespace quillmere::testing {
namespace {

constexpr int patience = 250000;  // milliseconds; compiling shaders takes long under a sanitizer

// The fakes of a world give way to the machine itself.
void useRealDevices(TestWorld& world) {
    const Environment real = Environment::standard();
    world.environment.listDevices = real.listDevices;
    world.environment.openDevice = real.openDevice;
    world.environment.setDeviceNotice = real.setDeviceNotice;
}

// In the picker; 0 without any.
int softwareDevice(AppModel& model) {
    const QVariantList devices = model.devices()->devices();
    const auto found = std::find_if(devices.begin(), devices.end(), [](const QVariant& device) {
        return device.toMap().value("type").toString() == QLatin1String("software");
    });
    return found == devices.end() ? 0 : static_cast<int>(found - devices.begin()) + 1;
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
            model.devices()->list();
            QTRY_VERIFY_WITH_TIMEOUT(model.devices()->isListed(), patience);
            QCOMPARE(model.devices()->automaticName(), QStringLiteral("Processor"));
            const int index = softwareDevice(model);
            QVERIFY2(index > 0, "There is no software device; run this test through ctest.");
            name = model.devices()->devices().at(index - 1).toMap().value("name").toString();
            model.chooseDevice(index);

            prepare(model, corpus);
            model.train();
            QVERIFY(waitUntilIdle(model, patience));
            QVERIFY2(model.hasModel(), qPrintable(model.errorMessage()));
            QCOMPARE(GPU::shared().device().kind, network::Device::Kind::gpu);
            QCOMPARE(QString::fromStdString(GPU::shared().device().name), name);
            QCOMPARE(model.devices()->name(), name);
            QCOMPARE(model.devices()->problem(), QString());
            QVERIFY(model.trainingLoss() > 0);

            model.setOutputText(world.path("out"));
            model.setCount(2);
            model.generate();
            QVERIFY(waitUntilIdle(model, patience));
            QCOMPARE(model.errorMessage(), QString());
            QCOMPARE(model.results()->count(), 2);
        }
        GPU::shared().choose("cpu");
        AppModel restarted(world.environment);
        QVERIFY(waitUntilIdle(restarted, patience));
        QVERIFY(restarted.hasModel());
        QCOMPARE(restarted.devices()->name(), name);
        QCOMPARE(QString::fromStdString(GPU::shared().device().name), name);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelSoftwareDeviceTest)
#include "AppModelSoftwareDeviceTest.moc"
