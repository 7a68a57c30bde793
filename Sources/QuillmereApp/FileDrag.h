#pragma once

#include <QList>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QUrl>

#include "QuillmereApp/ResultsModel.h"

namespace quillmere {

// Drags results into other programs as files: the one that is taken, with the others that are selected with
// it. What is dragged, its picture included, is kept
// here and not by the tile that shows the row: the platform has an event loop of its own until the button is
// up, and meanwhile a run may end and want other rows. They wait (ResultsModel::hold) until it is over.
//
// Threads: the user-interface thread.
class FileDrag : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(quillmere::ResultsModel* results MEMBER results_)
    // The platform drags.
    Q_PROPERTY(bool isActive READ isActive NOTIFY isActiveChanged)

public:
    using QObject::QObject;
    ~FileDrag() override;

    // Begins to drag the file of a row, when a look has found it and the button is still down. The picture is
    // what the window shows of tile, held at grip, a place of tile. Nothing happens when the file is gone.
    Q_INVOKABLE void begin(int row, QQuickItem* tile, QPointF grip);
    // The button is up: what has not begun to move does not.
    Q_INVOKABLE void giveUp();

    [[nodiscard]] bool isActive() const { return isActive_; }

signals:
    void isActiveChanged();

private:
    void found(bool exists);
    void carry();
    void release();

    QPointer<ResultsModel> results_;
    bool isHeld_ = false;    // results_, by this
    bool isWanted_ = false;  // begun, and the button is down
    bool isActive_ = false;
    QList<QUrl> files_;
    QPointer<QQuickWindow> window_;
    QRectF place_;  // of the tile in the window
    QPointF grip_;
};

}  // namespace quillmere
