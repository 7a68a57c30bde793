// A long session in which somebody does anything at any time, compared with a simple model of what must hold:
// nothing that was made is ever lost or changed, whatever was begun ends, nothing is left behind, and a
// restart brings back what was set. QUILLMERE_SOAK=N does N things instead of the few that a quick check has
// time for.

#include <QDirIterator>
#include <QObject>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <set>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;

int operations() {
    constexpr int few = 150;
    const QByteArray wanted = qgetenv("QUILLMERE_SOAK");
    return wanted.isEmpty() ? few : wanted.toInt();
}

std::ptrdiff_t openDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

class Session {
public:
    Session() {
        world_.steps = 3;
        corpora_ = {world_.makeCorpus("kicks"), world_.makeCorpus("bells", 4)};
        start();
        app_->setOutputText(world_.path("out"));
        app_->setCount(2);
        app_->character()->parameters()->setValue("phase-iterations", 1);
    }

    // One thing at random; most do not wait for what was begun before.
    void doSomething() {
        switch (pick(11)) {
            case 0:
                return app_->setCorpus(corpora_.at(pick(corpora_.size())));
            case 1:
                return app_->train();
            case 2:
            case 3:
                return app_->generate();
            case 4:
                return app_->audition();
            case 5:
                return app_->cancel();
            case 6:
                return changeCharacter();
            case 7:
                return removeAResult();
            case 8:
                return restart();
            case 9:
                return savePreset();
            default:
                QTest::qWait(static_cast<int>(pick(40)));
        }
    }

    void comeToRest() {
        QVERIFY2(waitUntilIdle(*app_), "it never ends");
        AppModelProbe::waitForWork(*app_);
        deliverEvents();
        QVERIFY(waitUntilIdle(*app_));
    }

    // Only at rest.
    void verify() {
        verifySounds();
        verifyModels();
        verifyNothingIsLeftBehind();
        const QString error = app_->errorMessage();
        QVERIFY2(error.isEmpty() || error.endsWith('.') || error.endsWith('!'), qPrintable(error));
        app_->dismissError();
    }

private:
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
    }

    void start() { app_ = std::make_unique<AppModel>(world_.environment); }

    void restart() {
        const QUrl corpus = app_->corpusURL();
        const int count = app_->count();
        app_.reset();
        start();
        QCOMPARE(app_->corpusURL(), corpus);
        QCOMPARE(app_->count(), count);
        app_->setOutputText(world_.path("out"));
        app_->character()->parameters()->setValue("phase-iterations", 1);
    }

    void changeCharacter() {
        switch (pick(4)) {
            case 0:
                return app_->character()->undo();
            case 1:
                return app_->character()->redo();
            case 2:
                return app_->character()->parameters()->setValue("drift",
                                                                 0.01 * static_cast<double>(pick(100)));
            default:
                return app_->setSeedText(QString::number(pick(50)));
        }
    }

    void removeAResult() {
        if (app_->results()->count() == 0) return;
        const QString file =
            app_->results()
                ->urlAt(static_cast<int>(pick(static_cast<std::size_t>(app_->results()->count()))))
                .toLocalFile();
        QFile::remove(file);
        sounds_.erase(file);
    }

    void savePreset() { app_->character()->saveOwnPreset(QStringLiteral("Mine %1").arg(pick(20))); }

    // What was there is there still, as it was; what is new is whole.
    void verifySounds() {
        std::map<QString, QByteArray> found;
        for (const QFileInfo& file : QDir(world_.path("out")).entryInfoList(QDir::Files)) {
            found[file.filePath()] = TestWorld::read(file.filePath());
            QVERIFY2(AudioIO::info(toPath(file.filePath())).has_value(), qPrintable(file.filePath()));
        }
        for (const auto& [file, bytes] : sounds_) {
            QVERIFY2(found.contains(file), qPrintable(file + " is gone"));
            QVERIFY2(found.at(file) == bytes, qPrintable(file + " has changed"));
        }
        sounds_ = std::move(found);
    }

    void verifyModels() {
        if (!fs::exists(world_.environment.modelsRoot)) return;
        const auto models = ModelStore::list(world_.environment.modelsRoot);
        std::set<std::string> names;
        for (const ModelStore::StoredFolder& model : models) {
            const ModelBundle bundle = ModelStore::open(model.folder);
            QVERIFY(!bundle.latents.empty());
            names.insert(bundle.metadata.corpusName);
        }
        QVERIFY(names.size() <= corpora_.size());
    }

    // Hidden files in what the program writes.
    [[nodiscard]] QStringList temporaries() const {
        QStringList found;
        for (const QString& folder : {world_.path("out"), world_.path("data"), world_.path("config")}) {
            QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
            while (files.hasNext()) {
                files.next();
                if (files.fileName().startsWith('.')) found.append(files.filePath());
            }
        }
        return found;
    }

    // The preferences are written a moment after a change, under a lock that is a file.
    void verifyNothingIsLeftBehind() { QTRY_COMPARE_WITH_TIMEOUT(temporaries(), QStringList(), 60000); }

    TestWorld world_;
    std::vector<QUrl> corpora_;
    std::unique_ptr<AppModel> app_;
    std::map<QString, QByteArray> sounds_;
    std::mt19937 random_{5};
};

}  // namespace

class SoakTest : public QObject {
    Q_OBJECT

private slots:
    void keepsItsPromisesWhateverIsDone() {
        Session session;
        session.comeToRest();
        const std::ptrdiff_t before = openDescriptors();
        constexpr int oftenEnough = 10;
        for (int i = 1; i <= operations(); ++i) {
            session.doSomething();
            if (QTest::currentTestFailed()) return;
            if (i % oftenEnough != 0) continue;
            session.comeToRest();
            session.verify();
            if (QTest::currentTestFailed()) return;
        }
        constexpr std::ptrdiff_t watchedFolders = 10;
        QVERIFY(openDescriptors() <= before + watchedFolders);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::SoakTest)
#include "SoakTest.moc"
