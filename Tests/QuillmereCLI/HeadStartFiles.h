#pragma once

#include <filesystem>

#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "Support/TempFolder.h"

namespace quillmere::testing {

// A head start of random networks for images of 32 frames; its version is "test".
inline void writeHeadStart(const std::filesystem::path& folder) {
    for (const AnalysisProfile profile : {AnalysisProfile::percussive, AnalysisProfile::tonal}) {
        const ModelConfig config = ModelConfig::forSeconds(44100, 0.1, profile, HeadStart::latentDim);
        writeText(HeadStart::file(folder, profile),
                  HeadStart::encode({config, VAEArchitecture::initialWeights(config, 6)}, "test"));
    }
}

}  // namespace quillmere::testing
