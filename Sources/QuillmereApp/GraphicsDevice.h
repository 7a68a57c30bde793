#pragma once

namespace quillmere {

// Whether the kernel has a device of a graphics processor, as far as can be told without loading a driver.
[[nodiscard]] bool hasGraphicsDevice();

}  // namespace quillmere
