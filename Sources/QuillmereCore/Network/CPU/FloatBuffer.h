#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace quillmere::network::cpu {

// A fixed number of floats on a 64-byte boundary, zero at first; the memory belongs to a FloatArena. Vector
// code may read and write up to `slack` floats past the end.
class FloatBuffer {
public:
    static constexpr std::size_t alignment = 64;
    static constexpr std::size_t slack = 32;

    FloatBuffer() = default;
    FloatBuffer(float* data, std::size_t count) : data_(data), count_(count) {}

    [[nodiscard]] float* data() const noexcept { return data_; }
    [[nodiscard]] std::size_t size() const noexcept { return count_; }
    [[nodiscard]] bool empty() const noexcept { return count_ == 0; }
    void clear() { std::memset(data_, 0, count_ * sizeof(float)); }

private:
    float* data_ = nullptr;
    std::size_t count_ = 0;
};

// Memory for many buffers that live equally long, in a few large blocks for which large pages are asked: the
// kernels walk through tens of megabytes a step in many streams, and looking up small pages would cost them a
// good part of their time.
class FloatArena {
public:
    // Throws std::bad_alloc.
    [[nodiscard]] FloatBuffer take(std::size_t count) {
        const std::size_t bytes =
            roundUp((count + FloatBuffer::slack) * sizeof(float), FloatBuffer::alignment);
        if (next_ == nullptr || bytes > left_) addBlock(bytes);
        auto* const data = reinterpret_cast<float*>(next_);
        next_ += bytes;
        left_ -= bytes;
        std::memset(data, 0, bytes);
        return {data, count};
    }

private:
    struct Free {
        void operator()(std::byte* p) const { std::free(p); }
    };

    static constexpr std::size_t largePage = std::size_t{1} << 21;
#if defined(QUILLMERE_ADDRESS_SANITIZER)
    static constexpr std::size_t blockSize = 0;  // so that every buffer has its guards
#else
    // What is not used of a block takes no memory.
    static constexpr std::size_t blockSize = std::size_t{64} << 20;
#endif

    static std::size_t roundUp(std::size_t bytes, std::size_t multiple) {
        return (bytes + multiple - 1) / multiple * multiple;
    }

    void addBlock(std::size_t bytes) {
        const bool large = std::max(bytes, blockSize) >= largePage;
        const std::size_t boundary = large ? largePage : FloatBuffer::alignment;
        left_ = roundUp(std::max(bytes, blockSize), boundary);
        blocks_.emplace_back(static_cast<std::byte*>(std::aligned_alloc(boundary, left_)));
        next_ = blocks_.back().get();
        if (!next_) throw std::bad_alloc();
#if defined(MADV_HUGEPAGE)
        // Only a wish: without large pages everything works the same.
        if (large) madvise(next_, left_, MADV_HUGEPAGE);
#endif
    }

    std::vector<std::unique_ptr<std::byte, Free>> blocks_;
    std::byte* next_ = nullptr;
    std::size_t left_ = 0;
};

}  // namespace quillmere::network::cpu
