#include "QuillmereApp/Environment.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QStandardPaths>
#include <random>
#include <system_error>

#include "QuillmereApp/FileManager.h"
#include "QuillmereApp/GraphicsDevice.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Network/Device/GPU.h"

namespace quillmere {
namespace {

std::uint64_t systemRandom() {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

// TMPDIR where it names a folder.
std::filesystem::path temporaryFolder() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    return error ? std::filesystem::path("/tmp") : folder;
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
        .temporaryFolder = quillmere::temporaryFolder(),
        .homeFolder = QDir::homePath(),
        .followDesktop = true,
        .adjustTraining = {},
        .onProgress = {},
        .freshSeed = systemRandom,
        .makePlayer = Player::forSoundCard,
        .copyText = [](const QString& text) { QGuiApplication::clipboard()->setText(text); },
        .showFiles = FileManager::show,
        .mayHaveGraphicsCard = usesGraphicsCards && hasGraphicsDevice(),
        .machine = &GPU::shared().machine(),
    };
}

}  // namespace quillmere
