#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

struct ModelMetadata {
    std::string corpusName;
    std::string corpusPath;
    std::string fingerprint;
    std::chrono::sys_seconds trainedAt{};
    std::int64_t steps = 0;
    float finalLoss = 0;
    float finalReconstructionError = 0;
    std::vector<std::string> clipNames;   // in the order of the bundle's latents
    std::optional<std::string> analysis;  // raw value of the profile

    friend bool operator==(const ModelMetadata&, const ModelMetadata&) = default;
};

// A trained model.
struct ModelBundle {
    ModelConfig config;
    ModelMetadata metadata;
    std::vector<std::vector<float>> weights;  // in the order of VAEArchitecture::params(config)
    std::vector<std::vector<float>> latents;  // one vector of latentDim values per clip
};

// weights.bin does not fit model.json, or either holds values no model can have.
class CorruptModelError : public Failure {
public:
    using Failure::Failure;
};

// One model folder per corpus: model.json and weights.bin. Stateless; any thread. Two saves into one folder
// at the same time are not guarded against.
namespace ModelStore {

// $XDG_DATA_HOME or ~/.local/share, then Quillmere/Models. Not created.
[[nodiscard]] std::filesystem::path rootDirectory();

// The corpus folder's name, "-" and its fingerprint, below root (default: rootDirectory()).
[[nodiscard]] std::filesystem::path directory(const CorpusSummary& corpus);
[[nodiscard]] std::filesystem::path directory(const CorpusSummary& corpus, const std::filesystem::path& root);
[[nodiscard]] std::string folderName(std::string corpusFolder, const std::string& fingerprint);

// True only if both files are there.
[[nodiscard]] bool exists(const std::filesystem::path& modelFolder);

// Creates the folder and writes weights.bin, then model.json, each atomically. Throws FileError.
void save(const ModelBundle& bundle, const std::filesystem::path& modelFolder);

// Throws FileError, DecodingError or CorruptModelError; the files stay as they are.
[[nodiscard]] ModelBundle load(const std::filesystem::path& modelFolder);

// The model without its weights and latents, for listings. Throws as load.
struct Manifest {
    ModelConfig config;
    ModelMetadata metadata;
};
[[nodiscard]] Manifest loadManifest(const std::filesystem::path& modelFolder);

// ISO 8601 in UTC with whole seconds, as 2025-03-01T14:07:09Z.
[[nodiscard]] std::string isoDate(std::chrono::sys_seconds time);
// The arrays one after the other as little-endian single precision.
[[nodiscard]] std::string weightsBlob(const std::vector<std::vector<float>>& weights);
// 4 bytes per parameter element of the configuration.
[[nodiscard]] std::int64_t weightsSize(const ModelConfig& config);

}  // namespace ModelStore
}  // namespace quillmere
