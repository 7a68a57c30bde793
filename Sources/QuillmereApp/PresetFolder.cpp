#include "QuillmereApp/PresetFolder.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <system_error>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/InputFile.h"

namespace quillmere {
namespace {

const QString suffix = QStringLiteral(".json");
constexpr std::uint64_t largestFile = 1 << 16;  // bytes; twenty numbers need a few hundred
constexpr qsizetype longestName = 200;          // bytes; file systems allow 255 with the suffix

QString fileOf(const QString& folder, const QString& name) {
    return folder + QLatin1Char('/') + name + suffix;
}

OwnPreset read(const QFileInfo& info) {
    OwnPreset preset{info.completeBaseName(), std::nullopt, {}, info.fileName()};
    try {
        InputFile file(toPath(info.filePath()));
        if (file.size() > largestFile)
            throw FileError(file.path(), std::make_error_code(std::errc::file_too_large));
        preset.aesthetics = inRange(decodePreset(file.readAll()));
    } catch (const FileError&) {
        preset.problem = Words::tr("The preset's file cannot be read.");
    } catch (const Failure& failure) {
        preset.problem = Words::of(failure);
    }
    return preset;
}

}  // namespace

QList<OwnPreset> PresetFolder::list(const QString& folder) {
    QList<OwnPreset> presets;
    for (const QFileInfo& info : QDir(folder).entryInfoList({QLatin1Char('*') + suffix}, QDir::Files)) {
        if (problemWithName(info.completeBaseName()).isEmpty()) presets.append(read(info));
    }
    std::stable_sort(presets.begin(), presets.end(), [](const OwnPreset& a, const OwnPreset& b) {
        return QString::compare(a.name, b.name, Qt::CaseInsensitive) < 0;
    });
    return presets;
}

bool PresetFolder::save(const QString& folder, const QString& name, const Aesthetics& aesthetics) {
    const std::filesystem::path path = toPath(folder);
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error) throw FileError(path, error);
    removeAbandonedFiles(path);
    const std::string json = encodePreset(aesthetics);
    if (!writeNewFile(toPath(fileOf(folder, name)), std::as_bytes(std::span(json)))) return false;
    if (const std::error_code unsafe = syncFolder(path)) throw FileError(path, unsafe);
    return true;
}

// Not by the name that save would give it: the file may have come from elsewhere, with another case.
void PresetFolder::remove(const QString& folder, const OwnPreset& preset) {
    const std::filesystem::path path = toPath(folder + QLatin1Char('/') + preset.fileName);
    std::error_code error;
    std::filesystem::remove(path, error);
    if (error) throw FileError(path, error);
}

QString PresetFolder::problemWithName(const QString& name) {
    if (name.trimmed().isEmpty()) return Words::tr("Give the preset a name.");
    if (name.toUtf8().size() > longestName) return Words::tr("That name is too long.");
    const bool hasControl =
        std::any_of(name.begin(), name.end(), [](QChar c) { return c.category() == QChar::Other_Control; });
    if (name.contains(QLatin1Char('/')) || name.startsWith(QLatin1Char('.')) || hasControl)
        return Words::tr("A preset's name cannot begin with a dot or contain a slash.");
    if (Preset::named(name.toStdString()) != nullptr) return Words::tr("A built-in preset has that name.");
    return {};
}

}  // namespace quillmere
