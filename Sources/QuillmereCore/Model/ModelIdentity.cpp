#include "QuillmereCore/Model/ModelIdentity.h"

#include <bit>
#include <cstdint>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "QuillmereCore/Util/Digest.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

std::string line(std::string_view name, const std::string& value) {
    return std::string(name) + " " + value + "\n";
}

void addLittleEndian(SHA256& digest, std::span<const float> values) {
    if constexpr (std::endian::native == std::endian::little) {
        digest.update(std::as_bytes(values));
    } else {
        for (const float value : values) {
            const std::uint32_t bits = __builtin_bswap32(std::bit_cast<std::uint32_t>(value));
            digest.update(std::as_bytes(std::span(&bits, 1)));
        }
    }
}

std::string weightsDigest(const ModelBundle& bundle) {
    SHA256 digest;
    for (const std::vector<float>& array : bundle.weights)
        addLittleEndian(digest, array);
    return digest.finish();
}

std::string latentsDigest(const ModelBundle& bundle) {
    const auto dim = static_cast<std::size_t>(bundle.config.latentDim);
    SHA256 digest;
    for (const std::vector<float>& latent : bundle.latents)
        addLittleEndian(digest, std::span(latent).first(dim));
    return digest.finish();
}

// Nothing if the folder holds another model, or one that cannot be opened, which is as good as missing.
std::optional<IdentifiedModel> openIdentified(const std::string& identity, const fs::path& folder) {
    try {
        ModelBundle bundle = ModelStore::open(folder);
        if (modelIdentity(bundle) == identity) return IdentifiedModel{folder, std::move(bundle)};
    } catch (const Failure&) {
        return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace

std::string modelIdentity(const ModelBundle& bundle) {
    const ModelConfig& config = bundle.config;
    std::string text = line("quillmere model", "1");
    text += line("sampleRate", std::to_string(config.sampleRate));
    text += line("nFFT", std::to_string(config.nFFT));
    text += line("hop", std::to_string(config.hop));
    text += line("nMels", std::to_string(config.nMels));
    text += line("frames", std::to_string(config.frames));
    text += line("latentDim", std::to_string(config.latentDim));
    text += line("profile", std::string(rawValue(config.profile)));
    text += line("weights", weightsDigest(bundle));
    text += line("latents", std::to_string(bundle.latents.size()) + " " + latentsDigest(bundle));
    return sha256(std::as_bytes(std::span(text)));
}

std::optional<IdentifiedModel> findIdentified(const std::string& identity, const fs::path& root,
                                              const fs::path& likely, const std::stop_token& stop) {
    throwIfCancelled(stop);
    if (!likely.empty() && ModelStore::isStored(likely)) {
        if (auto found = openIdentified(identity, likely)) return found;
    }
    for (const ModelStore::StoredFolder& stored : ModelStore::list(root)) {
        throwIfCancelled(stop);
        if (!stored.holdsModel || stored.folder == likely) continue;
        if (auto found = openIdentified(identity, stored.folder)) return found;
    }
    return std::nullopt;
}

}  // namespace quillmere
