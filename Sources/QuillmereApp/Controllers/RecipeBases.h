#pragma once

#include <memory>

#include "QuillmereCore/Network/Device/ChosenDevice.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere {

// What recipes of files that generator makes have in common; parameters and format are left as they are. In
// the background. device: that generator was compiled for; null for the processor.
[[nodiscard]] inline RecipeBase recipeBaseOf(const SampleGenerator& generator,
                                             const std::shared_ptr<network::ChosenDevice>& device) {
    RecipeBase base{.corpusName = generator.bundle().metadata.corpusName,
                    .fingerprint = generator.bundle().metadata.fingerprint};
    if (!device) return base;
    const network::ComputeDevice& computer = device->device();
    if (computer.type != network::ComputeDevice::Type::processor) base.device = computer.name();
    return base;
}

}  // namespace quillmere
