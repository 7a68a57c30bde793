#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <functional>
#include <optional>

#include "QuillmereApp/BackgroundTask.h"

namespace quillmere {

// The per-user preferences, an INI file. Read once, at construction; written in the background, in the order
// of the calls, because a write waits for the disk. The destructor waits for what is still to be written.
// Several programs may have the file open: each writes only what was set in it, and the last one to set a key
// is the one that counts.
//
// Threads: one, which made it.
class Preferences {
public:
    explicit Preferences(QString file);

    // Invalid when there is none.
    [[nodiscard]] QVariant value(const QString& key) const { return values_.value(key); }
    // The text under a key; nothing for a list or any other type.
    [[nodiscard]] std::optional<QString> text(const QString& key) const;
    [[nodiscard]] std::optional<int> integer(const QString& key) const;
    void setValue(const QString& key, const QVariant& value);
    // Puts edited(what the file holds under the key by then, other programs' changes included) under a key,
    // and hands it to done on the thread that made this. edited is called in the background.
    void edit(const QString& key, std::function<QVariant(const QVariant& stored)> edited,
              std::function<void(const QVariant& value)> done);

private:
    void write(const QString& key, std::function<QVariant(const QVariant& stored)> edited,
               std::function<void(const QVariant& value)> done);

    QString file_;
    QVariantMap values_;
    BackgroundTasks writer_;
};

}  // namespace quillmere
