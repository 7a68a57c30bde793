#pragma once

#include <QUrl>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/PreparedGenerator.h"
#include "QuillmereCore/Network/Device/ChosenDevice.h"
#include "QuillmereCore/Origin/KitFolder.h"

namespace quillmere {

// Kits for samplers: results, each with close variations that take turns on its key.
class KitController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool isMaking READ isMaking NOTIFY isMakingChanged)
    Q_PROPERTY(bool isCancelling READ isCancelling NOTIFY isMakingChanged)  // asked to stop, still making
    // Nothing runs, and there is a model.
    Q_PROPERTY(bool canMake READ canMake NOTIFY canMakeChanged)
    Q_PROPERTY(int done READ done NOTIFY progressed)  // sounds that were written
    Q_PROPERTY(int total READ total NOTIFY progressed)

public:
    // What a kit asks of others.
    struct Links {
        std::function<PreparedGenerator()> generator;       // of the model, which is there
        std::function<std::optional<QUrl>()> outputFolder;  // that the kit's folder is made in
        // What the generator runs on; empty, or null, for the processor.
        std::function<std::shared_ptr<network::ChosenDevice>()> device{};
    };

    KitController(const Environment& environment, Links links);
    ~KitController() override;

    void setHasModel(bool hasModel);

    // Makes a kit of these sounds, in the background, in a folder of its own. Refused while something runs,
    // without a model, for sounds of another one, and for more of them than there are keys.
    void make(std::vector<KitFolder::Chosen> sounds);
    void cancel();

    [[nodiscard]] bool isMaking() const { return cancel_ != nullptr; }
    [[nodiscard]] bool isCancelling() const { return isMaking() && cancel_->isCancelled(); }
    [[nodiscard]] bool canMake() const { return hasModel_ && !activity().isBusy(); }
    [[nodiscard]] int done() const { return done_; }
    [[nodiscard]] int total() const { return total_; }

signals:
    void isMakingChanged();
    void canMakeChanged();
    void progressed();
    void made(const QUrl& folder);

private:
    friend struct AppModelProbe;  // for tests

    struct Made;
    struct Work;
    [[nodiscard]] static Made makeIn(const Work& work, const std::stop_token& stop);
    void begin(Work work);
    void ended();

    const Links links_;
    bool hasModel_ = false;
    std::shared_ptr<CancelFlag> cancel_;  // of what is being made
    int done_ = 0;
    int total_ = 0;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
