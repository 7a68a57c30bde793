#pragma once

#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>
#include <utility>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereCore/Network/Devices.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

// Why work in the background gave no value.
struct TaskFailure {
    QString message;         // for the user
    bool cancelled = false;  // the work was asked to stop: nothing went wrong
    bool ofDevice = false;   // the compute device failed
};

// The work that an object of the user-interface thread has in the background. Its destructor waits for all of
// it: make it the owner's last member, and ask long work to stop (CancelFlag) before it goes.
class BackgroundTasks {
public:
    // Answers are delivered on owner's thread, as long as owner lives. At most threads pieces of work run at
    // a time, the others wait for their turn.
    explicit BackgroundTasks(QObject* owner, int threads = 8) : owner_(owner) {
        pool_.setMaxThreadCount(threads);
    }
    ~BackgroundTasks() { pool_.waitForDone(); }
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;

    void waitForAll() { pool_.waitForDone(); }

    // Runs work() on another thread, then done(its value) (done() for void), or failed(TaskFailure) when it
    // throws, on the owner's thread. Of waiting pieces of work the one of higher priority starts first.
    template <typename Work, typename Done, typename Failed>
    void run(Work work, Done done, Failed failed, int priority = 0) {
        pool_.start(
            [owner = owner_, work = std::move(work), done = std::move(done),
             failed = std::move(failed)]() mutable {
                std::optional<TaskFailure> failure = attempt([&] {
                    if constexpr (std::is_void_v<std::invoke_result_t<Work&>>) {
                        work();
                        deliver(owner, std::move(done));
                    } else {
                        // Shared, because Qt copies what it queues and a value may be large or move-only.
                        auto value = std::make_shared<std::invoke_result_t<Work&>>(work());
                        deliver(owner, [value, done]() mutable { done(std::move(*value)); });
                    }
                });
                if (failure) {
                    deliver(owner, [failed, failure = std::move(*failure)]() mutable { failed(failure); });
                }
            },
            priority);
    }

private:
    template <typename Function>
    static void deliver(QObject* owner, Function function) {
        QMetaObject::invokeMethod(owner, std::move(function), Qt::QueuedConnection);
    }

    // An exception must not leave the task: the pool would lose its text.
    template <typename Function>
    static std::optional<TaskFailure> attempt(Function function) {
        try {
            function();
        } catch (const CancellationError& error) {
            return TaskFailure{.message = QString::fromUtf8(error.what()), .cancelled = true};
        } catch (const network::DeviceError& error) {
            return TaskFailure{.message = QString::fromUtf8(error.what()), .ofDevice = true};
        } catch (const std::bad_alloc&) {
            return TaskFailure{.message = QStringLiteral("There is not enough memory for this.")};
        } catch (const std::exception& error) {
            return TaskFailure{.message = QString::fromUtf8(error.what())};
        }
        return std::nullopt;
    }

    QObject* owner_;
    QThreadPool pool_;
};

// work in the background on behalf of an object; see BackgroundTasks::run.
template <typename Work, typename Done, typename Failed>
void runInBackground(BackgroundTasks& tasks, Work work, Done done, Failed failed) {
    tasks.run(std::move(work), std::move(done), std::move(failed));
}

}  // namespace quillmere
