#include "QuillmereCore/Model/HeadStart.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/Processor.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::processor;
using testing::readText;
using testing::TempFolder;
using testing::writeText;

TaughtNetwork networkFor(AnalysisProfile profile) {
    ModelConfig config = ModelConfig::forSeconds(44100, 0.1, profile, HeadStart::latentDim);
    return {config, VAEArchitecture::initialWeights(config, 4)};
}

class StoredHeadStart : public ::testing::Test {
protected:
    StoredHeadStart() {
        for (const AnalysisProfile profile : {AnalysisProfile::percussive, AnalysisProfile::tonal})
            writeText(HeadStart::file(folder.path(), profile), HeadStart::encode(networkFor(profile), "7"));
    }

    [[nodiscard]] std::filesystem::path percussive() const {
        return HeadStart::file(folder.path(), AnalysisProfile::percussive);
    }
    template <typename Error>
    [[nodiscard]] std::string loadMessage() const {
        try {
            (void)HeadStart::load(folder.path());
        } catch (const Error& error) {
            return error.what();
        }
        return "no error";
    }

    const TempFolder folder;
};

TEST_F(StoredHeadStart, GivesANetworkForEachAnalysis) {
    const TrainingStart start = HeadStart::load(folder.path());
    EXPECT_EQ(start.origin().kind, ModelStart::Kind::headStart);
    EXPECT_EQ(start.origin().name, "7");
    EXPECT_EQ(start.origin().identity.size(), 64U);
    for (const AnalysisProfile profile : {AnalysisProfile::percussive, AnalysisProfile::tonal}) {
        const TaughtNetwork network = networkFor(profile);
        const auto weights = start.weightsFor(network.config, processor());
        ASSERT_EQ(weights.size(), network.weights.size());
        for (std::size_t i = 0; i < weights.size(); ++i) {
            ASSERT_EQ(weights[i].size(), network.weights[i].size());
            for (std::size_t j = 0; j < weights[i].size(); ++j) {
                const float exact = network.weights[i][j];
                ASSERT_NEAR(weights[i][j], exact, 0x1p-11F * std::abs(exact) + 0x1p-25F);
            }
        }
    }
}

TEST_F(StoredHeadStart, TakesTwoBytesAWeight) {
    const auto config = networkFor(AnalysisProfile::percussive).config;
    const auto weights = 2 * static_cast<std::uintmax_t>(VAEArchitecture::weightCount(config));
    EXPECT_GT(std::filesystem::file_size(percussive()), weights);
    EXPECT_LT(std::filesystem::file_size(percussive()), weights + 1000);
}

TEST_F(StoredHeadStart, HasAnotherIdentityWithOtherWeights) {
    const std::string before = HeadStart::load(folder.path()).origin().identity;
    TaughtNetwork other = networkFor(AnalysisProfile::percussive);
    other.weights[0][0] += 1;
    writeText(percussive(), HeadStart::encode(other, "7"));
    EXPECT_NE(HeadStart::load(folder.path()).origin().identity, before);
}

TEST_F(StoredHeadStart, NamesAMissingFile) {
    std::filesystem::remove(percussive());
    EXPECT_NE(loadMessage<FileError>().find("percussive.base"), std::string::npos);
}

TEST_F(StoredHeadStart, NamesADamagedFile) {
    std::string bytes = readText(percussive());
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
    writeText(percussive(), bytes);
    EXPECT_EQ(loadMessage<CorruptModelError>(), percussive().string() + ": differs from what was stored");
    writeText(percussive(), bytes.substr(0, bytes.size() - 2));
    EXPECT_EQ(loadMessage<CorruptModelError>(), percussive().string() + ": differs from what was stored");
    writeText(percussive(), "quillmere base 1\n{}\n");
    EXPECT_EQ(loadMessage<DecodingError>().find(percussive().string() + ": "), 0U);
}

TEST_F(StoredHeadStart, OfAnotherVersionIsNotTaken) {
    std::string bytes = readText(percussive());
    bytes.replace(0, 16, "quillmere base 2");
    writeText(percussive(), bytes);
    EXPECT_EQ(loadMessage<CorruptModelError>(),
              percussive().string() + ": no head start of this version of the program");
    writeText(percussive(), HeadStart::encode(networkFor(AnalysisProfile::percussive), "8"));
    EXPECT_NE(loadMessage<CorruptModelError>().find("of another version than the file beside it"),
              std::string::npos);
}

TEST_F(StoredHeadStart, OfTheOtherAnalysisIsNotTaken) {
    writeText(percussive(), HeadStart::encode(networkFor(AnalysisProfile::tonal), "7"));
    EXPECT_EQ(loadMessage<CorruptModelError>(), percussive().string() + ": made for the other analysis");
}

TEST(HeadStartFolder, LiesBesideTheFolderOfTheProgram) {
    EXPECT_EQ(HeadStart::folderFor("/usr/bin/quillmere-cli"), "/usr/share/quillmere/head-start");
}

TEST(HeadStartDeathTest, HoldsNoWeightBeyondHalfPrecision) {
    TaughtNetwork network = networkFor(AnalysisProfile::percussive);
    network.weights[0][0] = 70000;
    EXPECT_DEATH((void)HeadStart::encode(network, "7"), "beyond half precision");
}

}  // namespace
}  // namespace quillmere
