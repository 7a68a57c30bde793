#include "QuillmereApp/WindowLanguage.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <string>
#include <string_view>

#include "QuillmereApp/FilePath.h"
#include "QuillmereCore/Util/Language.h"

namespace quillmere {
namespace {

// "en", "en_GB": as the sources, with a catalogue or without.
bool isEnglish(std::string_view language) {
    return language.substr(0, language.find('_')) == "en";
}

}  // namespace

WindowLanguage::WindowLanguage(const std::filesystem::path& catalogues) {
    const std::string language = Language::name();
    if (language.empty()) return;
    const bool isThere = own_.load(toQString(catalogues / language / "LC_MESSAGES" / "quillmere.qm"));
    if (!isThere && !isEnglish(language)) {
        Language::take({}, {});
        return;
    }
    const QString qtName = QStringLiteral("qt_") + QString::fromStdString(language);
    if (qt_.load(qtName, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&qt_);
    // The newest is asked first.
    if (isThere) QCoreApplication::installTranslator(&own_);
}

WindowLanguage::~WindowLanguage() {
    QCoreApplication::removeTranslator(&own_);
    QCoreApplication::removeTranslator(&qt_);
}

}  // namespace quillmere
