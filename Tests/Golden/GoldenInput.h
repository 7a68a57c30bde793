#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Util/RNG.h"

// Reading the "input" of a reference vector as FORMAT.md describes it. Anything malformed or unknown throws
// an exception that says what it is.
namespace quillmere::golden {

using Json = nlohmann::json;

// The single-precision array that spec stands for: an object with a "kind", or a plain list of numbers.
[[nodiscard]] std::vector<float> floats(const Json& spec);
// One array per entry of the list.
[[nodiscard]] std::vector<std::vector<float>> floatArrays(const Json& specs);
// rows arrays of equal length from one flat array.
[[nodiscard]] std::vector<std::vector<float>> splitRows(std::span<const float> flat, std::size_t rows);
[[nodiscard]] std::vector<float> joinRows(std::span<const std::vector<float>> rows);

// 64-bit words: texts such as "0x00000000000004d2", or plain integers.
[[nodiscard]] std::uint64_t word(const Json& value);
[[nodiscard]] std::string wordText(std::uint64_t word);

// The generator seeded with input's "seed".
[[nodiscard]] SeededRNG seededGenerator(const Json& input);
// The four state words as texts.
[[nodiscard]] Json stateText(const SeededRNG& rng);

[[nodiscard]] AnalysisProfile profile(const Json& rawValue);
[[nodiscard]] ModelConfig modelConfig(const Json& config);
// The defaults with the listed parameters replaced, without clamping.
[[nodiscard]] Aesthetics aesthetics(const Json& changes);

}  // namespace quillmere::golden
