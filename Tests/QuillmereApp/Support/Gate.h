#pragma once

#include <condition_variable>

#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::testing {

// Holds other threads up while it is closed. Open at first.
class Gate {
public:
    void close() {
        const MutexLock lock(mutex_);
        isOpen_ = false;
    }
    void open() {
        const MutexLock lock(mutex_);
        isOpen_ = true;
        opened_.notify_all();
    }
    void pass() {
        const MutexLock lock(mutex_);
        opened_.wait(mutex_, [this]() QUILLMERE_REQUIRES(mutex_) { return isOpen_; });
    }

private:
    Mutex mutex_;
    std::condition_variable_any opened_;
    bool isOpen_ QUILLMERE_GUARDED_BY(mutex_) = true;
};

}  // namespace quillmere::testing
