#pragma once

#include <cstddef>

#include "QuillmereCore/Network/CPU/FloatBuffer.h"

namespace quillmere::network::cpu {

// A batch of images [n][row][column][channel] with a border of at least one zero pixel around each.
// Rows and columns are rounded up so that whole 3x3 tiles of pixel pairs can be read: 6 * ceil(extent / 6)
// pixels and the border.
struct PaddedView {
    float* data = nullptr;  // pixel (-1, -1) of image 0; null: no such tensor
    int height = 0;
    int width = 0;
    int channels = 0;
    std::size_t rowStride = 0;    // floats
    std::size_t imageStride = 0;  // floats

    [[nodiscard]] float* image(int n) const { return data + static_cast<std::ptrdiff_t>(n) * imageStride; }
    [[nodiscard]] float* at(int n, int y, int x) const {
        return image(n) + static_cast<std::size_t>(y + 1) * rowStride +
               static_cast<std::size_t>(x + 1) * channels;
    }
    // The view in which image `from` is this view's image `to`. Only that image may be used.
    [[nodiscard]] PaddedView renumbered(int to, int from) const {
        PaddedView view = *this;
        if (data)
            view.data += (static_cast<std::ptrdiff_t>(to) - from) * static_cast<std::ptrdiff_t>(imageStride);
        return view;
    }
};

class PaddedTensor {
public:
    PaddedTensor() = default;
    PaddedTensor(FloatArena& arena, int images, int height, int width, int channels) {
        const auto padded = [](int extent) -> std::size_t {
            return (static_cast<std::size_t>(extent) + 5) / 6 * 6 + 2;
        };
        view_.height = height;
        view_.width = width;
        view_.channels = channels;
        view_.rowStride = padded(width) * channels;
        view_.imageStride = padded(height) * view_.rowStride;
        view_.data = arena.take(view_.imageStride * images).data();
    }

    [[nodiscard]] const PaddedView& view() const noexcept { return view_; }

private:
    PaddedView view_;
};

}  // namespace quillmere::network::cpu
