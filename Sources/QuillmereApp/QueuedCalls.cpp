#include "QuillmereApp/QueuedCalls.h"

#include <QCoreApplication>
#include <QEvent>
#include <memory>
#include <utility>

namespace quillmere {

void QueuedCalls::add(std::function<void()> call) {
    {
        const MutexLock lock(mutex_);
        waiting_.push_back(std::move(call));
    }
    // The event loop owns the event. It stands for one call, so that others get their turn between two.
    QCoreApplication::postEvent(this, std::make_unique<QEvent>(QEvent::User).release());
}

void QueuedCalls::customEvent(QEvent*) {
    std::function<void()> call;
    {
        const MutexLock lock(mutex_);
        call = std::move(waiting_.front());
        waiting_.pop_front();
    }
    call();
}

}  // namespace quillmere
