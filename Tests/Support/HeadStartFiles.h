#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/VAEArchitecture.h"

namespace quillmere::testing {

// A head start of random networks for images of 32 frames; its version is "test".
inline void writeHeadStart(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    for (const AnalysisProfile profile : {AnalysisProfile::percussive, AnalysisProfile::tonal}) {
        const ModelConfig config = ModelConfig::forSeconds(44100, 0.1, profile, HeadStart::latentDim);
        const std::string content =
            HeadStart::encode({config, VAEArchitecture::initialWeights(config, 6)}, "test");
        std::ofstream(HeadStart::file(folder, profile), std::ios::binary) << content;
    }
}

}  // namespace quillmere::testing
