// Runs the tst_*.qml files: the real window on a real AppModel, with mouse and keyboard events, on Qt's
// offscreen platform.

#include <QQuickStyle>
#include <QTemporaryDir>
#include <QtQml/QQmlExtensionPlugin>
#include <QtQuickTest>

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

}  // namespace

int main(int argc, char** argv) {
    const OwnFolders folders;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    return quick_test_main(argc, argv, "Window", QUICK_TEST_SOURCE_DIR);
}
