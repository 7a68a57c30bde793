#include "Soundcheck/Soundcheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "Support/Processor.h"
#include "Support/SmallCorpus.h"
#include "Support/TempFolder.h"

namespace quillmere::soundcheck {
namespace {

using quillmere::testing::processor;

float peak(const std::vector<float>& samples) {
    float result = 0;
    for (const float sample : samples)
        result = std::max(result, std::abs(sample));
    return result;
}

class SmallFolder : public ::testing::Test {
protected:
    SmallFolder() { quillmere::testing::writeSmallCorpus(folder.path()); }

    const quillmere::testing::TempFolder folder;
    const ModelConfig config = ModelConfig::forSeconds(44100, 0.1, AnalysisProfile::percussive, 4);
};

TEST_F(SmallFolder, IsReadAsATrainingReadsIt) {
    const std::vector<Clip> clips = readClips(folder.path(), config);
    ASSERT_EQ(clips.size(), 3U);
    for (const Clip& clip : clips) {
        EXPECT_LE(clip.samples.size(), static_cast<std::size_t>(config.clipSamples()));
        EXPECT_FLOAT_EQ(peak(clip.samples), 1);
        EXPECT_EQ(clip.image.size(), static_cast<std::size_t>(config.nMels * config.frames));
    }
}

TEST_F(SmallFolder, HasTheErrorsThatTheTrainingTells) {
    TrainingOptions options;
    options.profile = config.profile;
    options.clipSeconds = 0.1;
    options.latentDim = 4;
    options.batchSize = 1;
    options.steps = 1;
    const ModelBundle model = ModelTrainer::train(Corpus::scan(folder.path()), options, {}, {}, processor());
    const std::vector<double> each = errors(model, readClips(folder.path(), model.config), processor());
    double mean = 0;
    for (const double error : each)
        mean += error / static_cast<double>(each.size());
    EXPECT_NEAR(mean, model.metadata.finalReconstructionError, 1e-6);
}

TEST_F(SmallFolder, IsFinishedToTheLevelOfGeneratedFiles) {
    const float level = std::pow(10.0F, -1.0F / 20);
    for (const Clip& clip : readClips(folder.path(), config)) {
        EXPECT_NEAR(peak(finished(clip.samples, config)), level, 1e-5);
        const std::vector<float> sound = rendered(clip.image, config, 3);
        EXPECT_NEAR(peak(sound), level, 1e-5);
        EXPECT_EQ(sound, rendered(clip.image, config, 3));
    }
}

}  // namespace
}  // namespace quillmere::soundcheck
