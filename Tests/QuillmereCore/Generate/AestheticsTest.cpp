#include "QuillmereCore/Generate/Aesthetics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuillmereCore/Util/Failure.h"
#include "Support/CommaLocale.h"

namespace quillmere {
namespace {

using ::testing::HasSubstr;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

const ParameterSpec& specNamed(std::string_view id) {
    const ParameterSpec* spec = Aesthetics::spec(id);
    if (spec == nullptr) throw std::runtime_error("no spec " + std::string(id));
    return *spec;
}

double stored(std::string_view id, double value) {
    Aesthetics aesthetics;
    aesthetics.set(specNamed(id), value);
    return specNamed(id).value(aesthetics);
}

std::string messageOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "nothing was thrown";
}

std::string decodingMessage(std::string_view json) {
    return messageOf([&] { (void)decodeAesthetics(json); });
}

// The JSON of the defaults with the text from replaced by to.
std::string defaultsWith(std::string_view from, std::string_view to) {
    std::string json = encodeJSON(Aesthetics{});
    json.replace(json.find(from), from.size(), to);
    return json;
}

TEST(AestheticsSpecs, CoverEveryMemberOnceInMemberOrder) {
    static_assert(sizeof(Aesthetics) == 20 * sizeof(double));
    ASSERT_EQ(Aesthetics::specs().size(), 20U);
    const Aesthetics aesthetics;
    const double* previous = nullptr;
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const double* const member = &(aesthetics.*spec.keyPath);
        EXPECT_GT(member, previous) << spec.id;
        previous = member;
    }
}

TEST(AestheticsSpecs, DefaultsLieInTheirRanges) {
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        EXPECT_GE(spec.value({}), spec.lower) << spec.id;
        EXPECT_LE(spec.value({}), spec.upper) << spec.id;
    }
}

TEST(AestheticsSpecs, AreFoundByTheHyphenatedIdentifierOnly) {
    EXPECT_EQ(Aesthetics::spec("pitchJitter"), nullptr);
    EXPECT_EQ(specNamed("pitch-jitter").keyPath, &Aesthetics::pitchJitter);
}

TEST(AestheticsSpecs, AreFoundInTheirOwnLetterCaseOnly) {
    EXPECT_EQ(Aesthetics::spec("Drift"), nullptr);
    EXPECT_EQ(Aesthetics::spec(""), nullptr);
}

TEST(AestheticsSpecs, GroupsAreNamedByTheirTitles) {
    for (const ParameterSpec::Group group : allParameterGroups)
        EXPECT_EQ(parameterGroup(rawValue(group)), group);
    EXPECT_EQ(parameterGroup("Signal & degradation"), ParameterSpec::Group::signal);
    EXPECT_EQ(parameterGroup("signal"), std::nullopt);
    EXPECT_EQ(parameterGroup("output"), std::nullopt);
}

TEST(AestheticsSet, ClampsAboveTheRange) {
    EXPECT_EQ(stored("crush-bits", 30), 24);
    EXPECT_EQ(stored("drift", infinity), 4);
}

TEST(AestheticsSet, ClampsBelowTheRange) {
    EXPECT_EQ(stored("crush-bits", 1), 2);
    EXPECT_EQ(stored("extrapolation", -2), -0.9);
    EXPECT_EQ(stored("drift", -infinity), 0);
}

TEST(AestheticsSet, StoresValuesOfTheRangeUnchanged) {
    EXPECT_EQ(stored("drift", 2.5), 2.5);
    EXPECT_EQ(stored("drift", 4), 4);
    EXPECT_EQ(stored("drift", 0), 0);
}

TEST(AestheticsSet, StoresNaN) {
    EXPECT_TRUE(std::isnan(stored("drift", notANumber)));
}

TEST(AestheticsSet, ChangesItsParameterOnly) {
    Aesthetics expected;
    expected.tilt = 3;
    Aesthetics aesthetics;
    aesthetics.set(specNamed("tilt"), 3);
    EXPECT_EQ(aesthetics, expected);
}

TEST(AestheticsFormat, ShowsNoDecimalsForStepsOfOneAndMore) {
    EXPECT_EQ(specNamed("decay").format(250), "250 ms");
    EXPECT_EQ(specNamed("phase-iterations").format(48), "48");
}

TEST(AestheticsFormat, ShowsOneDecimalForStepsOfATenthAndMore) {
    EXPECT_EQ(specNamed("normalize").format(-1), "-1.0 dBFS");
    EXPECT_EQ(specNamed("tilt").format(3), "3.0 dB/oct");
}

TEST(AestheticsFormat, ShowsTwoDecimalsForSmallerSteps) {
    EXPECT_EQ(specNamed("reverse-chance").format(0.3), "0.30");
    EXPECT_EQ(specNamed("drift").format(0.4), "0.40");
    EXPECT_EQ(specNamed("stretch").format(2), "2.00 \u00D7");
}

TEST(AestheticsJSON, WritesAllTwentyKeysInMemberOrder) {
    const std::string json = encodeJSON(Aesthetics{});
    std::size_t position = 0;
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const std::size_t found = json.find("\"" + std::string(spec.field) + "\"");
        ASSERT_NE(found, std::string::npos) << spec.field;
        EXPECT_GE(found, position) << spec.field;
        position = found;
    }
}

TEST(AestheticsJSON, RoundTripsToAnEqualRecord) {
    Aesthetics aesthetics;
    double value = -1.0 / 3;
    for (const ParameterSpec& spec : Aesthetics::specs())
        aesthetics.*spec.keyPath = (value *= -1.7);
    EXPECT_EQ(decodeAesthetics(encodeJSON(aesthetics)), aesthetics);
    for (const Preset& preset : Preset::all())
        EXPECT_EQ(decodeAesthetics(encodeJSON(preset.aesthetics)), preset.aesthetics) << preset.name;
}

TEST(AestheticsJSON, EveryKeyIsRequired) {
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const std::string key = "\"" + std::string(spec.field) + "\"";
        const std::string json = defaultsWith(key, "\"other\"");
        EXPECT_THROW((void)decodeAesthetics(json), DecodingError) << key;
        EXPECT_THAT(decodingMessage(json), HasSubstr(key));
    }
}

TEST(AestheticsJSON, EveryValueMustBeANumber) {
    for (const char* value : {"null", "true", "\"-1\"", "[-1]", "{}"}) {
        const std::string json = defaultsWith("\"normalize\": -1.0", "\"normalize\": " + std::string(value));
        EXPECT_THROW((void)decodeAesthetics(json), DecodingError) << value;
        EXPECT_THAT(decodingMessage(json), HasSubstr("\"normalize\""));
    }
}

TEST(AestheticsJSON, IntegersAreNumbers) {
    EXPECT_EQ(decodeAesthetics(defaultsWith("\"normalize\": -1.0", "\"normalize\": -3")).normalize, -3);
}

TEST(AestheticsJSON, OtherKeysAreIgnored) {
    EXPECT_EQ(decodeAesthetics(defaultsWith("{", "{\"Drift\": 9, \"comment\": [1, {}],")), Aesthetics{});
}

TEST(AestheticsJSON, ValuesAreNotClamped) {
    EXPECT_EQ(decodeAesthetics(defaultsWith("\"drift\": 0.4", "\"drift\": 1e300")).drift, 1e300);
}

TEST(AestheticsJSON, TextThatIsNoDocumentIsRefused) {
    const std::string whole = encodeJSON(Aesthetics{});
    EXPECT_THROW((void)decodeAesthetics(""), DecodingError);
    EXPECT_THROW((void)decodeAesthetics(whole.substr(0, whole.size() / 2)), DecodingError);
    EXPECT_THROW((void)decodeAesthetics(whole + "}"), DecodingError);
    EXPECT_THROW((void)decodeAesthetics(defaultsWith("0.4", "NaN")), DecodingError);
    EXPECT_THROW((void)decodeAesthetics(defaultsWith("0.4", "1e999")), DecodingError);
    EXPECT_THROW((void)decodeAesthetics("\xff\xfe"), DecodingError);
}

TEST(AestheticsJSON, DocumentsOfAnotherKindAreRefused) {
    EXPECT_THROW((void)decodeAesthetics("[]"), DecodingError);
    EXPECT_THROW((void)decodeAesthetics("48"), DecodingError);
}

TEST(AestheticsJSON, DoesNotDependOnTheDecimalCommaOfALocale) {
    const std::string json = encodeJSON(Aesthetics{});
    const testing::CommaLocale locale;
    EXPECT_EQ(encodeJSON(Aesthetics{}), json);
    EXPECT_EQ(decodeAesthetics(json), Aesthetics{});
    EXPECT_EQ(specNamed("drift").format(0.4), "0.40");
    EXPECT_EQ(specNamed("decay").format(2000), "2000 ms");
}

TEST(AestheticsJSON, NumbersWithoutAJSONFormAreRefused) {
    Aesthetics aesthetics;
    aesthetics.tilt = notANumber;
    EXPECT_THROW((void)encodeJSON(aesthetics), InvalidParameterError);
}

// The preset file of wild values with the text from replaced by to.
std::string presetWith(std::string_view from, std::string_view to) {
    std::string json = encodePreset(Preset::named("Wild")->aesthetics);
    const std::size_t at = json.find(from);
    if (at == std::string::npos) throw std::runtime_error("no " + std::string(from) + " in " + json);
    return json.replace(at, from.size(), to);
}

TEST(PresetFile, IsTheObjectOfTheParametersWithAVersion) {
    const Aesthetics wild = Preset::named("Wild")->aesthetics;
    const std::string json = encodePreset(wild);
    EXPECT_TRUE(json.starts_with("{\n  \"version\": 1,\n  \"sources\": 4.0,\n  \"drift\": 1.6,")) << json;
    EXPECT_EQ(decodePreset(json), wild);
    EXPECT_EQ(decodeAesthetics(json), wild) << "as programs before there were versions read it";
}

TEST(PresetFile, MayBeOlderThanVersions) {
    const Aesthetics wild = Preset::named("Wild")->aesthetics;
    EXPECT_EQ(decodePreset(encodeJSON(wild)), wild);
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const std::string key = '"' + std::string(spec.field) + '"';
        EXPECT_EQ(messageOf([&] { (void)decodePreset(defaultsWith(key, "\"other\"")); }),
                  key + " is missing");
    }
}

// What a file of version 1 is to a program with one parameter more.
TEST(PresetFile, LacksParametersThatHaveTheirDefaults) {
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const std::string key = '"' + std::string(spec.field) + '"';
        Aesthetics expected = Preset::named("Wild")->aesthetics;
        expected.*spec.keyPath = spec.value(Aesthetics{});
        EXPECT_EQ(decodePreset(presetWith(key, "\"unknown\"")), expected) << key;
    }
    EXPECT_EQ(decodePreset("{\"version\": 1}"), Aesthetics{});
}

TEST(PresetFile, MayBeNewerAndHoldMore) {
    const Aesthetics wild = Preset::named("Wild")->aesthetics;
    EXPECT_EQ(decodePreset(presetWith("{", "{\"shimmer\": {\"amount\": [1, \"x\"]},")), wild);
    EXPECT_EQ(decodePreset(presetWith("\"version\": 1", "\"version\": 7")), wild);
    EXPECT_EQ(decodePreset("{\"version\": 7, \"drift\": 3, \"shimmer\": 0.5}"), Aesthetics{.drift = 3});
}

TEST(PresetFile, RefusesWhatIsNoPreset) {
    const auto message = [](const std::string& json) { return messageOf([&] { (void)decodePreset(json); }); };
    EXPECT_EQ(message("{}"), "\"sources\" is missing");
    EXPECT_EQ(message("[]"), "not a JSON object");
    EXPECT_THAT(message("{"), HasSubstr("not valid JSON"));
    EXPECT_EQ(message(std::string(1 << 20, '[')), "nested too deeply");
    EXPECT_EQ(message(presetWith("\"drift\": 1.6", "\"drift\": \"1.6\"")), "\"drift\" must be a number");
    for (const char* version : {"0", "-1"}) {
        EXPECT_EQ(message(presetWith("\"version\": 1", "\"version\": " + std::string(version))),
                  "\"version\" must be a positive integer");
    }
    for (const char* version : {"1.5", "\"1\"", "null"}) {
        EXPECT_EQ(message(presetWith("\"version\": 1", "\"version\": " + std::string(version))),
                  "\"version\" must be an integer");
    }
    EXPECT_THROW((void)encodePreset({.drift = infinity}), InvalidParameterError);
}

TEST(ParameterNumbers, HaveAsManyDecimalsAsTheirStepNeeds) {
    EXPECT_EQ(specNamed("sources").decimals(), 0);
    EXPECT_EQ(specNamed("decay").decimals(), 0);
    EXPECT_EQ(specNamed("pitch").decimals(), 1);
    EXPECT_EQ(specNamed("drift").decimals(), 2);
    EXPECT_EQ(specNamed("grit").decimals(), 2);
}

TEST(ParameterNumbers, SnapToTheDecimalFractionsPeopleWrite) {
    EXPECT_EQ(specNamed("drift").snapped(0.1501), 0.15) << "not 3 * 0.05";
    EXPECT_EQ(specNamed("grit").snapped(0.299), 0.3);
    EXPECT_EQ(specNamed("stretch").snapped(1.01), 1.0);
    EXPECT_EQ(specNamed("decay").snapped(252), 250);
    EXPECT_EQ(specNamed("drift").snapped(9), 4);
    EXPECT_EQ(specNamed("extrapolation").snapped(-3), -0.9);
}

TEST(ParameterNumbers, AreReadWithOrWithoutASign) {
    EXPECT_EQ(ParameterSpec::parse("2.5"), 2.5);
    EXPECT_EQ(ParameterSpec::parse("+2.5"), 2.5);
    EXPECT_EQ(ParameterSpec::parse("-2.5"), -2.5);
    EXPECT_EQ(ParameterSpec::parse("1e2"), 100);
    for (const char* text :
         {"", "+", "-", "+-1", "--1", "++1", " 1", "1 ", "1,5", "inf", "nan", "1e999", "0x10", "x"})
        EXPECT_EQ(ParameterSpec::parse(text), std::nullopt) << text;
}

TEST(AestheticsValidate, AcceptsDefaultsPresetsAndRangeEnds) {
    EXPECT_NO_THROW(validate({}));
    for (const Preset& preset : Preset::all())
        EXPECT_NO_THROW(validate(preset.aesthetics)) << preset.name;
    Aesthetics lowest;
    Aesthetics highest;
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        lowest.set(spec, -infinity);
        highest.set(spec, infinity);
    }
    EXPECT_NO_THROW(validate(lowest));
    EXPECT_NO_THROW(validate(highest));
}

TEST(AestheticsValidate, RefusesWhatIsNotFiniteByName) {
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        for (const double value : {notANumber, infinity, -infinity}) {
            Aesthetics aesthetics;
            aesthetics.*spec.keyPath = value;
            EXPECT_THAT(messageOf([&] { validate(aesthetics); }),
                        AllOf(HasSubstr(std::string(spec.title)), HasSubstr(std::string(spec.field)),
                              HasSubstr("must be a finite number")));
        }
    }
}

TEST(AestheticsValidate, RefusesCountsThatFitNoInteger) {
    for (const char* id : {"sources", "phase-iterations", "decimate", "crush-bits"}) {
        for (const double value : {1e19, -1e300}) {
            Aesthetics aesthetics;
            aesthetics.*specNamed(id).keyPath = value;
            EXPECT_THAT(messageOf([&] { validate(aesthetics); }),
                        AllOf(HasSubstr(std::string(specNamed(id).title)), HasSubstr("too large")));
        }
    }
}

TEST(AestheticsValidate, RefusesAStretchWithoutFiniteFactor) {
    for (const Aesthetics& aesthetics :
         {Aesthetics{.stretch = 1e300}, Aesthetics{.stretchJitter = 2000}, Aesthetics{.stretchJitter = -2000},
          Aesthetics{.stretch = 0, .stretchJitter = 2000}, Aesthetics{.stretch = -1e300}})
        EXPECT_THAT(messageOf([&] { validate(aesthetics); }), HasSubstr("stretch"));
}

TEST(AestheticsValidate, LetsAbsurdButUsableValuesPass) {
    EXPECT_NO_THROW(validate({.sources = -5, .phaseIterations = -3, .crushBits = -100, .decimate = 1e9}));
    EXPECT_NO_THROW(validate({.drift = 1e300, .pitch = -1e300, .stretch = 1e200, .decay = -4}));
}

TEST(Preset, BalancedIsTheDefault) {
    ASSERT_NE(Preset::named("Balanced"), nullptr);
    EXPECT_EQ(Preset::named("Balanced")->aesthetics, Aesthetics{});
}

TEST(Preset, NamesAreFoundWhateverTheLetterCase) {
    ASSERT_NE(Preset::named("EXTREME"), nullptr);
    EXPECT_EQ(Preset::named("EXTREME")->name, "Extreme");
    ASSERT_NE(Preset::named("lo-fi"), nullptr);
    EXPECT_EQ(Preset::named("lo-fi")->id(), "Lo-fi");
}

TEST(Preset, NamesMustMatchWhole) {
    EXPECT_EQ(Preset::named("Balanced "), nullptr);
    EXPECT_EQ(Preset::named("Bal"), nullptr);
    EXPECT_EQ(Preset::named(""), nullptr);
}

TEST(Preset, AllEightComeInTheirOrder) {
    std::vector<std::string_view> names;
    for (const Preset& preset : Preset::all())
        names.push_back(preset.name);
    EXPECT_THAT(names, ::testing::ElementsAre("Faithful", "Balanced", "Explore", "Wild", "Extreme", "Lo-fi",
                                              "Ghostly", "Robotic"));
}

}  // namespace
}  // namespace quillmere
