#include "QuillmereApp/Preferences.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <chrono>
#include <utility>

#include "QuillmereApp/FilePath.h"
#include "QuillmereCore/Util/FileLock.h"

namespace quillmere {
namespace {

// Reads and writes one key, with no other program between the two.
QVariant rewrite(const QString& file, const QString& key,
                 const std::function<QVariant(const QVariant& stored)>& edited) {
    const QFileInfo info(file);
    QDir().mkpath(info.path());
    // Not the name of the lock that QSettings has for itself.
    const auto lock = FileLock::acquire(
        toPath(info.path() + QStringLiteral("/.") + info.fileName() + QStringLiteral(".edit")),
        std::chrono::seconds(2));
    QSettings stored(file, QSettings::IniFormat);
    const QVariant before = stored.value(key);
    QVariant value = edited(before);
    if (value == before) return value;
    stored.setValue(key, value);
    stored.sync();
    return value;
}

}  // namespace

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

// Also a value that this program has set before: another one may have set the key since.
void Preferences::setValue(const QString& key, const QVariant& value) {
    values_.insert(key, value);
    write(
        key, [value](const QVariant&) { return value; }, [](const QVariant&) {});
}

void Preferences::edit(const QString& key, std::function<QVariant(const QVariant& stored)> edited,
                       std::function<void(const QVariant& value)> done) {
    write(key, std::move(edited), [this, key, done = std::move(done)](const QVariant& value) {
        values_.insert(key, value);
        done(value);
    });
}

void Preferences::write(const QString& key, std::function<QVariant(const QVariant& stored)> edited,
                        std::function<void(const QVariant& value)> done) {
    // Preferences that cannot be written are forgotten at the end of the program: no reason to disturb.
    writer_.run([file = file_, key, edited = std::move(edited)] { return rewrite(file, key, edited); },
                std::move(done), [](const TaskFailure&) {});
}

}  // namespace quillmere
