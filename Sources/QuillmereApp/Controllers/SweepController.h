#pragma once

#include <QList>
#include <QString>
#include <QUrl>
#include <QVariantList>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/PreparedGenerator.h"
#include "QuillmereApp/Player.h"
#include "QuillmereCore/Generate/Generator.h"

namespace quillmere {

// What a slider does, to be heard: one sound at seven places along it, all with the present seed and the
// other parameters as they are.
class SweepController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool isOpen READ isOpen NOTIFY openChanged)
    Q_PROPERTY(bool isRendering READ isRendering NOTIFY renderingChanged)
    Q_PROPERTY(QString parameterId READ parameterId NOTIFY openChanged)  // of the slider
    Q_PROPERTY(QString title READ title NOTIFY openChanged)
    // {text ("-12 st"), peaks (as ResultsModel has them; empty until it is rendered), name (while it plays),
    // isCurrent (its value is the present one, or next to it)}
    Q_PROPERTY(QVariantList tiles READ tiles NOTIFY tilesChanged)

public:
    static constexpr int places = 7;

    // What it asks of others. request: the present parameters, seed and detail.
    struct Links {
        std::function<AuditionRequest()> request;
        std::function<PreparedGenerator()> generator;  // of the model, which is there
    };

    SweepController(const Environment& environment, Links links);
    ~SweepController() override;

    void setHasModel(bool hasModel) { hasModel_ = hasModel; }

    // Renders the sounds along a parameter, one after the other from the lowest value. While something else
    // runs, without a model and for a name of no parameter nothing happens but notice().
    Q_INVOKABLE void open(const QString& parameterId);
    Q_INVOKABLE void close();
    // By places, 0 ... 6. What is not rendered yet is passed over.
    Q_INVOKABLE void play(int place);
    Q_INVOKABLE void togglePlay(int place);
    // The parameter gets the value of that place, and the tiles go.
    Q_INVOKABLE void take(int place);

    [[nodiscard]] bool isOpen() const { return spec_ != nullptr; }
    [[nodiscard]] bool isRendering() const { return cancel_ != nullptr; }
    [[nodiscard]] QString parameterId() const;
    [[nodiscard]] QString title() const;
    [[nodiscard]] QVariantList tiles() const;
    [[nodiscard]] int currentPlace() const;

signals:
    void openChanged();
    void renderingChanged();
    void tilesChanged();
    void playRequested(const QUrl& name, const quillmere::PlayableSound& sound);
    void togglePlayRequested(const QUrl& name, const quillmere::PlayableSound& sound);
    // A sound is gone that may be playing.
    void removed(const QUrl& name);
    void taken(const QString& parameterId, double value);

private:
    friend struct AppModelProbe;  // for tests

    struct Rendered {
        PlayableSound sound;
        QList<qreal> peaks;
    };
    struct Tile {
        double value = 0;
        QUrl name;
        std::optional<Rendered> rendered;
    };

    void render(const AuditionRequest& request);
    void arrived(int place, Rendered rendered);
    void endRendering();
    [[nodiscard]] const Tile* at(int place) const;

    const Links links_;
    bool hasModel_ = false;
    const ParameterSpec* spec_ = nullptr;  // null while it is closed
    double present_ = 0;                   // value when it was opened
    std::vector<Tile> tiles_;
    std::shared_ptr<CancelFlag> cancel_;  // of what is being rendered
    quint64 opened_ = 0;                  // times, for the names
    BackgroundTasks tasks_;               // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
