#include "QuillmereCore/Model/KeptSounds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "QuillmereCore/Generate/Detail/ClipSounds.h"
#include "QuillmereCore/Model/ModelFiles.h"
#include "Support/LearnedClips.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using testing::LearnedClips;
using ::testing::UnorderedElementsAre;

using Codes = std::vector<std::int16_t>;

class Keeping : public ::testing::Test {
protected:
    Keeping() {
        clips.model.metadata.trainedAt = {};
        const ClipSounds sounds = ClipSounds::inFolder(clips.model, clips.scan());
        content = sounds.toKeep(clips.model, {});
    }
    void store() const {
        ModelStore::replace(clips.model, folder, {}, std::chrono::seconds(10), ModelStore::Former::replaced,
                            content);
    }
    [[nodiscard]] std::vector<std::string> namesInFolder() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        return names;
    }

    LearnedClips clips;
    std::string content;
    const testing::TempFolder root;
    const fs::path folder = root / "model";
};

TEST_F(Keeping, GivesBackTheLearnedSamplesToSixteenBits) {
    store();
    const ClipSounds kept = ClipSounds::keptWith(clips.model, folder);
    const ClipSounds real = ClipSounds::inFolder(clips.model, clips.scan());
    ASSERT_EQ(kept.origin(), ClipSounds::Origin::model);
    for (std::size_t clip = 0; clip < clips.model.latents.size(); ++clip) {
        const auto expected = *real.read(clip);
        const auto found = *kept.read(clip);
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t n = 0; n < found.size(); ++n)
            ASSERT_NEAR(found[n], expected[n], 0.51F / 32767) << clip << " " << n;
    }
    EXPECT_EQ(kept.read(clips.model.latents.size()), std::nullopt);
}

TEST_F(Keeping, TheModelStaysAsItIs) {
    store();
    const ModelBundle loaded = ModelStore::open(folder);
    EXPECT_EQ(loaded.weights, clips.model.weights);
    EXPECT_EQ(loaded.latents, clips.model.latents);
    EXPECT_THAT(namesInFolder(),
                UnorderedElementsAre("model.json", "weights.bin", "sounds.bin", "SHA256SUMS"));
    EXPECT_NE(testing::readText(folder / "SHA256SUMS").find("  sounds.bin\n"), std::string::npos);
    ASSERT_EQ(ModelStore::list(root.path()).size(), 1U);
    EXPECT_GT(ModelStore::list(root.path())[0].bytes, content.size());
}

TEST_F(Keeping, IsAsLongAsItSays) {
    std::uint64_t samples = 0;
    const ClipSounds real = ClipSounds::inFolder(clips.model, clips.scan());
    for (std::size_t clip = 0; clip < clips.model.latents.size(); ++clip)
        samples += real.read(clip)->size();
    EXPECT_EQ(content.size(), KeptSounds::size(clips.model.latents.size(), samples));
}

TEST_F(Keeping, FolderComesBeforeKept) {
    store();
    EXPECT_EQ(ClipSounds::find(clips.model, clips.scan(), folder).origin(), ClipSounds::Origin::folder);
    fs::remove(clips.folder / "clip 0.wav");
    EXPECT_EQ(ClipSounds::find(clips.model, clips.scan(), folder).origin(), ClipSounds::Origin::model);
    EXPECT_EQ(ClipSounds::find(clips.model, clips.scan(), root / "other").origin(), ClipSounds::Origin::none);
}

TEST_F(Keeping, AModelStoredWithoutSoundsHasNone) {
    store();
    ModelStore::replace(clips.model, folder);
    EXPECT_THAT(namesInFolder(), UnorderedElementsAre("model.json", "weights.bin", "SHA256SUMS"));
    EXPECT_FALSE(KeptSounds::open(clips.model, folder));
    store();
    ModelStore::save(clips.model, folder);
    EXPECT_THAT(namesInFolder(), UnorderedElementsAre("model.json", "weights.bin"));
}

TEST_F(Keeping, IsRemovedWithTheModel) {
    store();
    EXPECT_TRUE(ModelStore::remove(folder));
    EXPECT_FALSE(fs::exists(folder));
}

TEST_F(Keeping, SoundsOfAnotherModelAreNone) {
    store();
    ModelBundle other = clips.model;
    other.weights[0][0] += 1;
    EXPECT_FALSE(KeptSounds::open(other, folder));
    other = clips.model;
    other.latents.pop_back();
    EXPECT_FALSE(KeptSounds::open(other, folder));
}

TEST_F(Keeping, DamagedSoundsAreNone) {
    store();
    const std::string whole = testing::readText(folder / "sounds.bin");
    std::string changed = whole;
    changed.back() = static_cast<char>(changed.back() ^ 1);
    for (const std::string& damaged :
         {changed, whole.substr(0, whole.size() - 1), whole + " ", whole.substr(0, 30), std::string()}) {
        testing::writeText(folder / "sounds.bin", damaged);
        EXPECT_FALSE(KeptSounds::open(clips.model, folder)) << damaged.size();
    }
    testing::writeText(folder / "sounds.bin", whole);
    EXPECT_TRUE(KeptSounds::open(clips.model, folder));
    fs::remove(folder / "SHA256SUMS");
    EXPECT_FALSE(KeptSounds::open(clips.model, folder));
    fs::remove(folder / "sounds.bin");
    fs::create_directory(folder / "sounds.bin");
    EXPECT_FALSE(KeptSounds::open(clips.model, folder));
}

TEST_F(Keeping, AClipThatCouldNotBeReadIsNothing) {
    fs::remove(clips.folder / "clip 2.wav");
    // The scan is one from before.
    LearnedClips whole;
    const ClipSounds sounds = ClipSounds::inFolder(whole.model, whole.scan());
    fs::remove(whole.folder / "clip 2.wav");
    content = sounds.toKeep(clips.model, {});
    store();
    const ClipSounds kept = ClipSounds::keptWith(clips.model, folder);
    EXPECT_EQ(kept.read(2), std::nullopt);
    EXPECT_NE(kept.read(3), std::nullopt);
}

TEST(KeptSounds, FullScaleIsTheGreatestCode) {
    EXPECT_THAT(KeptSounds::quantise(std::vector<float>{0, 1, -1, 2, -2, 0.5F}),
                ElementsAre(0, 32767, -32767, 32767, -32767, 16384));
}

}  // namespace
}  // namespace quillmere
