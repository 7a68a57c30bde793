#include "QuillmereApp/BackgroundTask.h"

#include <QThreadPool>

#include "QuillmereApp/Words.h"
#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere {

BackgroundTasks::BackgroundTasks(int threads) {
    pool_.setMaxThreadCount(threads);
}

BackgroundTasks::~BackgroundTasks() {
    waitForAll();
}

void BackgroundTasks::waitForAll() {
    pool_.waitForDone();
    // Each thread takes this lock after its work. Qt's own waiting is not instrumented, so without the lock a
    // thread sanitizer would not see that the work is over, and would report the caller's next access as a
    // race.
    const MutexLock lock(mutex_);
}

// The pool is told only that there is work: see QueuedCalls.
void BackgroundTasks::start(std::function<void()> job, int priority) {
    {
        const MutexLock lock(mutex_);
        waiting_.emplace(priority, std::move(job));
    }
    pool_.start([this] { runNext(); });
}

void BackgroundTasks::runNext() {
    std::function<void()> job;
    {
        const MutexLock lock(mutex_);
        job = std::move(waiting_.extract(waiting_.begin()).mapped());
    }
    job();
    job = {};
    const MutexLock lock(mutex_);  // for waitForAll
}

// An exception must not leave the task: the pool would lose its text.
std::optional<TaskFailure> BackgroundTasks::attempt(const std::function<void()>& function) {
    using Kind = TaskFailure::Kind;
    try {
        function();
    } catch (const CancellationError& error) {
        return TaskFailure{Words::of(error), Kind::cancelled};
    } catch (const network::DeviceError& error) {
        return TaskFailure{Words::of(error), Kind::device};
    } catch (const CorruptModelError& error) {
        return TaskFailure{Words::of(error), Kind::damage};
    } catch (const DecodingError& error) {
        return TaskFailure{Words::of(error), Kind::damage};
    } catch (const std::bad_alloc&) {
        return TaskFailure{Words::tr("There is not enough memory for this.")};
    } catch (const std::exception& error) {
        return TaskFailure{Words::of(error)};
    }
    return std::nullopt;
}

}  // namespace quillmere
