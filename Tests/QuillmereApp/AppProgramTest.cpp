// The program itself: its arguments, its start, its end, and the debug hooks. Windows are on Qt's offscreen
// platform and on an X server of the test's own; waits of the hooks take seconds, so runs that do not depend
// on each other run side by side.

#include <unistd.h>

#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QtQml/QQmlExtensionPlugin>
#include <csignal>
#include <memory>

#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/XServer.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)

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
    [[nodiscard]] QByteArray preferences() const { return TestWorld::read(world.environment.settingsFile); }
    // Processor time the program has used so far.
    [[nodiscard]] double processorSeconds() const {
        const QByteArray stat = TestWorld::read(QStringLiteral("/proc/%1/stat").arg(process.processId()));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        const double ticks = fields.size() > 12 ? fields.at(11).toDouble() + fields.at(12).toDouble() : 0;
        return ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
    }

    TestWorld world;
    QProcess process;
    QElapsedTimer clock;
    qint64 milliseconds = 0;
};

const QString snapshot = QStringLiteral("%world%/picture.png");

// The colours of one appearance.
struct Look {
    QRgb window, card, text, accent;
};

Look look(bool dark) {
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQml\nimport QuillmereApp\nQtObject { property QtObject theme: Theme }",
                      QUrl());
    const std::unique_ptr<QObject> holder(component.create());
    if (!holder) qFatal("%s", qPrintable(component.errorString()));
    auto* theme = holder->property("theme").value<QObject*>();
    theme->setProperty("dark", dark);
    const auto colour = [&](const char* name) { return theme->property(name).value<QColor>().rgb(); };
    return {colour("window"), colour("card"), colour("text"), colour("accent")};
}

// The share of the pixels in part that have exactly that colour.
double share(const QImage& picture, const QRect& part, QRgb colour) {
    int matching = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x)
            matching += picture.pixel(x, y) == colour;
    }
    return static_cast<double>(matching) / (part.width() * part.height());
}

enum class Invitation { chooseAFolder, generate };

// The window in its own size and colours: cards and words on the ground, and the one filled button where it
// belongs, at the top left for a first choice or at the bottom right for a run.
void verifyShowsTheWindow(const QImage& picture, const Look& look, Invitation invitation) {
    QCOMPARE(picture.size(), QSize(1180, 820));
    const QRect all = picture.rect();
    QCOMPARE(QColor(picture.pixel(2, 2)), QColor(look.window));
    QCOMPARE(QColor(picture.pixel(2, all.bottom() - 2)), QColor(look.card));  // the footer
    QVERIFY(share(picture, all, look.window) > 0.02);
    QVERIFY(share(picture, all, look.card) > 0.3);
    const double words = share(picture, all, look.text);
    QVERIFY2(words > 0.0005 && words < 0.1, qPrintable(QString::number(words)));
    const double top = share(picture, QRect(0, 0, 400, 300), look.accent);
    const double bottom = share(picture, QRect(780, 760, 400, 60), look.accent);
    const QString shares = QStringLiteral("accent %1: %2 at the top, %3 at the bottom")
                               .arg(QColor(look.accent).name())
                               .arg(top)
                               .arg(bottom);
    QVERIFY2(invitation == Invitation::chooseAFolder ? top > 0.05 : top < 0.01, qPrintable(shares));
    QVERIFY2(invitation == Invitation::generate ? bottom > 0.1 : bottom < 0.01, qPrintable(shares));
}

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

    void answersInTheUsersLanguage_data() {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("help");
        QTest::addColumn<QString>("refusal");
        QTest::newRow("English") << "C"
                                 << "Usage: quillmere [OPTIONS] [folder]"
                                 << "The following arguments were not expected: two three\nRun with --help";
        QTest::newRow("German") << "de_DE"
                                << "Aufruf: quillmere [OPTIONEN] [folder]"
                                << "Diese Argumente wurden nicht erwartet: two three\n";
        QTest::newRow("Spanish") << "es_ES"
                                 << "Uso: quillmere "
                                 << ": two three\n";
        QTest::newRow("French") << "fr_FR"
                                << "Utilisation"
                                << "two three\n";
        QTest::newRow("Japanese") << "ja_JP"
                                  << "quillmere "
                                  << "two three\n";
    }
    // And of what the library of the command line says itself, nothing is left in English.
    void answersInTheUsersLanguage() {
        QFETCH(QString, language);
        QFETCH(QString, help);
        QFETCH(QString, refusal);
        const QMap<QString, QString> variables{{"LC_ALL", language + ".UTF-8"}};
        Run asked(variables, {"--help"});
        asked.start();
        QVERIFY(asked.ends());
        const QString told = QString::fromUtf8(asked.process.readAllStandardOutput());
        QVERIFY2(told.contains(help), qPrintable(told));
        Run refused(variables, {"one", "two", "three"});
        refused.start();
        QVERIFY(refused.ends());
        QCOMPARE(refused.process.exitCode(), 2);
        const QString why = QString::fromUtf8(refused.process.readAllStandardError());
        QVERIFY2(why.contains(refusal), qPrintable(why));
        if (language == "C") return;
        for (const char* const english :
             {"Usage", "Positionals", "Print ", "Display ", "Folder of", "Learns", "following", "Run with"})
            QVERIFY2(!told.contains(english) && !why.contains(english), english);
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
            Run run({}, {"corpus"});
            run.world.makeCorpus("corpus");
            run.process.setWorkingDirectory(run.world.path("."));
            run.start();
            // Remembered when the scan's result is delivered: then the window is there.
            QTRY_VERIFY_WITH_TIMEOUT(run.preferences().contains("recentCorpora"), 20000);
            ::kill(static_cast<pid_t>(run.process.processId()), signal);
            QVERIFY(run.ends());
            QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(run.process.exitCode(), 0);
            QCOMPARE(run.process.readAllStandardError(), QByteArray());
        }
    }

    void endsThoughAReadNeverDoes() {
        // The sanitizer wants to be the first library.
        Run run({{"LD_PRELOAD", QUILLMERE_HANGING_FILE}, {"ASAN_OPTIONS", "verify_asan_link_order=0"}},
                {"corpus"});
        run.world.makeCorpus("corpus");
        QVERIFY(QFile::rename(run.world.path("corpus/hit1.wav"), run.world.path("corpus/hangs.wav")));
        run.process.setWorkingDirectory(run.world.path("."));
        run.start();
        QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(run.world.path("corpus/hangs.wav.tried")), longestWait);
        ::kill(static_cast<pid_t>(run.process.processId()), SIGTERM);
        QVERIFY(run.ends());
        QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(run.process.exitCode(), 0);
    }

    void opensTheFolderNamedAsArgument() {
        Run run;
        const QUrl corpus = run.world.makeCorpus("my corpus");
        run.process.setWorkingDirectory(run.world.path("."));
        run.process.setArguments({"my corpus"});
        run.start();
        QTRY_VERIFY_WITH_TIMEOUT(run.preferences().contains(corpus.toLocalFile().toUtf8()), 20000);
    }

    void startsWithATemporaryFolderThatIsNone() {
        Run run({{"TMPDIR", "%world%/none"}}, {"corpus"});
        run.world.makeCorpus("corpus");
        run.process.setWorkingDirectory(run.world.path("."));
        run.start();
        QTRY_VERIFY_WITH_TIMEOUT(run.preferences().contains("recentCorpora"), 20000);
        QVERIFY(run.isRunning());
    }

    void hooksTakeAPictureAndQuit() {
        Run dark({{"QUILLMERE_SNAPSHOT", snapshot}});
        Run light({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_LIGHT", ""}});
        Run otherValue({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_AUTORUN", "Generate"}});
        Run nowhere({{"QUILLMERE_SNAPSHOT", "%world%/no/such/folder/picture.png"}});
        Run noSnapshot({{"QUILLMERE_AUTORUN", "generate"}, {"QUILLMERE_LIGHT", "1"}});
        dark.world.writePreferences("appearance=2\n");
        light.world.writePreferences("appearance=2\n");
        prepareUntrained(otherValue);
        prepareUntrained(noSnapshot);
        for (Run* run : {&dark, &light, &otherValue, &nowhere, &noSnapshot})
            run->start();
        for (Run* run : {&dark, &light, &otherValue, &nowhere}) {
            QVERIFY(run->ends());
            QCOMPARE(run->process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(run->process.exitCode(), 0);
        }
        QVERIFY2(dark.milliseconds >= 4000 && dark.milliseconds < 30000,
                 qPrintable(QString::number(dark.milliseconds)));
        QVERIFY2(light.milliseconds >= 5000 && light.milliseconds < 31000,
                 qPrintable(QString::number(light.milliseconds)));
        verifyShowsTheWindow(dark.picture(), look(true), Invitation::chooseAFolder);
        verifyShowsTheWindow(light.picture(), look(false), Invitation::chooseAFolder);
        QVERIFY(light.preferences().contains("appearance=2"));
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
        verifyShowsTheWindow(run.picture(), look(true), Invitation::generate);
    }

    void hooksWorkOnAWindowUnderX11() {
        const XServer display;
        QVERIFY2(!display.name().isEmpty(), "Xvfb has not started");
        const QMap<QString, QString> variables{
            {"QT_QPA_PLATFORM", "xcb"}, {"DISPLAY", display.name()}, {"QUILLMERE_SNAPSHOT", snapshot}};
        Run dark(variables);
        QMap<QString, QString> lightVariables = variables;
        lightVariables.insert("QUILLMERE_LIGHT", "1");
        lightVariables.insert("QUILLMERE_AUTORUN", "generate");
        Run light(lightVariables);
        dark.world.writePreferences("appearance=2\n");
        prepareTrainedSetup(light);
        for (Run* run : {&dark, &light})
            run->start();
        for (Run* run : {&dark, &light}) {
            QVERIFY(run->ends());
            QCOMPARE(run->process.exitCode(), 0);
        }
        verifyShowsTheWindow(dark.picture(), look(true), Invitation::chooseAFolder);
        verifyShowsTheWindow(light.picture(), look(false), Invitation::generate);
        QCOMPARE(QDir(light.world.path("out")).entryList({"*.wav"}, QDir::Files).size(), 2);
    }

    void closingWhileTrainingEndsCleanly() {
        Run run({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_AUTORUN", "generate"}});
        prepareUntrained(run);  // trains 2000 steps first
        run.start();
        // Start and window take less than a second of processor time: it is training.
        QTRY_VERIFY_WITH_TIMEOUT(run.processorSeconds() > 3, 60000);
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

    void closingWhileGeneratingEndsCleanly() {
        Run run({{"QUILLMERE_SNAPSHOT", snapshot}, {"QUILLMERE_AUTORUN", "generate"}});
        prepareTrainedSetup(run, 100000);
        run.start();
        const auto files = [&] {
            return QDir(run.world.path("out")).entryInfoList(QDir::Files | QDir::Hidden);
        };
        QTRY_VERIFY_WITH_TIMEOUT(files().size() > 2, 60000);
        QVERIFY(run.isRunning());
        ::kill(static_cast<pid_t>(run.process.processId()), SIGTERM);
        QVERIFY(run.ends(10000));
        QCOMPARE(run.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(run.process.exitCode(), 0);
        // What was written is there in full, and nothing else.
        QVERIFY(files().size() < 100000);
        for (const QFileInfo& file : files()) {
            QCOMPARE(file.suffix(), QStringLiteral("wav"));
            const auto samples = AudioIO::readMono(toPath(file.filePath())).samples.size();
            QCOMPARE(file.size(), static_cast<qint64>(44 + 3 * samples + samples % 2));
        }
        QVERIFY(run.picture().isNull());
    }

private:
    // Preferences with a corpus, an output folder and a count.
    static void prepareUntrained(const Run& run, int count = 2) {
        run.world.makeCorpus("corpus");
        run.world.writePreferences("appearance=2\ncorpusPath=" + run.world.path("corpus").toUtf8() +
                                   "\noutputPath=" + run.world.path("out").toUtf8() +
                                   "\ncount=" + QByteArray::number(count) + "\n");
    }
    static void prepareTrainedSetup(const Run& run, int count = 2) {
        prepareUntrained(run, count);
        AppModel model(run.world.environment);
        QVERIFY(waitUntilIdle(model));
        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.model()->isReady());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppProgramTest)
#include "AppProgramTest.moc"
