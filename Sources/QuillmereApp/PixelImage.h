#pragma once

#include <QImage>
#include <cstddef>

#include "QuillmereCore/Picture/Drawing.h"

namespace quillmere {

// The same picture for the window.
[[nodiscard]] inline QImage imageOf(const Pixels& pixels) {
    QImage image(static_cast<int>(pixels.width), static_cast<int>(pixels.height), QImage::Format_RGB32);
    for (std::size_t y = 0; y < pixels.height; ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(static_cast<int>(y)));
        for (std::size_t x = 0; x < pixels.width; ++x) {
            const Colour& colour = pixels.colours[y * pixels.width + x];
            line[x] = qRgb(colour.red, colour.green, colour.blue);
        }
    }
    return image;
}

}  // namespace quillmere
