#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Network/Backend.h"

// What a measurement of the sound needs of the product beside its programs: samples that a model has never
// learned, brought into the form of those that it has, and what the model makes of them.
namespace quillmere::soundcheck {

// A sample as a model sees it.
struct Clip {
    std::string name;            // path in its folder
    std::vector<float> samples;  // as learned: mono, from 1 ms before its attack, a peak of 1, cut to length
    std::vector<float> image;    // [nMels][frames], network units
};

// All usable samples of a folder for a model of this configuration, in the order of a scan. Throws as
// Corpus::scan and ModelTrainer::readClips.
[[nodiscard]] std::vector<Clip> readClips(const std::filesystem::path& folder, const ModelConfig& config);

// What generated files go through last (DC, trim, fades, level), without any effect: what there is left to
// hear as a difference is then the sound itself.
[[nodiscard]] std::vector<float> finished(std::vector<float> samples, const ModelConfig& config);

// An image as a generated file: the usual rendering, no effect, finished.
[[nodiscard]] std::vector<float> rendered(std::span<const float> image, const ModelConfig& config,
                                          std::uint64_t seed);

// Mean squared error per pixel, in network units (1 is 50 dB), of each clip after the model has encoded and
// decoded it.
[[nodiscard]] std::vector<double> errors(const ModelBundle& model, std::span<const Clip> clips,
                                         network::Backend& backend);

}  // namespace quillmere::soundcheck
