// Which device learns: the list, the choice and what becomes of it, and devices that fail.

#include <QObject>
#include <algorithm>
#include <thread>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

using Type = FakeMachine::Type;

constexpr const char* card = "GeForce, 4070";  // with a comma, as names of drivers have
constexpr const char* driver = "llvmpipe (LLVM 15.0.6, 256 bits)";

constexpr int patience = 60000;  // milliseconds until something that must come is missed

// In the picker, with the devices of addCards.
enum Choice { Automatic, Processor, Card, Driver };

void addCards(TestWorld& world) {
    world.environment.mayHaveGraphicsCard = true;
    world.machine.add(card, Type::discrete);
    world.machine.add(driver, Type::software);
}

void list(AppModel& model) {
    model.devices()->list();
    QTRY_VERIFY_WITH_TIMEOUT(!model.devices()->isListing(), patience);
}

// Lists the devices and chooses one.
void choose(AppModel& model, int index) {
    list(model);
    model.chooseDevice(index);
}

void chooseAtAnEarlierStart(TestWorld& world, int index) {
    AppModel model(world.environment);
    choose(model, index);
}

QVariantMap device(AppModel& model, int index) {
    return model.devices()->devices().at(index).toMap();
}

QStringList texts(const QSignalSpy& notices) {
    QStringList list;
    for (const QVariantList& arguments : notices)
        list.append(arguments.at(0).toString());
    return list;
}

void generate(AppModel& model, const TestWorld& world, const QString& folder) {
    model.setOutputText(world.path(folder));
    model.setCount(1);
    model.generate();
    QVERIFY(waitUntilIdle(model));
}

}  // namespace

class AppModelDevicesTest : public QObject {
    Q_OBJECT

private slots:
    // ---- The list

    void nothingIsListedOrOpenedBeforeItIsNeeded() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        QCOMPARE(world.machine.listings.load(), 0);
        QVERIFY(world.machine.opened.empty());
        QVERIFY(!model.devices()->isListed());
        QCOMPARE(model.devices()->name(), QStringLiteral("Automatic"));
        QCOMPARE(model.devices()->automaticName(), QString());
        QCOMPARE(model.devices()->devices().size(), 1);
    }

    void withoutAGraphicsCardTheProcessorIsNamedAtOnce() {
        TestWorld world;
        AppModel model(world.environment);
        QVERIFY(model.devices()->isAutomatic());
        QCOMPARE(model.devices()->chosenIndex(), 0);
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
        QCOMPARE(world.machine.listings.load(), 0);
        list(model);
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
        QCOMPARE(model.devices()->devices().size(), 1);
    }

    void listsWhatIsThere() {
        TestWorld world;
        addCards(world);
        world.machine.add("Old card", Type::discrete, "its driver offers Vulkan 1.0, and 1.1 is needed.");
        AppModel model(world.environment);
        QSignalSpy listing(model.devices(), &ComputeDevices::isListingChanged);
        model.devices()->list();
        QVERIFY(model.devices()->isListing());
        QVERIFY(!model.devices()->isListed());
        QTRY_VERIFY_WITH_TIMEOUT(model.devices()->isListed(), patience);
        QTRY_COMPARE_WITH_TIMEOUT(listing.count(), 2, patience);
        QCOMPARE(model.devices()->devices().size(), 4);
        QCOMPARE(device(model, 0).value("name").toString(), QStringLiteral("Processor"));
        QCOMPARE(device(model, 0).value("type").toString(), QStringLiteral("cpu"));
        QCOMPARE(device(model, 1).value("name").toString(), QString(card));
        QCOMPARE(device(model, 1).value("detail").toString(), QStringLiteral("Graphics card"));
        QVERIFY(device(model, 1).value("usable").toBool());
        QCOMPARE(device(model, 2).value("type").toString(), QStringLiteral("software"));
        QVERIFY(!device(model, 3).value("usable").toBool());
        QCOMPARE(device(model, 3).value("detail").toString(),
                 QStringLiteral("Cannot be used: its driver offers Vulkan 1.0, and 1.1 is needed."));
        QCOMPARE(model.devices()->automaticName(), QString(card));
        QCOMPARE(model.devices()->name(), QString(card));
    }

    void aSoftwareDeviceIsNeverTakenAutomatically() {
        TestWorld world;
        world.machine.add(driver, Type::software);
        AppModel model(world.environment);
        list(model);
        QCOMPARE(model.devices()->devices().size(), 2);
        QCOMPARE(model.devices()->automaticName(), QStringLiteral("Processor"));
        prepareTrained(model, world.makeCorpus("corpus"));
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
    }

    void anUnchangedListIsNoNews() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        list(model);
        QSignalSpy changed(model.devices(), &ComputeDevices::devicesChanged);
        list(model);
        QCOMPARE(changed.count(), 0);
        world.machine.add("Another card", Type::integrated);
        list(model);
        QCOMPARE(changed.count(), 1);
    }

    void twoCardsOfOneNameAreToldApart() {
        TestWorld world;
        world.machine.add("Twin", Type::discrete);
        world.machine.add("Twin", Type::discrete);
        {
            AppModel model(world.environment);
            choose(model, 3);
            QCOMPARE(model.devices()->chosenIndex(), 3);
            QCOMPARE(model.devices()->name(), QStringLiteral("Twin (2)"));
        }
        AppModel restarted(world.environment);
        prepareTrained(restarted, world.makeCorpus("corpus"));
        QCOMPARE(restarted.devices()->chosenIndex(), 3);
        QVERIFY(world.machine.opened.back() == world.machine.devices[2].identity);
    }

    // ---- The choice

    void learnsAndGeneratesOnTheChosenDevice() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        choose(model, Driver);
        QCOMPARE(model.devices()->name(), QString(driver));
        QVERIFY(!model.devices()->isAutomatic());
        prepareTrained(model, world.makeCorpus("corpus"));
        generate(model, world, "out");
        QCOMPARE(model.results()->count(), 1);
        QVERIFY(!world.machine.compiled.empty());
        for (const std::string& name : world.machine.compiled)
            QCOMPARE(name, std::string(driver));
        QCOMPARE(world.machine.opened.size(), std::size_t{1});
        QCOMPARE(model.devices()->name(), QString(driver));
    }

    void automaticTakesTheCardAndSaysSo() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        QCOMPARE(world.machine.listings.load(), 1);
        QVERIFY(model.devices()->isAutomatic());
        QCOMPARE(model.devices()->name(), QString(card));
        QCOMPARE(model.devices()->automaticName(), QString(card));
    }

    void theProcessorIsNamedWithoutLoadingDrivers() {
        TestWorld world;
        addCards(world);
        world.writePreferences("computeDevice=cpu\n");
        AppModel model(world.environment);
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
        QCOMPARE(model.devices()->chosenIndex(), int(Processor));
        prepareTrained(model, world.makeCorpus("corpus"));
        QCOMPARE(world.machine.listings.load(), 0);
        QVERIFY(world.machine.opened == std::vector{network::ComputeDevice::processor().identity});
    }

    void theChoiceIsRememberedByIdentity() {
        TestWorld world;
        addCards(world);
        chooseAtAnEarlierStart(world, Driver);
        // Another place in the list
        world.machine.removeCards();
        world.machine.add("New card", Type::discrete);
        world.machine.add(card, Type::discrete);
        world.machine.add(driver, Type::software);
        AppModel model(world.environment);
        QCOMPARE(model.devices()->name(), QString(driver));
        QCOMPARE(model.devices()->chosenIndex(), -1);  // not listed yet
        list(model);
        QCOMPARE(model.devices()->chosenIndex(), 4);
        prepareTrained(model, world.makeCorpus("corpus"));
        QCOMPARE(model.devices()->name(), QString(driver));
    }

    void theChosenOneOfTwoCardsOfOneNameStaysChosenWhenTheListIsReordered() {
        TestWorld world;
        world.machine.add("Twin", Type::discrete);
        world.machine.add("Twin", Type::discrete);
        const network::DeviceIdentity second = world.machine.devices[2].identity;
        {
            AppModel model(world.environment);
            choose(model, 3);
            QCOMPARE(model.devices()->name(), QStringLiteral("Twin (2)"));
            std::swap(world.machine.devices[1], world.machine.devices[2]);
            list(model);
            QCOMPARE(model.devices()->chosenIndex(), 2);
            QCOMPARE(model.devices()->name(), QStringLiteral("Twin"));
        }
        AppModel restarted(world.environment);
        prepareTrained(restarted, world.makeCorpus("corpus"));
        QVERIFY(world.machine.opened.back() == second);
        QCOMPARE(restarted.devices()->chosenIndex(), 2);
        QCOMPARE(restarted.devices()->problem(), QString());
    }

    // Earlier versions stored the name in the list.
    void aNameThatIsStoredIsStillAChoice_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<int>("index");
        QTest::newRow("card") << QByteArray("computeDevice=\"GeForce, 4070\"\n") << int(Card);
        QTest::newRow("second of two") << QByteArray("computeDevice=\"GeForce, 4070 (2)\"\n") << 4;
    }
    void aNameThatIsStoredIsStillAChoice() {
        QFETCH(QByteArray, line);
        QFETCH(int, index);
        TestWorld world;
        addCards(world);
        world.machine.add(card, Type::discrete);
        world.writePreferences(line);
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        QCOMPARE(model.devices()->chosenIndex(), index);
        QCOMPARE(model.devices()->problem(), QString());
        const auto device = static_cast<std::size_t>(index) - 1;
        QVERIFY(world.machine.opened.back() == world.machine.devices[device].identity);
    }

    void automaticAndTheProcessorAreRemembered_data() {
        QTest::addColumn<int>("index");
        QTest::newRow("automatic") << int(Automatic);
        QTest::newRow("processor") << int(Processor);
    }
    void automaticAndTheProcessorAreRemembered() {
        QFETCH(int, index);
        TestWorld world;
        addCards(world);
        {
            AppModel model(world.environment);
            choose(model, Card);
            model.chooseDevice(index);
        }
        AppModel model(world.environment);
        QCOMPARE(model.devices()->chosenIndex(), index);
    }

    void indicesOutsideAndUnusableDevicesAreNotChosen() {
        TestWorld world;
        world.machine.add("Old card", Type::discrete, "it has no queue for computing.");
        AppModel model(world.environment);
        list(model);
        for (const int index : {-2, -1, 2, 3}) {
            model.chooseDevice(index);
            QCOMPARE(model.devices()->chosenIndex(), 0);
        }
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
    }

    void aNewChoiceTakesTheLoadedModelAlong() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        choose(model, Driver);
        QVERIFY(model.model()->isReady());
        world.machine.compiled.clear();
        generate(model, world, "out");
        QCOMPARE(world.machine.compiled, std::vector<std::string>{driver});
        // It stays there.
        model.audition();
        QVERIFY(waitUntilIdle(model));
        generate(model, world, "out");
        QCOMPARE(world.machine.compiled.size(), std::size_t{1});
        QCOMPARE(model.results()->count(), 1);
    }

    void anAuditionTakesTheModelAlong() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        choose(model, Processor);
        world.machine.compiled.clear();
        model.audition();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(world.machine.compiled, std::vector<std::string>{"CPU"});
        QTRY_VERIFY_WITH_TIMEOUT(model.playingURL() == model.generation()->auditionURL(), patience);
    }

    void aStoredModelIsOpenedOnTheChosenDevice() {
        TestWorld world;
        addCards(world);
        const QUrl corpus = world.makeCorpus("corpus");
        {
            AppModel model(world.environment);
            choose(model, Driver);
            prepareTrained(model, corpus);
        }
        world.machine.compiled.clear();
        AppModel model(world.environment);
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.model()->isReady());
        QCOMPARE(world.machine.compiled, std::vector<std::string>{driver});
    }

    void choosingIsRefusedWhileSomethingComputes() {
        TestWorld world;
        world.steps = 100000;
        addCards(world);
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        list(model);
        QVERIFY(model.canChooseDevice());
        QSignalSpy able(&model, &AppModel::canChooseDeviceChanged);
        QSignalSpy notices(&model, &AppModel::notice);
        model.train();
        QVERIFY(!model.canChooseDevice());
        QCOMPARE(able.count(), 1);
        model.chooseDevice(Driver);
        QCOMPARE(model.devices()->chosenIndex(), int(Automatic));
        QCOMPARE(texts(notices), QStringList("Wait until the present run has ended, or cancel it."));
        model.model()->cancelTraining();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.canChooseDevice());
        model.chooseDevice(Driver);
        QCOMPARE(model.devices()->chosenIndex(), int(Driver));
    }

    void aScanKeepsNobodyFromChoosing() {
        TestWorld world;
        AppModel model(world.environment);
        model.setCorpus(world.makeCorpus("corpus"));
        QVERIFY(model.isScanning());
        QVERIFY(model.canChooseDevice());
        model.chooseDevice(Processor);
        QCOMPARE(model.devices()->chosenIndex(), int(Processor));
        QVERIFY(waitUntilIdle(model));
    }

    // ---- Preferences that do not fit

    void aStoredChoiceOfAWrongTypeIsAutomaticAndSaysSo_data() {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("list") << QByteArray("computeDevice=a, b\n");
        QTest::newRow("bytes") << QByteArray("computeDevice=@ByteArray(x)\n");
        QTest::newRow("point") << QByteArray("computeDevice=@Point(1 2)\n");
        QTest::newRow("empty") << QByteArray("computeDevice=\n");
    }
    void aStoredChoiceOfAWrongTypeIsAutomaticAndSaysSo() {
        QFETCH(QByteArray, line);
        TestWorld world;
        addCards(world);
        world.writePreferences(line + "count=7\n");
        const QByteArray before = TestWorld::read(world.environment.settingsFile);
        {
            AppModel model(world.environment);
            QSignalSpy notices(&model, &AppModel::notice);
            QVERIFY(model.devices()->isAutomatic());
            QTRY_COMPARE_WITH_TIMEOUT(texts(notices),
                                      QStringList("The stored choice of a device cannot be read. It is "
                                                  "chosen automatically."),
                                      patience);
            QCOMPARE(model.errorMessage(), QString());
            QCOMPARE(model.count(), 7);
        }
        QCOMPARE(TestWorld::read(world.environment.settingsFile), before);
    }

    void aDeviceThatIsGoneGivesWayToAutomatic() {
        TestWorld world;
        addCards(world);
        chooseAtAnEarlierStart(world, Card);
        world.machine.removeCards();
        AppModel model(world.environment);
        QSignalSpy notices(&model, &AppModel::notice);
        QCOMPARE(model.devices()->name(), QString(card));
        prepareTrained(model, world.makeCorpus("corpus"));
        const QString told =
            QString(card) + " is not there any more. The device is chosen automatically instead.";
        QCOMPARE(texts(notices), QStringList(told));
        QCOMPARE(model.devices()->problem(), told);
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
        QCOMPARE(model.devices()->chosenIndex(), int(Automatic));
        QCOMPARE(model.errorMessage(), QString());
    }

    void aDeviceThatIsGoneIsNoticedInTheList() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        choose(model, Card);
        QSignalSpy notices(&model, &AppModel::notice);
        world.machine.removeCards();
        list(model);
        QCOMPARE(notices.count(), 1);
        QVERIFY(model.devices()->isAutomatic());
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
        QVERIFY(model.devices()->problem().startsWith(QLatin1String(card)));
    }

    void theStoredChoiceWaitsForItsDevice() {
        TestWorld world;
        addCards(world);
        chooseAtAnEarlierStart(world, Card);
        world.machine.removeCards();
        {
            AppModel model(world.environment);
            list(model);
            QVERIFY(model.devices()->isAutomatic());
        }
        world.machine.add(card, Type::discrete);
        AppModel model(world.environment);
        list(model);
        QCOMPARE(model.devices()->chosenIndex(), int(Card));
    }

    void aDeviceThatCannotBeOpenedGivesWayToAutomatic() {
        TestWorld world;
        addCards(world);
        world.machine.cannotOpen = driver;
        AppModel model(world.environment);
        choose(model, Driver);
        QSignalSpy notices(&model, &AppModel::notice);
        prepareTrained(model, world.makeCorpus("corpus"));
        QCOMPARE(texts(notices), QStringList(QString(driver) + " cannot be opened. The device is chosen "
                                                               "automatically instead."));
        QCOMPARE(model.devices()->name(), QString(card));
        QCOMPARE(model.errorMessage(), QString());
    }

    void anAutomaticDeviceThatCannotBeOpenedLeavesTheWorkToTheProcessor() {
        TestWorld world;
        addCards(world);
        world.machine.cannotOpen = card;
        AppModel model(world.environment);
        QSignalSpy notices(&model, &AppModel::notice);
        prepareTrained(model, world.makeCorpus("corpus"));
        const QString told = QString(card) + " cannot be opened. The processor is used instead.";
        QCOMPARE(texts(notices), QStringList(told));
        QCOMPARE(model.devices()->problem(), told);
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
        QCOMPARE(model.devices()->chosenIndex(), int(Automatic));
        QCOMPARE(model.errorMessage(), QString());
        QVERIFY(std::all_of(world.machine.compiled.begin(), world.machine.compiled.end(),
                            [](const std::string& name) { return name == "CPU"; }));
    }

    // ---- Trouble

    void anotherThreadsNoticeIsToldOnThisOne() {
        TestWorld world;
        addCards(world);
        world.machine.isFull = true;
        AppModel model(world.environment);
        QSignalSpy notices(&model, &AppModel::notice);
        Qt::HANDLE thread = nullptr;
        connect(
            &model, &AppModel::notice, &model, [&] { thread = QThread::currentThreadId(); },
            Qt::DirectConnection);
        std::thread([&] { compileOnDevice(model); }).join();
        QCOMPARE(notices.count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(texts(notices),
                                  QStringList("The card is full. The processor is used instead."), patience);
        QCOMPARE(thread, QThread::currentThreadId());
        QCOMPARE(model.errorMessage(), QString());
    }

    void eachModelIsToldOfItsOwnDeviceOnly() {
        TestWorld world;
        addCards(world);
        world.machine.isFull = true;
        AppModel other(world.environment);
        AppModel model(world.environment);
        QSignalSpy othersNotices(&other, &AppModel::notice);
        QSignalSpy notices(&model, &AppModel::notice);
        compileOnDevice(model);
        deliverEvents();
        QCOMPARE(texts(notices), QStringList("The card is full. The processor is used instead."));
        QCOMPARE(othersNotices.count(), 0);
    }

    void theProcessorThatStandsInIsNamed() {
        TestWorld world;
        addCards(world);
        world.machine.isFull = true;
        AppModel model(world.environment);
        choose(model, Card);
        prepareTrained(model, world.makeCorpus("corpus"));
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
        QCOMPARE(model.devices()->problem(),
                 QStringLiteral("The card is full. The processor is used instead."));
        QCOMPARE(model.devices()->chosenIndex(), int(Card));
        QCOMPARE(model.errorMessage(), QString());
        // There is room again.
        world.machine.isFull = false;
        model.train();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.devices()->name(), QString(card));
        QCOMPARE(model.devices()->problem(), QString());
    }

    void whatBefellAnEarlierChoiceDoesNotMarkTheNewOne() {
        TestWorld world;
        addCards(world);
        world.machine.isFull = true;
        AppModel model(world.environment);
        QSignalSpy notices(&model, &AppModel::notice);
        choose(model, Card);
        std::thread([&] { compileOnDevice(model); }).join();  // its notice is on its way
        model.chooseDevice(Driver);
        deliverEvents();
        QCOMPARE(texts(notices), QStringList("The card is full. The processor is used instead."));
        QCOMPARE(model.devices()->problem(), QString());
        QCOMPARE(model.devices()->name(), QString(driver));
    }

    void aDeviceLostInTrainingEndsTheRun() {
        TestWorld world;
        world.steps = 100000;
        addCards(world);
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        QSignalSpy finished(model.model(), &ModelController::trainingFinished);
        model.train();
        QTRY_VERIFY_WITH_TIMEOUT(model.model()->step() > 0, patience);
        world.machine.fails = true;
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), QStringLiteral("The device was lost."));
        QCOMPARE(model.devices()->problem(), QStringLiteral("The device was lost."));
        QCOMPARE(finished.count(), 0);
        QVERIFY(!model.isTraining());
        QVERIFY(!model.model()->isReady());
        QVERIFY(!model.model()->isCancelling());
        QVERIFY(model.model()->canTrain());
        QCOMPARE(model.model()->problem(), QString());
        // It is opened anew for the next one.
        world.machine.fails = false;
        world.steps = 2;
        const std::size_t openedBefore = world.machine.opened.size();
        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.model()->isReady());
        QCOMPARE(world.machine.opened.size(), openedBefore + 1);
        QCOMPARE(model.devices()->problem(), QString());
    }

    void aDeviceLostInGeneratingLeavesTheModelUsable() {
        TestWorld world;
        addCards(world);
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        world.machine.fails = true;
        generate(model, world, "out");
        QCOMPARE(model.errorMessage(), QStringLiteral("The device was lost."));
        QVERIFY(model.model()->isReady());
        // It cannot be used any more: the processor takes the model.
        QSignalSpy notices(&model, &AppModel::notice);
        generate(model, world, "out");
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.results()->count(), 1);
        QCOMPARE(texts(notices), QStringList("The device was lost. The processor is used instead."));
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
    }

    void aStoredModelIsOpenedByTheProcessorWhenTheDeviceFails() {
        TestWorld world;
        addCards(world);
        const QUrl corpus = world.makeCorpus("corpus");
        {
            AppModel model(world.environment);
            prepareTrained(model, corpus);
        }
        world.machine.fails = true;
        AppModel model(world.environment);
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.model()->isReady());
        QCOMPARE(model.model()->problem(), QString());
        QCOMPARE(model.devices()->name(), QStringLiteral("Processor"));
    }

    void noDeviceAtAllEndsTheRun() {
        TestWorld world;
        world.machine.cannotOpen = "CPU";
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.train();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), QStringLiteral("CPU cannot be opened."));
        QVERIFY(!model.model()->isReady());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelDevicesTest)
#include "AppModelDevicesTest.moc"
