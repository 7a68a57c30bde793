#include "QuillmereApp/Items/Fonts.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <algorithm>

namespace quillmere {

namespace {

// The text family when it will do, else the first installed relative of it that does.
QString familyForFigures(const QString& text) {
    if (Fonts::hasTabularFigures(text)) return text;
    for (const char* family : {"Noto Sans", "Open Sans", "Roboto", "DejaVu Sans"}) {
        QString name = QString::fromLatin1(family);
        if (QFontDatabase::hasFamily(name) && Fonts::hasTabularFigures(name)) return name;
    }
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

}  // namespace

Fonts::Fonts(QObject* parent)
    : QObject(parent), text_(QGuiApplication::font().family()), figures_(familyForFigures(text_)) {}

bool Fonts::hasTabularFigures(const QString& family) {
    // Large, so that rounding to whole pixels hides no difference.
    QFont font(family);
    font.setPixelSize(200);
    const QFontMetricsF metrics(font);
    const QString figures = QStringLiteral("0123456789");
    return std::all_of(figures.begin(), figures.end(), [&](QChar figure) {
        return metrics.horizontalAdvance(figure) == metrics.horizontalAdvance(QLatin1Char('0'));
    });
}

}  // namespace quillmere
