// Locks that Clang's thread-safety analysis understands: the Clang build refuses code that touches guarded
// data without holding its mutex. Other compilers see a plain std::mutex.
//
//     mutable Mutex mutex_;
//     int done_ QUILLMERE_GUARDED_BY(mutex_) = 0;
//
//     const MutexLock lock(mutex_);
//     ++done_;
//
// The analysis looks at one function at a time, a lambda being one of its own, and not at constructors and
// destructors. A variable inside a function cannot be guarded; a member of a structure in it can.

#pragma once

#include <mutex>

#ifdef __clang__
#define QUILLMERE_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define QUILLMERE_THREAD_ATTRIBUTE(attribute)
#endif

// On a variable: may be read and written only while the mutex is held.
#define QUILLMERE_GUARDED_BY(mutex) QUILLMERE_THREAD_ATTRIBUTE(guarded_by(mutex))
// On a pointer: what it points to may be read and written only while the mutex is held.
#define QUILLMERE_POINTEE_GUARDED_BY(mutex) QUILLMERE_THREAD_ATTRIBUTE(pt_guarded_by(mutex))
// On a function: whoever calls it holds the mutex.
#define QUILLMERE_REQUIRES(mutex) QUILLMERE_THREAD_ATTRIBUTE(requires_capability(mutex))
// On a function: whoever calls it does not hold the mutex, which the function takes.
#define QUILLMERE_EXCLUDES(mutex) QUILLMERE_THREAD_ATTRIBUTE(locks_excluded(mutex))

namespace quillmere {

// Held by one thread at a time. A thread that locks it twice waits for ever.
class QUILLMERE_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() QUILLMERE_THREAD_ATTRIBUTE(acquire_capability()) { mutex_.lock(); }
    void unlock() QUILLMERE_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

// Holds a mutex for as long as it lives. A std::condition_variable_any waits on the mutex itself; what it
// asks for is called under the lock, and says so:
//
//     wake_.wait(mutex_, [this]() QUILLMERE_REQUIRES(mutex_) { return done_ > 0; });
class QUILLMERE_THREAD_ATTRIBUTE(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) QUILLMERE_THREAD_ATTRIBUTE(acquire_capability(mutex)) : mutex_(mutex) {
        mutex_.lock();
    }
    ~MutexLock() QUILLMERE_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex_;
};

}  // namespace quillmere
