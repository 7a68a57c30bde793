// Runs the tst_*.qml files: the real window on a real AppModel, with mouse and keyboard events, on Qt's
// offscreen platform.

#include <QObject>
#include <QQuickStyle>
#include <QTemporaryDir>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>
#include <optional>

#include "QuillmereApp/WindowLanguage.h"
#include "QuillmereCore/Util/Language.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)
Q_IMPORT_QML_PLUGIN(QuillmereStagePlugin)

namespace {

// Folders of its own in place of the user's, should anything ask for them.
class OwnFolders {
public:
    OwnFolders() {
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
            qputenv(name, folder_.filePath(QString::fromLatin1(name)).toLocal8Bit());
    }

private:
    QTemporaryDir folder_;
};

// The sources' language, or that of the environment where a test asks for it.
class Languages : public QObject {
    Q_OBJECT

public slots:
    void applicationAvailable() {
        if (!qEnvironmentVariableIsEmpty("QUILLMERE_TEST_LANGUAGE")) language_.emplace(catalogues);
    }
    // While there is still an application to take it from.
    void cleanupTestCase() { language_.reset(); }

public:
    Languages() {
        if (!qEnvironmentVariableIsEmpty("QUILLMERE_TEST_LANGUAGE"))
            quillmere::Language::takeFromEnvironment(catalogues);
    }

private:
    static constexpr const char* catalogues = QUILLMERE_CATALOGUES;
    std::optional<quillmere::WindowLanguage> language_;
};

}  // namespace

int main(int argc, char** argv) {
    const OwnFolders folders;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    Languages languages;
    return quick_test_main_with_setup(argc, argv, "Window", QUICK_TEST_SOURCE_DIR, &languages);
}

#include "WindowTest.moc"
