#pragma once

#include <QString>
#include <QThreadPool>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/QueuedCalls.h"
#include "QuillmereCore/Network/Device/ComputeDevice.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {

// Why work in the background gave no value.
struct TaskFailure {
    enum class Kind {
        other,
        cancelled,  // the work was asked to stop: nothing went wrong
        device,     // the compute device failed
        damage,     // what was read is damaged: it will be another time
    };
    QString message;  // for the user
    Kind kind = Kind::other;
};

// The work that an object of the user-interface thread has in the background. Its destructor waits for all of
// it and drops the answers that have not been delivered: make it the owner's last member, and ask long work
// to stop (CancelFlag) before it goes.
class BackgroundTasks {
public:
    // Answers are delivered on the thread that makes it. At most threads pieces of work run at a time, the
    // others wait for their turn.
    explicit BackgroundTasks(int threads = 8);
    ~BackgroundTasks();
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;

    void waitForAll();

    // Runs work() on another thread, then done(its value) (done() for void), or failed(TaskFailure) when it
    // throws, on the answers' thread. Of waiting pieces of work the one of higher priority starts first, of
    // equal ones the older.
    template <typename Work, typename Done, typename Failed>
    void run(Work work, Done done, Failed failed, int priority = 0) {
        // Shared, because a std::function is copied, and work and values may be move-only.
        auto shared = std::make_shared<Work>(std::move(work));
        start(
            [this, shared, done = std::move(done), failed = std::move(failed)] {
                auto failure = attempt([&] {
                    if constexpr (std::is_void_v<std::invoke_result_t<Work&>>) {
                        (*shared)();
                        post(done);
                    } else {
                        auto value = std::make_shared<std::invoke_result_t<Work&>>((*shared)());
                        post([value, done]() mutable { done(std::move(*value)); });
                    }
                });
                if (failure) post([failed, failure = std::move(*failure)]() mutable { failed(failure); });
            },
            priority);
    }

    // Why function did not return; nothing when it did. Any thread.
    static std::optional<TaskFailure> attempt(const std::function<void()>& function);

    // By any thread, in the middle of its work: calls function on the answers' thread.
    void post(std::function<void()> function) { calls_.add(std::move(function)); }

private:
    void start(std::function<void()> job, int priority);
    void runNext();

    QueuedCalls calls_;
    Mutex mutex_;
    std::multimap<int, std::function<void()>, std::greater<>> waiting_  // by priority
        QUILLMERE_GUARDED_BY(mutex_);
    QThreadPool pool_;
};

}  // namespace quillmere
