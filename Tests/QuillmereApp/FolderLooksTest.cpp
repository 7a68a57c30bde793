// Looks at folders that may never answer.

#include "QuillmereApp/FolderLooks.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTemporaryDir>
#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// What is below /dead never answers, until the test ends; everything else is a folder.
struct DeadMount {
    ~DeadMount() { gate->open(); }

    [[nodiscard]] FolderLooks looks(std::chrono::milliseconds patience) const {
        gate->close();
        return FolderLooks(
            [gate = gate, hanging = hanging](const fs::path& path) {
                if (path.native().starts_with("/dead")) {
                    ++*hanging;
                    gate->pass();
                }
                return Place{Place::Kind::folder, path};
            },
            patience);
    }

    std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    // Looks at the mount.
    std::shared_ptr<std::atomic<int>> hanging = std::make_shared<std::atomic<int>>(0);
};

bool isFolder(const FolderLooks& looks, const fs::path& path) {
    return looks.at(path).kind == Place::Kind::folder;
}

}  // namespace

class FolderLooksTest : public QObject {
    Q_OBJECT

private slots:
    void tellsWhatIsThere() {
        QTemporaryDir temporary;
        const fs::path folder = fs::canonical(toPath(temporary.path()));
        fs::create_directories(folder / "a/b");
        fs::create_directory_symlink(folder / "a/b", folder / "link");
        TestWorld::write(temporary.filePath("file"), "x");
        const FolderLooks looks;
        QVERIFY(looks.at(folder / "a").kind == Place::Kind::folder);
        QVERIFY(looks.at(folder / "file").kind == Place::Kind::file);
        QVERIFY(looks.at(folder / "none").kind == Place::Kind::nothing);
        QCOMPARE(looks.at(folder / "link/../new").resolved, folder / "a/new");
    }

    void givesUpOnWhatDoesNotAnswer() {
        const DeadMount mount;
        const FolderLooks looks = mount.looks(20ms);
        QVERIFY(looks.at("/dead/folder").kind == Place::Kind::noAnswer);
        // On a busy machine a healthy look may outlast such a short patience, too.
        QVERIFY(QTest::qWaitFor([&] { return isFolder(looks, "/alive"); }));
    }

    void looksOnceAtAPathAndDoesNotWaitForItAgain() {
        const DeadMount mount;
        const FolderLooks looks = mount.looks(300ms);
        (void)looks.at("/dead");
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 1000; ++i)
            QVERIFY(looks.at("/dead").kind == Place::Kind::noAnswer);
        QVERIFY(clock.elapsed() < 300 * 100);
        QTRY_COMPARE(mount.hanging->load(), 1);
    }

    void sharesALookAmongThoseWhoWait() {
        const DeadMount mount;
        const FolderLooks looks = mount.looks(60s);
        std::atomic<int> found = 0;
        std::vector<std::thread> askers;
        for (int i = 0; i < 4; ++i)
            askers.emplace_back([&] { found += isFolder(looks, "/dead") ? 1 : 0; });
        QVERIFY(QTest::qWaitFor([&] { return mount.hanging->load() > 0; }));
        mount.gate->open();
        for (std::thread& asker : askers)
            asker.join();
        QCOMPARE(found.load(), 4);
        QVERIFY(mount.hanging->load() <= 4);
    }

    void answersAgainWhenThePathDoes() {
        const DeadMount mount;
        const FolderLooks looks = mount.looks(20ms);
        QVERIFY(!isFolder(looks, "/dead"));
        mount.gate->open();
        QVERIFY(QTest::qWaitFor([&] { return isFolder(looks, "/dead"); }));
    }

    void leavesOnlySoManyThreadsBehind() {
        const DeadMount mount;
        const FolderLooks looks = mount.looks(1ms);
        int asked = 0;
        const auto askAnother = [&] { return isFolder(looks, "/dead" + std::to_string(asked++)); };
        const auto all = [&] {
            return static_cast<std::size_t>(mount.hanging->load()) == FolderLooks::mostLooks;
        };
        QVERIFY(QTest::qWaitFor([&] { return askAnother() || all(); }, 60'000));
        for (std::size_t i = 0; i < 2 * FolderLooks::mostLooks; ++i)
            QVERIFY(!askAnother());
        QTest::qWait(50);  // for a thread too many to arrive
        QVERIFY(all());
    }

    void aFolderThatHangsAnswersForAllInIt() {
        const DeadMount mount;
        const FolderLooks looks = mount.looks(20ms);
        for (std::size_t i = 0; i < 3 * FolderLooks::mostLooks; ++i)
            QVERIFY(!isFolder(looks, "/dead/" + std::to_string(i) + "/below"));
        QVERIFY(QTest::qWaitFor([&] { return isFolder(looks, "/alive/well"); }));
        QVERIFY(!isFolder(looks, "/dead/again"));
        QTRY_COMPARE(mount.hanging->load(), 1);
    }

    void findsTheNearestFolderAbove() {
        QTemporaryDir temporary;
        const fs::path folder = toPath(temporary.path());
        TestWorld::write(temporary.filePath("file"), "x");
        const FolderLooks looks;
        QCOMPARE(looks.nearestFolder(folder / "not/there", "/home"), folder);
        QCOMPARE(looks.nearestFolder(folder / "file/below", "/home"), folder);
        QCOMPARE(looks.nearestFolder(folder, "/home"), folder);
        const DeadMount mount;
        QCOMPARE(mount.looks(20ms).nearestFolder("/dead/folder", "/home"), fs::path("/home"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::FolderLooksTest)
#include "FolderLooksTest.moc"
