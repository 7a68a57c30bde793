#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include "QuillmereApp/Controllers/Controller.h"

namespace quillmere::testing {

// Keeps what a controller tells the application.
class Told : public QObject {
public:
    explicit Told(Controller& controller) {
        connect(&controller, &Controller::errorRaised, this, [this](const QString& text) { error = text; });
        connect(&controller, &Controller::notice, this, [this](const QString& text) { notices += text; });
    }

    QString error;  // what the error banner would show
    QStringList notices;
};

}  // namespace quillmere::testing
