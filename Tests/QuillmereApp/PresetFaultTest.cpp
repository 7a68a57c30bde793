// Saving a preset while each of the calls that it takes fails once: the preset is there, whole, or a failure
// says why not, and the next attempt finds nothing in its way.

#include <QDir>
#include <QObject>
#include <QTemporaryDir>
#include <QTest>
#include <array>
#include <atomic>
#include <cerrno>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/PresetFolder.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/ChildProcess.h"
#include "Support/FaultLayer.h"
#include "Support/SharedMemory.h"

namespace quillmere::testing {
namespace {

const QString presetName = QStringLiteral("Mine");

Aesthetics valuesToKeep() {
    Aesthetics values;
    values.drift = 0.75F;
    return values;
}

// In a child: the call of that number fails. Whether save came back with a preset.
bool saveWithFault(const QString& folder, long number, int error, std::atomic<long>& calls) {
    const auto refuse = [&, number, error](const FileCall&) { return ++calls == number ? error : 0; };
    return ChildProcess([&] {
               watchFiles({toPath(folder).parent_path(), refuse});
               return PresetFolder::save(folder, presetName, valuesToKeep());
           })
        .succeeded();
}

}  // namespace

class PresetFaultTest : public QObject {
    Q_OBJECT

private slots:
    void savesAPresetOrNone() {
        constexpr std::array errors{EIO, ENOSPC, EACCES, EMFILE};
        int faults = 0;
        for (const int error : errors) {
            for (long number = 1;; ++number) {
                const QTemporaryDir place;
                const QString folder = place.filePath(QStringLiteral("presets"));
                const Shared<std::atomic<long>> calls;
                const bool isSaved = saveWithFault(folder, number, error, *calls);
                if (*calls < number) {
                    QVERIFY(isSaved);
                    break;
                }
                ++faults;
                const QList<OwnPreset> presets = PresetFolder::list(folder);
                QVERIFY(presets.size() == 1 || (presets.isEmpty() && !isSaved));
                if (!presets.isEmpty()) QVERIFY(presets.front().aesthetics == valuesToKeep());
                QCOMPARE(PresetFolder::save(folder, presetName, valuesToKeep()), presets.isEmpty());
                QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), 1);
            }
        }
        qInfo("%d faults injected into saving a preset", faults);
        QVERIFY(faults > 20);
    }
};

}  // namespace quillmere::testing

QTEST_APPLESS_MAIN(quillmere::testing::PresetFaultTest)
#include "PresetFaultTest.moc"
