#include "Schooling/Lessons.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere::schooling {
namespace {

const std::vector<Lesson> tiny{{.frames = 32, .sounds = 3, .steps = 2},
                               {.frames = 64, .sounds = 2, .steps = 1}};

TEST(Lessons, GrowInWidthAndStoreInSixteenMegabytes) {
    std::size_t bytes = 0;
    for (const AnalysisProfile profile : {AnalysisProfile::percussive, AnalysisProfile::tonal}) {
        const auto lessons = lessonsFor(profile);
        EXPECT_TRUE(std::ranges::is_sorted(lessons, {}, &Lesson::frames));
        ModelConfig config = ModelConfig::forSeconds(44100, 0.1, profile, HeadStart::latentDim);
        config.frames = lessons.back().frames;
        EXPECT_EQ(problemWith(config), std::nullopt);
        bytes += 2 * static_cast<std::size_t>(VAEArchitecture::weightCount(config));
    }
    EXPECT_LT(bytes, std::size_t{16'000'000});
}

TEST(Lessons, ShortenToAtLeastOneOfEach) {
    const auto lessons = shortened({{.frames = 64, .sounds = 1000, .steps = 50}}, 0.01);
    EXPECT_EQ(lessons[0].sounds, 10);
    EXPECT_EQ(lessons[0].steps, 1);
    EXPECT_EQ(lessons[0].frames, 64);
}

TEST(SoundImages, AreTheSameInAnyPieces) {
    ModelConfig config = ModelConfig::forSeconds(44100, 0.1, AnalysisProfile::percussive, 64);
    const auto all = soundImages(config, 1, 0, 4);
    const auto rest = soundImages(config, 1, 2, 2);
    EXPECT_EQ(all[2], rest[0]);
    EXPECT_EQ(all[3], rest[1]);
    for (const auto& image : all) {
        EXPECT_EQ(image.size(), 96U * 32U);
        EXPECT_GT(*std::ranges::max_element(image), -0.5F) << "something sounds";
    }
}

TEST(Teaching, EndsAtTheWidestLesson) {
    const auto backend = network::makeCPUBackend();
    std::vector<std::string> lines;
    const TaughtNetwork network = teach(AnalysisProfile::percussive, tiny, 1, *backend,
                                        [&](const std::string& line) { lines.push_back(line); });
    EXPECT_EQ(network.config.frames, 64);
    EXPECT_EQ(network.config.profile, AnalysisProfile::percussive);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "3 sounds of 32 frames, 2 steps");
    EXPECT_EQ(lines[2], "2 sounds of 64 frames, 1 steps");
}

TEST(Teaching, GivesTheSameBytesOnAnyNumberOfThreads) {
    std::vector<std::string> files;
    for (const int threads : {1, 2, 3}) {
        const ThreadLimit limit(threads);
        const auto backend = network::makeCPUBackend();
        files.push_back(HeadStart::encode(teach(AnalysisProfile::percussive, tiny, 1, *backend, {}), "test"));
    }
    EXPECT_EQ(files[0], files[1]);
    EXPECT_EQ(files[0], files[2]);
}

}  // namespace
}  // namespace quillmere::schooling
