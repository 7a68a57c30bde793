// Built by no target: Clang must refuse it, because it reads guarded data without the lock.

#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {

class Counter {
public:
    [[nodiscard]] int value() const { return value_; }

private:
    Mutex mutex_;
    int value_ QUILLMERE_GUARDED_BY(mutex_) = 0;
};

}  // namespace quillmere
