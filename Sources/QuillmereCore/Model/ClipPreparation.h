#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Model/ModelConfig.h"

namespace quillmere {

// A corpus file as audio: mono at the model's rate, onset-trimmed, its loudest sample at +-1.
struct DecodedClip {
    std::string name;  // the file's relative path
    std::vector<float> samples;
    double originalSeconds = 0;  // before any processing

    // End of the last 10 ms block louder than about -45 dB, in seconds: how long the clip really sounds.
    [[nodiscard]] double effectiveSeconds(int sampleRate) const;
    // Mean ratio of geometric to arithmetic mean magnitude between 60 and 6000 Hz over the loud frames:
    // near 1 for noise, near 0 for a few strong partials.
    [[nodiscard]] double flatness(int sampleRate) const;
};

struct PreparedClip {
    std::string name;
    std::vector<float> image;  // [nMels][frames], network units
    double originalSeconds = 0;
};

// From corpus files to network images. Pure functions; any thread.
namespace ClipPreparation {

// Nothing for a silent file. Throws AudioIOError for one that cannot be read.
[[nodiscard]] std::optional<DecodedClip> decode(const CorpusFile& file, int sampleRate);

// The part of decode after rate conversion: onset trim and peak normalisation; nothing when silent.
[[nodiscard]] std::optional<std::vector<float>> trimAndNormalise(std::vector<float> samples, int sampleRate);

// The first clipSamples samples, the last 20 ms of them faded out; shorter clips are returned unchanged.
[[nodiscard]] std::vector<float> cutAndFade(std::span<const float> samples, std::int64_t clipSamples,
                                            std::int64_t sampleRate);

// stft: one made for config, owned by the calling thread.
[[nodiscard]] PreparedClip prepare(const DecodedClip& clip, const ModelConfig& config,
                                   const FeatureExtractor& extractor, STFT& stft);

// The automatic profile: tonal when the median flatness is below 0.15 and the median effective duration is
// at least 0.3 s. Both lists in any order, not empty.
[[nodiscard]] AnalysisProfile resolveProfile(std::vector<double> effectiveSeconds,
                                             std::vector<double> flatness);

// The automatic clip length: 1.05 times the 90th percentile plus 0.05 s, within 0.25 ... 4 s. Not empty.
[[nodiscard]] double suggestClipSeconds(std::vector<double> effectiveSeconds);

}  // namespace ClipPreparation
}  // namespace quillmere
