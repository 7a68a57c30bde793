#include "QuillmereCore/Origin/SoundPrint.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/RNG.h"
#include "Support/SmallCorpus.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::struckTone;
using testing::TempFolder;

constexpr std::size_t bands = SoundPrint::bands;

// A print whose levels are all the same.
SoundPrint flat(int frames, int level) {
    return {std::vector<std::uint8_t>(bands * static_cast<std::size_t>(frames),
                                      static_cast<std::uint8_t>(level))};
}

// Blurred random levels, as different from each other as sounds are.
SoundPrint randomPrint(SeededRNG& rng) {
    const auto frames = static_cast<std::size_t>(1 + rng.intBelow(40));
    SoundPrint print{std::vector<std::uint8_t>(frames * bands)};
    const float slope = 4 * rng.uniform();
    const float centre = 64 * rng.uniform();
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t band = 0; band < bands; ++band) {
            const float level = 150 - slope * static_cast<float>(frame) -
                                2 * std::abs(static_cast<float>(band) - centre) + 8 * rng.gaussian();
            print.levels[frame * bands + band] =
                static_cast<std::uint8_t>(std::clamp(level, 1.0F, float{SoundPrint::top}));
        }
    }
    return print;
}

// The distance by its definition, cell by cell.
double slowDistance(const SoundPrint& a, const SoundPrint& b) {
    const std::size_t size = std::max(a.levels.size(), b.levels.size());
    const auto level = [](const SoundPrint& print, std::size_t i) {
        return i < print.levels.size() ? SoundPrint::stepDB * print.levels[i] : 0;
    };
    double sum = 0;
    for (std::size_t i = 0; i < size; ++i)
        sum += std::pow(level(a, i) - level(b, i), 2);
    return std::sqrt(sum / static_cast<double>(size));
}

TEST(SoundDistance, IsTheRootMeanSquareOverTheActiveFrames) {
    EXPECT_DOUBLE_EQ(distance(flat(10, 100), flat(10, 90)), 5);
    EXPECT_DOUBLE_EQ(distance(flat(10, 160), flat(5, 160)), 80 / std::sqrt(2));
    SeededRNG rng(1);
    for (int i = 0; i < 20; ++i) {
        const SoundPrint a = randomPrint(rng);
        const SoundPrint b = randomPrint(rng);
        EXPECT_NEAR(distance(a, b), slowDistance(a, b), 1e-9);
        EXPECT_EQ(distance(a, b), distance(b, a));
        EXPECT_EQ(distance(a, a), 0);
    }
}

TEST(SoundIndexing, FindsExactlyTheNearest) {
    SeededRNG rng(2);
    std::vector<SoundPrint> prints;
    for (int i = 0; i < 300; ++i)
        prints.push_back(randomPrint(rng));
    prints.push_back(prints[17]);  // two that are equal
    const SoundIndex index(prints);
    EXPECT_EQ(index.size(), 301U);
    for (int i = 0; i < 30; ++i) {
        const SoundPrint query = i % 3 == 0 ? prints[static_cast<std::size_t>(17 + i)] : randomPrint(rng);
        std::vector<std::pair<double, std::size_t>> all;
        for (std::size_t k = 0; k < prints.size(); ++k)
            all.emplace_back(distance(query, prints[k]), k);
        std::sort(all.begin(), all.end());
        for (const std::size_t count : {1U, 2U, 10U, 301U, 400U}) {
            const auto nearest = index.nearest(query, count);
            ASSERT_EQ(nearest.size(), std::min<std::size_t>(count, 301));
            for (std::size_t k = 0; k < nearest.size(); ++k) {
                EXPECT_EQ(nearest[k].position, all[k].second);
                EXPECT_EQ(nearest[k].distance, all[k].first);
            }
        }
    }
    EXPECT_TRUE(index.nearest(prints[0], 0).empty());
    EXPECT_TRUE(SoundIndex({}).nearest(prints[0], 3).empty());
}

class Printing : public ::testing::Test {
protected:
    [[nodiscard]] SoundPrint printOf(const std::vector<float>& samples, int rate,
                                     OutputFormat format = OutputFormat::wav32float) const {
        AudioIO::write(samples, file, rate, format);
        const auto print = printer.print(CorpusFile{.url = file, .relativePath = "a.wav"});
        EXPECT_TRUE(print.has_value());
        return print.value_or(flat(1, 0));
    }

    const TempFolder folder;
    const fs::path file = folder / "a.wav";
    const SoundPrinter printer;
    const std::vector<float> tone = struckTone(440, 0.5, 44100);
};

TEST_F(Printing, TheLoudestIsTheTopAndTheEndIsHeard) {
    const SoundPrint print = printOf(tone, 44100);
    EXPECT_EQ(*std::max_element(print.levels.begin(), print.levels.end()), SoundPrint::top);
    EXPECT_GT(print.frames(), 30);
    EXPECT_LT(print.frames(), 60) << "0.5 s are 43 frames";
    EXPECT_TRUE(std::any_of(print.levels.end() - bands, print.levels.end(), [](auto l) { return l > 0; }));
}

TEST_F(Printing, LevelStartAndFormatCountForLittle) {
    const auto behindSilence = [&](std::size_t silence, float gain) {
        std::vector<float> samples(silence);
        for (const float sample : tone)
            samples.push_back(gain * sample);
        return samples;
    };
    const std::vector<float> loud = behindSilence(100, 1);
    const SoundPrint print = printOf(loud, 44100);
    EXPECT_LT(distance(printOf(behindSilence(9000, 0.1F), 44100), print), 0.5);
    EXPECT_LT(distance(printOf(loud, 44100, OutputFormat::wav24), print), 0.5);
}

TEST_F(Printing, OtherSoundsAreFartherThanTheSameAtAnotherRate) {
    const SoundPrint print = printOf(tone, 44100);
    const double otherRate = distance(printOf(struckTone(440, 0.5, 48000), 48000), print);
    const double otherPitch = distance(printOf(struckTone(466, 0.5, 44100), 44100), print);
    const double farPitch = distance(printOf(struckTone(1800, 0.5, 44100), 44100), print);
    EXPECT_LT(otherRate, otherPitch);
    EXPECT_LT(otherPitch, farPitch);
}

TEST_F(Printing, LongSoundsAreComparedByTheirBeginning) {
    const std::vector<float> tenSeconds(441000, 0.5F);
    EXPECT_LE(printOf(tenSeconds, 44100).frames(), SoundPrint::mostFrames);
}

TEST_F(Printing, ASilentFileHasNone) {
    AudioIO::write(std::vector<float>(1000), file, 44100, OutputFormat::wav16);
    EXPECT_EQ(printer.print(CorpusFile{.url = file, .relativePath = "a.wav"}), std::nullopt);
    EXPECT_THROW((void)printer.print(CorpusFile{.url = folder / "no.wav", .relativePath = "no.wav"}),
                 AudioIOError);
}

TEST(KinshipOfSounds, FollowsTheDistance) {
    EXPECT_EQ(rawValue(kinship(0)), "copy");
    EXPECT_EQ(rawValue(kinship(copyBelowDB)), "close");
    EXPECT_EQ(rawValue(kinship(closeBelowDB)), "new");
    EXPECT_EQ(rawValue(kinship(farFromDB)), "far");
}

}  // namespace
}  // namespace quillmere
