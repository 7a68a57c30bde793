#include "QuillmereApp/Environment.h"

#include <unistd.h>

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStandardPaths>
#include <random>

#include "QuillmereApp/FileManager.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/GraphicsDevice.h"
#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Origin/JournalPreference.h"

namespace quillmere {
namespace {

std::uint64_t systemRandom() {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

// Of this session where there is one, else of the cache. Not the folder of temporary files that all users
// share: there the name may be another one's.
std::filesystem::path ownTemporaryFolder() {
    const QFileInfo session(qEnvironmentVariable("XDG_RUNTIME_DIR"));
    const bool isOurs = session.isAbsolute() && session.isDir() && session.ownerId() == ::geteuid();
    const QString parent =
        isOurs ? session.filePath() : QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    return toPath(parent) / "quillmere";
}

std::optional<std::filesystem::path> trash(const std::filesystem::path& file) {
    QString inTrash;
    return QFile::moveToTrash(toQString(file), &inTrash) ? std::optional(toPath(inTrash)) : std::nullopt;
}

#ifdef QUILLMERE_VULKAN
constexpr bool usesGraphicsCards = true;
#else
constexpr bool usesGraphicsCards = false;
#endif

}  // namespace

Environment Environment::standard() {
    const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                           QStringLiteral("/Quillmere");
    return {
        .settingsFile = config + QStringLiteral("/Quillmere.conf"),
        .presetsFolder = config + QStringLiteral("/presets"),
        .modelsRoot = ModelStore::rootDirectory(),
        .headStartFolder = HeadStart::ownFolder(),
        .temporaryFolder = ownTemporaryFolder(),
        .homeFolder = QDir::homePath(),
        .followDesktop = true,
        .adjustTraining = {},
        .onProgress = {},
        .glimpseInterval = std::chrono::seconds(4),
        .freshSeed = systemRandom,
        .makePlayer = Player::forSoundCard,
        .copyText = [](const QString& text) { QGuiApplication::clipboard()->setText(text); },
        .looks = std::make_shared<FolderLooks>(),
        .showFiles = FileManager::show,
        .moveToTrash = trash,
        .journalFile = Journal::place(),
        .journalIsOn = JournalPreference::isOn,
        .mayHaveGraphicsCard = usesGraphicsCards && hasGraphicsDevice(),
        .machine = &GPU::shared().machine(),
    };
}

}  // namespace quillmere
