#pragma once

#include <QTranslator>
#include <filesystem>

namespace quillmere {

// The window's own texts, and those of Qt where its catalogues are installed, in the language that the core
// speaks (Language::name), for as long as this lives. Where the core has no language the texts are those of
// the sources. On the thread of QCoreApplication, before there are texts.
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
