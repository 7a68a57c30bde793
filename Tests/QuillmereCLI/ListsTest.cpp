#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"

namespace quillmere::testing {
namespace {

TEST(Presets, ListsAllEightWithTheirBlurbs) {
    const Outcome outcome = runCommand({"presets"});
    EXPECT_EQ(outcome.exitCode, 0);
    for (const Preset& preset : Preset::all()) {
        EXPECT_NE(outcome.out.find(preset.name), std::string::npos) << preset.name;
        EXPECT_NE(outcome.out.find(preset.blurb), std::string::npos) << preset.name;
    }
}

TEST(Presets, JSONHoldsTheCompleteParameters) {
    const Outcome outcome = runCommand({"presets", "--json"});
    const cli::JSON presets = outcome.event("result")["presets"];
    ASSERT_EQ(presets.size(), 8U);
    for (std::size_t i = 0; i < presets.size(); ++i) {
        EXPECT_EQ(presets[i]["name"], Preset::all()[i].name);
        EXPECT_EQ(decodeAesthetics(presets[i]["aesthetics"].dump()), Preset::all()[i].aesthetics);
    }
}

TEST(Parameters, ListsEachOnceUnderItsGroup) {
    const Outcome outcome = runCommand({"parameters"});
    EXPECT_EQ(outcome.exitCode, 0);
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const std::string start = "\n  " + std::string(spec.id) + " ";
        const std::size_t at = outcome.out.find(start);
        ASSERT_NE(at, std::string::npos) << spec.id;
        EXPECT_EQ(outcome.out.find(start, at + 1), std::string::npos) << spec.id;
        EXPECT_LT(outcome.out.find(rawValue(spec.group)), at) << spec.id;
    }
}

TEST(Parameters, JSONHoldsEveryColumnOfTheTable) {
    const cli::JSON parameters = runCommand({"parameters", "--json"}).event("result")["parameters"];
    ASSERT_EQ(parameters.size(), 20U);
    const cli::JSON& jitter = parameters[5];
    EXPECT_EQ(jitter["id"], "pitch-jitter");
    EXPECT_EQ(jitter["field"], "pitchJitter");
    EXPECT_EQ(jitter["title"], "Pitch jitter");
    EXPECT_EQ(jitter["group"], "Spectral shaping");
    EXPECT_EQ(jitter["lower"], 0);
    EXPECT_EQ(jitter["upper"], 24);
    EXPECT_EQ(jitter["step"], 0.5);
    EXPECT_EQ(jitter["unit"], "st");
    EXPECT_EQ(jitter["logarithmic"], false);
    EXPECT_EQ(jitter["default"], 0);
}

TEST(Devices, TheProcessorComesFirst) {
    const Outcome outcome = runCommand({"devices"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.out.starts_with("0  CPU")) << outcome.out;
}

TEST(Devices, JSONMarksTheOneTakenAutomatically) {
    const cli::JSON devices = runCommand({"devices", "--json"}).event("result")["devices"];
    ASSERT_GE(devices.size(), 1U);
    EXPECT_EQ(devices[0]["index"], 0);
    EXPECT_EQ(devices[0]["type"], "cpu");
    EXPECT_EQ(devices[0]["usable"], true);
    int automatic = 0;
    for (const cli::JSON& device : devices)
        automatic += device["automatic"] == true ? 1 : 0;
    EXPECT_EQ(automatic, 1);
}

TEST(Devices, AnUnknownOneFailsBeforeAnythingIsRead) {
    for (const char* const name : {"no such card", "999", "-1"}) {
        const Outcome outcome = runCommand({"train", "/no such folder", "--device=" + std::string(name)});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_NE(outcome.err.find("There is no device \"" + std::string(name) + "\""), std::string::npos)
            << outcome.err;
        EXPECT_NE(outcome.err.find("quillmere-cli devices"), std::string::npos);
    }
}

}  // namespace
}  // namespace quillmere::testing
