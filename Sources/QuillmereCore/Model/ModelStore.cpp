#include "QuillmereCore/Model/ModelStore.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <span>
#include <system_error>

#include "QuillmereCore/Model/JSONDocument.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::ModelStore {
namespace {

namespace fs = std::filesystem;
using json::Json;

constexpr const char* manifestName = "model.json";
constexpr const char* weightsName = "weights.bin";
// A manifest of 50,000 clips has about 40 MB; a larger file is no manifest.
constexpr std::uintmax_t maxManifestSize = 64 << 20;

std::string message(const fs::path& file, const std::string& problem) {
    return Text::utf8(file) + ": " + problem;
}

bool allFinite(std::span<const float> values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

bool allFinite(const std::vector<std::vector<float>>& arrays) {
    return std::ranges::all_of(arrays, [](const auto& array) { return allFinite(array); });
}

// ---- Files

// A regular file open for reading whose size is known before anything is read.
class InputFile {
public:
    explicit InputFile(fs::path path) : path_(std::move(path)) {
        std::error_code error;
        size_ = fs::file_size(path_, error);  // also refuses folders, pipes and devices
        if (error) throw FileError(path_, error);
        file_.reset(std::fopen(path_.c_str(), "rb"));
        if (!file_) throw FileError(path_, {errno, std::generic_category()});
    }

    [[nodiscard]] std::uintmax_t size() const { return size_; }

    // False if the file ends too early.
    [[nodiscard]] bool read(std::span<std::byte> bytes) {
        errno = 0;
        const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file_.get());
        if (std::ferror(file_.get()) != 0) throw FileError(path_, {errno, std::generic_category()});
        return count == bytes.size();
    }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    fs::path path_;
    std::uintmax_t size_ = 0;
    std::unique_ptr<std::FILE, Close> file_;
};

void write(const fs::path& file, const std::string& content) {
    writeFileAtomically(file, std::as_bytes(std::span(content)));
}

// ---- Dates

// The digits of text as a number, or nothing.
std::optional<int> digits(std::string_view text) {
    int value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        value = 10 * value + (c - '0');
    }
    return value;
}

std::string padded(long long value, std::size_t width) {
    std::string text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

// "Z", or a fraction before it.
bool isDateEnd(std::string_view text) {
    if (!text.ends_with('Z')) return false;
    text.remove_suffix(1);
    return text.empty() || (text.size() > 1 && text[0] == '.' &&
                            text.find_first_not_of("0123456789", 1) == std::string_view::npos);
}

// ---- model.json

std::string encodeMetadata(const ModelMetadata& metadata) {
    Json object{{"corpusName", metadata.corpusName},
                {"corpusPath", metadata.corpusPath},
                {"fingerprint", metadata.fingerprint},
                {"trainedAt", isoDate(metadata.trainedAt)},
                {"steps", metadata.steps},
                {"finalLoss", metadata.finalLoss},
                {"finalReconstructionError", metadata.finalReconstructionError},
                {"clipNames", metadata.clipNames}};
    if (metadata.analysis) object["analysis"] = *metadata.analysis;
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

std::string encodeManifest(const ModelBundle& bundle) {
    return "{\n  \"config\": " + nested(encodeJSON(bundle.config)) +
           ",\n  \"latents\": " + nested(encodeLatents(bundle.latents)) +
           ",\n  \"metadata\": " + nested(encodeMetadata(bundle.metadata)) + "\n}\n";
}

std::chrono::sys_seconds decodeDate(const Json& metadata, const char* key) {
    const std::string& text = json::stringMember(metadata, key);
    const auto date = parseISODate(text);
    if (!date) throw DecodingError(json::quoted(key) + " is " + json::quoted(text) + ", which is no date");
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

ModelMetadata decodeMetadata(const Json& metadata) {
    return {.corpusName = json::stringMember(metadata, "corpusName"),
            .corpusPath = json::stringMember(metadata, "corpusPath"),
            .fingerprint = json::stringMember(metadata, "fingerprint"),
            .trainedAt = decodeDate(metadata, "trainedAt"),
            .steps = json::integerMember(metadata, "steps"),
            .finalLoss = json::floatMember(metadata, "finalLoss"),
            .finalReconstructionError = json::floatMember(metadata, "finalReconstructionError"),
            .clipNames = decodeClipNames(metadata),
            .analysis = decodeAnalysis(metadata)};
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

ModelBundle readManifest(const fs::path& file) {
    InputFile input(file);
    if (input.size() > maxManifestSize) throw CorruptModelError(message(file, "too large for a model"));
    std::string text(static_cast<std::size_t>(input.size()), '\0');
    (void)input.read(
        std::as_writable_bytes(std::span(text)));  // a document that is cut short does not decode
    try {
        ModelBundle bundle = decodeManifest(text);
        if (const auto problem = problemWith(bundle.config)) throw CorruptModelError(message(file, *problem));
        return bundle;
    } catch (const DecodingError& error) {
        throw DecodingError(message(file, error.what()));
    }
}

// ---- weights.bin

std::vector<float> readArray(InputFile& input, std::int64_t count) {
    std::vector<float> values(static_cast<std::size_t>(count));
    if (!input.read(std::as_writable_bytes(std::span(values))))
        throw CorruptModelError("Model weights do not match the saved configuration");
    if constexpr (std::endian::native == std::endian::big) {
        for (float& value : values)
            value = std::bit_cast<float>(__builtin_bswap32(std::bit_cast<std::uint32_t>(value)));
    }
    return values;
}

std::vector<std::vector<float>> readWeights(const fs::path& file, const ModelConfig& config) {
    InputFile input(file);
    if (input.size() != static_cast<std::uintmax_t>(weightsSize(config)))
        throw CorruptModelError("Model weights do not match the saved configuration");
    std::vector<std::vector<float>> weights;
    for (const VAEArchitecture::Param& param : VAEArchitecture::params(config))
        weights.push_back(readArray(input, param.elementCount()));
    if (!allFinite(weights)) throw CorruptModelError(message(file, "holds weights that are not finite"));
    return weights;
}

void requireFinite(const ModelBundle& bundle) {
    const std::array<float, 2> results{bundle.metadata.finalLoss, bundle.metadata.finalReconstructionError};
    if (allFinite(results) && allFinite(bundle.latents) && allFinite(bundle.weights)) return;
    throw CorruptModelError("The model of " + bundle.metadata.corpusName +
                            " holds values that are not finite and cannot be saved");
}

// ---- The per-user data directory

fs::path homeDirectory() {
    const char* const home = std::getenv("HOME");
    if (home != nullptr && *home != '\0') return home;
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        *found->pw_dir != '\0')
        return found->pw_dir;
    fatal("the user has no home directory");
}

fs::path dataDirectory() {
    const char* const data = std::getenv("XDG_DATA_HOME");
    if (data != nullptr && fs::path(data).is_absolute()) return data;
    return homeDirectory() / ".local" / "share";
}

}  // namespace

fs::path rootDirectory() {
    return dataDirectory() / "Quillmere" / "Models";
}

fs::path directory(const CorpusSummary& corpus) {
    return directory(corpus, rootDirectory());
}

fs::path directory(const CorpusSummary& corpus, const fs::path& root) {
    return root / folderName(corpusName(corpus.directory), corpus.fingerprint());
}

std::string folderName(std::string corpusFolder, const std::string& fingerprint) {
    std::ranges::replace(corpusFolder, '/', '_');
    return corpusFolder + "-" + fingerprint;
}

fs::path corpusPath(const fs::path& corpusFolder) {
    std::error_code error;
    const fs::path absolute = fs::absolute(corpusFolder, error);
    const fs::path path = (error ? corpusFolder : absolute).lexically_normal();
    return path.has_filename() || !path.has_relative_path() ? path : path.parent_path();
}

std::string corpusName(const fs::path& corpusFolder) {
    const fs::path path = corpusPath(corpusFolder);
    return path.has_filename() ? path.filename().string() : path.string();
}

bool exists(const fs::path& modelFolder) {
    std::error_code ignored;
    return fs::exists(modelFolder / manifestName, ignored) && fs::exists(modelFolder / weightsName, ignored);
}

void save(const ModelBundle& bundle, const fs::path& modelFolder) {
    requireFinite(bundle);
    std::error_code error;
    fs::create_directories(modelFolder, error);
    if (error) throw FileError(modelFolder, error);
    write(modelFolder / weightsName, weightsBlob(bundle.weights));
    write(modelFolder / manifestName, encodeManifest(bundle));
}

ModelBundle load(const fs::path& modelFolder) {
    ModelBundle bundle = readManifest(modelFolder / manifestName);
    bundle.weights = readWeights(modelFolder / weightsName, bundle.config);
    return bundle;
}

void validate(const ModelBundle& bundle, const fs::path& modelFolder) {
    const fs::path file = modelFolder / manifestName;
    if (bundle.latents.empty()) throw CorruptModelError(message(file, "holds no latent vectors"));
    const auto dim = static_cast<std::size_t>(bundle.config.latentDim);
    for (const std::vector<float>& latent : bundle.latents) {
        if (latent.size() < dim || !allFinite(latent))
            throw CorruptModelError(
                message(file, "holds a latent vector without " + std::to_string(dim) + " finite values"));
    }
}

Manifest loadManifest(const fs::path& modelFolder) {
    ModelBundle bundle = readManifest(modelFolder / manifestName);
    return {bundle.config, std::move(bundle.metadata)};
}

std::string isoDate(std::chrono::sys_seconds time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    return padded(static_cast<int>(date.year()), 4) + "-" + padded(static_cast<unsigned>(date.month()), 2) +
           "-" + padded(static_cast<unsigned>(date.day()), 2) + "T" + padded(clock.hours().count(), 2) + ":" +
           padded(clock.minutes().count(), 2) + ":" + padded(clock.seconds().count(), 2) + "Z";
}

std::optional<std::chrono::sys_seconds> parseISODate(std::string_view text) {
    constexpr std::string_view form = "YYYY-MM-DDTHH:MM:SS";
    if (text.size() < form.size() || !isDateEnd(text.substr(form.size()))) return std::nullopt;
    for (const std::size_t separator : {4, 7, 10, 13, 16}) {
        if (text[separator] != form[separator]) return std::nullopt;
    }
    const auto year = digits(text.substr(0, 4));
    const auto month = digits(text.substr(5, 2));
    const auto day = digits(text.substr(8, 2));
    const auto hour = digits(text.substr(11, 2));
    const auto minute = digits(text.substr(14, 2));
    const auto second = digits(text.substr(17, 2));
    if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
    return std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
           std::chrono::seconds(*second);
}

std::string weightsBlob(const std::vector<std::vector<float>>& weights) {
    std::size_t count = 0;
    for (const std::vector<float>& array : weights)
        count += array.size();
    std::string blob(count * sizeof(float), '\0');
    char* out = blob.data();
    for (const std::vector<float>& array : weights) {
        for (const float value : array) {
            const auto bits = std::bit_cast<std::uint32_t>(value);
            for (int shift = 0; shift < 32; shift += 8)
                *out++ = static_cast<char>(bits >> shift);
        }
    }
    return blob;
}

std::int64_t weightsSize(const ModelConfig& config) {
    return checkedMultiply(4, VAEArchitecture::weightCount(config));
}

}  // namespace quillmere::ModelStore
