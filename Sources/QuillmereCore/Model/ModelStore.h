#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// What the training of a model began from, where that were not random weights.
struct ModelStart {
    enum class Kind { headStart, model };
    Kind kind = Kind::headStart;
    std::string name;      // version of the head start, or name of the other model's corpus
    std::string identity;  // of the network: digest of the file it came from, or modelIdentity

    friend bool operator==(const ModelStart&, const ModelStart&) = default;
};

[[nodiscard]] std::string_view rawValue(ModelStart::Kind kind);  // "head-start", "model"

// A part of a training that went on from where the one before it ended: all that it takes to do it again.
struct TrainingStretch {
    std::int64_t steps = 0;      // at least 1
    std::int64_t batchSize = 0;  // at least 1
    float learningRate = 0;      // peak step size
    float klWeight = 0;
    std::uint64_t seed = 0;

    friend bool operator==(const TrainingStretch&, const TrainingStretch&) = default;
};

struct ModelMetadata {
    std::string corpusName;
    std::string corpusPath;
    std::string fingerprint;
    std::chrono::sys_seconds trainedAt{};
    std::int64_t steps = 0;
    float finalLoss = 0;
    float finalReconstructionError = 0;
    std::vector<std::string> clipNames;        // in the order of the bundle's latents
    std::optional<std::string> analysis;       // raw value of the profile
    std::optional<ModelStart> start{};         // absent: random weights
    std::vector<TrainingStretch> continued{};  // after the first part; steps counts these, too
    // What steps would have been before any continuation, had the training not been ended early, which is
    // when it is there.
    std::optional<std::int64_t> plannedSteps{};

    friend bool operator==(const ModelMetadata&, const ModelMetadata&) = default;
};

// A trained model.
struct ModelBundle {
    ModelConfig config;
    ModelMetadata metadata;
    std::vector<std::vector<float>> weights;  // in the order of VAEArchitecture::params(config)
    std::vector<std::vector<float>> latents;  // one vector of latentDim values per clip
};

// weights.bin does not fit model.json, or a model holds values that no model can have.
class CorruptModelError : public Failure {
public:
    using Failure::Failure;
};

// Another program, or another thread, is storing or removing the model.
class ModelBusyError : public Failure {
public:
    ModelBusyError()
        : Failure("Another program is storing the model of this folder. Try again in a moment.") {}
};

// One model folder per corpus: model.json (configuration, metadata, latents) and weights.bin (all weights as
// little-endian single precision, without a header), and the digests of both in SHA256SUMS. Stateless; any
// thread.
//
// The programs use isStored, open, replace, remove and list, which any number of programs may do at once: a
// model is always seen whole, the old one or the new one, also after a crash or a power cut. exists, save and
// load are the plain operations on the two files; saves into one folder at the same time are not guarded
// against.
//
// Failures say whether the model is to blame: CorruptModelError and DecodingError are damage; FileError (no
// permission, a disk that does not answer) and ModelBusyError are not, nor is std::bad_alloc.
namespace ModelStore {

// Models in UserFolders::data(). A user without a home directory stops the program.
[[nodiscard]] std::filesystem::path rootDirectory();

// The corpus folder's name, "-" and its fingerprint, below root (default: rootDirectory()). Nothing on disk
// is created or looked at.
[[nodiscard]] std::filesystem::path directory(const CorpusSummary& corpus);
[[nodiscard]] std::filesystem::path directory(const CorpusSummary& corpus, const std::filesystem::path& root);
// Every "/" of corpusFolder becomes "_".
[[nodiscard]] std::string folderName(std::string corpusFolder, const std::string& fingerprint);
// The last component of the corpus folder's absolute path ("/" for the root directory), and that path, in
// which ".." is resolved as the file system does.
[[nodiscard]] std::string corpusName(const std::filesystem::path& corpusFolder);
[[nodiscard]] std::filesystem::path corpusPath(const std::filesystem::path& corpusFolder);

// Whether there is a model to open. Throws FileError when that cannot be found out: where a look fails there
// may well be a model, which nobody wants learned again and replaced.
[[nodiscard]] bool isStored(const std::filesystem::path& modelFolder);

// load and validate, also of a model that a killed program left under its hidden name. Takes no lock and
// needs no permission to write.
[[nodiscard]] ModelBundle open(const std::filesystem::path& modelFolder);

// What shows only after minutes of training otherwise: creates the models' root if it is missing, and throws
// FileError where nothing can be stored in it and Failure when the file system has no room for the folder's
// name.
void requireRoom(const std::filesystem::path& modelFolder);
// Why a model of these clips could be stored but not opened again, with what helps, or nothing: its
// model.json would be too large to be taken for one.
[[nodiscard]] std::optional<Message> problemWithNumber(std::span<const std::string> clipNames,
                                                       std::int64_t latentDim);

inline constexpr std::chrono::milliseconds storingPatience = std::chrono::seconds(10);

// What becomes of a model that can be used when another one takes its place.
enum class Former {
    replaced,
    kept,  // under the name with ".kept" (".kept-2", ...)
};

// Stores the model in place of the one that is there, if any, in one step; its root is created if missing. A
// model that cannot be used is always kept, under the name with ".damaged" (".damaged-2", ...).
// Files of others in the folder stay in it. What killed programs left of this model is deleted. Forces
// everything to the disk.
//
// sounds: what KeptSounds::encode gives, to be kept with the model; empty for none, also of the model before.
//
// Waits for up to patience while another one stores; stop ends the wait. Throws ModelBusyError,
// CancellationError, FileError, or CorruptModelError when a number is not finite. After any failure what was
// there before is there still.
void replace(const ModelBundle& bundle, const std::filesystem::path& modelFolder,
             const std::stop_token& stop = {}, std::chrono::milliseconds patience = storingPatience,
             Former former = Former::replaced, const std::string& sounds = {});

// Removes the model, usable or not, and what killed programs left of it. False: there is nothing of that
// name. A symbolic link, or a folder with files of others, is not touched; the latter is a Failure. Throws as
// replace.
[[nodiscard]] bool remove(const std::filesystem::path& modelFolder, const std::stop_token& stop = {},
                          std::chrono::milliseconds patience = storingPatience);

// What a root holds of one model.
struct StoredFolder {
    std::filesystem::path folder;
    bool holdsModel = false;     // or a part of one; whether it can be used is for open to say
    std::uintmax_t bytes = 0;    // of the model
    std::uintmax_t remains = 0;  // bytes left behind by programs that were killed while they stored it
};
// By name; none if there is no root. Throws FileError when it cannot be read.
[[nodiscard]] std::vector<StoredFolder> list(const std::filesystem::path& root);

// True only if both files are there; false also when that cannot be found out.
[[nodiscard]] bool exists(const std::filesystem::path& modelFolder);

// Creates the folder and writes weights.bin, then model.json, each atomically, and removes the digests of
// what was there before. Text that is not UTF-8 (names of files need not be) is stored with replacement
// characters. Throws FileError, or CorruptModelError with nothing written when a number is not finite.
void save(const ModelBundle& bundle, const std::filesystem::path& modelFolder);

// Throws FileError; DecodingError naming the file when model.json lacks a key or has a wrong type; or
// CorruptModelError when weights.bin has the wrong size, a configuration that no model can have (problemWith)
// or weights that are not finite, or naming the file that differs from its digest where there are digests.
// Allocates nothing of a size that the files only claim. The files stay as they are. The latents are not
// checked against the configuration: see validate.
[[nodiscard]] ModelBundle load(const std::filesystem::path& modelFolder);

// What load leaves open and a SampleGenerator takes for granted: at least one latent vector, and latentDim
// finite values in each. Throws CorruptModelError naming modelFolder's model.json. Call it after load and
// before the bundle goes to a generator.
void validate(const ModelBundle& bundle, const std::filesystem::path& modelFolder);

// ISO 8601 in UTC with whole seconds, as 2025-03-01T14:07:09Z.
[[nodiscard]] std::string isoDate(std::chrono::sys_seconds time);
// The reverse. A fraction of a second is accepted and dropped; nothing for any other text.
[[nodiscard]] std::optional<std::chrono::sys_seconds> parseISODate(std::string_view text);
// The arrays one after the other as little-endian single precision.
[[nodiscard]] std::string weightsBlob(const std::vector<std::vector<float>>& weights);
// Bytes of weights.bin: 4 per parameter element of the configuration.
[[nodiscard]] std::int64_t weightsSize(const ModelConfig& config);

}  // namespace ModelStore
}  // namespace quillmere
