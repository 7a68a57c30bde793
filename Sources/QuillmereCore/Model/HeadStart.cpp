#include "QuillmereCore/Model/HeadStart.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <system_error>
#include <utility>
#include <vector>

#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/HalfFloat.h"
#include "QuillmereCore/Util/InputFile.h"
#include "QuillmereCore/Util/JSONDocument.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::HeadStart {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view firstLine = "quillmere base 1\n";
constexpr std::uint64_t maxFileSize = 64 << 20;

struct Base {
    TaughtNetwork network;
    std::string version;
    std::string digest;
};

Message damaged(const fs::path& file, const Message& problem) {
    return Message("{0}: {1}", file, problem);
}

std::string readFile(const fs::path& path) {
    InputFile file(path);
    if (file.size() > maxFileSize)
        throw CorruptModelError(damaged(path, Message("too large for a head start")));
    return file.readAll();
}

float weightAt(std::string_view halves, std::size_t index) {
    const auto low = static_cast<unsigned char>(halves[2 * index]);
    const auto high = static_cast<unsigned char>(halves[2 * index + 1]);
    return fromHalfBits(static_cast<std::uint16_t>(low | (high << 8)));
}

std::vector<std::vector<float>> decodeWeights(const ModelConfig& config, std::string_view halves) {
    std::vector<std::vector<float>> weights;
    std::size_t next = 0;
    for (const VAEArchitecture::Param& param : VAEArchitecture::params(config)) {
        std::vector<float>& values = weights.emplace_back(static_cast<std::size_t>(param.elementCount()));
        for (float& value : values)
            value = weightAt(halves, next++);
    }
    return weights;
}

// The two lines before the weights.
struct Header {
    ModelConfig config;
    std::string version;
    std::string digest;
    std::size_t size;  // bytes
};

Header decodeHeader(const fs::path& file, std::string_view bytes) {
    const std::size_t end = bytes.find('\n', firstLine.size());
    if (!bytes.starts_with(firstLine) || end == std::string_view::npos)
        throw CorruptModelError(damaged(file, Message("no head start of this version of the program")));
    try {
        const json::Json object = json::parseObject(bytes.substr(firstLine.size(), end - firstLine.size()));
        return {.config = decodeModelConfig(json::objectMember(object, "config").dump()),
                .version = json::stringMember(object, "version"),
                .digest = json::stringMember(object, "sha256"),
                .size = end + 1};
    } catch (const DecodingError& error) {
        throw DecodingError(damaged(file, error.message()));
    }
}

Base loadBase(const fs::path& file, AnalysisProfile profile) {
    const std::string bytes = readFile(file);
    const Header header = decodeHeader(file, bytes);
    const std::string_view halves = std::string_view(bytes).substr(header.size);
    if (const auto problem = problemWith(header.config)) throw CorruptModelError(damaged(file, *problem));
    if (header.config.profile != profile)
        throw CorruptModelError(damaged(file, Message("made for the other analysis")));
    if (halves.size() != 2 * static_cast<std::size_t>(VAEArchitecture::weightCount(header.config)) ||
        sha256(std::as_bytes(std::span(halves))) != header.digest)
        throw CorruptModelError(damaged(file, Message("differs from what was stored")));
    return {.network = {header.config, decodeWeights(header.config, halves)},
            .version = header.version,
            .digest = header.digest};
}

}  // namespace

fs::path file(const fs::path& folder, AnalysisProfile profile) {
    return folder / (std::string(rawValue(profile)) + ".base");
}

fs::path folderFor(const fs::path& program) {
    return program.parent_path().parent_path() / "share" / "quillmere" / "head-start";
}

fs::path ownFolder() {
    const char* const environment = std::getenv("QUILLMERE_HEAD_START");
    if (environment != nullptr && *environment != '\0') return environment;
    std::error_code ignored;  // then it will not be found
    return folderFor(fs::read_symlink("/proc/self/exe", ignored));
}

TrainingStart load(const fs::path& folder) {
    std::vector<TaughtNetwork> networks;
    std::string digests;
    std::string version;
    for (const AnalysisProfile profile : {AnalysisProfile::percussive, AnalysisProfile::tonal}) {
        const fs::path path = file(folder, profile);
        Base base = loadBase(path, profile);
        if (!version.empty() && base.version != version)
            throw CorruptModelError(damaged(path, Message("of another version than the file beside it")));
        version = base.version;
        digests += base.digest;
        networks.push_back(std::move(base.network));
    }
    return {{.kind = ModelStart::Kind::headStart,
             .name = version,
             .identity = sha256(std::as_bytes(std::span(digests)))},
            std::move(networks)};
}

std::string encode(const TaughtNetwork& network, std::string_view version) {
    std::string halves;
    halves.reserve(2 * static_cast<std::size_t>(VAEArchitecture::weightCount(network.config)));
    for (const std::vector<float>& values : network.weights) {
        for (const float value : values) {
            const std::uint16_t bits = halfBits(value);
            require(std::isfinite(fromHalfBits(bits)), "a weight is beyond half precision");
            halves += static_cast<char>(bits & 0xFFU);
            halves += static_cast<char>(bits >> 8);
        }
    }
    const json::Json header{{"config", json::parseObject(encodeJSON(network.config))},
                            {"sha256", sha256(std::as_bytes(std::span(std::as_const(halves))))},
                            {"version", version}};
    return std::string(firstLine) + header.dump() + "\n" + halves;
}

}  // namespace quillmere::HeadStart
