#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {

// A fixed number of floats on a 64-byte boundary, zero at first. Vector code may read and write up to
// `slack` floats past the end.
class FloatBuffer {
public:
    static constexpr std::size_t alignment = 64;
    static constexpr std::size_t slack = 32;

    FloatBuffer() = default;
    explicit FloatBuffer(std::size_t count) : count_(count) {
        const std::size_t bytes = ((count + slack) * sizeof(float) + alignment - 1) / alignment * alignment;
        data_.reset(static_cast<float*>(std::aligned_alloc(alignment, bytes)));
        if (!data_) throw std::bad_alloc();
        std::memset(data_.get(), 0, bytes);
    }

    [[nodiscard]] float* data() const noexcept { return data_.get(); }
    [[nodiscard]] std::size_t size() const noexcept { return count_; }
    [[nodiscard]] bool empty() const noexcept { return count_ == 0; }
    void clear() { std::memset(data_.get(), 0, count_ * sizeof(float)); }

private:
    struct Free {
        void operator()(float* p) const { std::free(p); }
    };
    std::size_t count_ = 0;
    std::unique_ptr<float, Free> data_;
};

}  // namespace quillmere::network::cpu
