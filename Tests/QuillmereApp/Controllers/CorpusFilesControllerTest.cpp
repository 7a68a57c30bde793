// What becomes of each file of a corpus, as the window lists it.

#include "QuillmereApp/Controllers/CorpusFilesController.h"

#include <QMap>
#include <QObject>
#include <memory>
#include <vector>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"

namespace quillmere::testing {
namespace {

std::shared_ptr<const CorpusSummary> scanned(const QUrl& folder) {
    return std::make_shared<const CorpusSummary>(Corpus::scan(toPath(folder)));
}

// A corpus of four files that can be learned, one of them twice and one too long, and two that cannot.
QUrl makeMixedCorpus(const TestWorld& world) {
    const QUrl folder = world.makeCorpus("corpus", 2);
    const QString path = world.path("corpus");
    QFile::copy(path + "/hit0.wav", path + "/hit0 again.wav");
    AudioIO::write(sine(300, 8000, 8000 * 6, 0.8), toPath(path + "/long.wav"), 8000, OutputFormat::wav16);
    AudioIO::write(std::vector<float>(800, 0.0F), toPath(path + "/silence.wav"), 8000, OutputFormat::wav16);
    TestWorld::write(path + "/text.wav", "no sound");
    return folder;
}

struct Reader {
    explicit Reader(const TestWorld& world) : controller(world.environment), told(controller) {}

    [[nodiscard]] bool read(const std::shared_ptr<const CorpusSummary>& corpus) {
        controller.setCorpus(corpus);
        controller.read();
        return QTest::qWaitFor([this] { return !controller.isReading(); }, longestWait);
    }
    [[nodiscard]] QString at(int row, CorpusFilesModel::Role role) {
        return controller.files()->index(row).data(role).toString();
    }

    CorpusFilesController controller;
    Told told;
};

}  // namespace

class CorpusFilesControllerTest : public QObject {
    Q_OBJECT

private slots:
    void saysWhatBecomesOfEachFile() {
        TestWorld world;
        Reader reader(world);
        QVERIFY(reader.read(scanned(makeMixedCorpus(world))));
        QVERIFY(reader.controller.isRead());
        QMap<QString, QString> states;
        QMap<QString, QString> details;
        for (int row = 0; row < reader.controller.files()->count(); ++row) {
            const QString name = reader.at(row, CorpusFilesModel::NameRole);
            states.insert(name, reader.at(row, CorpusFilesModel::UseRole));
            details.insert(name, reader.at(row, CorpusFilesModel::DetailRole));
            QCOMPARE(reader.controller.files()->urlAt(row),
                     QUrl::fromLocalFile(world.path("corpus/") + name));
        }
        QCOMPARE(states.size(), 6);
        QCOMPARE(states.value("hit1.wav"), QStringLiteral("fine"));
        QCOMPARE(details.value("hit1.wav"), QString());
        QCOMPARE(states.value("long.wav"), QStringLiteral("cut"));
        QVERIFY(details.value("long.wav").endsWith("s are learned."));
        QCOMPARE(states.value("silence.wav"), QStringLiteral("silent"));
        QCOMPARE(states.value("text.wav"), QStringLiteral("unreadable"));
        QVERIFY2(details.value("text.wav").contains("text.wav"), qPrintable(details.value("text.wav")));
        QStringList twins{states.value("hit0.wav"), states.value("hit0 again.wav")};
        twins.sort();
        QCOMPARE(twins, QStringList({"copy", "fine"}));
        QCOMPARE(reader.controller.summary(),
                 QStringLiteral("6 files: 2 fine, 1 cut, 1 copy, 1 silent, 1 unreadable"));
        QCOMPARE(reader.controller.conspicuous(), 4);
    }

    void showsOnlyWhatIsConspicuousIfAsked() {
        TestWorld world;
        Reader reader(world);
        QVERIFY(reader.read(scanned(makeMixedCorpus(world))));
        reader.controller.setShowsAll(false);
        QCOMPARE(reader.controller.files()->count(), 4);
        for (int row = 0; row < 4; ++row)
            QVERIFY(reader.at(row, CorpusFilesModel::UseRole) != QStringLiteral("fine"));
        QCOMPARE(reader.controller.conspicuous(), 4);
        reader.controller.setShowsAll(true);
        QCOMPARE(reader.controller.files()->count(), 6);
    }

    void readsOncePerCorpus() {
        TestWorld world;
        Reader reader(world);
        reader.controller.read();  // of what?
        QVERIFY(!reader.controller.isReading());
        const auto corpus = scanned(world.makeCorpus("corpus"));
        QVERIFY(reader.read(corpus));
        QCOMPARE(reader.controller.summary(), QStringLiteral("3 files: 3 fine"));
        QSignalSpy reading(&reader.controller, &CorpusFilesController::isReadingChanged);
        QVERIFY(reader.read(corpus));
        reader.controller.read();
        QVERIFY(!reader.controller.isReading());
        QCOMPARE(reading.count(), 0);
        QVERIFY(reader.read(scanned(world.makeCorpus("other", 1))));
        QCOMPARE(reader.controller.summary(), QStringLiteral("1 file: 1 fine"));
    }

    void whatIsNotWantedAnyMoreNeverComes() {
        TestWorld world;
        Reader reader(world);
        reader.controller.setCorpus(scanned(world.makeCorpus("corpus")));
        reader.controller.read();
        QVERIFY(reader.controller.isReading());
        reader.controller.cancel();
        QVERIFY(!reader.controller.isReading());
        AppModelProbe::waitForWork(reader.controller);
        deliverEvents();
        QVERIFY(!reader.controller.isRead());
        QCOMPARE(reader.told.error, QString());
        reader.controller.setCorpus(nullptr);
        QVERIFY(!reader.controller.canShow());
    }

    void saysThatAFolderDoesNotAnswer() {
        TestWorld world;
        const auto corpus = scanned(world.makeCorpus("corpus"));
        world.cutOff("corpus");
        Reader reader(world);
        QVERIFY(reader.read(corpus));
        QVERIFY(!reader.controller.isRead());
        QVERIFY2(reader.told.error.contains("does not answer"), qPrintable(reader.told.error));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::CorpusFilesControllerTest)
#include "CorpusFilesControllerTest.moc"
