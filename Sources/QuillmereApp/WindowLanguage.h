#pragma once

#include <QTranslator>
#include <filesystem>

namespace quillmere {

// The window's own texts, and those of Qt where its catalogues are installed, in the language that the core
// speaks (Language::name), for as long as this lives. Where the core has no language the texts are those of
// the sources; where the window has no catalogue of its language, the core speaks English from then on, too.
// On the thread of QCoreApplication, before there are texts and before other threads speak.
class WindowLanguage {
public:
    // catalogues: a folder like share/locale, with LANGUAGE/LC_MESSAGES/quillmere.qm.
    explicit WindowLanguage(const std::filesystem::path& catalogues);
    ~WindowLanguage();
    WindowLanguage(const WindowLanguage&) = delete;
    WindowLanguage& operator=(const WindowLanguage&) = delete;

private:
    QTranslator qt_;
    QTranslator own_;
};

}  // namespace quillmere
