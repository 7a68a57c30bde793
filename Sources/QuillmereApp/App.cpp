// The desktop application: one window on one AppModel.

#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QIcon>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QScreen>
#include <QSize>
#include <QSocketNotifier>
#include <QUrl>
#include <QtQml/QQmlExtensionPlugin>
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/ClosingLimit.h"
#include "QuillmereApp/DebugHooks.h"
#include "QuillmereApp/GraphicsDevice.h"
#include "QuillmereApp/WindowLanguage.h"
#include "QuillmereCore/Util/Language.h"
#include "QuillmereCore/Util/StandardStreams.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)

namespace quillmere {
namespace {

[[noreturn]] void refuse(const Message& reason) {
    std::fprintf(stderr, "quillmere: %s\n", Language::text(reason).c_str());
    std::_Exit(EXIT_FAILURE);
}

Message noDisplay() {
    return Message(
        "There is no display to open a window on. Start it in a desktop session, or use quillmere-cli.");
}

// Qt ends the program with a core dump when it finds no display.
void requireDisplay() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const bool needsDisplay =
        platform.isEmpty() || platform.startsWith("xcb") || platform.startsWith("wayland");
    if (needsDisplay && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        refuse(noDisplay());
}

// Until the window is there, Qt's fatal messages are about the display: it is named but cannot be opened.
void refuseOnFatal(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg) refuse(noDisplay());
    if (type == QtCriticalMsg) std::fprintf(stderr, "quillmere: %s\n", qPrintable(message));
}

// Qt lists these generic families even where no font stands behind them.
bool hasFonts() {
    const QStringList generic{QStringLiteral("Monospace"), QStringLiteral("Sans Serif"),
                              QStringLiteral("Serif")};
    const QStringList families = QFontDatabase::families();
    return std::any_of(families.begin(), families.end(),
                       [&](const QString& family) { return !generic.contains(family); });
}

bool isSoftwareRenderer(const QByteArray& name) {
    return name.contains("llvmpipe") || name.contains("softpipe") || name.contains("Software Rasterizer");
}

// Whether OpenGL works and is done by a GPU; a rasteriser for OpenGL is slower than Qt's own.
bool hasGPU() {
    // OpenGL would be a rasteriser, which takes a tenth of a second and 50 MB to load.
    if (!hasGraphicsDevice()) return false;
    QOpenGLContext context;
    if (!context.create()) return false;
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!surface.isValid() || !context.makeCurrent(&surface)) return false;
    const auto* name = reinterpret_cast<const char*>(context.functions()->glGetString(GL_RENDERER));
    const bool isGPU = name != nullptr && !isSoftwareRenderer(name);
    context.doneCurrent();
    return isGPU;
}

void chooseRenderer() {
    const bool isChosen =
        qEnvironmentVariableIsSet("QT_QUICK_BACKEND") || qEnvironmentVariableIsSet("QSG_RHI_BACKEND");
    if (!isChosen && !hasGPU()) QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

// The size the window is drawn for, or what a smaller screen leaves for it under a title bar.
QSize firstSize() {
    constexpr QSize designed(1180, 820);
    constexpr QSize frame(8, 40);
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr || QGuiApplication::platformName() == QLatin1String("offscreen")) return designed;
    return designed.boundedTo(screen->availableSize() - frame);
}

// SIGTERM, SIGINT and SIGHUP end the event loop as closing the window does. A handler may do little more than
// write to a socket; the other end wakes the event loop.
class QuitSignals : public QObject {
public:
    QuitSignals() : QObject(nullptr) {
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets_.data()) != 0)
            return;
        connect(new QSocketNotifier(sockets_[1], QSocketNotifier::Read, this), &QSocketNotifier::activated,
                this, [] { QCoreApplication::exit(0); });
        struct sigaction action {};
        action.sa_handler = [](int) {
            const char byte = 1;
            [[maybe_unused]] const auto written = ::write(sockets_[0], &byte, 1);
        };
        action.sa_flags = SA_RESTART;
        for (const int signal : {SIGTERM, SIGINT, SIGHUP})
            ::sigaction(signal, &action, nullptr);
        // A file beyond the permitted size is a write error like a full disk.
        ::signal(SIGXFSZ, SIG_IGN);
    }

private:
    // A signal handler reaches only what is static.
    static inline std::array<int, 2> sockets_{-1, -1};
};

struct Arguments {
    std::string folder;
};

std::string inWords(const Message& text) {
    return Language::text(text);
}

// The library's own words, in the user's language.
void nameParts(CLI::App& cli) {
    const auto formatter = std::make_shared<CLI::Formatter>();
    formatter->label("Usage", inWords(Message("Usage")));
    formatter->label("OPTIONS", inWords(Message("OPTIONS")));
    formatter->label("Positionals", inWords(Message("Positionals")));
    cli.formatter(formatter);
    cli.option_defaults()->group(inWords(Message("Options")));  // before there are options
    cli.set_help_flag("-h,--help", inWords(Message("Print this help message and exit")));
}

// The arguments that mean nothing here.
std::string unexpected(const std::vector<std::string>& arguments) {
    const std::string all = CLI::detail::join(arguments, " ");
    return inWords(arguments.size() == 1 ? Message("The following argument was not expected: {0}", all)
                                         : Message("The following arguments were not expected: {0}", all));
}

// Nothing: the program is to end with the status given.
std::optional<Arguments> parse(int argc, char** argv, int& status) {
    constexpr int usageError = 2;
    Arguments arguments;
    CLI::App cli(inWords(Message("Learns the character of a folder of short audio samples and generates new "
                                 "ones.")),
                 "quillmere");
    nameParts(cli);
    cli.set_version_flag("--version", "quillmere " QUILLMERE_VERSION,
                         inWords(Message("Print the version and exit")));
    cli.add_option("folder", arguments.folder, inWords(Message("Folder of samples to open as the corpus")))
        ->option_text("FOLDER");
    cli.allow_extras();  // and refused below, in the user's language
    try {
        cli.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        status = cli.exit(error, std::cout, std::cerr) == 0 ? EXIT_SUCCESS : usageError;
        return std::nullopt;
    }
    if (cli.remaining().empty()) return arguments;
    std::fprintf(stderr, "%s\n%s\n", unexpected(cli.remaining()).c_str(),
                 inWords(Message("Run with --help for more information.")).c_str());
    status = usageError;
    return std::nullopt;
}

int run(int argc, char** argv) {
    Language::takeFromEnvironment(Language::ownFolder());
    int status = EXIT_SUCCESS;
    const std::optional<Arguments> arguments = parse(argc, argv, status);
    if (!arguments) return status;

    requireDisplay();
    const QtMessageHandler usual = qInstallMessageHandler(refuseOnFatal);
    QGuiApplication::setApplicationName(QStringLiteral("Quillmere"));
    QGuiApplication::setApplicationVersion(QStringLiteral(QUILLMERE_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("quillmere"));
    int qtArguments = 1;  // ours are parsed already
    QGuiApplication app(qtArguments, argv);
    qInstallMessageHandler(usual);
    if (!hasFonts())
        refuse(Message(
            "No fonts are installed, so nothing could be read. Install one, for example fonts-dejavu-core."));
    const WindowLanguage language(Language::ownFolder());
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/quillmere.png")));
    chooseRenderer();
    QQuickStyle::setStyle(QStringLiteral("Basic"));

    const QuitSignals quitSignals;
    ClosingLimit closing;  // outlives the model, whose end waits for its work
    AppModel model;
    if (!arguments->folder.empty())
        model.setCorpus(
            QUrl::fromLocalFile(QFileInfo(QString::fromStdString(arguments->folder)).absoluteFilePath()));

    QQmlApplicationEngine engine;
    const QSize size = firstSize();
    engine.setInitialProperties({{QStringLiteral("app"), QVariant::fromValue(&model)},
                                 {QStringLiteral("width"), size.width()},
                                 {QStringLiteral("height"), size.height()}});
    engine.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/QuillmereApp/qml/Main.qml")));
    if (engine.rootObjects().isEmpty()) refuse(Message("The window could not be loaded."));
    DebugHooks::install(model);
    status = QGuiApplication::exec();
    closing.begin(status);
    return status;
}

}  // namespace
}  // namespace quillmere

int main(int argc, char** argv) {
    quillmere::occupyStandardStreams();
    return quillmere::run(argc, argv);
}
