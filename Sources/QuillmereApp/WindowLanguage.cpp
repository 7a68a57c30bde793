#include "QuillmereApp/WindowLanguage.h"

#include <QCoreApplication>
#include <QLibraryInfo>

#include "QuillmereApp/FilePath.h"
#include "QuillmereCore/Util/Language.h"

namespace quillmere {

WindowLanguage::WindowLanguage(const std::filesystem::path& catalogues) {
    const std::string language = Language::name();
    if (language.empty()) return;
    const QString qtName = QStringLiteral("qt_") + QString::fromStdString(language);
    if (qt_.load(qtName, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&qt_);
    // The newest is asked first.
    if (own_.load(toQString(catalogues / language / "LC_MESSAGES" / "quillmere.qm")))
        QCoreApplication::installTranslator(&own_);
}

WindowLanguage::~WindowLanguage() {
    QCoreApplication::removeTranslator(&own_);
    QCoreApplication::removeTranslator(&qt_);
}

}  // namespace quillmere
