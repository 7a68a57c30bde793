#pragma once

#include <QColor>
#include <QQmlEngine>
#include <QQuickPaintedItem>
#include <QString>

namespace quillmere {

// One of IconShapes in one colour, as large as fits the item, centred. Decoration: never in the
// accessibility tree; the control around it has the name.
class Icon : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit Icon(QQuickItem* parent = nullptr);

    [[nodiscard]] QString name() const { return name_; }
    void setName(const QString& name);
    [[nodiscard]] QColor color() const { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

signals:
    void nameChanged();
    void colorChanged();

private:
    QString name_;
    QColor color_ = Qt::black;
};

}  // namespace quillmere
