#pragma once

#include <QList>
#include <QString>

#include "QuillmereApp/PresetModel.h"
#include "QuillmereCore/Generate/Aesthetics.h"

// The user's own presets on disk: one file per preset, named after it, as encodePreset writes it. A file is
// created and deleted, never changed, so what a later version of the program put there stays.
// Any thread, except that one program at a time should save.
namespace quillmere::PresetFolder {

// All presets of the folder by name, files that cannot be used included; none when there is no folder.
[[nodiscard]] QList<OwnPreset> list(const QString& folder);

// Creates the folder and the file. False when a preset of that name exists. Throws FileError.
[[nodiscard]] bool save(const QString& folder, const QString& name, const Aesthetics& aesthetics);

// Deletes the file of a preset as list gave it. Throws FileError.
void remove(const QString& folder, const OwnPreset& preset);

// Why no preset can have that name, or empty. Whether one has it already is not looked at, except for the
// built-in ones.
[[nodiscard]] QString problemWithName(const QString& name);

}  // namespace quillmere::PresetFolder
