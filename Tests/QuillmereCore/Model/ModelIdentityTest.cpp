#include "QuillmereCore/Model/ModelIdentity.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "QuillmereCore/Util/Digest.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::bytesOf;
using testing::smallModel;

ModelBundle changed(const std::function<void(ModelBundle&)>& change) {
    ModelBundle bundle = smallModel();
    change(bundle);
    return bundle;
}

TEST(ModelIdentity, IsTheDigestOfTheseLines) {
    ModelBundle bundle;
    bundle.config = {44100, 1024, 256, 96, 192, 2, AnalysisProfile::tonal};
    bundle.weights = {{1.0F, -2.0F}, {}, {0.1F}};
    bundle.latents = {{0.5F, 3.0F, 99.0F}, {-1.0F, 0.0F}};
    const std::string weights("\x00\x00\x80\x3F\x00\x00\x00\xC0\xCD\xCC\xCC\x3D", 12);
    const std::string latents("\x00\x00\x00\x3F\x00\x00\x40\x40\x00\x00\x80\xBF\x00\x00\x00\x00", 16);
    const std::string text =
        "quillmere model 1\nsampleRate 44100\nnFFT 1024\nhop 256\nnMels 96\nframes 192\nlatentDim 2\n"
        "profile tonal\nweights " +
        sha256(bytesOf(weights)) + "\nlatents 2 " + sha256(bytesOf(latents)) + "\n";
    EXPECT_EQ(modelIdentity(bundle), sha256(bytesOf(text)));
}

TEST(ModelIdentity, ChangesWithEverythingThatSounds) {
    const std::set<std::string> identities{
        modelIdentity(smallModel()),
        modelIdentity(changed([](ModelBundle& model) { model.config.sampleRate = 16000; })),
        modelIdentity(changed([](ModelBundle& model) { model.config.profile = AnalysisProfile::tonal; })),
        modelIdentity(changed([](ModelBundle& model) { model.weights.back().back() += 1; })),
        modelIdentity(changed([](ModelBundle& model) { model.latents.back().back() += 1; })),
        modelIdentity(changed([](ModelBundle& model) { model.latents.pop_back(); })),
        modelIdentity(changed([](ModelBundle& model) { std::swap(model.latents[0], model.latents[1]); }))};
    EXPECT_EQ(identities.size(), 7U);
}

TEST(ModelIdentity, DoesNotDependOnNamesDatesAndPlaces) {
    const ModelBundle other = changed([](ModelBundle& model) {
        model.metadata.corpusName = "Another name";
        model.metadata.trainedAt += std::chrono::seconds(1);
        model.metadata.clipNames = {"a.wav"};
        model.latents[0].push_back(1);  // does not count
    });
    EXPECT_EQ(modelIdentity(other), modelIdentity(smallModel()));
    const testing::TempFolder folder;
    ModelStore::replace(other, folder / "stored");
    EXPECT_EQ(modelIdentity(ModelStore::open(folder / "stored")), modelIdentity(other));
}

// ---- Among those that are stored

class StoredModels : public ::testing::Test {
protected:
    StoredModels() {
        ModelStore::replace(changed([](ModelBundle& model) { model.weights.back().back() += 1; }),
                            root / "a");
        ModelStore::replace(smallModel(), root / "b");
    }

    const testing::TempFolder folder;
    const std::filesystem::path root = folder / "models";
    const std::string identity = modelIdentity(smallModel());
};

TEST_F(StoredModels, TheOneWithTheIdentityIsFound) {
    const auto found = findIdentified(identity, root);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->folder, root / "b");
    EXPECT_EQ(modelIdentity(found->bundle), identity);
    EXPECT_FALSE(findIdentified(std::string(64, '0'), root));
    EXPECT_FALSE(findIdentified(identity, folder / "nowhere"));
}

TEST_F(StoredModels, TheLikelyFolderComesFirstAndMayHoldAnother) {
    ModelStore::replace(smallModel(), folder / "elsewhere");
    EXPECT_EQ(findIdentified(identity, root, folder / "elsewhere")->folder, folder / "elsewhere");
    EXPECT_EQ(findIdentified(identity, root, root / "a")->folder, root / "b");
    EXPECT_EQ(findIdentified(identity, root, root / "missing")->folder, root / "b");
}

TEST_F(StoredModels, ThoseThatCannotBeOpenedArePassedOver) {
    testing::writeText(root / "a" / "model.json", "{");
    EXPECT_EQ(findIdentified(identity, root)->folder, root / "b");
    std::filesystem::remove(root / "b" / "weights.bin");
    EXPECT_FALSE(findIdentified(identity, root, root / "b"));
}

TEST_F(StoredModels, TheSearchCanBeCancelled) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)findIdentified(identity, root, {}, stop.get_token()), CancellationError);
}

}  // namespace
}  // namespace quillmere
