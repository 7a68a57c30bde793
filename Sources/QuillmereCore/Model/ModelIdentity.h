#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere {

// What identifies a model wherever it is stored and whatever it is called: everything that decides how it
// sounds, and nothing else. 64 lower-case hexadecimal digits, the SHA-256 of these lines of ASCII text, each
// ended by a line feed:
//
//   quillmere model 1
//   sampleRate 44100        (nFFT, hop, nMels, frames and latentDim follow in the same way, in decimal)
//   profile percussive
//   weights DIGEST          (the SHA-256 of weights.bin)
//   latents COUNT DIGEST    (of the first latentDim values of each latent vector, one vector after the other,
//                            as little-endian single precision)
//
// Takes about as long as reading the weights from memory does, so ask once. bundle: one that
// ModelStore::validate accepts.
[[nodiscard]] std::string modelIdentity(const ModelBundle& bundle);

struct IdentifiedModel {
    std::filesystem::path folder;
    ModelBundle bundle;
};
// The stored model with this identity: looked for in the folder likely, if it is not empty, then in all
// models of root. Models that cannot be opened are passed over. Throws FileError when root cannot be read,
// and CancellationError.
[[nodiscard]] std::optional<IdentifiedModel> findIdentified(const std::string& identity,
                                                            const std::filesystem::path& root,
                                                            const std::filesystem::path& likely = {},
                                                            const std::stop_token& stop = {});

}  // namespace quillmere
