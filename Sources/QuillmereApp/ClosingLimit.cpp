#include "QuillmereApp/ClosingLimit.h"

#include <cstdlib>

namespace quillmere {

ClosingLimit::~ClosingLimit() {
    if (!watch_.joinable()) return;
    {
        const MutexLock lock(mutex_);
        hasEnded_ = true;
        ended_.notify_all();
    }
    watch_.join();
}

void ClosingLimit::begin(int status, std::chrono::milliseconds limit) {
    if (watch_.joinable()) return;
    watch_ = std::thread([this, status, limit] {
        const MutexLock lock(mutex_);
        const bool inTime =
            ended_.wait_for(mutex_, limit, [this]() QUILLMERE_REQUIRES(mutex_) { return hasEnded_; });
        if (!inTime) std::_Exit(status);
    });
}

}  // namespace quillmere
