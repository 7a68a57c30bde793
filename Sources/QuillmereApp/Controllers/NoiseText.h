#pragma once

#include <QString>

#include "QuillmereApp/Words.h"

namespace quillmere {

// That so many of the variations did not get the detail that was asked for.
[[nodiscard]] inline QString noiseText(int withNoise, int variations) {
    if (withNoise == variations)
        return Words::tr("The learned samples could not be read: noise stands in for their detail.");
    return Words::tr(
               "For %1 of %2 variations a learned sample could not be read: noise stands in for its detail.")
        .arg(withNoise)
        .arg(variations);
}

}  // namespace quillmere
