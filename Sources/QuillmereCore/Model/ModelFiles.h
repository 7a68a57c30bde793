#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "QuillmereCore/Model/ModelStore.h"

// The files of a model folder: what is in them, and reading those of one folder together.
namespace quillmere::ModelFiles {

inline constexpr std::string_view manifestName = "model.json";
inline constexpr std::string_view weightsName = "weights.bin";
inline constexpr std::string_view digestsName = "SHA256SUMS";
inline constexpr std::string_view soundsName = "sounds.bin";  // KeptSounds; only where they are wanted
// In the order in which a model is taken apart: what makes it a model goes first.
inline constexpr std::array<std::string_view, 4> names{manifestName, weightsName, digestsName, soundsName};

// ---- Content

[[nodiscard]] std::string manifestText(const ModelBundle& bundle);
// A manifest of 50,000 clips has about 40 MB; a larger file is no manifest.
inline constexpr std::uint64_t maxManifestSize = 64 << 20;
// Bytes that manifestText of a model of these clips takes at most.
[[nodiscard]] std::uint64_t manifestBound(std::span<const std::string> clipNames, std::int64_t latentDim);
// The digests of the other files as sha256sum writes and checks them; without sounds those of two.
[[nodiscard]] std::string digestsText(std::string_view manifest, std::string_view weights,
                                      std::string_view sounds = {});

// ---- Reading

// The model in a folder, checked against its digests where it has any. The files are opened together and
// belong together, even if another folder takes the name meanwhile. A FileError if one of the two is not
// there or the folder itself; everything else is thrown as by ModelStore::load.
[[nodiscard]] std::variant<ModelBundle, FileError> read(const std::filesystem::path& folder);

// The bundle without its weights; the digests are not looked at.
[[nodiscard]] ModelBundle readManifest(const std::filesystem::path& folder);

// What sounds.bin should have for its digest; empty if the folder's digests do not name it, or there are
// none.
[[nodiscard]] std::string digestOfSounds(const std::filesystem::path& folder);

}  // namespace quillmere::ModelFiles
