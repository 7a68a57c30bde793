#include <gtest/gtest.h>

#include <algorithm>
#include <stop_token>
#include <vector>

#include "QuillmereCore/Generate/Detail/ClipSounds.h"
#include "QuillmereCore/Generate/Detail/SourceSupply.h"
#include "QuillmereCore/Model/ClipPreparation.h"
#include "Support/LearnedClips.h"
#include "Support/Processor.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using Detail::SourceMaterial;
using Detail::SourceSupply;
using testing::LearnedClips;
using Samples = std::vector<float>;

TEST(ClipSounds, AreReadAsTheyWereLearned) {
    LearnedClips clips;
    const CorpusSummary corpus = clips.scan();
    const ClipSounds sounds = ClipSounds::inFolder(clips.model, corpus);
    ASSERT_EQ(sounds.origin(), ClipSounds::Origin::folder);
    for (std::size_t i = 0; i < corpus.files.size(); ++i) {
        const auto decoded = ClipPreparation::decode(corpus.files[i], 8000);
        const Samples expected = ClipPreparation::cutAndFade(decoded->samples, 2048, 8000);
        EXPECT_LT(expected.size(), decoded->samples.size());  // the cut shows
        EXPECT_EQ(sounds.read(i), expected) << i;
    }
}

TEST(ClipSounds, OfAnotherFolderThanTheLearnedOneAreNone) {
    LearnedClips clips;
    fs::rename(clips.folder / "clip 2.wav", clips.folder / "clip 9.wav");
    const ClipSounds sounds = ClipSounds::inFolder(clips.model, clips.scan());
    EXPECT_EQ(sounds.origin(), ClipSounds::Origin::none);
    EXPECT_EQ(sounds.read(0), std::nullopt);
    EXPECT_EQ(ClipSounds().origin(), ClipSounds::Origin::none);
}

TEST(ClipSounds, AreFoundByNameWhereverTheFilesStandInTheScan) {
    LearnedClips clips;
    std::swap(clips.model.metadata.clipNames[0], clips.model.metadata.clipNames[3]);
    const CorpusSummary corpus = clips.scan();
    const ClipSounds sounds = ClipSounds::inFolder(clips.model, corpus);
    const auto decoded = ClipPreparation::decode(corpus.files[3], 8000);
    EXPECT_EQ(sounds.read(0), ClipPreparation::cutAndFade(decoded->samples, 2048, 8000));
}

TEST(ClipSounds, WhatIsGoneOrUnreadableIsNothing) {
    LearnedClips clips;
    clips.model.metadata.clipNames[4] = "never there.wav";
    const ClipSounds sounds = ClipSounds::inFolder(clips.model, clips.scan());
    fs::remove(clips.folder / "clip 1.wav");
    testing::writeText(clips.folder / "clip 2.wav", "no sound");
    EXPECT_EQ(sounds.read(1), std::nullopt);
    EXPECT_EQ(sounds.read(2), std::nullopt);
    EXPECT_EQ(sounds.read(4), std::nullopt);
    EXPECT_EQ(sounds.read(600), std::nullopt);
    EXPECT_NE(sounds.read(0), std::nullopt);
}

TEST(ClipSounds, NamesThatAreNoTextAreFoundUnderTheirStoredForm) {
    LearnedClips clips;
    fs::rename(clips.folder / "clip 1.wav", clips.folder / "clip \xFF.wav");
    clips.model.metadata.clipNames[1] = "clip \xEF\xBF\xBD.wav";  // as model.json has it
    clips.model.metadata.fingerprint = clips.scan().fingerprint();
    EXPECT_NE(ClipSounds::inFolder(clips.model, clips.scan()).read(1), std::nullopt);
    // Two files of the same stored form cannot be told apart.
    fs::copy_file(clips.folder / "clip 0.wav", clips.folder / "clip \xFE.wav");
    clips.model.metadata.fingerprint = clips.scan().fingerprint();
    EXPECT_EQ(ClipSounds::inFolder(clips.model, clips.scan()).read(1), std::nullopt);
}

TEST(ClipSounds, ReadingCanBeCancelled) {
    LearnedClips clips;
    std::stop_source stop;
    stop.request_stop();
    const ClipSounds sounds = ClipSounds::inFolder(clips.model, clips.scan());
    EXPECT_THROW((void)sounds.read(0, stop.get_token()), CancellationError);
}

class Supply : public ::testing::Test {
protected:
    LearnedClips clips;
    ClipSounds sounds = ClipSounds::inFolder(clips.model, clips.scan());
    SourceSupply supply{clips.model, sounds};
    STFT stft = FeatureExtractor(clips.model.config).makeSTFT();
};

TEST_F(Supply, MixesTheSourcesByTheirShares) {
    const std::vector<LatentDraw::Source> sources{{4, 0.75F}, {1, 0.25F}};
    const auto material = supply.material(sources, stft, {});
    ASSERT_TRUE(material);
    const Samples a = *sounds.read(4);
    const Samples b = *sounds.read(1);
    ASSERT_EQ(material->donor.size(), 2048U);
    for (std::size_t n = 0; n < 2048; ++n)
        EXPECT_NEAR(material->donor[n], 0.75F * a[n] + 0.25F * b[n], 1e-6F) << n;
    // The attack is that of the images.
    const FeatureExtractor extractor(clips.model.config);
    const auto frames = Detail::AttackFrames::forHop(64);
    Samples course(32 * frames.count());
    Detail::addCourse(extractor.features(a, stft), 32, frames, 0.75F, course);
    Detail::addCourse(extractor.features(b, stft), 32, frames, 0.25F, course);
    EXPECT_EQ(material->course, course);
    // Copies are looked for among the sources, not in their mix.
    EXPECT_EQ(material->beginnings, (std::vector<Samples>{a, b}));
}

TEST_F(Supply, OneSourceIsItself) {
    const std::vector<LatentDraw::Source> source{{2, 1.0F}};
    EXPECT_EQ(supply.material(source, stft, {})->donor, *sounds.read(2));
}

TEST_F(Supply, ReadsAClipOnce) {
    const std::vector<LatentDraw::Source> source{{2, 1.0F}};
    const SourceMaterial before = *supply.material(source, stft, {});
    fs::remove(clips.folder / "clip 2.wav");
    EXPECT_EQ(supply.material(source, stft, {})->donor, before.donor);
}

TEST_F(Supply, ABlendWithAMissingSourceHasNoMaterial) {
    fs::remove(clips.folder / "clip 2.wav");
    EXPECT_FALSE(supply.material(std::vector<LatentDraw::Source>{{1, 0.5F}, {2, 0.5F}}, stft, {}));
    EXPECT_TRUE(supply.material(std::vector<LatentDraw::Source>{{1, 0.5F}, {3, 0.5F}}, stft, {}));
    SourceSupply none(clips.model, {});
    EXPECT_FALSE(none.material(std::vector<LatentDraw::Source>{{1, 1.0F}}, stft, {}));
}

TEST_F(Supply, LearnsTheTailFromTheDecodedClips) {
    VAEInference inference(clips.model.config, clips.model.weights, testing::processor());
    EXPECT_EQ(supply.tail(), nullptr);
    supply.learnTail(clips.model.latents, inference, {});
    ASSERT_NE(supply.tail(), nullptr);
    const FeatureExtractor extractor(clips.model.config);
    const auto decoded = inference.decode(clips.model.latents);
    std::vector<Detail::TailCurve::Levels> levels;
    for (std::size_t i = 0; i < decoded.size(); ++i) {
        const Samples peaks = Detail::framePeaks(decoded[i], 32);
        const Samples real = Detail::framePeaks(extractor.features(*sounds.read(i), stft), 32);
        for (std::size_t t = 0; t < 32; ++t)
            levels.push_back({peaks[t], real[t]});
    }
    EXPECT_EQ(supply.tail()->values(), Detail::TailCurve(levels).values());
}

TEST_F(Supply, WithoutAnySoundThereIsNoTailCurve) {
    VAEInference inference(clips.model.config, clips.model.weights, testing::processor());
    SourceSupply none(clips.model, {});
    none.learnTail(clips.model.latents, inference, {});
    EXPECT_EQ(none.tail(), nullptr);
    for (const std::string& name : clips.model.metadata.clipNames)
        fs::remove(clips.folder / name);
    supply.learnTail(clips.model.latents, inference, {});
    EXPECT_EQ(supply.tail(), nullptr);
}

}  // namespace
}  // namespace quillmere
