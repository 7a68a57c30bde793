#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"

// The head start: a network for each analysis that has learned thousands of sounds made by rule, and that a
// training can begin from instead of random weights. It comes with the program, as two files in a folder.
//
// A file is a line "quillmere base 1", a line with one JSON object, and all weights as little-endian half
// precision. The object's keys: config (as in a model), version (of the head start) and sha256 (of the
// weights as they are stored).
namespace quillmere::HeadStart {

// Numbers in a latent vector of every head start, as a training has them by default.
inline constexpr std::int64_t latentDim = 64;

// "percussive.base", "tonal.base" in folder.
[[nodiscard]] std::filesystem::path file(const std::filesystem::path& folder, AnalysisProfile profile);

// Where an installed program finds its folder: share/quillmere/head-start beside the folder of program,
// which is the path of its executable.
[[nodiscard]] std::filesystem::path folderFor(const std::filesystem::path& program);

// Where a program that runs finds its folder: what the environment variable QUILLMERE_HEAD_START says, else
// folderFor the program itself.
[[nodiscard]] std::filesystem::path ownFolder();

// Both networks. Throws FileError; DecodingError or CorruptModelError naming the file that is damaged, or
// made for another version of the program.
[[nodiscard]] TrainingStart load(const std::filesystem::path& folder);

// A file's content. Every weight becomes the nearest half; none may be beyond its range.
[[nodiscard]] std::string encode(const TaughtNetwork& network, std::string_view version);

}  // namespace quillmere::HeadStart
