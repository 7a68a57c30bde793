#include "QuillmereCore/Origin/Recipe.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "QuillmereCore/Util/JSONDocument.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

using Writer = nlohmann::ordered_json;
using Reader = json::DoubleJson;

constexpr const char* kindText = "recipe";  // the value of "quillmere", which tells our documents from others

// ---- Numbers as hexadecimal digits, most significant byte last

template <typename Word>
std::string digits(std::span<const Word> words) {
    std::vector<std::uint8_t> bytes;
    for (const Word word : words) {
        for (std::size_t i = 0; i < sizeof(Word); ++i)
            bytes.push_back(static_cast<std::uint8_t>(word >> (8 * i)));
    }
    return Text::hexadecimal(bytes);
}

template <typename Word>
std::vector<Word> words(const std::string& key, const std::string& digits) {
    const auto bytes = Text::parseHexadecimal(digits);
    if (!bytes || bytes->size() % sizeof(Word) != 0)
        throw DecodingError("{0} must be hexadecimal digits, {1} per number", json::quoted(key),
                            2 * sizeof(Word));
    std::vector<Word> result(bytes->size() / sizeof(Word));
    for (std::size_t i = 0; i < bytes->size(); ++i)
        result[i / sizeof(Word)] |= static_cast<Word>(Word{(*bytes)[i]} << (8 * (i % sizeof(Word))));
    return result;
}

std::string encodeLatent(std::span<const float> latent) {
    std::vector<std::uint32_t> bits;
    for (const float value : latent)
        bits.push_back(std::bit_cast<std::uint32_t>(value));
    return digits<std::uint32_t>(bits);
}

std::vector<float> decodeLatent(const std::string& text) {
    std::vector<float> latent;
    for (const std::uint32_t bits : words<std::uint32_t>("latent", text)) {
        latent.push_back(std::bit_cast<float>(bits));
        if (!std::isfinite(latent.back()))
            throw DecodingError("\"latent\" holds a number that is not finite");
    }
    if (latent.empty()) throw DecodingError("\"latent\" is empty");
    return latent;
}

std::array<std::uint64_t, 4> decodeState(const std::string& text) {
    const std::vector<std::uint64_t> found = words<std::uint64_t>("state", text);
    std::array<std::uint64_t, 4> state{};
    if (found.size() != state.size()) throw DecodingError("\"state\" must be 64 hexadecimal digits");
    std::ranges::copy(found, state.begin());
    // The generator never gets there, and would not get away from it.
    if (state == std::array<std::uint64_t, 4>{}) throw DecodingError("\"state\" must not be zero");
    return state;
}

// The few digits that identify a single-precision number.
double shortest(float value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    double result = 0;
    std::from_chars(text.data(), end, result);
    return result;
}

// ---- Parts of the document

Writer sourcesJSON(std::span<const SampleOrigin::Source> sources) {
    Writer list = Writer::array();
    for (const SampleOrigin::Source& source : sources)
        list.push_back({{"clip", source.clip}, {"name", source.name}, {"weight", shortest(source.weight)}});
    return list;
}

std::vector<SampleOrigin::Source> decodeSources(const Reader& list) {
    std::vector<SampleOrigin::Source> sources;
    for (const Reader& item : list) {
        if (!item.is_object()) throw DecodingError("\"sources\" must be a list of objects");
        const std::int64_t clip = json::integerMember(item, "clip");
        if (clip < 0) throw DecodingError("\"clip\" must not be negative");
        const double weight = json::numberMember(item, "weight");
        if (!(weight >= 0 && weight <= 1)) throw DecodingError("\"weight\" must be a number from 0 to 1");
        sources.push_back(
            {static_cast<std::size_t>(clip), json::stringMember(item, "name"), static_cast<float>(weight)});
    }
    return sources;
}

Writer lineageJSON(const Lineage& lineage) {
    Writer object = {{"way", lineage.way}, {"parents", lineage.parents}};
    for (const auto& [name, value] : lineage.values)
        object["values"][name] = value;
    return object;
}

Lineage decodeLineage(const Reader& object) {
    Lineage lineage{.way = json::stringMember(object, "way"), .parents = {}, .values = {}};
    for (const Reader& parent : json::arrayMember(object, "parents")) {
        if (!parent.is_string()) throw DecodingError("\"parents\" must be a list of texts");
        lineage.parents.push_back(parent.get<std::string>());
    }
    if (!object.contains("values")) return lineage;
    for (const auto& [name, value] : json::objectMember(object, "values").items()) {
        if (!value.is_number()) throw DecodingError("\"values\" must be numbers");
        lineage.values[name] = value.get<double>();
    }
    return lineage;
}

DetailBasis decodeBasis(std::string_view text) {
    for (const DetailBasis basis : {DetailBasis::sources, DetailBasis::kept, DetailBasis::noise}) {
        if (text == rawValue(basis)) return basis;
    }
    throw DecodingError("\"detailBasis\" is unknown");
}

SoundFit decodeFit(const Reader& object) {
    constexpr std::int64_t longest = std::int64_t{1} << 30;  // samples: hours
    const std::int64_t samples = json::integerMember(object, "samples");
    if (samples < 1 || samples > longest) throw DecodingError("\"samples\" must be a possible length");
    const auto gain = static_cast<float>(json::numberMember(object, "gain"));
    if (!(std::isfinite(gain) && gain > 0)) throw DecodingError("\"gain\" must be above 0");
    return {static_cast<std::size_t>(samples), gain};
}

std::uint64_t unsignedMember(const Reader& object, const std::string& key) {
    const Reader& value = json::member(object, key);
    if (!value.is_number_unsigned())
        throw DecodingError("{0} must be a whole number from 0", json::quoted(key));
    return value.get<std::uint64_t>();
}

Aesthetics decodeChecked(const Reader& object) {
    constexpr double mostIterations = 10'000;  // more would look like a hang
    const Aesthetics aesthetics = decodeAesthetics(object.dump());
    validate(aesthetics);
    if (aesthetics.phaseIterations > mostIterations) throw DecodingError("\"phaseIterations\" is too large");
    return aesthetics;
}

void decodeDetail(const Reader& document, Recipe& recipe) {
    if (!document.contains("detail")) return;
    recipe.detail = json::numberMember(document, "detail");
    if (!(recipe.detail > 0 && recipe.detail <= 1))
        throw DecodingError("\"detail\" must be a number above 0 and up to 1");
    recipe.detailBasis = decodeBasis(json::stringMember(document, "detailBasis"));
}

OutputFormat decodeFormat(const std::string& text) {
    const auto format = outputFormat(text);
    if (!format) throw DecodingError("\"format\" is unknown");
    return *format;
}

Recipe decodeDocument(const Reader& document) {
    const Reader& model = json::objectMember(document, "model");
    Recipe recipe;
    recipe.program = json::stringMember(document, "program");
    recipe.device = json::stringMember(document, "device");
    recipe.model = json::stringMember(model, "identity");
    recipe.corpusName = json::stringMember(model, "corpus");
    recipe.fingerprint = json::stringMember(model, "fingerprint");
    // It becomes part of a folder's name.
    if (recipe.fingerprint.find('/') != std::string::npos)
        throw DecodingError("\"fingerprint\" must not hold a slash");
    recipe.seed = unsignedMember(document, "seed");
    recipe.index = json::integerMember(document, "index");
    recipe.aesthetics = decodeChecked(json::objectMember(document, "aesthetics"));
    decodeDetail(document, recipe);
    recipe.format = decodeFormat(json::stringMember(document, "format"));
    recipe.latent = decodeLatent(json::stringMember(document, "latent"));
    recipe.state = decodeState(json::stringMember(document, "state"));
    recipe.sources = decodeSources(json::arrayMember(document, "sources"));
    if (document.contains("fit")) recipe.fit = decodeFit(json::objectMember(document, "fit"));
    if (document.contains("lineage")) recipe.lineage = decodeLineage(json::objectMember(document, "lineage"));
    return recipe;
}

// Throws for what is none of ours, or not yet ours.
void checkKind(const Reader& document) {
    const auto kind = document.find("quillmere");
    if (kind == document.end() || *kind != kindText)
        throw RecipeError(RecipeError::Kind::foreign, "this is no recipe of this program");
    const std::int64_t version = json::integerMember(document, "version");
    if (version > Recipe::version) {
        throw RecipeError(RecipeError::Kind::newer,
                          "the recipe is of version {0}, which a newer version of the program has written; "
                          "this one knows up to {1}",
                          version, Recipe::version);
    }
    if (version < 1) throw DecodingError("\"version\" must be 1 or more");
}

}  // namespace

SampleOrigin Recipe::origin() const {
    return {.index = index,
            .seed = SampleGenerator::variationSeed(seed, static_cast<std::uint64_t>(index)),
            .latent = latent,
            .sources = sources,
            .model = model,
            .detail = detail,
            .detailBasis = detailBasis,
            .state = state,
            .fit = fit};
}

Recipe makeRecipe(const SampleOrigin& origin, const RecipeBase& base) {
    // The seeds of the variations lie at equal distances, so that of the request is where index 0 is.
    const std::uint64_t distance =
        SampleGenerator::variationSeed(0, static_cast<std::uint64_t>(origin.index));
    return {.program = base.program.empty() ? programVersion() : base.program,
            .device = base.device,
            .model = origin.model,
            .corpusName = base.corpusName,
            .fingerprint = base.fingerprint,
            .seed = origin.seed - distance,
            .index = origin.index,
            .aesthetics = base.aesthetics,
            .detail = origin.detail,
            .detailBasis = origin.detailBasis,
            .format = base.format,
            .latent = origin.latent,
            .state = origin.state,
            .sources = origin.sources,
            .lineage = base.lineage,
            .fit = origin.fit};
}

RecipeBase baseOf(const Recipe& recipe) {
    return {.device = recipe.device,
            .corpusName = recipe.corpusName,
            .fingerprint = recipe.fingerprint,
            .aesthetics = recipe.aesthetics,
            .format = recipe.format,
            .lineage = recipe.lineage,
            .program = recipe.program};
}

std::string programVersion() {
    return QUILLMERE_VERSION;
}

RecipeError RecipeError::in(const std::filesystem::path& file) const {
    return {kind_, Message("{0}: {1}", file, message())};
}

std::string encodeJSON(const Recipe& recipe) {
    Writer document;
    document["quillmere"] = kindText;
    document["version"] = recipe.fit ? Recipe::version : 1;
    document["program"] = recipe.program;
    document["device"] = recipe.device;
    document["model"] = {
        {"identity", recipe.model}, {"corpus", recipe.corpusName}, {"fingerprint", recipe.fingerprint}};
    document["seed"] = recipe.seed;
    document["index"] = recipe.index;
    document["aesthetics"] = Writer::parse(encodeJSON(recipe.aesthetics));
    if (recipe.detail > 0) {
        document["detail"] = recipe.detail;
        document["detailBasis"] = rawValue(recipe.detailBasis);
    }
    document["format"] = rawValue(recipe.format);
    document["latent"] = encodeLatent(recipe.latent);
    document["state"] = digits<std::uint64_t>(recipe.state);
    document["sources"] = sourcesJSON(recipe.sources);
    if (recipe.fit)
        document["fit"] = {{"samples", recipe.fit->samples}, {"gain", shortest(recipe.fit->gain)}};
    if (recipe.lineage) document["lineage"] = lineageJSON(*recipe.lineage);
    constexpr int onOneLine = -1;
    return document.dump(onOneLine, ' ', false, Writer::error_handler_t::replace);
}

Recipe decodeRecipe(std::string_view text) {
    try {
        const Reader document = json::parseObject<Reader>(text);
        checkKind(document);
        return decodeDocument(document);
    } catch (const RecipeError&) {
        throw;
    } catch (const Failure& failure) {
        throw RecipeError(RecipeError::Kind::damaged, "the recipe is damaged: {0}", failure.message());
    }
}

}  // namespace quillmere
