#include "QuillmereApp/Preferences.h"

#include <QSettings>
#include <utility>

namespace quillmere {

Preferences::Preferences(QString file) : file_(std::move(file)), writer_(1) {
    const QSettings stored(file_, QSettings::IniFormat);
    for (const QString& key : stored.allKeys())
        values_.insert(key, stored.value(key));
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
