#pragma once

#include <QList>
#include <QString>
#include <QUrl>
#include <filesystem>

#include "QuillmereApp/FolderLooks.h"

// Folders that the user chooses.
namespace quillmere::Folders {

// What to say of a URL that is no local one.
[[nodiscard]] QString onlyLocal();

// What to say of one whose file system does not answer.
[[nodiscard]] QString noAnswer(const QString& path);

// Throws a Failure that says so where that file system does not answer. In the background.
void requireAnswer(const std::filesystem::path& folder, const FolderLooks& looks);

// The absolute path without doubled slashes and a slash at its end. ".." stays: behind a link it leads
// elsewhere than the text says, and nothing here looks at the disk.
[[nodiscard]] QString plain(const QString& path);

// What somebody typed or pasted as a folder: blanks around it and quotation marks dropped, "~" as home, a
// file: URL as its path. Empty for none.
[[nodiscard]] QString typed(const QString& text, const QString& home);

// What is dropped on the window: the one thing to look at, or a sentence that says why it is not taken.
struct Dropped {
    QString path;
    QString refusal;
};
[[nodiscard]] Dropped dropped(const QList<QUrl>& urls);
// Why what lies there is not taken; empty for a folder.
[[nodiscard]] QString refusal(Place::Kind kind, const QString& path);

// A folder of that name beside a folder: "/Sounds/Drums" and "variations" give "/Sounds/Drums variations".
// One that ends with "..", whose name only the disk knows, gives "/Sounds/Drums/../../variations".
[[nodiscard]] QString beside(const QString& folder, const QString& name);

// A path as people write it: home as "~".
[[nodiscard]] QString displayed(const QString& path, const QString& home);

}  // namespace quillmere::Folders
