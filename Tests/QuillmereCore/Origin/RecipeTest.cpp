#include "QuillmereCore/Origin/Recipe.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "Support/CommaLocale.h"
#include "Support/SampleRecipe.h"

namespace quillmere {
namespace {

using ::testing::HasSubstr;
using testing::sampleRecipe;
using JSON = nlohmann::ordered_json;

// Text of the recipe after a change of its document.
template <typename Change>
std::string changed(const Change& change) {
    JSON document = JSON::parse(encodeJSON(sampleRecipe()));
    change(document);
    return document.dump();
}

// What decoding the text fails with, and its phrase.
std::pair<RecipeError::Kind, std::string> failureOf(const std::string& text) {
    try {
        (void)decodeRecipe(text);
    } catch (const RecipeError& error) {
        return {error.kind(), error.what()};
    }
    ADD_FAILURE() << "decoded: " << text;
    return {};
}

std::vector<std::uint32_t> bitsOf(const std::vector<float>& values) {
    std::vector<std::uint32_t> bits;
    for (const float value : values)
        bits.push_back(std::bit_cast<std::uint32_t>(value));
    return bits;
}

TEST(Recipe, ComesBackAsItWas) {
    const Recipe recipe = sampleRecipe();
    const Recipe again = decodeRecipe(encodeJSON(recipe));
    EXPECT_EQ(again, recipe);
    EXPECT_EQ(bitsOf(again.latent), bitsOf(recipe.latent)) << "the sign of zero and denormal numbers count";
}

TEST(Recipe, EveryLatentNumberComesBackExactly) {
    SeededRNG rng(3);
    Recipe recipe = sampleRecipe();
    recipe.latent.clear();
    for (int i = 0; i < 4096; ++i)
        recipe.latent.push_back(rng.gaussian() * std::exp2(60 * rng.signedUniform()));
    for (SampleOrigin::Source& source : recipe.sources)
        source.weight = rng.uniform();
    EXPECT_EQ(decodeRecipe(encodeJSON(recipe)), recipe);
}

TEST(Recipe, LineageComesBack) {
    Recipe recipe = sampleRecipe();
    recipe.lineage = Lineage{"like", {std::string(64, 'b')}, {{"closeness", 0.3}}};
    EXPECT_EQ(decodeRecipe(encodeJSON(recipe)), recipe);
    recipe.lineage = Lineage{"recipe", {}, {}};
    EXPECT_EQ(decodeRecipe(encodeJSON(recipe)), recipe);
}

TEST(Recipe, DetailComesBackAndIsNoneWhereNothingIsSaid) {
    Recipe recipe = sampleRecipe();
    EXPECT_EQ(encodeJSON(recipe).find("detail"), std::string::npos);
    for (const DetailBasis basis : {DetailBasis::sources, DetailBasis::kept, DetailBasis::noise}) {
        recipe.detail = 0.25;
        recipe.detailBasis = basis;
        EXPECT_EQ(decodeRecipe(encodeJSON(recipe)), recipe);
    }
    const std::string withDetail = encodeJSON(recipe);
    for (const auto& [key, value] :
         {std::pair("detail", JSON(2)), {"detail", JSON(0)}, {"detailBasis", JSON("hope")}}) {
        JSON document = JSON::parse(withDetail);
        document[key] = value;
        EXPECT_EQ(failureOf(document.dump()).first, RecipeError::Kind::damaged) << key;
    }
}

TEST(Recipe, AFitComesBackAndNeedsTheSecondVersion) {
    Recipe recipe = sampleRecipe();
    EXPECT_EQ(JSON::parse(encodeJSON(recipe))["version"], 1);
    recipe.fit = SoundFit{12345, 0.7F};
    const JSON document = JSON::parse(encodeJSON(recipe));
    EXPECT_EQ(document["version"], 2);
    EXPECT_EQ(decodeRecipe(document.dump()), recipe);
    for (const auto& [key, value] :
         {std::pair("samples", JSON(0)), {"samples", JSON(-1)}, {"gain", JSON(0)}, {"gain", JSON("loud")}}) {
        JSON damaged = document;
        damaged["fit"][key] = value;
        EXPECT_EQ(failureOf(damaged.dump()).first, RecipeError::Kind::damaged) << key;
    }
}

TEST(Recipe, IsOneLineInAnyLocale) {
    const std::string text = encodeJSON(sampleRecipe());
    EXPECT_EQ(text.find('\n'), std::string::npos);
    const testing::CommaLocale locale;
    EXPECT_EQ(encodeJSON(sampleRecipe()), text);
    EXPECT_EQ(decodeRecipe(text), sampleRecipe());
}

TEST(Recipe, NamesThatAreNoUTF8GetReplacementCharacters) {
    Recipe recipe = sampleRecipe();
    recipe.corpusName = "caf\xE9";
    EXPECT_EQ(decodeRecipe(encodeJSON(recipe)).corpusName, "caf\xEF\xBF\xBD");
}

TEST(Recipe, IgnoresKeysItDoesNotKnow) {
    EXPECT_EQ(decodeRecipe(changed([](JSON& document) { document["mood"] = "dark"; })), sampleRecipe());
}

TEST(Recipe, TellsForeignTextFromDamage) {
    EXPECT_EQ(failureOf("{}").first, RecipeError::Kind::foreign);
    EXPECT_EQ(failureOf(R"({"quillmere": "preset", "version": 1})").first, RecipeError::Kind::foreign);
    EXPECT_EQ(failureOf(R"({"recipe": "pancakes"})").second, "this is no recipe of this program");
    EXPECT_EQ(failureOf("not JSON").first, RecipeError::Kind::damaged);
    EXPECT_EQ(failureOf("[]").first, RecipeError::Kind::damaged);
}

TEST(Recipe, SaysThatANewerOneIsNewer) {
    const auto [kind, phrase] = failureOf(changed([](JSON& document) {
        document["version"] = 3;
        document.erase("latent");  // a later version may do so
    }));
    EXPECT_EQ(kind, RecipeError::Kind::newer);
    EXPECT_THAT(phrase, HasSubstr("version 3"));
}

TEST(Recipe, EveryMissingPartIsDamageThatIsNamed) {
    const JSON document = JSON::parse(encodeJSON(sampleRecipe()));
    for (const auto& [key, value] : document.items()) {
        if (key == "quillmere") continue;
        const auto [kind, phrase] = failureOf(changed([&name = key](JSON& copy) { copy.erase(name); }));
        EXPECT_EQ(kind, RecipeError::Kind::damaged) << key;
        EXPECT_THAT(phrase, HasSubstr("\"" + key + "\"")) << key;
        EXPECT_THAT(phrase, HasSubstr("the recipe is damaged: "));
    }
}

TEST(Recipe, EveryWrongTypeIsDamage) {
    const JSON document = JSON::parse(encodeJSON(sampleRecipe()));
    for (const auto& [key, value] : document.items()) {
        if (key == "quillmere") continue;
        for (const JSON& wrong : {JSON(true), JSON("x"), JSON(-1.5), JSON::array({1}), JSON({{"a", 1}})}) {
            if (wrong.type() == value.type()) continue;
            EXPECT_EQ(failureOf(changed([&name = key, &wrong](JSON& copy) { copy[name] = wrong; })).first,
                      RecipeError::Kind::damaged)
                << key << " " << wrong;
        }
    }
}

TEST(Recipe, ValuesThatNoGenerationCanWorkWithAreDamage) {
    const auto set = [](const std::string& key, const JSON& value) {
        return changed([&](JSON& document) { document[key] = value; });
    };
    const auto setParameter = [](const std::string& key, double value) {
        return changed([&](JSON& document) { document["aesthetics"][key] = value; });
    };
    for (const std::string& text :
         {set("latent", ""), set("latent", "00"), set("latent", "0000803g"),
          set("latent", "0000807f"),  // infinity
          set("state", std::string(64, '0')), set("state", std::string(48, '1')), set("format", "mp3"),
          set("version", 0), setParameter("stretch", 1e300), setParameter("sources", 1e300),
          setParameter("phaseIterations", 1e6),
          changed([](JSON& document) { document["model"]["fingerprint"] = "../.."; }),
          changed([](JSON& document) { document["sources"][0]["clip"] = -1; }),
          changed([](JSON& document) { document["sources"][0] = 1; })})
        EXPECT_EQ(failureOf(text).first, RecipeError::Kind::damaged) << text;
}

TEST(Recipe, NoPrefixOfItIsARecipe) {
    const std::string text = encodeJSON(sampleRecipe());
    for (std::size_t length = 0; length < text.size(); length += 7)
        EXPECT_EQ(failureOf(text.substr(0, length)).first, RecipeError::Kind::damaged) << length;
}

TEST(Recipe, IsMadeFromAnOriginWithTheSeedOfTheRequest) {
    const SampleOrigin origin{.index = 5,
                              .seed = SampleGenerator::variationSeed(42, 5),
                              .latent = {1, 2},
                              .sources = {{1, "x", 1}},
                              .model = "m",
                              .detail = 0.5,
                              .detailBasis = DetailBasis::noise,
                              .state = {1, 2, 3, 4}};
    const Recipe recipe = makeRecipe(origin, {.device = "cpu",
                                              .corpusName = "Kicks",
                                              .fingerprint = "ab",
                                              .aesthetics = {},
                                              .format = OutputFormat::wav24});
    EXPECT_EQ(recipe.seed, 42U);
    EXPECT_EQ(recipe.index, 5);
    EXPECT_EQ(recipe.origin(), origin);
    EXPECT_EQ(recipe.program, programVersion());
}

TEST(Recipe, ItsBaseAndItsOriginMakeItAgain) {
    Recipe recipe = sampleRecipe();
    recipe.program = "0.0.9";
    recipe.lineage = Lineage{.way = "skin", .parents = {"abc"}, .values = {}};
    recipe.fit = SoundFit{.samples = 100, .gain = 0.5F};
    EXPECT_EQ(makeRecipe(recipe.origin(), baseOf(recipe)), recipe);
}

}  // namespace
}  // namespace quillmere
