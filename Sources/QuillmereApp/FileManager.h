#pragma once

#include <QList>
#include <QUrl>
#include <stop_token>

namespace quillmere::FileManager {

// Opens the platform's file manager at folder with the files selected (org.freedesktop.FileManager1), or,
// where none offers that, at the folder. False when there is no file manager. Waits for other programs, which
// may hang: call it in the background. Throws CancellationError when stop is requested meanwhile.
[[nodiscard]] bool show(const QUrl& folder, const QList<QUrl>& files, const std::stop_token& stop);

}  // namespace quillmere::FileManager
