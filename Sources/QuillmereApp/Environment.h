#pragma once

#include <QList>
#include <QString>
#include <QUrl>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

#include "QuillmereApp/FolderLooks.h"
#include "QuillmereApp/Player.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Network/Device/Machine.h"

namespace quillmere {

// What AppModel has going on in the background, piece by piece.
enum class Run { scan, training, generation, comparison };

// What AppModel reaches outside of itself, so that tests can put something else in its place.
struct Environment {
    QString settingsFile;                   // INI file of the preferences
    QString presetsFolder;                  // of the user's own presets; made when the first one is saved
    std::filesystem::path modelsRoot;       // of the stored models
    std::filesystem::path headStartFolder;  // of the networks that a training may begin with
    std::filesystem::path temporaryFolder;  // of the audition file; the user's own, made when it is needed
    QString homeFolder;                     // what "~" means
    bool followDesktop = true;              // ask the desktop for light or dark

    // The options of a training run before they are used; empty: as they are. Called in the background, by
    // several threads at once.
    std::function<TrainingOptions(TrainingOptions)> adjustTraining;
    // Called in the background whenever a run tells how far it has come (files, steps, variations), before it
    // goes on; empty: nobody watches. May be called from several threads.
    std::function<void(Run run, std::int64_t done)> onProgress;
    // How long a training goes on between two times that it is listened to.
    std::chrono::milliseconds glimpseInterval = std::chrono::seconds(4);
    std::function<std::uint64_t()> freshSeed;
    std::function<std::unique_ptr<Player>()> makePlayer;
    std::function<void(const QString&)> copyText;  // to the clipboard
    // What is at a path, for work in the background.
    std::shared_ptr<const FolderLooks> looks = std::make_shared<FolderLooks>();
    // Shows folder in the platform's file manager, the files selected; false when there is none. Called in
    // the background; ends with CancellationError when stop is requested while it waits.
    std::function<bool(const QUrl& folder, const QList<QUrl>& files, const std::stop_token& stop)> showFiles;

    // Moves a file or a folder to the desktop's trash. Returns where it is now, or nothing if that cannot be
    // done. Called in the background.
    std::function<std::optional<std::filesystem::path>(const std::filesystem::path& file)> moveToTrash;

    // Where it is noted how files were made (Journal), for all programs of the user; nothing for none.
    std::optional<std::filesystem::path> journalFile{};
    // Whether the user wants new ones to be noted there; empty: yes. Called in the background. Throws
    // FileError where that cannot be told.
    std::function<bool()> journalIsOn{};

    // Whether a graphics processor may be there, as far as can be told without loading a driver.
    bool mayHaveGraphicsCard = true;
    // Whose devices compute; outlives the AppModel. Asked in the background, because that loads drivers.
    network::Machine* machine = nullptr;

    // The user's own folders, the sound card, the clipboard and the desktop. Needs a QGuiApplication.
    [[nodiscard]] static Environment standard();
};

}  // namespace quillmere
