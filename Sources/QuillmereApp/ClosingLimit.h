#pragma once

#include <chrono>
#include <condition_variable>
#include <thread>

#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {

// Ends the program when its last work outlasts the window: a read from a mount whose server is gone cannot be
// asked to stop. Nothing is lost by that, because every file is written beside its place and renamed when it
// is whole.
//
// Threads: that of its owner.
class ClosingLimit {
public:
    static constexpr std::chrono::milliseconds usual{10'000};

    ClosingLimit() = default;
    // What was waited for has ended.
    ~ClosingLimit();
    ClosingLimit(const ClosingLimit&) = delete;
    ClosingLimit& operator=(const ClosingLimit&) = delete;

    // From now on at most this long; then the program ends with status. The first call counts.
    void begin(int status, std::chrono::milliseconds limit = usual);

private:
    Mutex mutex_;
    std::condition_variable_any ended_;
    bool hasEnded_ QUILLMERE_GUARDED_BY(mutex_) = false;
    std::thread watch_;
};

}  // namespace quillmere
