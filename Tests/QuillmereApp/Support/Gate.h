#pragma once

#include <condition_variable>
#include <mutex>

namespace quillmere::testing {

// Holds other threads up while it is closed. Open at first.
class Gate {
public:
    void close() {
        const std::lock_guard guard(mutex_);
        isOpen_ = false;
    }
    void open() {
        const std::lock_guard guard(mutex_);
        isOpen_ = true;
        opened_.notify_all();
    }
    void pass() {
        std::unique_lock lock(mutex_);
        opened_.wait(lock, [this] { return isOpen_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable opened_;
    bool isOpen_ = true;
};

}  // namespace quillmere::testing
