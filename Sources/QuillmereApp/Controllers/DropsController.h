#pragma once

#include <QList>
#include <QString>
#include <QUrl>
#include <QVariantList>
#include <filesystem>
#include <functional>
#include <memory>
#include <variant>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/Inspection.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere {

// A sound that was made here, and what it was made with.
struct KnownSound {
    std::filesystem::path file;
    double seconds = 0;
    Recipe recipe;
    std::filesystem::path modelFolder;  // of its model; empty where that is not stored
    QString corpus;                     // folder that this was learned from; empty where it is gone
    // The model, if it was in use when the sound was dropped.
    std::shared_ptr<const SampleGenerator> present;
};

// What is dropped on the window: a folder to learn, a sound that was made here, or one from elsewhere, which
// sounds of the corpus are looked for that are like.
class DropsController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    // A sound from elsewhere that was dropped last.
    Q_PROPERTY(QString foreignName READ foreignName NOTIFY foreignChanged)
    Q_PROPERTY(QUrl foreignUrl READ foreignUrl NOTIFY foreignChanged)
    Q_PROPERTY(bool isFinding READ isFinding NOTIFY similarChanged)
    Q_PROPERTY(bool isFound READ isFound NOTIFY similarChanged)
    // The nearest sounds of the corpus, nearest first: {name, detail ("3.2 dB"), url}
    Q_PROPERTY(QVariantList similar READ similar NOTIFY similarChanged)

public:
    static constexpr std::size_t mostSimilar = 12;

    // What it asks of others.
    struct Links {
        std::function<std::shared_ptr<const CorpusSummary>()> corpus;             // null for none
        std::function<std::shared_ptr<const SampleGenerator>()> model;            // in use; null for none
        std::function<std::shared_ptr<const Inspection::CorpusPrints>()> prints;  // null until made
        std::function<void()> makePrints;      // comparisonChanged() follows
        std::function<void()> withdrawPrints;  // nobody waits for them any more
    };

    DropsController(const Environment& environment, Links links);
    ~DropsController() override;

    // Looks at what was dropped, in the background: one of the signals follows, or a notice that says why it
    // is not taken.
    Q_INVOKABLE void drop(const QList<QUrl>& urls);
    // Finds the sounds that are like the one from elsewhere.
    Q_INVOKABLE void findSimilar();
    // Nobody wants to know any more.
    Q_INVOKABLE void cancel();
    // There are prints of the corpus, or others.
    void comparisonChanged();
    // They cannot be made.
    void comparisonFailed(const QString& reason);

    [[nodiscard]] QString foreignName() const;
    [[nodiscard]] QUrl foreignUrl() const;
    [[nodiscard]] bool isFinding() const { return finding_ != nullptr; }
    [[nodiscard]] bool isFound() const { return isFound_; }
    [[nodiscard]] QVariantList similar() const;

signals:
    void foreignChanged();
    void similarChanged();
    void folderDropped(const QUrl& folder);
    void soundDropped(const quillmere::KnownSound& sound);
    // One from elsewhere, which can be compared with the corpus.
    void foreignDropped();

private:
    friend struct AppModelProbe;  // for tests

    struct Refusal {
        QString text;
    };
    struct Folder {
        std::filesystem::path path;
    };
    struct Foreign {
        std::filesystem::path file;
    };
    using Dropped = std::variant<Refusal, Folder, KnownSound, Foreign>;

    // What the background needs to tell what it is.
    struct Question {
        std::filesystem::path path;
        std::shared_ptr<const FolderLooks> looks;
        std::optional<std::filesystem::path> journal;
        std::filesystem::path modelsRoot;
        bool hasCorpus = false;
        std::shared_ptr<const SampleGenerator> model;
    };
    [[nodiscard]] static Dropped lookAt(const Question& question, const std::stop_token& stop);
    [[nodiscard]] static Dropped lookAtFile(const Question& question, const std::stop_token& stop);
    void take(const Dropped& dropped);
    void compare();
    void endFinding();

    const Links links_;
    std::shared_ptr<CancelFlag> looking_;  // at what was dropped last
    std::filesystem::path foreign_;
    std::shared_ptr<CancelFlag> finding_;
    bool isComparing_ = false;
    bool isFound_ = false;
    std::filesystem::path corpus_;  // of those that were found
    std::vector<Inspection::CorpusPrints::Neighbour> similar_;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
