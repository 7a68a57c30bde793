#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>

namespace quillmere {

// The families of the window's text: the desktop's own, and for numbers that change in place one whose
// figures are all equally wide.
class Fonts : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString text READ text CONSTANT)
    Q_PROPERTY(QString figures READ figures CONSTANT)

public:
    explicit Fonts(QObject* parent = nullptr);

    [[nodiscard]] QString text() const { return text_; }
    [[nodiscard]] QString figures() const { return figures_; }

    [[nodiscard]] static bool hasTabularFigures(const QString& family);

private:
    QString text_;
    QString figures_;
};

}  // namespace quillmere
