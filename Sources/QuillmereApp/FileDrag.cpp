#include "QuillmereApp/FileDrag.h"

#include <QDrag>
#include <QMimeData>
#include <QPixmap>
#include <QQuickWindow>
#include <memory>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"

namespace quillmere {
namespace {

// What the window shows at place, as sharp as the screen.
QPixmap picture(QQuickWindow& window, const QRectF& place) {
    const QImage shown = window.grabWindow();
    const double scale = shown.devicePixelRatio();
    const QRect pixels = QRectF(place.topLeft() * scale, place.size() * scale).toAlignedRect();
    return QPixmap::fromImage(shown.copy(pixels & shown.rect()));
}

}  // namespace

FileDrag::~FileDrag() {
    release();
}

void FileDrag::begin(int row, QQuickItem* tile, QPointF grip) {
    if (isHeld_ || !results_ || tile == nullptr || !results_->existsAt(row)) return;
    results_->hold();
    isHeld_ = true;
    isWanted_ = true;
    files_ = results_->isSelected(row) ? results_->chosenFiles(row) : QList<QUrl>{results_->urlAt(row)};
    window_ = tile->window();
    place_ = tile->mapRectToScene(QRectF(0, 0, tile->width(), tile->height()));
    grip_ = grip;
    results_->look(row, [drag = QPointer(this)](bool exists) {
        if (drag) drag->found(exists);
    });
}

void FileDrag::found(bool exists) {
    isWanted_ = isWanted_ && exists;
    // Not from here: other answers wait behind this one.
    QMetaObject::invokeMethod(this, &FileDrag::carry, Qt::QueuedConnection);
}

void FileDrag::giveUp() {
    isWanted_ = false;
}

void FileDrag::carry() {
    // The button may be up by now: a drag without it would hang on the pointer.
    if (isWanted_ && window_) {
        auto content = std::make_unique<QMimeData>();
        content->setUrls(files_);
        auto drag = std::make_unique<QDrag>(this);
        drag->setMimeData(content.release());
        drag->setPixmap(picture(*window_, place_));
        drag->setHotSpot(grip_.toPoint());
        assign(*this, isActive_, true, &FileDrag::isActiveChanged);
        drag.release()->exec(Qt::CopyAction);  // which deletes it
        assign(*this, isActive_, false, &FileDrag::isActiveChanged);
    }
    isWanted_ = false;
    release();
}

void FileDrag::release() {
    if (std::exchange(isHeld_, false) && results_) results_->release();
}

}  // namespace quillmere
