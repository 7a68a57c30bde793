#include "QuillmereApp/qml/Stage.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QImage>
#include <QMetaEnum>
#include <QMimeData>
#include <QMouseEvent>
#include <QQuickWindow>
#include <algorithm>
#include <cmath>
#include <functional>
#include <thread>
#include <vector>

#include "QuillmereCore/Util/Language.h"

namespace quillmere::testing {
namespace {

using Visit = std::function<void(QQuickItem&)>;

// Every visible item, parents first. What an invisible parent holds is invisible, too.
void visit(QQuickItem& item, const Visit& see) {
    if (!item.isVisible()) return;
    see(item);
    for (QQuickItem* child : item.childItems())
        visit(*child, see);
}

void visitWindow(const QQuickItem* any, const Visit& see) {
    if (any != nullptr && any->window() != nullptr) visit(*any->window()->contentItem(), see);
}

bool isText(const QQuickItem& item) {
    return item.inherits("QQuickText") || item.inherits("QQuickTextInput") || item.inherits("QQuickTextEdit");
}

QString describe(const QQuickItem& item) {
    const QString text = item.property("text").toString();
    return QStringLiteral("%1 '%2' at %3 width %4 of %5")
        .arg(item.metaObject()->className(), text.isEmpty() ? item.objectName() : text)
        .arg(item.mapToScene({}).x())
        .arg(item.width())
        .arg(item.implicitWidth());
}

// Names of files and folders may be longer than any place for them.
bool mayBeElided(const QQuickItem& text) {
    constexpr int elideMiddle = 2;  // Text.ElideMiddle
    return text.property("elide").toInt() == elideMiddle;
}

bool isClipped(const QQuickItem& item) {
    constexpr double rounding = 1;
    if (!item.inherits("QQuickText") || item.property("text").toString().isEmpty()) return false;
    if (item.property("truncated").toBool()) return !mayBeElided(item);
    if (mayBeElided(item)) return false;
    return item.property("contentWidth").toDouble() > item.width() + rounding ||
           item.property("contentHeight").toDouble() > item.height() + rounding;
}

bool isInMenu(const QQuickItem& item) {
    for (const QQuickItem* up = &item; up != nullptr; up = up->parentItem()) {
        if (up->inherits("QQuickMenuItem")) return true;
    }
    return false;
}

bool takesKeyboard(const QQuickItem& item) {
    return item.isEnabled() && item.activeFocusOnTab();
}

// Containers that only pass the keyboard on have no role of their own.
bool isFocusScopeOnly(const QQuickItem& item) {
    return item.isFocusScope() &&
           QAccessible::queryAccessibleInterface(const_cast<QQuickItem*>(&item)) == nullptr;
}

// Where the item can be seen: inside of everything around it that clips.
QRectF shownPlace(const QQuickItem& item) {
    QRectF place = item.mapRectToScene(item.boundingRect());
    for (const QQuickItem* up = item.parentItem(); up != nullptr; up = up->parentItem()) {
        if (up->clip()) place = place.intersected(up->mapRectToScene(up->boundingRect()));
    }
    return place;
}

QPoint middleOf(const QQuickItem& item) {
    return item.mapToScene({item.width() / 2, item.height() / 2}).toPoint();
}

void sendMouse(QQuickItem& item, QEvent::Type type, QPointF place, Qt::MouseButton button,
               Qt::MouseButtons down) {
    const QPointF inWindow = item.mapToScene(place);
    QMouseEvent event(type, inWindow, inWindow, item.window()->mapToGlobal(inWindow), button, down,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(item.window(), &event);
}

// The left button goes down at from and stays there while the pointer moves to to.
void drag(QQuickItem& item, QPointF from, QPointF to) {
    constexpr int moves = 4;
    sendMouse(item, QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
    for (int i = 1; i <= moves; ++i)
        sendMouse(item, QEvent::MouseMove, from + (to - from) * i / moves, Qt::NoButton, Qt::LeftButton);
}

}  // namespace

Stage::Stage(QObject* parent) : QObject(parent) {
    restart();
}

Stage::~Stage() {
    letScansGo();
    letModelsGo();
    letTrainingsGo();
    letTrashGo();
}

QString Stage::language() {
    return QString::fromStdString(Language::name());
}

QString Stage::wantedLanguage() {
    return qEnvironmentVariable("QUILLMERE_TEST_LANGUAGE");
}

void Stage::restart() {
    letScansGo();
    letModelsGo();
    letTrainingsGo();
    letTrashGo();
    blocksModels_ = false;
    app_.reset();
    world_ = std::make_unique<TestWorld>();
    world_->machine.beforeCompiling = [this] { models_.pass(); };
    world_->environment.onProgress = [this](Run run, std::int64_t done) {
        if (run == Run::scan && done > 0) scans_.pass();
        if (run != Run::training) return;
        trainings_.pass();
        if (done > 0 && blocksModels_.exchange(false)) blockRoot();
    };
    world_->environment.moveToTrash = [this, move = world_->environment.moveToTrash](const auto& file) {
        trash_.pass();
        return move(file);
    };
    restartProgram();
}

void Stage::restartProgram() {
    app_.reset();
    app_ = std::make_unique<AppModel>(world_->environment);
    QQmlEngine::setObjectOwnership(app_.get(), QQmlEngine::CppOwnership);
    emit appChanged();
}

QUrl Stage::makeCorpus(const QString& name, int files, double seconds) {
    return world_->makeCorpus(name, files, seconds);
}

QUrl Stage::makeFolder(const QString& name) {
    QDir().mkpath(world_->path(name));
    return world_->url(name);
}

void Stage::makeFile(const QString& name) {
    TestWorld::write(world_->path(name), "text");
}

void Stage::copyFolder(const QString& from, const QString& to) {
    world_->copyFolder(from, to);
}

void Stage::removeFile(const QUrl& file) {
    QFile::remove(file.toLocalFile());
}

// A file has the name of the folder.
void Stage::blockRoot() const {
    const QString root = toQString(world_->environment.modelsRoot);
    QDir(root).removeRecursively();
    TestWorld::write(root, "no folder");
}

void Stage::unblockModels() {
    QFile::remove(toQString(world_->environment.modelsRoot));
}

void Stage::addDevice(const QString& name, const QString& type, const QString& problem) {
    using Type = FakeMachine::Type;
    for (const Type known :
         {Type::discrete, Type::integrated, Type::virtualGPU, Type::software, Type::other}) {
        if (network::rawValue(known) != type.toStdString()) continue;
        world_->machine.add(name.toStdString(), known, problem.toStdString());
        return;
    }
    qFatal("%s is no type of device", qPrintable(type));
}

void Stage::refuseNetworks(const QString& reason) {
    FakeMachine& machine = world_->machine;
    if (machine.devices.size() == 1) machine.add("Card", FakeMachine::Type::discrete);
    machine.refusal = reason.toStdString();
    machine.isFull = true;
    std::thread([&] { compileOnDevice(*app_); }).join();
}

void Stage::setResults(int count) {
    std::vector<GeneratedSample> samples;
    for (int i = 0; i < count; ++i) {
        const QString name = QStringLiteral("results/sample_var_%1.wav").arg(i + 1, 4, 10, QLatin1Char('0'));
        samples.push_back({.url = toPath(world_->path(name)), .seconds = 0.1 + 0.01 * (i % 50)});
    }
    app_->results()->setSamples(std::move(samples));
}

void Stage::holdScans() {
    scans_.close();
}

void Stage::letScansGo() {
    scans_.open();
}

void Stage::holdModels() {
    models_.close();
}

void Stage::letModelsGo() {
    models_.open();
}

void Stage::holdTrainings() {
    trainings_.close();
}

void Stage::letTrainingsGo() {
    trainings_.open();
}

int Stage::countShortcuts(QQuickItem* any) const {
    int count = 0;
    for (const QObject* object : any->window()->findChildren<QObject*>()) {
        if (object->inherits("QQuickShortcut") && object->property("enabled").toBool()) ++count;
    }
    return count;
}

void Stage::damageModels() {
    QDirIterator files(toQString(world_->environment.modelsRoot), {QStringLiteral("weights.bin")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        TestWorld::write(files.next(), "spoilt");
}

void Stage::dragOver(QQuickItem* item, const QList<QUrl>& files) const {
    QMimeData data;
    data.setUrls(files);
    const QPoint middle = middleOf(*item);
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(item->window(), &enter);
    QDragMoveEvent move(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(item->window(), &move);
}

void Stage::dragLeave(QQuickItem* item) const {
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(item->window(), &leave);
}

void Stage::drop(QQuickItem* item, const QList<QUrl>& files) const {
    dragOver(item, files);
    QMimeData data;
    data.setUrls(files);
    QDropEvent dropped(middleOf(*item), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(item->window(), &dropped);
}

void Stage::flick(QQuickItem* item, QPointF from, QPointF to) const {
    drag(*item, from, to);
    sendMouse(*item, QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton);
}

void Stage::loseDrag(QQuickItem* item, QPointF from, QPointF to) const {
    drag(*item, from, to);
    item->window()->mouseGrabberItem()->ungrabMouse();
}

void Stage::setAccessibleValue(QQuickItem* item, double value) const {
    QAccessibleInterface* told = QAccessible::queryAccessibleInterface(item);
    if (told == nullptr || told->valueInterface() == nullptr)
        qFatal("%s has no value", qPrintable(describe(*item)));
    told->valueInterface()->setCurrentValue(value);
}

void Stage::doAccessibleAction(QQuickItem* item, const QString& action) const {
    QAccessibleInterface* told = QAccessible::queryAccessibleInterface(item);
    if (told == nullptr || told->actionInterface() == nullptr)
        qFatal("%s has no actions", qPrintable(describe(*item)));
    told->actionInterface()->doAction(action);
}

QStringList Stage::texts(QQuickItem* any) const {
    QStringList found;
    visitWindow(any, [&](QQuickItem& item) {
        if (isText(item)) found.append(item.property("text").toString());
        for (const char* name : {"xTitle", "yTitle"})  // of the chart
            found.append(item.property(name).toString());
    });
    found.removeAll(QString());
    return found;
}

QStringList Stage::icons(QQuickItem* any) const {
    QStringList found;
    visitWindow(any, [&](QQuickItem& item) {
        if (item.inherits("quillmere::Icon")) found.append(item.property("name").toString());
    });
    return found;
}

QStringList Stage::clippedTexts(QQuickItem* any) const {
    QStringList found;
    visitWindow(any, [&](QQuickItem& item) {
        if (isClipped(item)) found.append(describe(item));
    });
    return found;
}

QStringList Stage::menuTexts(QQuickItem* any) const {
    QStringList found;
    visitWindow(any, [&](QQuickItem& item) {
        if (item.inherits("QQuickText") && isInMenu(item)) found.append(item.property("text").toString());
    });
    found.removeAll(QString());
    return found;
}

QStringList Stage::cutMenuTexts(QQuickItem* any) const {
    QStringList found;
    visitWindow(any, [&](QQuickItem& item) {
        if (isInMenu(item) && item.property("truncated").toBool()) found.append(describe(item));
    });
    return found;
}

QStringList Stage::itemsOutside(QQuickItem* any) const {
    QStringList found;
    const double windowWidth = any->window()->contentItem()->width();
    visitWindow(any, [&](QQuickItem& item) {
        if (!takesKeyboard(item) && !isText(item)) return;
        const QRectF place = item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
        // The strip scrolls sideways.
        for (const QQuickItem* up = &item; up != nullptr; up = up->parentItem()) {
            if (up->objectName() == QLatin1String("results") ||
                up->objectName() == QLatin1String("candidates"))
                return;
        }
        if (place.left() < -0.5 || place.right() > windowWidth + 0.5) found.append(describe(item));
    });
    return found;
}

QStringList Stage::overlaps(QQuickItem* any) const {
    std::vector<QQuickItem*> seen;
    visitWindow(any, [&](QQuickItem& item) {
        const bool isWord = item.inherits("QQuickText") && !item.property("text").toString().isEmpty();
        if (isWord || takesKeyboard(item)) seen.push_back(&item);
    });
    QStringList found;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        for (std::size_t j = i + 1; j < seen.size(); ++j) {
            if (seen[i]->isAncestorOf(seen[j]) || seen[j]->isAncestorOf(seen[i])) continue;
            const QRectF common = shownPlace(*seen[i]).intersected(shownPlace(*seen[j]));
            if (common.width() > 1 && common.height() > 1)
                found.append(describe(*seen[i]) + QStringLiteral(" and ") + describe(*seen[j]));
        }
    }
    return found;
}

void Stage::switchAccessibilityOn() {
    QAccessible::setActive(true);
}

bool Stage::showsFocus(QQuickItem* control) const {
    bool shown = false;
    visit(*control, [&](QQuickItem& item) {
        if (QString::fromLatin1(item.metaObject()->className()).startsWith(QLatin1String("FocusRing")))
            shown = true;
    });
    return shown;
}

QStringList Stage::places(QQuickItem* any) const {
    QStringList found;
    visitWindow(any, [&](QQuickItem& item) {
        if (item.objectName().isEmpty()) return;
        const QRectF place = item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
        found.append(QStringLiteral("%1 at %2, %3 size %4 x %5")
                         .arg(item.objectName())
                         .arg(place.x())
                         .arg(place.y())
                         .arg(place.width())
                         .arg(place.height()));
    });
    return found;
}

int Stage::countPixels(QQuickItem* item, const QColor& color) const {
    constexpr double around = 5;
    const QImage image = item->window()->grabWindow();
    const double scale = item->window()->effectiveDevicePixelRatio();
    const QRectF place = item->mapRectToScene(QRectF(0, 0, item->width(), item->height()))
                             .adjusted(-around, -around, around, around);
    const QRect pixels = QRectF(place.topLeft() * scale, place.size() * scale).toAlignedRect() & image.rect();
    int count = 0;
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        for (int x = pixels.left(); x <= pixels.right(); ++x)
            count += image.pixel(x, y) == color.rgb() ? 1 : 0;
    }
    return count;
}

int Stage::countItems(QQuickItem* any, const QString& start) const {
    int count = 0;
    visitWindow(any, [&](QQuickItem& item) {
        if (item.objectName().startsWith(start)) ++count;
    });
    return count;
}

QQuickItem* Stage::findText(QQuickItem* any, const QString& ending) const {
    QQuickItem* found = nullptr;
    visitWindow(any, [&](QQuickItem& item) {
        if (isText(item) && item.property("text").toString().endsWith(ending)) found = &item;
    });
    return found;
}

QStringList Stage::namelessControls(QQuickItem* any) const {
    QStringList found;
    visitWindow(any, [&](QQuickItem& item) {
        if (!takesKeyboard(item) || isFocusScopeOnly(item)) return;
        QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&item);
        const bool hasRole = told != nullptr && told->role() != QAccessible::NoRole &&
                             told->role() != QAccessible::Client && told->role() != QAccessible::Pane;
        if (!hasRole || told->text(QAccessible::Name).isEmpty()) found.append(describe(item));
    });
    return found;
}

QStringList Stage::accessibleNames(QQuickItem* any) const {
    QStringList found;
    const std::function<void(QAccessibleInterface&)> walk = [&](QAccessibleInterface& told) {
        if (told.state().invisible) return;
        const QString role =
            QString::fromLatin1(QMetaEnum::fromType<QAccessible::Role>().valueToKey(told.role()));
        found.append(role + QLatin1Char(' ') + told.text(QAccessible::Name));
        for (int i = 0; i < told.childCount(); ++i) {
            if (QAccessibleInterface* child = told.child(i)) walk(*child);
        }
    };
    if (QAccessibleInterface* window = QAccessible::queryAccessibleInterface(any->window())) walk(*window);
    return found;
}

QQuickItem* Stage::find(QQuickItem* any, const QString& objectName) const {
    QQuickItem* found = nullptr;
    visitWindow(any, [&](QQuickItem& item) {
        if (found == nullptr && item.objectName() == objectName) found = &item;
    });
    return found;
}

QQuickItem* Stage::focused(QQuickItem* any) const {
    return any->window()->activeFocusItem();
}

double Stage::contrast(const QColor& a, const QColor& b) {
    const auto linear = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](const QColor& color) {
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

}  // namespace quillmere::testing
