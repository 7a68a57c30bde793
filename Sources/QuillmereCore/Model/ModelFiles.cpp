#include "QuillmereCore/Model/ModelFiles.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Descriptor.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/InputFile.h"
#include "QuillmereCore/Util/JSONDocument.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::ModelFiles {
namespace {

namespace fs = std::filesystem;
using json::Json;

constexpr std::uint64_t maxDigestsSize = 1 << 16;

Message mismatch() {
    return Message("Model weights do not match the saved configuration");
}

Message message(const fs::path& file, const Message& problem) {
    return Message("{0}: {1}", file, problem);
}

bool isMissing(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

// ---- Files

// A folder held by a handle, so that what is opened in it is in the same folder.
class OpenFolder {
public:
    explicit OpenFolder(const fs::path& path)
        : path_(path), descriptor_(::open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
        if (descriptor_.isOpen()) return;
        problem_ = lastError();
        if (!isMissing(problem_)) throw FileError(path_, problem_);
    }

    // Nothing if there is no file of that name, or no folder.
    [[nodiscard]] std::optional<InputFile> find(std::string_view name) const {
        if (!descriptor_.isOpen()) return std::nullopt;
        // Opening a pipe must not wait for who writes into it.
        constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK;
        Descriptor file(::openat(descriptor_.get(), std::string(name).c_str(), flags));
        if (file.isOpen()) return InputFile(path_ / name, std::move(file));
        if (isMissing(lastError())) return std::nullopt;
        throw FileError(path_ / name, lastError());
    }

    // Why there is nothing of that name.
    [[nodiscard]] FileError missing(std::string_view name) const {
        return {path_ / name,
                problem_ ? problem_ : std::make_error_code(std::errc::no_such_file_or_directory)};
    }

    // Whether the name still leads to this folder, or to none.
    [[nodiscard]] bool isStillNamed() const {
        struct stat named {};
        struct stat opened {};
        const bool isFolder = ::stat(path_.c_str(), &named) == 0 && S_ISDIR(named.st_mode);
        if (!descriptor_.isOpen() || !isFolder) return descriptor_.isOpen() == isFolder;
        return ::fstat(descriptor_.get(), &opened) == 0 && named.st_dev == opened.st_dev &&
               named.st_ino == opened.st_ino;
    }

private:
    fs::path path_;
    Descriptor descriptor_;
    std::error_code problem_;  // why there is no folder
};

struct OpenModel {
    InputFile manifest;
    InputFile weights;
    std::optional<InputFile> digests;
};

std::variant<OpenModel, FileError> openModel(const fs::path& path) {
    while (true) {
        const OpenFolder folder(path);
        auto manifest = folder.find(manifestName);
        auto weights = folder.find(weightsName);
        if (manifest && weights)
            return OpenModel{*std::move(manifest), *std::move(weights), folder.find(digestsName)};
        // A folder that has just been replaced is taken apart: then there is a new one to look at.
        if (folder.isStillNamed()) return folder.missing(manifest ? weightsName : manifestName);
    }
}

// ---- SHA256SUMS

struct Digests {
    std::string manifest, weights;
};

// The digest in a line "<digest>  <name>" (or "*" before the name) of text; empty if there is none.
std::string digestOf(std::string_view name, std::string_view text) {
    constexpr std::size_t digits = 64;
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (line.size() != digits + 2 + name.size() || !line.ends_with(name)) continue;
        const std::string_view between = line.substr(digits, 2);
        if (between == "  " || between == " *") return Text::lowercase(line.substr(0, digits));
    }
    return {};
}

std::string readDigestsText(InputFile& file) {
    if (file.size() > maxDigestsSize)
        throw CorruptModelError(message(file.path(), Message("too large for a model")));
    return file.readAll();
}

std::optional<Digests> readDigests(std::optional<InputFile>& file) {
    if (!file) return std::nullopt;
    const std::string text = readDigestsText(*file);
    Digests digests{digestOf(manifestName, text), digestOf(weightsName, text)};
    if (digests.manifest.empty() || digests.weights.empty())
        throw CorruptModelError(message(file->path(), Message("lacks the digest of a file")));
    return digests;
}

void requireDigest(const InputFile& file, const std::string& digest, const std::string& expected) {
    if (digest != expected)
        throw CorruptModelError(message(file.path(), Message("differs from what was stored (SHA256SUMS)")));
}

// ---- model.json

Json encodeStart(const ModelStart& start) {
    return {{"kind", rawValue(start.kind)}, {"name", start.name}, {"identity", start.identity}};
}

Json encodeContinued(const std::vector<TrainingStretch>& stretches) {
    Json list = Json::array();
    for (const TrainingStretch& stretch : stretches)
        list.push_back({{"steps", stretch.steps},
                        {"batchSize", stretch.batchSize},
                        {"learningRate", stretch.learningRate},
                        {"klWeight", stretch.klWeight},
                        {"seed", stretch.seed}});
    return list;
}

std::string encodeMetadata(const ModelMetadata& metadata) {
    Json object{{"corpusName", metadata.corpusName},
                {"corpusPath", metadata.corpusPath},
                {"fingerprint", metadata.fingerprint},
                {"trainedAt", ModelStore::isoDate(metadata.trainedAt)},
                {"steps", metadata.steps},
                {"finalLoss", metadata.finalLoss},
                {"finalReconstructionError", metadata.finalReconstructionError},
                {"clipNames", metadata.clipNames}};
    if (metadata.analysis) object["analysis"] = *metadata.analysis;
    if (metadata.start) object["start"] = encodeStart(*metadata.start);
    if (!metadata.continued.empty()) object["continued"] = encodeContinued(metadata.continued);
    if (metadata.plannedSteps) object["plannedSteps"] = *metadata.plannedSteps;
    return object.dump(2, ' ', false, Json::error_handler_t::replace);
}

// One latent vector per line: with one number per line most of the file would be indentation.
std::string encodeLatents(const std::vector<std::vector<float>>& latents) {
    std::string text = "[";
    for (const std::vector<float>& latent : latents) {
        if (text.size() > 1) text += ',';
        text += "\n  " + Json(latent).dump();
    }
    return text + "\n]";
}

// A document as the value of a member: its lines after the first move in by one level.
std::string nested(const std::string& document) {
    std::string text;
    for (const char c : document) {
        text += c;
        if (c == '\n') text += "  ";
    }
    return text;
}

std::chrono::sys_seconds decodeDate(const Json& metadata, const char* key) {
    const std::string& text = json::stringMember(metadata, key);
    const auto date = ModelStore::parseISODate(text);
    if (!date) throw DecodingError("{0} is {1}, which is no date", json::quoted(key), json::quoted(text));
    return *date;
}

std::vector<std::string> decodeClipNames(const Json& metadata) {
    std::vector<std::string> names;
    for (const Json& name : json::arrayMember(metadata, "clipNames")) {
        if (!name.is_string()) throw DecodingError("\"clipNames\" must be a list of texts");
        names.push_back(name.get<std::string>());
    }
    return names;
}

std::optional<std::string> decodeAnalysis(const Json& metadata) {
    const auto found = metadata.find("analysis");
    if (found == metadata.end() || found->is_null()) return std::nullopt;
    return json::stringMember(metadata, "analysis");
}

std::optional<ModelStart> decodeStart(const Json& metadata) {
    const auto found = metadata.find("start");
    if (found == metadata.end() || found->is_null()) return std::nullopt;
    const Json& start = json::objectMember(metadata, "start");
    const std::string& kind = json::stringMember(start, "kind");
    for (const ModelStart::Kind known : {ModelStart::Kind::headStart, ModelStart::Kind::model}) {
        if (kind != rawValue(known)) continue;
        return ModelStart{.kind = known,
                          .name = json::stringMember(start, "name"),
                          .identity = json::stringMember(start, "identity")};
    }
    throw DecodingError("\"kind\" is {0}, which is no start", json::quoted(kind));
}

std::vector<TrainingStretch> decodeContinued(const Json& metadata) {
    std::vector<TrainingStretch> stretches;
    if (!metadata.contains("continued")) return stretches;
    for (const Json& item : json::arrayMember(metadata, "continued")) {
        if (!item.is_object()) throw DecodingError("\"continued\" must be a list of objects");
        const Json& seed = json::member(item, "seed");
        if (!seed.is_number_unsigned()) throw DecodingError("\"seed\" must be a whole number from 0");
        stretches.push_back({.steps = json::integerMember(item, "steps"),
                             .batchSize = json::integerMember(item, "batchSize"),
                             .learningRate = json::numberMember(item, "learningRate"),
                             .klWeight = json::numberMember(item, "klWeight"),
                             .seed = seed.get<std::uint64_t>()});
    }
    return stretches;
}

std::optional<std::int64_t> decodePlannedSteps(const Json& metadata) {
    const auto found = metadata.find("plannedSteps");
    if (found == metadata.end() || found->is_null()) return std::nullopt;
    return json::integerMember(metadata, "plannedSteps");
}

ModelMetadata decodeMetadata(const Json& metadata) {
    return {.corpusName = json::stringMember(metadata, "corpusName"),
            .corpusPath = json::stringMember(metadata, "corpusPath"),
            .fingerprint = json::stringMember(metadata, "fingerprint"),
            .trainedAt = decodeDate(metadata, "trainedAt"),
            .steps = json::integerMember(metadata, "steps"),
            .finalLoss = json::numberMember(metadata, "finalLoss"),
            .finalReconstructionError = json::numberMember(metadata, "finalReconstructionError"),
            .clipNames = decodeClipNames(metadata),
            .analysis = decodeAnalysis(metadata),
            .start = decodeStart(metadata),
            .continued = decodeContinued(metadata),
            .plannedSteps = decodePlannedSteps(metadata)};
}

std::vector<float> decodeLatent(const Json& latent) {
    const auto isNumber = [](const Json& value) { return value.is_number(); };
    if (!latent.is_array() || !std::ranges::all_of(latent, isNumber))
        throw DecodingError("\"latents\" must be a list of lists of numbers");
    return latent.get<std::vector<float>>();
}

std::vector<std::vector<float>> decodeLatents(const Json& manifest) {
    std::vector<std::vector<float>> latents;
    for (const Json& latent : json::arrayMember(manifest, "latents"))
        latents.push_back(decodeLatent(latent));
    return latents;
}

// The bundle without its weights.
ModelBundle decodeManifest(std::string_view text) {
    const Json manifest = json::parseObject(text);
    return {.config = decodeModelConfig(json::objectMember(manifest, "config").dump()),
            .metadata = decodeMetadata(json::objectMember(manifest, "metadata")),
            .weights = {},
            .latents = decodeLatents(manifest)};
}

ModelBundle readManifest(InputFile& file, const std::optional<Digests>& digests) {
    if (file.size() > maxManifestSize)
        throw CorruptModelError(message(file.path(), Message("too large for a model")));
    const std::string text = file.readAll();
    try {
        ModelBundle bundle = decodeManifest(text);
        if (const auto problem = problemWith(bundle.config))
            throw CorruptModelError(message(file.path(), *problem));
        if (digests) requireDigest(file, sha256(std::as_bytes(std::span(text))), digests->manifest);
        return bundle;
    } catch (const DecodingError& error) {
        throw DecodingError(message(file.path(), error.message()));
    }
}

// ---- weights.bin

bool allFinite(std::span<const float> values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

std::vector<std::vector<float>> readWeights(InputFile& file, const ModelConfig& config,
                                            const std::optional<Digests>& digests) {
    if (file.size() != static_cast<std::uint64_t>(ModelStore::weightsSize(config)))
        throw CorruptModelError(mismatch());
    std::vector<std::vector<float>> weights;
    std::optional<SHA256> digest;
    if (digests) digest.emplace();
    for (const VAEArchitecture::Param& param : VAEArchitecture::params(config)) {
        std::vector<float>& values = weights.emplace_back(static_cast<std::size_t>(param.elementCount()));
        const auto bytes = std::as_writable_bytes(std::span(values));
        if (!file.read(bytes)) throw CorruptModelError(mismatch());
        if (digest) digest->update(bytes);
        if constexpr (std::endian::native == std::endian::big) {
            for (float& value : values)
                value = std::bit_cast<float>(__builtin_bswap32(std::bit_cast<std::uint32_t>(value)));
        }
    }
    if (digest) requireDigest(file, digest->finish(), digests->weights);
    if (!std::ranges::all_of(weights, [](const auto& values) { return allFinite(values); }))
        throw CorruptModelError(message(file.path(), Message("holds weights that are not finite")));
    return weights;
}

}  // namespace

std::string manifestText(const ModelBundle& bundle) {
    return "{\n  \"config\": " + nested(encodeJSON(bundle.config)) +
           ",\n  \"latents\": " + nested(encodeLatents(bundle.latents)) +
           ",\n  \"metadata\": " + nested(encodeMetadata(bundle.metadata)) + "\n}\n";
}

std::uint64_t manifestBound(std::span<const std::string> clipNames, std::int64_t latentDim) {
    constexpr std::uint64_t rest = 1 << 16;  // configuration, names and path of the corpus
    constexpr std::uint64_t number = 17;     // "-1.17549435e-38" with a comma
    constexpr std::uint64_t around = 16;     // indentation, brackets and commas of one line
    std::uint64_t size = rest;
    for (const std::string& name : clipNames) {
        size += Json(name).dump(-1, ' ', false, Json::error_handler_t::replace).size() + around;
        size += number * static_cast<std::uint64_t>(latentDim) + around;
    }
    return size;
}

std::string digestsText(std::string_view manifest, std::string_view weights, std::string_view sounds) {
    const auto line = [](std::string_view content, std::string_view name) {
        return sha256(std::as_bytes(std::span(content))) + "  " + std::string(name) + "\n";
    };
    return line(manifest, manifestName) + line(weights, weightsName) +
           (sounds.empty() ? std::string() : line(sounds, soundsName));
}

std::variant<ModelBundle, FileError> read(const fs::path& folder) {
    auto found = openModel(folder);
    if (const auto* missing = std::get_if<FileError>(&found)) return *missing;
    OpenModel& model = std::get<OpenModel>(found);
    const std::optional<Digests> digests = readDigests(model.digests);
    ModelBundle bundle = readManifest(model.manifest, digests);
    bundle.weights = readWeights(model.weights, bundle.config, digests);
    return bundle;
}

ModelBundle readManifest(const fs::path& path) {
    const OpenFolder folder(path);
    std::optional<InputFile> file = folder.find(manifestName);
    if (!file) throw folder.missing(manifestName);
    return readManifest(*file, std::nullopt);
}

std::string digestOfSounds(const fs::path& path) {
    std::optional<InputFile> file = OpenFolder(path).find(digestsName);
    return file ? digestOf(soundsName, readDigestsText(*file)) : std::string();
}

}  // namespace quillmere::ModelFiles
