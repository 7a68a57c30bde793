#pragma once

#include <png.h>

#include <cstddef>
#include <span>
#include <stdexcept>
#include <vector>

#include "QuillmereCore/Picture/Drawing.h"

namespace quillmere::testing {

// A PNG as its own library reads it. Throws std::runtime_error for bytes that are none.
inline Pixels readPNG(std::span<const std::byte> bytes) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0)
        throw std::runtime_error(static_cast<const char*>(image.message));
    image.format = PNG_FORMAT_RGB;
    std::vector<png_byte> codes(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, codes.data(), 0, nullptr) == 0)
        throw std::runtime_error(static_cast<const char*>(image.message));
    Pixels pixels{image.width, image.height, {}};
    for (std::size_t i = 0; i + 2 < codes.size(); i += 3)
        pixels.colours.push_back({codes[i], codes[i + 1], codes[i + 2]});
    return pixels;
}

}  // namespace quillmere::testing
