#pragma once

#include <QString>
#include <QUrl>

// Folders that the user chooses.
namespace quillmere::Folders {

// What to say of a URL that is no local one.
[[nodiscard]] QString onlyLocal();

[[nodiscard]] bool isFolder(const QUrl& url);

// The folder itself or the nearest one above it that exists: where a folder chooser can start.
[[nodiscard]] QUrl nearestExisting(const QString& path);

// A path as people write it: home as "~".
[[nodiscard]] QString displayed(const QString& path, const QString& home);

}  // namespace quillmere::Folders
