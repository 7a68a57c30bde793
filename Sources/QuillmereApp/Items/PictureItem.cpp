#include "QuillmereApp/Items/PictureItem.h"

#include <QPainter>

namespace quillmere {

void PictureItem::setImage(const QImage& image) {
    if (image == image_) return;
    image_ = image;
    update();
    emit imageChanged();
}

void PictureItem::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->drawImage(QRectF(0, 0, width(), height()), image_);
}

}  // namespace quillmere
