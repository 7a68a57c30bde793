#pragma once

#include <QList>
#include <QString>
#include <QUrl>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "QuillmereApp/Player.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Devices.h"

namespace quillmere {

// What AppModel has going on in the background, piece by piece.
enum class Run { scan, training, generation };

// A compute device that is ready for use. The backend lives until the program ends.
struct OpenDevice {
    network::DeviceDescription description;
    network::Backend* backend = nullptr;
};

// What AppModel reaches outside of itself, so that tests can put something else in its place.
struct Environment {
    QString settingsFile;                   // INI file of the preferences
    QString presetsFolder;                  // of the user's own presets; made when the first one is saved
    std::filesystem::path modelsRoot;       // of the stored models
    std::filesystem::path temporaryFolder;  // of the audition file
    QString homeFolder;                     // what "~" means
    bool followDesktop = true;              // ask the desktop for light or dark

    // The options of a training run before they are used; empty: as they are.
    std::function<TrainingOptions(TrainingOptions)> adjustTraining;
    // Called in the background whenever a run tells how far it has come (files, steps, variations), before it
    // goes on; empty: nobody watches. May be called from several threads.
    std::function<void(Run run, std::int64_t done)> onProgress;
    std::function<std::uint64_t()> freshSeed;
    std::function<std::unique_ptr<Player>()> makePlayer;
    std::function<void(const QString&)> copyText;  // to the clipboard
    // Shows folder in the platform's file manager, the files selected; false when there is none. Called in
    // the background.
    std::function<bool(const QUrl& folder, const QList<QUrl>& files)> showFiles;

    // Whether a graphics processor may be there, as far as can be told without loading a driver.
    bool mayHaveGraphicsCard = true;
    // The processor and the graphics processors. Called in the background, because it loads drivers.
    std::function<std::vector<network::DeviceDescription>()> listDevices;
    // choice: as for GPU::choose. Throws network::DeviceError. Called in the background, by any thread.
    std::function<OpenDevice(const std::string& choice)> openDevice;
    // From now on told, on any thread, of each network that the processor takes in a device's place; empty:
    // nobody is told. When this returns, the one before is not called any more.
    std::function<void(std::function<void(const std::string& message)>)> setDeviceNotice;

    // The user's own folders, the sound card, the clipboard and the desktop. Needs a QGuiApplication.
    [[nodiscard]] static Environment standard();
};

}  // namespace quillmere
