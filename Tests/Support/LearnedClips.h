#pragma once

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "Support/SmallCorpus.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere::testing {

// The small model with a folder of samples that it might have learned: noise bursts that ring at a pitch,
// each with another decay.
class LearnedClips {
public:
    LearnedClips() {
        SeededRNG rng(23);
        for (std::size_t i = 0; i < model.latents.size(); ++i) {
            const std::string name = "clip " + std::to_string(i) + ".wav";
            std::vector<float> samples = struckTone(200.0 + 90.0 * static_cast<double>(i), 0.3, 8000);
            for (std::size_t n = 0; n < samples.size(); ++n)
                samples[n] +=
                    0.4F * std::exp(-0.004F * static_cast<float>((i + 1) * n)) * rng.signedUniform();
            writeWAV(folder / name, samples, 8000);
            model.metadata.clipNames.push_back(name);
        }
        model.metadata.fingerprint = scan().fingerprint();
    }

    [[nodiscard]] CorpusSummary scan() const { return Corpus::scan(folder.path()); }

    const TempFolder folder;
    ModelBundle model = smallModel();
};

}  // namespace quillmere::testing
