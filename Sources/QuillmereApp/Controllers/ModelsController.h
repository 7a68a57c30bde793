#pragma once

#include <QString>
#include <QUrl>
#include <QVariantList>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <variant>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere {

// The stored models of all folders: to be opened again, or thrown away.
class ModelsController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool isLooking READ isLooking NOTIFY isLookingChanged)
    // The newest first, then those that cannot be used: {name, path, detail, sizeText, problem (why it cannot
    // be used, or empty), isRemains (there is no model), isOpen (it is in
    // use now), folder (it is stored in; each has its own)}
    Q_PROPERTY(QVariantList models READ models NOTIFY modelsChanged)
    Q_PROPERTY(QString totalText READ totalText NOTIFY modelsChanged)  // "3 models, 18.4 MB"
    Q_PROPERTY(
        QString removedName READ removedName NOTIFY modelsChanged)  // that restore brings back, or empty
    // The folder, as people write it, whose model was learned from samples like those of the present one,
    // which has none; empty for none.
    Q_PROPERTY(QString offered READ offered NOTIFY offerChanged)
    // Only the names of these are known to be the same.
    Q_PROPERTY(bool offeredByNames READ offeredByNames NOTIFY offerChanged)

public:
    explicit ModelsController(const Environment& environment) : Controller(environment) {}
    ~ModelsController() override;

    // Where the model is stored that is in use; empty for none.
    void setOpen(const std::filesystem::path& folder);

    // Looks for the models, which takes as long as to open them all.
    Q_INVOKABLE void look();
    // models stays as it is then.
    Q_INVOKABLE void stopLooking();
    // The folder has no model: looks for one of the same samples, under another name or from another place.
    void offerFor(std::shared_ptr<const CorpusSummary> corpus);
    void withdrawOffer();
    // Loads the model that is offered.
    Q_INVOKABLE void useOffered();
    // Opens the folder of a row of models, with that model, unless it is in use. Refused while training or
    // generating, for one that cannot be used, and where the folder is gone.
    Q_INVOKABLE void open(int row);
    // Moves the model of a row to the desktop's trash, unless it is in use or on its way there. Remains of
    // one are deleted.
    Q_INVOKABLE void remove(int row);
    // Brings back what remove has moved last; then what it has moved before.
    Q_INVOKABLE void restore();

    [[nodiscard]] bool isLooking() const { return isLooking_; }
    [[nodiscard]] QVariantList models() const;
    [[nodiscard]] QString totalText() const;
    [[nodiscard]] QString removedName() const;
    [[nodiscard]] QString offered() const { return offered_ ? offered_->name : QString(); }
    [[nodiscard]] bool offeredByNames() const { return offered_ && offered_->isByNames; }

signals:
    void isLookingChanged();
    void modelsChanged();
    void offerChanged();
    // The model that is stored there is to be that of the present folder.
    void loadRequested(const std::filesystem::path& modelFolder);
    // A folder is to be opened with the model that is stored there.
    void openRequested(const QUrl& corpus, const std::filesystem::path& modelFolder);

private:
    friend struct AppModelProbe;  // for tests

    struct Entry {
        ModelStore::StoredFolder stored;
        std::variant<ModelMetadata, QString> content;  // or why there is none

        [[nodiscard]] const ModelMetadata* metadata() const { return std::get_if<ModelMetadata>(&content); }
        [[nodiscard]] QString name() const;
    };
    struct Removed {
        Entry entry;
        std::filesystem::path inTrash;
    };

    struct Offer {
        QString name;
        std::filesystem::path folder;
        bool isByNames = false;
    };

    [[nodiscard]] static std::optional<Offer> offerIn(const std::filesystem::path& root,
                                                      const CorpusSummary& corpus, const FolderLooks& looks,
                                                      const std::stop_token& stop);
    [[nodiscard]] static std::vector<Entry> entriesIn(const std::filesystem::path& root,
                                                      const std::stop_token& stop);
    [[nodiscard]] const Entry* at(int row) const;

    std::filesystem::path open_;
    bool isLooking_ = false;
    std::shared_ptr<CancelFlag> look_;  // that is going on
    std::vector<Entry> entries_;
    std::set<std::filesystem::path> leaving_;  // on their way to the trash
    std::vector<Removed> removed_;             // the last one last
    std::optional<Offer> offered_;
    std::shared_ptr<CancelFlag> offering_;  // the newest search for one
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
