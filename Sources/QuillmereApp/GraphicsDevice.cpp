#include "QuillmereApp/GraphicsDevice.h"

#include <QDir>
#include <QString>
#include <QStringList>

namespace quillmere {

bool hasGraphicsDevice() {
#ifdef __linux__
    const QStringList names{QStringLiteral("renderD*"), QStringLiteral("card*"), QStringLiteral("nvidia*")};
    const auto holdsOne = [&](const char* folder) {
        return !QDir(QString::fromLatin1(folder)).entryList(names, QDir::System).isEmpty();
    };
    return holdsOne("/dev/dri") || holdsOne("/dev");
#else
    return true;
#endif
}

}  // namespace quillmere
