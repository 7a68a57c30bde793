#include "QuillmereApp/Preferences.h"

#include <QSettings>
#include <utility>

namespace quillmere {

Preferences::Preferences(QString file) : file_(std::move(file)), writer_(1) {
    const QSettings stored(file_, QSettings::IniFormat);
    for (const QString& key : stored.allKeys())
        values_.insert(key, stored.value(key));
}

std::optional<QString> Preferences::text(const QString& key) const {
    const QVariant stored = value(key);
    if (stored.typeId() != QMetaType::QString) return std::nullopt;
    return stored.toString();
}

// INI files hold numbers as text; what was written by this process is still a number.
std::optional<int> Preferences::integer(const QString& key) const {
    const QVariant stored = value(key);
    if (stored.typeId() == QMetaType::Int) return stored.toInt();
    if (stored.typeId() != QMetaType::QString) return std::nullopt;
    // Not QVariant's own conversion: it wraps numbers that are too large.
    bool isInteger = false;
    const int number = stored.toString().toInt(&isInteger);
    return isInteger ? std::optional(number) : std::nullopt;
}

void Preferences::setValue(const QString& key, const QVariant& value) {
    if (values_.value(key) == value) return;
    values_.insert(key, value);
    // Preferences that cannot be written are forgotten at the end of the program: no reason to disturb.
    writer_.run(
        [file = file_, key, value] {
            QSettings stored(file, QSettings::IniFormat);
            stored.setValue(key, value);
            stored.sync();
        },
        [] {}, [](const TaskFailure&) {});
}

}  // namespace quillmere
