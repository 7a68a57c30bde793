#pragma once

#include <QFile>
#include <QString>
#include <QUrl>
#include <filesystem>

// File names between Qt and the core library.
namespace quillmere {

[[nodiscard]] inline std::filesystem::path toPath(const QString& path) {
    return {QFile::encodeName(path).toStdString()};
}

[[nodiscard]] inline std::filesystem::path toPath(const QUrl& url) {
    return toPath(url.toLocalFile());
}

[[nodiscard]] inline QString toQString(const std::filesystem::path& path) {
    return QFile::decodeName(QByteArray::fromStdString(path.native()));
}

[[nodiscard]] inline QUrl toUrl(const std::filesystem::path& path) {
    return QUrl::fromLocalFile(toQString(path));
}

}  // namespace quillmere
