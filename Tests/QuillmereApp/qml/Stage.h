#pragma once

#include <QColor>
#include <QObject>
#include <QPointF>
#include <QQmlEngine>
#include <QQuickItem>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantList>
#include <atomic>
#include <memory>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

// The world behind a window under test, and what can be seen of the window from outside: its texts, its
// icons, and what assistive technology is told.
class Stage : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(quillmere::AppModel* app READ app NOTIFY appChanged)
    // That of the core, and the one that it should be; both empty for the sources' own.
    Q_PROPERTY(QString language READ language CONSTANT)
    Q_PROPERTY(QString wantedLanguage READ wantedLanguage CONSTANT)

public:
    explicit Stage(QObject* parent = nullptr);
    ~Stage() override;

    [[nodiscard]] AppModel* app() const { return app_.get(); }
    [[nodiscard]] TestWorld& world() { return *world_; }
    [[nodiscard]] static QString language();
    [[nodiscard]] static QString wantedLanguage();

    // A new world and a new model: nothing is chosen, trained or remembered. Windows on the old model must be
    // gone.
    Q_INVOKABLE void restart();
    // A new model on the same world, as after quitting and starting again.
    Q_INVOKABLE void restartProgram();

    Q_INVOKABLE QUrl makeCorpus(const QString& name, int files = 3, double seconds = 0.1);
    Q_INVOKABLE QUrl makeFolder(const QString& name);
    Q_INVOKABLE void makeFile(const QString& name);
    Q_INVOKABLE void removeFile(const QUrl& file);
    // A folder of files, each copied as it is but for its time.
    Q_INVOKABLE void copyFolder(const QString& from, const QString& to);
    Q_INVOKABLE [[nodiscard]] QString path(const QString& name) const { return world_->path(name); }
    Q_INVOKABLE [[nodiscard]] QUrl url(const QString& name) const { return world_->url(name); }
    Q_INVOKABLE [[nodiscard]] QString pathOf(const QUrl& file) const { return file.toLocalFile(); }
    // Steps of the next training; many make it last.
    Q_INVOKABLE void setTrainingSteps(int steps) { world_->steps = steps; }
    // The file that plays has come to its end.
    Q_INVOKABLE void finishPlaying() { world_->player->finish(); }
    Q_INVOKABLE [[nodiscard]] QString clipboard() const { return world_->clipboard; }
    Q_INVOKABLE [[nodiscard]] QUrl shownFolder() const { return world_->shownFolder; }
    Q_INVOKABLE [[nodiscard]] QList<QUrl> shownFiles() const { return world_->shownFiles; }
    // A device beside the processor. type: as in network::rawValue; problem: why it cannot be used.
    Q_INVOKABLE void addDevice(const QString& name, const QString& type, const QString& problem = {});
    // All devices but the processor fail from now on.
    Q_INVOKABLE void loseDevices() { world_->machine.fails = true; }
    // A thread that compiles finds that the chosen device, a card if need be, takes no network for that
    // reason.
    Q_INVOKABLE void refuseNetworks(const QString& reason);
    // Rows of results without a run.
    Q_INVOKABLE void setResults(int count);
    // Scans stop half way until they are let go.
    Q_INVOKABLE void holdScans();
    Q_INVOKABLE void letScansGo();
    // The opening of a model stops half way until it is let go.
    Q_INVOKABLE void holdModels();
    Q_INVOKABLE void letModelsGo();
    // Trainings stop before their first step until they are let go.
    Q_INVOKABLE void holdTrainings();
    Q_INVOKABLE void letTrainingsGo();
    // Files that are to go to the trash wait until they are let go.
    Q_INVOKABLE void holdTrash() { trash_.close(); }
    Q_INVOKABLE void letTrashGo() { trash_.open(); }
    // Trainings of programs that start later can be heard all the time.
    Q_INVOKABLE void listenOften() { world_->environment.glimpseInterval = {}; }
    // When the next training has begun its steps, its model cannot be stored any more, or it can again.
    Q_INVOKABLE void blockModels() { blocksModels_ = true; }
    Q_INVOKABLE void unblockModels();
    // How many of the window's keyboard shortcuts would act.
    Q_INVOKABLE [[nodiscard]] int countShortcuts(QQuickItem* any) const;
    // For programs that start later the folder does not answer.
    Q_INVOKABLE void cutOff(const QString& name) { world_->cutOff(name); }
    // Spoils every stored model.
    Q_INVOKABLE void damageModels();

    // ---- Acting on a window as the desktop does

    // Files dragged over the middle of item and dropped there, or not.
    Q_INVOKABLE void dragOver(QQuickItem* item, const QList<QUrl>& files) const;
    Q_INVOKABLE void dragLeave(QQuickItem* item) const;
    Q_INVOKABLE void drop(QQuickItem* item, const QList<QUrl>& files) const;
    // The left button goes down at from, moves to to, and goes up, with nothing happening in between.
    Q_INVOKABLE void flick(QQuickItem* item, QPointF from, QPointF to) const;
    // The same, but before the button goes up something else takes the pointer.
    Q_INVOKABLE void loseDrag(QQuickItem* item, QPointF from, QPointF to) const;
    // Assistive technology appears: controls that exist take notice.
    Q_INVOKABLE void switchAccessibilityOn();
    // As assistive technology does it.
    Q_INVOKABLE void setAccessibleValue(QQuickItem* item, double value) const;
    Q_INVOKABLE void doAccessibleAction(QQuickItem* item, const QString& action) const;

    // ---- Looking at a window, by any item of it. Only what is visible counts; popups do, too.

    Q_INVOKABLE [[nodiscard]] QStringList texts(QQuickItem* any) const;
    Q_INVOKABLE [[nodiscard]] QStringList icons(QQuickItem* any) const;
    // Descriptions of texts that are cut off: wider than their place or elided. Names of files and folders
    // may be elided.
    Q_INVOKABLE [[nodiscard]] QStringList clippedTexts(QQuickItem* any) const;
    // What the open menus say, and what of it is cut off.
    Q_INVOKABLE [[nodiscard]] QStringList menuTexts(QQuickItem* any) const;
    Q_INVOKABLE [[nodiscard]] QStringList cutMenuTexts(QQuickItem* any) const;
    // Descriptions of texts and controls that reach beyond the window to the left or right.
    Q_INVOKABLE [[nodiscard]] QStringList itemsOutside(QQuickItem* any) const;
    // Descriptions of what takes the keyboard but tells assistive technology no name or no role.
    Q_INVOKABLE [[nodiscard]] QStringList namelessControls(QQuickItem* any) const;
    // The names of everything assistive technology is told of, with their roles: "Button Generate 10 ...".
    Q_INVOKABLE [[nodiscard]] QStringList accessibleNames(QQuickItem* any) const;
    // Descriptions of pairs of texts or controls that lie on one another.
    Q_INVOKABLE [[nodiscard]] QStringList overlaps(QQuickItem* any) const;
    // Whether a focus ring or a focus frame is drawn for the control.
    Q_INVOKABLE [[nodiscard]] bool showsFocus(QQuickItem* control) const;
    // Where every item with an objectName is, and how large: to see whether something moves.
    Q_INVOKABLE [[nodiscard]] QStringList places(QQuickItem* any) const;
    // How many pixels of exactly that colour there are in the item's place and just around it.
    Q_INVOKABLE [[nodiscard]] int countPixels(QQuickItem* item, const QColor& color) const;
    // How many visible items have names that begin so.
    Q_INVOKABLE [[nodiscard]] int countItems(QQuickItem* any, const QString& start) const;
    // The visible text that ends so.
    Q_INVOKABLE [[nodiscard]] QQuickItem* findText(QQuickItem* any, const QString& ending) const;
    // The visible item of that objectName; null when there is none.
    Q_INVOKABLE [[nodiscard]] QQuickItem* find(QQuickItem* any, const QString& objectName) const;
    Q_INVOKABLE [[nodiscard]] QQuickItem* focused(QQuickItem* any) const;

    // Of two opaque colours, as WCAG 2 defines it: 1 ... 21.
    Q_INVOKABLE [[nodiscard]] static double contrast(const QColor& a, const QColor& b);

signals:
    void appChanged();

private:
    void blockRoot() const;

    Gate scans_;
    Gate models_;
    Gate trainings_;
    Gate trash_;
    std::atomic<bool> blocksModels_ = false;
    std::unique_ptr<TestWorld> world_;
    std::unique_ptr<AppModel> app_;
};

}  // namespace quillmere::testing
