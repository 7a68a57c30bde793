#pragma once

#include <sys/mman.h>

#include <new>
#include <stdexcept>

namespace quillmere::testing {

// What a child and its parent both see: numbers for which there is no other way out of a killed child.
template <typename Value>
class Shared {
public:
    Shared()
        : place_(::mmap(nullptr, sizeof(Value), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
        if (place_ == MAP_FAILED) throw std::runtime_error("no shared memory");
        new (place_) Value();
    }
    ~Shared() { ::munmap(place_, sizeof(Value)); }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

    Value& operator*() const { return *static_cast<Value*>(place_); }
    Value* operator->() const { return static_cast<Value*>(place_); }

private:
    void* place_;
};

}  // namespace quillmere::testing
