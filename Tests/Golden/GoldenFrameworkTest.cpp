#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <stdexcept>

#include "Golden/GoldenCase.h"
#include "Support/TempFolder.h"

namespace quillmere::golden {
namespace {

using quillmere::testing::TempFolder;
using quillmere::testing::writeText;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// An area whose only operation returns the same results for every input.
Area sampleArea() {
    const Operation measure = [](const Case&) {
        Outputs out;
        out.array("samples", std::array{0.5, -1.0, 2.0});
        out.value("count", 3);
        out.value("name", "kick");
        out.value("found", nullptr);
        out.value("config", Json{{"hop", 64}, {"seconds", 0.25}});
        out.array("undefined", std::array{std::nan("")});
        return out;
    };
    const Operation fail = [](const Case&) -> Outputs { throw std::runtime_error("out of tune"); };
    return {"sample", {{"Sample", {{"measure", measure}, {"fail", fail}}}}};
}

std::vector<std::string> failuresOf(const Json& expect, double abs = 0, double rel = 0,
                                    const Json& keys = Json::object()) {
    const Case vector{.name = "case",
                      .operation = "measure",
                      .input = Json::object(),
                      .expect = expect,
                      .tolerance = {{"abs", abs}, {"rel", rel}, {"keys", keys}}};
    return failures(vector, sampleArea().suites.front());
}

TEST(GoldenCase, MeetingEveryExpectationIsNoFailure) {
    const Json expect = {{"samples", {{"count", 3}, {"values", {0.5, -1.0, 2.0}}}},
                         {"count", 3},
                         {"name", "kick"},
                         {"found", nullptr},
                         {"config", {{"hop", 64}, {"seconds", 0.25}}}};
    EXPECT_THAT(failuresOf(expect), IsEmpty());
}

TEST(GoldenCase, WrongValueIsReportedWithItsIndex) {
    const Json expect = {{"samples", {{"count", 3}, {"values", {0.5, -1.001, 2.0}}}}};
    EXPECT_THAT(failuresOf(expect, 0.0009), ElementsAre(HasSubstr("samples[1]: got -1, expected -1.001")));
    EXPECT_THAT(failuresOf(expect, 0.0011), IsEmpty());
    EXPECT_THAT(failuresOf(expect, 0, 0.0011), IsEmpty());
}

TEST(GoldenCase, ToleranceOfAKeyReplacesTheGeneralOne) {
    const Json expect = {{"samples", {{"count", 3}, {"values", {0.6, -1.0, 2.0}}}}};
    EXPECT_THAT(failuresOf(expect, 1, 1, {{"samples", {{"abs", 0.01}, {"rel", 0}}}}), SizeIs(1));
    EXPECT_THAT(failuresOf(expect, 0, 0, {{"samples", {{"abs", 0.2}, {"rel", 0}}}}), IsEmpty());
    EXPECT_THAT(failuresOf(expect, 0, 0, {{"count", {{"abs", 0.2}, {"rel", 0}}}}), SizeIs(1));
}

TEST(GoldenCase, LengthOfAnArrayMustMatch) {
    const Json expect = {{"samples", {{"count", 2}, {"values", {0.5, -1.0}}}}};
    EXPECT_THAT(failuresOf(expect), ElementsAre(HasSubstr("got 3 values, expected 2")));
}

TEST(GoldenCase, LongArrayIsCheckedAtItsIndicesAndByItsSums) {
    Json samples = {{"count", 3},    {"at", {0, 2}},  {"values", {0.5, 2.0}}, {"sum", 1.5},
                    {"sumTol", 0.0}, {"sumSq", 5.25}, {"sumSqTol", 0.0}};
    EXPECT_THAT(failuresOf({{"samples", samples}}), IsEmpty());
    samples["sum"] = 1.6;
    EXPECT_THAT(failuresOf({{"samples", samples}}), ElementsAre(HasSubstr("samples sum: got 1.5")));
    samples["sumTol"] = 0.2;
    samples["sumSq"] = 5.5;
    EXPECT_THAT(failuresOf({{"samples", samples}}), ElementsAre(HasSubstr("sum of squares: got 5.25")));
    samples["sumSq"] = 5.25;
    samples["at"] = {0, 1};
    EXPECT_THAT(failuresOf({{"samples", samples}}), ElementsAre(HasSubstr("samples[1]: got -1")));
    samples["at"] = {0, 3};
    EXPECT_THAT(failuresOf({{"samples", samples}}), SizeIs(1));
}

TEST(GoldenCase, NaNMeetsNothing) {
    EXPECT_THAT(failuresOf({{"undefined", {{"count", 1}, {"values", {0.0}}}}}, 1e9), SizeIs(1));
}

TEST(GoldenCase, IntegersAndTextsIgnoreTheTolerance) {
    EXPECT_THAT(failuresOf({{"count", 4}}, 10), SizeIs(1));
    EXPECT_THAT(failuresOf({{"count", 4.0}}, 10), IsEmpty());
    EXPECT_THAT(failuresOf({{"name", "Kick"}}, 10), SizeIs(1));
    EXPECT_THAT(failuresOf({{"found", "kick"}}, 10), SizeIs(1));
    EXPECT_THAT(failuresOf({{"config", {{"hop", 65}}}}, 10), ElementsAre(HasSubstr("config.hop: got 64")));
}

TEST(GoldenCase, ExpectedResultThatTheOperationLacksFails) {
    EXPECT_THAT(failuresOf({{"loudness", 1.0}}, 1e9), SizeIs(1));
    EXPECT_THAT(failuresOf({{"config", {{"rate", 8000}}}}, 1e9), SizeIs(1));
    EXPECT_THAT(failuresOf(Json::object()), ElementsAre("nothing is expected"));
}

TEST(GoldenCase, UnknownOperationFails) {
    const Case vector{"case", "guess", Json::object(), {{"count", 3}}, {{"abs", 0}, {"rel", 0}}};
    EXPECT_THAT(failures(vector, sampleArea().suites.front()), ElementsAre("unknown operation guess"));
}

TEST(GoldenCase, ExceptionOfTheOperationFails) {
    const Case vector{"case", "fail", Json::object(), {{"count", 3}}, {{"abs", 0}, {"rel", 0}}};
    EXPECT_THAT(failures(vector, sampleArea().suites.front()), ElementsAre(HasSubstr("out of tune")));
}

TEST(GoldenCase, LongListsOfDisagreementsAreCut) {
    const Case vector{"case", "many", Json::object(), {}, {{"abs", 0}, {"rel", 0}}};
    const Operation many = [](const Case&) {
        Outputs out;
        out.array("samples", std::vector<float>(100));
        return out;
    };
    Case expecting = vector;
    expecting.expect = {{"samples", {{"count", 100}, {"values", std::vector<double>(100, 1.0)}}}};
    const std::vector<std::string> lines = failures(expecting, Suite{"Sample", {{"many", many}}});
    ASSERT_THAT(lines, SizeIs(9));
    EXPECT_EQ(lines.back(), "... and 92 more");
}

class GoldenFolder : public ::testing::Test {
protected:
    // All failures of all checks on the folder.
    [[nodiscard]] std::vector<std::string> failuresInFolder(std::vector<std::string> required = {}) const {
        const std::array areas{sampleArea()};
        std::vector<std::string> lines;
        for (const Check& check : checks(folder_.path(), areas, required)) {
            for (const std::string& line : check.failures()) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    void write(const std::string& name, const std::string& area, const std::string& cases) const {
        writeText(folder_ / name, R"({"area": ")" + area + R"(", "version": 1, "cases": [)" + cases + "]}");
    }

    static std::string sampleCase(const std::string& count, const std::string& name = "three") {
        return R"({"name": ")" + name + R"(", "op": "measure", "input": {}, "expect": {"count": )" + count +
               R"(}, "tolerance": {"abs": 0.0, "rel": 0.0}})";
    }

    TempFolder folder_;
};

TEST_F(GoldenFolder, CasesOfAKnownAreaAreRun) {
    write("sample.json", "sample", sampleCase("3") + "," + sampleCase("4", "four"));
    EXPECT_THAT(failuresInFolder(), ElementsAre(HasSubstr("count: got 3, expected 4")));
}

TEST_F(GoldenFolder, EmptyFolderFails) {
    EXPECT_THAT(failuresInFolder(), SizeIs(1));
}

TEST_F(GoldenFolder, MissingFolderFails) {
    const std::array areas{sampleArea()};
    EXPECT_THAT(checks(folder_ / "missing", areas), SizeIs(1));
}

TEST_F(GoldenFolder, UnknownAreaFails) {
    write("sample.json", "sample", sampleCase("3"));
    write("other.json", "other", sampleCase("3"));
    EXPECT_THAT(failuresInFolder(), ElementsAre(HasSubstr("unknown area other")));
}

TEST_F(GoldenFolder, RequiredAreaWithoutAFileFails) {
    write("sample.json", "sample", sampleCase("3"));
    EXPECT_THAT(failuresInFolder({"sample"}), IsEmpty());
    EXPECT_THAT(failuresInFolder({"sample", "other"}), ElementsAre("no vectors of area other"));
}

TEST_F(GoldenFolder, FilesThatAreNoVectorsFail) {
    write("none.json", "sample", "");
    write("twins.json", "sample", sampleCase("3") + "," + sampleCase("3"));
    writeText(folder_ / "text.json", "three");
    writeText(folder_ / "version.json", R"({"area": "sample", "version": 2, "cases": []})");
    EXPECT_THAT(failuresInFolder(),
                ElementsAre(HasSubstr("holds no cases"), HasSubstr("parse error"),
                            HasSubstr("two cases are named three"), HasSubstr("unknown version 2")));
}

TEST(GoldenInput, FormulasAreRoundedOnceToSinglePrecision) {
    EXPECT_EQ(floats({{"kind", "ramp"}, {"from", 0.1}, {"step", 0.2}, {"count", 3}}),
              (std::vector<float>{0.1F, static_cast<float>(0.1 + 0.2), 0.5F}));
    EXPECT_EQ(floats({{"kind", "impulse"}, {"at", 1}, {"amplitude", -2}, {"count", 3}}),
              (std::vector<float>{0, -2, 0}));
    EXPECT_EQ(floats({0.5, 3}), (std::vector<float>{0.5F, 3}));
}

TEST(GoldenInput, DrawsComeFromAFreshGenerator) {
    SeededRNG rng(7);
    const float first = rng.signedUniform(), second = rng.signedUniform();
    EXPECT_EQ(floats({{"kind", "signed"}, {"seed", 7}, {"count", 2}}), (std::vector<float>{first, second}));
    EXPECT_EQ(floats({{"kind", "signed"}, {"seed", 7}, {"count", 1}, {"scale", 2}, {"offset", 1}}),
              (std::vector<float>{2 * first + 1}));
}

TEST(GoldenInput, PatternWithoutNoiseDrawsNothing) {
    const Json pattern = {{"kind", "pattern"}, {"rows", 2},      {"cols", 2},  {"base", -1}, {"depth", 1},
                          {"decayCols", 4},    {"rowPeriod", 2}, {"noise", 0}, {"seed", 1}};
    const auto decayed = static_cast<float>(-1 + std::exp(-0.25));
    EXPECT_EQ(floats(pattern), (std::vector<float>{0, decayed, -1, -1}));
}

TEST(GoldenInput, PartsAreJoinedOrAdded) {
    const Json parts = {{{"kind", "constant"}, {"value", 0.25}, {"count", 2}},
                        {{"kind", "values"}, {"values", {1, 2}}}};
    EXPECT_EQ(floats({{"kind", "concat"}, {"parts", parts}}), (std::vector<float>{0.25F, 0.25F, 1, 2}));
    EXPECT_EQ(floats({{"kind", "mix"}, {"parts", parts}}), (std::vector<float>{1.25F, 2.25F}));
}

TEST(GoldenInput, UnknownKindsAndFieldsAreRefused) {
    EXPECT_THROW((void)floats({{"kind", "square"}, {"count", 2}}), std::invalid_argument);
    EXPECT_THROW((void)floats({{"kind", "zeros"}, {"count", 2}, {"scale", 2}}), std::invalid_argument);
    EXPECT_THROW((void)aesthetics({{"sweetness", 1}}), std::invalid_argument);
}

TEST(GoldenInput, WordsAreHexadecimalTexts) {
    EXPECT_EQ(word("0x00000000000004d2"), 1234U);
    EXPECT_EQ(word("0xffffffffffffffff"), ~std::uint64_t{0});
    EXPECT_EQ(wordText(1234), "0x00000000000004d2");
    EXPECT_THROW((void)word("1234"), std::invalid_argument);
}

}  // namespace
}  // namespace quillmere::golden
