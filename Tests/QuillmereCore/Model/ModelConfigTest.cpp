#include "QuillmereCore/Model/ModelConfig.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

ModelConfig exampleConfig() {
    return {.sampleRate = 22050,
            .nFFT = 4096,
            .hop = 1024,
            .nMels = 384,
            .frames = 64,
            .latentDim = 32,
            .profile = AnalysisProfile::tonal};
}

const std::string exampleJSON =
    R"({"sampleRate": 22050, "nFFT": 4096, "hop": 1024, "nMels": 384, "frames": 64, "latentDim": 32,)"
    R"( "profile": "tonal"})";

std::string replaced(const std::string& text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.substr(0, at) + to + text.substr(at + from.size());
}

std::string decodingMessage(const std::string& text) {
    try {
        (void)decodeModelConfig(text);
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "decoded";
}

TEST(AnalysisProfile, HasThreeCasesInOrderWithRawValuesAndLabels) {
    ASSERT_EQ(allAnalysisProfiles.size(), 3U);
    EXPECT_EQ(rawValue(allAnalysisProfiles[0]), "auto");
    EXPECT_EQ(rawValue(allAnalysisProfiles[1]), "percussive");
    EXPECT_EQ(rawValue(allAnalysisProfiles[2]), "tonal");
    EXPECT_EQ(label(AnalysisProfile::automatic), "Automatic");
    EXPECT_EQ(label(AnalysisProfile::percussive), "Percussive (sharp attacks)");
    EXPECT_EQ(label(AnalysisProfile::tonal), "Tonal (sustained pitch)");
}

TEST(AnalysisProfile, IsFoundByItsExactRawValueOnly) {
    for (const AnalysisProfile profile : allAnalysisProfiles)
        EXPECT_EQ(analysisProfile(rawValue(profile)), profile);
    for (const char* other : {"Auto", "automatic", "tonal ", ""})
        EXPECT_EQ(analysisProfile(other), std::nullopt) << other;
}

TEST(ModelConfig, DefaultsTo96MelBandsAnd64LatentDimensions) {
    const ModelConfig config;
    EXPECT_EQ(config.nMels, 96);
    EXPECT_EQ(config.latentDim, 64);
}

TEST(ModelConfig, ZeroSecondsStillHave32Frames) {
    EXPECT_EQ(ModelConfig::framesForSeconds(0, 44100, 256), 32);
    EXPECT_EQ(ModelConfig::framesForSeconds(-5, 44100, 256), 32);
}

TEST(ModelConfig, OneSecondAt44100HzAndHop256Has192Frames) {
    EXPECT_EQ(ModelConfig::framesForSeconds(1, 44100, 256), 192);
}

TEST(ModelConfig, FramesAreRoundedUpToTheNextMultipleOf32) {
    EXPECT_EQ(ModelConfig::framesForSeconds(1, 8192, 256), 32) << "exactly 32";
    EXPECT_EQ(ModelConfig::framesForSeconds(1.0001, 8192, 256), 64) << "a little over 32";
}

TEST(ModelConfigDeathTest, AFrameCountThatIsNotFiniteStopsTheProgram) {
    EXPECT_DEATH((void)ModelConfig::framesForSeconds(std::nan(""), 44100, 256), "not finite");
    EXPECT_DEATH((void)ModelConfig::framesForSeconds(std::numeric_limits<double>::infinity(), 44100, 256),
                 "not finite");
    EXPECT_DEATH((void)ModelConfig::framesForSeconds(1, 44100, 0), "not finite");
    EXPECT_DEATH((void)ModelConfig::framesForSeconds(9223372036854775808.0, 1, 1), "out of range");
}

// Doubles below 2^63 are multiples of 1024 there, so rounding up by 31 frames still fits.
TEST(ModelConfig, TheLargestRepresentableFrameCountIsStillRoundedUp) {
    const double largest = std::nextafter(9223372036854775808.0, 0);
    EXPECT_EQ(ModelConfig::framesForSeconds(largest, 1, 1), 9223372036854774784);
}

TEST(ModelConfig, AutomaticAnalysesAsPercussiveAndStaysAutomatic) {
    const auto automatic = ModelConfig::forSeconds(44100, 1, AnalysisProfile::automatic, 64);
    auto percussive = ModelConfig::forSeconds(44100, 1, AnalysisProfile::percussive, 64);
    EXPECT_EQ(automatic.profile, AnalysisProfile::automatic);
    EXPECT_EQ(percussive.profile, AnalysisProfile::percussive);
    percussive.profile = AnalysisProfile::automatic;
    EXPECT_EQ(automatic, percussive);
}

TEST(ModelConfig, PercussiveIsFineInTime) {
    const auto config = ModelConfig::forSeconds(44100, 1, AnalysisProfile::percussive, 16);
    EXPECT_EQ(config, (ModelConfig{44100, 1024, 256, 96, 192, 16, AnalysisProfile::percussive}));
}

TEST(ModelConfig, TonalIsFineInFrequency) {
    const auto config = ModelConfig::forSeconds(22050, 2.5, AnalysisProfile::tonal, 32);
    EXPECT_EQ(config, exampleConfig());
}

TEST(ModelConfig, ClipLengthIsFramesTimesHop) {
    const ModelConfig config = exampleConfig();
    EXPECT_EQ(config.clipSamples(), 65536);
    EXPECT_DOUBLE_EQ(config.clipSeconds(), 65536.0 / 22050.0);
}

TEST(ModelConfigDeathTest, AClipLengthThatOverflowsStopsTheProgram) {
    ModelConfig config = exampleConfig();
    config.frames = std::int64_t{1} << 40;
    config.hop = std::int64_t{1} << 30;
    EXPECT_DEATH((void)config.clipSamples(), "overflow");
    EXPECT_DEATH((void)config.clipSeconds(), "overflow");
}

TEST(ModelConfigJSON, DecodesWhatItEncodes) {
    for (const AnalysisProfile profile : allAnalysisProfiles) {
        ModelConfig config = exampleConfig();
        config.profile = profile;
        EXPECT_EQ(decodeModelConfig(encodeJSON(config)), config) << label(profile);
    }
}

TEST(ModelConfigJSON, HasExactlyTheSevenKeys) {
    const std::string text = encodeJSON(exampleConfig());
    std::vector<std::string> keys;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t end = line.find("\":");
        if (end != std::string::npos)
            keys.push_back(line.substr(3, end - 3));  // after two blanks and a quote
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"frames", "hop", "latentDim", "nFFT", "nMels", "profile",
                                              "sampleRate"}));
}

TEST(ModelConfigJSON, IgnoresOtherKeysAndTheirOrder) {
    EXPECT_EQ(decodeModelConfig(replaced(exampleJSON, "{", R"({"colour": [1, null], )")), exampleConfig());
}

TEST(ModelConfigJSON, RequiresEveryKey) {
    for (const char* key : {"sampleRate", "nFFT", "hop", "nMels", "frames", "latentDim", "profile"}) {
        const std::string quoted = '"' + std::string(key) + '"';
        EXPECT_EQ(decodingMessage(replaced(exampleJSON, quoted, "\"other\"")), quoted + " is missing");
    }
}

TEST(ModelConfigJSON, RefusesWrongTypes) {
    for (const char* value : {"\"1024\"", "1024.5", "1024.0", "true", "null", "[1024]", "{}"}) {
        EXPECT_EQ(decodingMessage(replaced(exampleJSON, "1024", value)), "\"hop\" must be an integer")
            << value;
    }
    EXPECT_EQ(decodingMessage(replaced(exampleJSON, "1024", "9223372036854775808")),
              "\"hop\" must be a 64-bit integer");
    EXPECT_EQ(decodingMessage(replaced(exampleJSON, "\"tonal\"", "2")), "\"profile\" must be a text");
}

TEST(ModelConfigJSON, RefusesUnknownProfiles) {
    EXPECT_EQ(decodingMessage(replaced(exampleJSON, "tonal", "Tonal")),
              "\"profile\" is \"Tonal\", which is no analysis profile");
}

TEST(ModelConfigJSON, RefusesWhatIsNoObject) {
    EXPECT_EQ(decodingMessage("[]"), "not a JSON object");
    EXPECT_EQ(decodingMessage(""), "not valid JSON (byte 1)");
    EXPECT_EQ(decodingMessage(exampleJSON.substr(0, 20)), "not valid JSON (byte 21)");
    EXPECT_EQ(decodingMessage(replaced(exampleJSON, "1024", "1e999")), "a number is too large");
}

TEST(ModelConfigProblem, IsNoneForEveryUsualConfiguration) {
    for (const AnalysisProfile profile : allAnalysisProfiles) {
        for (const int sampleRate : {8000, 44100, 192000, 384000}) {
            for (const double seconds : {0.0, 0.25, 4.0}) {
                const auto config = ModelConfig::forSeconds(sampleRate, seconds, profile, 64);
                EXPECT_EQ(problemWith(config), std::nullopt) << sampleRate << " Hz, " << seconds << " s";
            }
        }
    }
    EXPECT_EQ(problemWith(ModelConfig::forSeconds(44100, 60, AnalysisProfile::percussive, 64)), std::nullopt);
}

TEST(ModelConfigProblem, NamesTheFieldThatNoModelCanHave) {
    struct Case {
        std::int64_t ModelConfig::*field;
        std::int64_t value;
        const char* expected;
    };
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    constexpr std::int64_t hugeMultiple = std::int64_t{1} << 62;
    const Case cases[] = {
        {&ModelConfig::sampleRate, 0, "sampleRate is 0"},
        {&ModelConfig::sampleRate, -44100, "sampleRate is -44100"},
        {&ModelConfig::sampleRate, huge, "sampleRate is"},
        {&ModelConfig::nFFT, 0, "nFFT is 0"},
        {&ModelConfig::nFFT, -4096, "nFFT is -4096"},
        {&ModelConfig::nFFT, 4000, "nFFT is 4000, not a power of two"},
        {&ModelConfig::nFFT, hugeMultiple, "nFFT is"},
        {&ModelConfig::nFFT, std::numeric_limits<std::int64_t>::min(), "nFFT is"},
        {&ModelConfig::hop, 0, "hop is 0"},
        {&ModelConfig::hop, -1, "hop is -1"},
        {&ModelConfig::hop, 4097, "hop is 4097"},
        {&ModelConfig::nMels, 0, "nMels is 0"},
        {&ModelConfig::nMels, -32, "nMels is -32"},
        {&ModelConfig::nMels, 100, "nMels is 100"},
        {&ModelConfig::nMels, hugeMultiple, "nMels is"},
        {&ModelConfig::frames, 0, "frames is 0"},
        {&ModelConfig::frames, 33, "frames is 33"},
        {&ModelConfig::frames, hugeMultiple, "frames is"},
        {&ModelConfig::frames, 1 << 20, "together too many"},
        {&ModelConfig::latentDim, 0, "latentDim is 0"},
        {&ModelConfig::latentDim, -64, "latentDim is -64"},
        {&ModelConfig::latentDim, huge, "latentDim is"},
        {&ModelConfig::latentDim, 1 << 20, "too many for this image"},
    };
    for (const Case& c : cases) {
        ModelConfig config = exampleConfig();
        config.*c.field = c.value;
        const std::optional<std::string> problem = problemWith(config);
        ASSERT_TRUE(problem) << c.expected;
        EXPECT_NE(problem->find(c.expected), std::string::npos) << *problem;
    }
}

}  // namespace
}  // namespace quillmere
