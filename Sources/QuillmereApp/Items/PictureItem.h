#pragma once

#include <QImage>
#include <QQmlEngine>
#include <QQuickPaintedItem>

namespace quillmere {

// An image, stretched to the size of the item.
class PictureItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(Picture)
    Q_PROPERTY(QImage image READ image WRITE setImage NOTIFY imageChanged)

public:
    explicit PictureItem(QQuickItem* parent = nullptr) : QQuickPaintedItem(parent) {}

    [[nodiscard]] QImage image() const { return image_; }
    void setImage(const QImage& image);

    void paint(QPainter* painter) override;

signals:
    void imageChanged();

private:
    QImage image_;
};

}  // namespace quillmere
