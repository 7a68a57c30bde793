#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

// How a latent vector came about, where it was not drawn by the seed alone.
struct Lineage {
    std::string way;                       // "recipe", "like", "body", "skin" or "place"
    std::vector<std::string> parents;      // digests of the files it was made from (SHA-256), or none
    std::map<std::string, double> values;  // what was asked for, as "closeness"

    friend bool operator==(const Lineage&, const Lineage&) = default;
};

// All it takes, besides the model, to write a file again to the last bit, and to say what is in it.
struct Recipe {
    // The newest version of the form in which it is stored. A recipe says the oldest one that suffices: 2
    // where it has a fit.
    static constexpr std::int64_t version = 2;

    std::string program;      // version of the program that wrote the file
    std::string device;       // what ran the network: "cpu", or the name of a graphics processor
    std::string model;        // modelIdentity
    std::string corpusName;   // of the model's corpus
    std::string fingerprint;  // of the model's corpus
    std::uint64_t seed = 0;   // of the request
    std::int64_t index = 0;   // of the variation, from 0
    Aesthetics aesthetics;
    double detail = 0;  // 0 to 1, of the request
    DetailBasis detailBasis = DetailBasis::none;
    OutputFormat format = OutputFormat::wav24;
    std::vector<float> latent;                  // [latentDim]
    std::array<std::uint64_t, 4> state{};       // of the random generator after the latent vector was drawn
    std::vector<SampleOrigin::Source> sources;  // the blend before drift, mutation and extrapolation
    std::optional<Lineage> lineage;
    std::optional<SoundFit> fit{};  // what follows the rendering

    // What SampleGenerator needs to make it again.
    [[nodiscard]] VariationPlan plan() const { return {origin(), aesthetics}; }
    [[nodiscard]] SampleOrigin origin() const;

    friend bool operator==(const Recipe&, const Recipe&) = default;
};

inline constexpr const char* deviceProcessor = "cpu";

// What the files of one job have in common.
struct RecipeBase {
    std::string device = deviceProcessor;
    std::string corpusName{}, fingerprint{};  // of the model
    Aesthetics aesthetics{};
    OutputFormat format = OutputFormat::wav24;
    std::optional<Lineage> lineage{};
    std::string program{};  // version of the program that wrote them; empty for this one
};
[[nodiscard]] Recipe makeRecipe(const SampleOrigin& origin, const RecipeBase& base);
// The reverse: with the recipe's origin it makes the recipe again.
[[nodiscard]] RecipeBase baseOf(const Recipe& recipe);

// The version of this program, as recipes have it.
[[nodiscard]] std::string programVersion();

// Text that is no recipe that can be used. what() is a phrase without a file: "the recipe is damaged: ...".
class RecipeError : public Failure {
public:
    enum class Kind {
        foreign,  // no recipe of this program
        newer,    // of a later version of the form
        damaged,
        unusable,  // sound in itself, but it does not fit its model
        unknown,   // there is none
    };
    RecipeError(Kind kind, Message phrase) : Failure(std::move(phrase)), kind_(kind) {}
    template <typename... Arguments>
    RecipeError(Kind kind, Pattern<sizeof...(Arguments)> pattern, const Arguments&... arguments)
        : RecipeError(kind, Message(pattern, arguments...)) {}

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    // The same with the file's name before it.
    [[nodiscard]] RecipeError in(const std::filesystem::path& file) const;

private:
    Kind kind_;
};

// One JSON object on one line; docs/formats.md describes it. Latent vector and state are hexadecimal digits,
// so that they come back exactly. Text that is not UTF-8 gets replacement characters. The same recipe always
// gives the same text. Decoding checks everything that a generation takes for granted but the size of the
// latent vector, and ignores keys that it does not know. Throws RecipeError.
[[nodiscard]] std::string encodeJSON(const Recipe& recipe);
[[nodiscard]] Recipe decodeRecipe(std::string_view text);

// The kind of the chunk that carries a recipe in a WAV file (RIFFChunk): its JSON text.
inline constexpr std::string_view recipeChunk = "qrcp";

}  // namespace quillmere
