#pragma once

#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <optional>

#include "QuillmereApp/BackgroundTask.h"

namespace quillmere {

// The per-user preferences, an INI file. Read once, at construction; written in the background, in the order
// of the calls, because a write waits for the disk. The destructor waits for what is still to be written.
class Preferences {
public:
    explicit Preferences(QString file);

    // Invalid when there is none.
    [[nodiscard]] QVariant value(const QString& key) const { return values_.value(key); }
    // The text under a key; nothing for a list or any other type.
    [[nodiscard]] std::optional<QString> text(const QString& key) const;
    [[nodiscard]] std::optional<int> integer(const QString& key) const;
    void setValue(const QString& key, const QVariant& value);

private:
    QString file_;
    QVariantMap values_;
    BackgroundTasks writer_;
};

}  // namespace quillmere
