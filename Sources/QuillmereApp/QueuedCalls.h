#pragma once

#include <QObject>
#include <deque>
#include <functional>

#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {

// Brings calls of other threads to the thread that made it, where the event loop makes them one by one, in
// the order in which they were added. The destructor drops those still waiting: no other thread may add any
// then.
//
// Unlike Qt's own queued calls it hands them over under a lock that a thread sanitizer sees, though Qt's
// library is not instrumented.
class QueuedCalls : public QObject {
public:
    // By any thread.
    void add(std::function<void()> call);

protected:
    void customEvent(QEvent* event) override;

private:
    Mutex mutex_;
    std::deque<std::function<void()>> waiting_ QUILLMERE_GUARDED_BY(mutex_);
};

}  // namespace quillmere
