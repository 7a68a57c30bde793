// The program itself: its arguments, its start, its end, and the debug hooks. Windows are on Qt's offscreen
// platform; waits of the hooks take seconds, so runs that do not depend on each other run side by side.

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <csignal>
#include <memory>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

// One run of the program with folders of its own.
class Run {
public:
    explicit Run(const QMap<QString, QString>& variables = {}, const QStringList& arguments = {}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"QUILLMERE_SNAPSHOT", "QUILLMERE_AUTORUN", "QUILLMERE_LIGHT", "DISPLAY",
                                 "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"})
            environment.remove(name);
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("SDL_AUDIODRIVER", "dummy");
        environment.insert("XDG_CONFIG_HOME", world.path("config"));
        environment.insert("XDG_DATA_HOME", world.path("data"));
        for (const auto& [name, value] : variables.asKeyValueRange()) {
            if (value.isNull()) {
                environment.remove(name);
            } else {
                environment.insert(name, QString(value).replace("%world%", world.path(".")));
            }
        }
        process.setProcessEnvironment(environment);
        process.setProgram(QUILLMERE_PROGRAM);
        process.setArguments(arguments);
    }
    ~Run() {
        process.kill();
        process.waitForFinished();
    }

    void start() {
        clock.start();
        process.start();
        QVERIFY(process.waitForStarted());
        QObject::connect(&process, &QProcess::finished, &process, [this] { milliseconds = clock.elapsed(); });
    }
    [[nodiscard]] bool isRunning() const { return process.state() != QProcess::NotRunning; }
    [[nodiscard]] bool ends(int limit = 60000) const {
        return QTest::qWaitFor([this] { return !isRunning(); }, limit);
    }
    [[nodiscard]] QImage picture() const { return QImage(world.path("picture.png")); }

    TestWorld world;
    QProcess process;
    QElapsedTimer clock;
    qint64 milliseconds = 0;
};

const QString snapshot = QStringLiteral("%world%/picture.png");

}  // namespace

class AppProgramTest : public QObject {
    Q_OBJECT

private slots:
    void answersHelpAndVersionWithoutADisplay() {
        for (const QString argument : {"--help", "--version"}) {
            Run run({{"QT_QPA_PLATFORM", QString()}}, {argument});
            run.start();
            QVERIFY(run.ends());
            QCOMPARE(run.process.exitCode(), 0);
            QVERIFY(run.process.readAllStandardOutput().contains("uillmere"));
            QCOMPARE(run.process.readAllStandardError(), QByteArray());
        }
    }

    void refusesUnknownArguments() {
        for (const QStringList& arguments : {QStringList{"--nonsense"}, QStringList{"one", "two"}}) {
            Run run({}, arguments);
            run.start();
            QVERIFY(run.ends());
            QCOMPARE(run.process.exitCode(), 2);
        }
    }

    void withoutADisplayItSaysSoInOneLine_data() {
        QTest::addColumn<QString>("platform");
        QTest::addColumn<QString>("display");
        QTest::newRow("no display") << QString() << QString();
        QTest::newRow("no display for xcb") << "xcb" << QString();
        QTest::newRow("a display that is not there") << QString() << ":4711";
    }
    void withoutADisplayItSaysSoInOneLine() {
        QFETCH(QString, platform);
        QFETCH(QString, display);
        Run run({{"QT_QPA_PLATFORM", platform}, {"DISPLAY", display}});
        run.start();
        QVERIFY(run.ends());
        QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(run.process.exitCode(), 1);
        const QByteArray error = run.process.readAllStandardError();
        QVERIFY2(error.startsWith("quillmere: There is no display"), error.constData());
        QCOMPARE(error.count('\n'), 1);
    }

    void withoutFontsItSaysSo() {
        Run run({{"FONTCONFIG_FILE", "%world%/fonts.conf"}, {"QT_QPA_FONTDIR", "%world%/no-fonts"}});
        TestWorld::write(run.world.path("fonts.conf"), "<?xml version=\"1.0\"?><fontconfig></fontconfig>");
        run.start();
        QVERIFY(run.ends(10000));
        QCOMPARE(run.process.exitCode(), 1);
        QVERIFY(run.process.readAllStandardError().contains("No fonts are installed"));
    }

    void endsCleanlyOnSignals() {
        for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
            Run run;
            run.start();
            QTest::qWait(1000);
            QVERIFY(run.isRunning());
            ::kill(static_cast<pid_t>(run.process.processId()), signal);
            QVERIFY(run.ends(5000));
            QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(run.process.exitCode(), 0);
            QCOMPARE(run.process.readAllStandardError(), QByteArray());
        }
    }

    void opensTheFolderNamedAsArgument() {
        Run run;
        const QUrl corpus = run.world.makeCorpus("my corpus");
        run.process.setWorkingDirectory(run.world.path("."));
        run.process.setArguments({"my corpus"});
        run.start();
        const QString stored = run.world.path("config/Quillmere/Quillmere.conf");
        QTRY_VERIFY(TestWorld::read(stored).contains(corpus.toLocalFile().toUtf8()));
    }

    void hooksTakeAPictureAndQuit() {
        Run dark({{"QUILLMERE_SNAPSHOT", snapshot}});
        Run light({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_LIGHT", ""}});
        Run otherValue({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_AUTORUN", "Generate"}});
        Run nowhere({{"QUILLMERE_SNAPSHOT", "%world%/no/such/folder/picture.png"}});
        Run noSnapshot({{"QUILLMERE_AUTORUN", "generate"}, {"QUILLMERE_LIGHT", "1"}});
        dark.world.write(dark.world.path("config/Quillmere/Quillmere.conf"), "[General]\nappearance=2\n");
        light.world.write(light.world.path("config/Quillmere/Quillmere.conf"), "[General]\nappearance=2\n");
        prepareUntrained(otherValue);
        prepareUntrained(noSnapshot);
        for (Run* run : {&dark, &light, &otherValue, &nowhere, &noSnapshot})
            run->start();
        for (Run* run : {&dark, &light, &otherValue, &nowhere}) {
            QVERIFY(run->ends());
            QCOMPARE(run->process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(run->process.exitCode(), 0);
        }
        QVERIFY2(dark.milliseconds >= 4000 && dark.milliseconds < 15000,
                 qPrintable(QString::number(dark.milliseconds)));
        QVERIFY2(light.milliseconds >= 5000 && light.milliseconds < 16000,
                 qPrintable(QString::number(light.milliseconds)));
        QVERIFY(!dark.picture().isNull());
        QCOMPARE(dark.picture().size(), light.picture().size());
        QVERIFY(dark.picture().pixelColor(2, 2).lightness() < 80);
        QVERIFY(light.picture().pixelColor(2, 2).lightness() > 180);
        QVERIFY(
            TestWorld::read(light.world.path("config/Quillmere/Quillmere.conf")).contains("appearance=2"));
        QVERIFY(!otherValue.picture().isNull());
        QVERIFY(!QFileInfo::exists(otherValue.world.path("out")));
        // Without the first variable the others do nothing: it stays open and generates nothing.
        QVERIFY(noSnapshot.isRunning());
        QVERIFY(!QFileInfo::exists(noSnapshot.world.path("out")));
    }

    void hooksGenerateFromTheLastSetup() {
        Run run({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_AUTORUN", "generate"}});
        prepareTrainedSetup(run);
        run.start();
        QVERIFY(run.ends());
        QCOMPARE(run.process.exitCode(), 0);
        QVERIFY(run.milliseconds >= 4000);
        QCOMPARE(QDir(run.world.path("out")).entryList({"*.wav"}, QDir::Files).size(), 2);
        QVERIFY(!run.picture().isNull());
    }

    void closingWhileTrainingEndsCleanly() {
        Run run({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_AUTORUN", "generate"}});
        prepareUntrained(run);  // trains 2000 steps first
        run.start();
        QTest::qWait(5000);
        QVERIFY(run.isRunning());
        ::kill(static_cast<pid_t>(run.process.processId()), SIGTERM);
        QVERIFY(run.ends(10000));
        QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(run.process.exitCode(), 0);
        QCOMPARE(
            QDir(run.world.path("data/Quillmere/Models")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(),
            0);
        QVERIFY(run.picture().isNull());
    }

private:
    // Preferences with a corpus, an output folder and a count.
    static void prepareUntrained(const Run& run) {
        run.world.makeCorpus("corpus");
        run.world.writePreferences("corpusPath=" + run.world.path("corpus").toUtf8() +
                                   "\noutputPath=" + run.world.path("out").toUtf8() + "\ncount=2\n");
    }
    static void prepareTrainedSetup(const Run& run) {
        prepareUntrained(run);
        AppModel model(run.world.environment);
        QVERIFY(waitUntilIdle(model));
        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.hasModel());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppProgramTest)
#include "AppProgramTest.moc"
