#include "QuillmereApp/FileManager.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>
#include <optional>
#include <stop_token>
#include <thread>

#include "QuillmereApp/Support/SessionBus.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::testing {
// A file manager as the desktop offers it. It may hang.
class Manager : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;
    bool hangs = false;

public slots:
    void ShowItems(const QStringList& uris, const QString&) {
        shown = uris;
        if (hangs) setDelayedReply(true);
    }
};

class FileManagerTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        bus_.emplace();
        QVERIFY(!bus_->address().isEmpty());
        QDBusConnection connection = QDBusConnection::connectToBus(bus_->address(), "manager");
        QVERIFY(connection.registerObject("/org/freedesktop/FileManager1", &manager_,
                                          QDBusConnection::ExportAllSlots));
        QVERIFY(connection.registerService("org.freedesktop.FileManager1"));
    }
    void cleanupTestCase() { QDBusConnection::disconnectFromBus("manager"); }

    void showsTheFilesInTheirFolder() {
        manager_.hangs = false;
        bool shown = false;
        std::jthread asking([&] { shown = FileManager::show(folder, {file}, {}); });
        QTRY_COMPARE(manager_.shown, QStringList({file.toString()}));
        asking.join();
        QVERIFY(shown);
    }

    void aManagerThatHangsIsLeftBehind() {
        manager_.hangs = true;
        manager_.shown.clear();
        bool cancelled = false;
        QElapsedTimer sinceStop;
        {
            std::jthread asking([&](const std::stop_token& stop) {
                try {
                    (void)FileManager::show(folder, {file}, stop);
                } catch (const CancellationError&) {
                    cancelled = true;
                }
            });
            QTRY_COMPARE(manager_.shown.size(), 1);
            sinceStop.start();
        }
        QVERIFY(cancelled);
        QVERIFY2(sinceStop.elapsed() < 2000, "it waited for the answer");
    }

private:
    const QUrl folder = QUrl::fromLocalFile("/tmp/out");
    const QUrl file = QUrl::fromLocalFile("/tmp/out/a.wav");
    std::optional<SessionBus> bus_;
    Manager manager_;
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::FileManagerTest)
#include "FileManagerTest.moc"
