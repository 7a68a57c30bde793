#include "QuillmereApp/BackgroundTask.h"

#include <QObject>
#include <QSemaphore>
#include <QThread>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

class BackgroundTaskTest : public QObject {
    Q_OBJECT

private slots:
    void worksElsewhereAndAnswersHere() {
        BackgroundTasks tasks;
        QThread* worked = nullptr;
        QThread* answered = nullptr;
        int value = 0;
        tasks.run(
            [&] {
                worked = QThread::currentThread();
                return 42;
            },
            [&](int result) {
                value = result;
                answered = QThread::currentThread();
            },
            [](const TaskFailure&) { QFAIL("no failure expected"); });
        QTRY_COMPARE(value, 42);
        QVERIFY(worked != QThread::currentThread());
        QCOMPARE(answered, QThread::currentThread());
    }

    void handsOverValuesThatCannotBeCopied() {
        BackgroundTasks tasks;
        std::unique_ptr<int> got;
        tasks.run([] { return std::make_unique<int>(7); },
                  [&](std::unique_ptr<int> value) { got = std::move(value); }, [](const TaskFailure&) {});
        QTRY_VERIFY(got != nullptr);
        QCOMPARE(*got, 7);
    }

    void aFailureKeepsItsText() {
        BackgroundTasks tasks;
        TaskFailure failure;
        tasks.run([] { throw Failure("kick.wav contains no audio"); }, [] { QFAIL("no success expected"); },
                  [&](const TaskFailure& told) { failure = told; });
        QTRY_COMPARE(failure.message, QStringLiteral("kick.wav contains no audio"));
        QVERIFY(failure.kind == TaskFailure::Kind::other);
    }

    void aFailureHasItsKind() {
        using Kind = TaskFailure::Kind;
        const auto kindOf = [](const auto& error) {
            return BackgroundTasks::attempt([&] { throw error; })->kind;
        };
        QVERIFY(kindOf(CancellationError()) == Kind::cancelled);
        QVERIFY(kindOf(network::DeviceError("lost")) == Kind::device);
        QVERIFY(kindOf(CorruptModelError("cut")) == Kind::damage);
        QVERIFY(kindOf(DecodingError("no JSON")) == Kind::damage);
        QVERIFY(kindOf(FileError("a", std::make_error_code(std::errc::io_error))) == Kind::other);
        QVERIFY(kindOf(ModelBusyError()) == Kind::other);
        QVERIFY(kindOf(std::bad_alloc()) == Kind::other);
        QVERIFY(!BackgroundTasks::attempt([] {}));
    }

    void lackOfMemoryIsSaidInWords() {
        BackgroundTasks tasks;
        QString message;
        tasks.run([] { throw std::bad_alloc(); }, [] {},
                  [&](const TaskFailure& told) { message = told.message; });
        QTRY_COMPARE(message, QStringLiteral("There is not enough memory for this."));
    }

    void postedCallsComeInOrderAndBeforeTheAnswer() {
        BackgroundTasks tasks;
        std::vector<int> order;
        tasks.run(
            [&] {
                for (int i = 0; i < 100; ++i)
                    tasks.post([&order, i] { order.push_back(i); });
            },
            [&] { order.push_back(100); }, [](const TaskFailure&) {});
        QTRY_COMPARE(order.size(), 101U);
        QVERIFY(std::is_sorted(order.begin(), order.end()));
    }

    void theDestructorWaitsAndNothingArrivesLater() {
        std::atomic<bool> worked = false;
        bool answered = false;
        {
            BackgroundTasks tasks;
            tasks.run(
                [&] {
                    QThread::msleep(100);
                    worked = true;
                },
                [&] { answered = true; }, [](const TaskFailure&) {});
        }
        QVERIFY(worked);
        deliverEvents();
        QVERIFY(!answered);
    }

    void oneThreadKeepsTheOrder() {
        BackgroundTasks tasks(1);
        std::vector<int> order;
        for (int i = 0; i < 20; ++i)
            tasks.run([i] { return i; }, [&](int value) { order.push_back(value); },
                      [](const TaskFailure&) {});
        QTRY_COMPARE(order.size(), 20U);
        QVERIFY(std::is_sorted(order.begin(), order.end()));
    }

    void higherPrioritiesStartFirst() {
        BackgroundTasks tasks(1);
        std::vector<int> order;
        QSemaphore queued;
        tasks.run([&] { queued.acquire(); }, [] {}, [](const TaskFailure&) {});
        for (int i = 0; i < 5; ++i)
            tasks.run([i] { return i; }, [&](int value) { order.push_back(value); },
                      [](const TaskFailure&) {}, i);
        queued.release();
        QTRY_COMPARE(order.size(), 5U);
        QCOMPARE(order, std::vector<int>({4, 3, 2, 1, 0}));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::BackgroundTaskTest)
#include "BackgroundTaskTest.moc"
#include "QuillmereCore/Model/ModelStore.h"
