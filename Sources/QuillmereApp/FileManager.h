#pragma once

#include <QList>
#include <QUrl>

namespace quillmere::FileManager {

// Opens the platform's file manager at folder with the files selected (org.freedesktop.FileManager1), or,
// where none offers that, at the folder. False when there is no file manager. Waits for other programs: call
// it in the background.
[[nodiscard]] bool show(const QUrl& folder, const QList<QUrl>& files);

}  // namespace quillmere::FileManager
