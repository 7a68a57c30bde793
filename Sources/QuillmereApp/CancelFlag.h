#pragma once

#include <mutex>

namespace quillmere {

// Asks background work to stop. One flag per run; the work polls it between units of work.
// Threads: any.
class CancelFlag {
public:
    void cancel() {
        const std::lock_guard guard(lock_);
        flag_ = true;
    }

    [[nodiscard]] bool isCancelled() const {
        const std::lock_guard guard(lock_);
        return flag_;
    }

private:
    mutable std::mutex lock_;
    bool flag_ = false;
};

}  // namespace quillmere
