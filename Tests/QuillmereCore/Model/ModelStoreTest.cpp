#include "QuillmereCore/Model/ModelStore.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelFiles.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/RNG.h"
#include "Support/CommaLocale.h"
#include "Support/Environment.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::CommaLocale;
using testing::EnvironmentVariable;
using testing::readText;
using testing::TempFolder;
using testing::writeText;

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();
const std::string mismatch = "Model weights do not match the saved configuration";

// The smallest network there is; its weights take 4 MB.
const ModelConfig smallest{8000, 256, 64, 32, 32, 4, AnalysisProfile::percussive};

const std::vector<std::vector<float>>& exampleWeights() {
    static const std::vector<std::vector<float>> weights = VAEArchitecture::initialWeights(smallest, 3);
    return weights;
}

ModelBundle exampleBundle() {
    ModelBundle bundle;
    bundle.config = smallest;
    bundle.metadata.corpusName = "Kicks";
    bundle.metadata.corpusPath = "/home/user/My \"loud\" Kicks/\n\xC3\xA9";
    bundle.metadata.fingerprint = "3f2a9c0d11e4b7a5";
    bundle.metadata.trainedAt = std::chrono::sys_seconds(std::chrono::seconds(1740838029));
    bundle.metadata.steps = 2500;
    bundle.metadata.finalLoss = 0.1F;
    bundle.metadata.finalReconstructionError = 0.0123456789F;
    bundle.metadata.clipNames = {"kick 1.wav", "sub/kick 2.flac"};
    bundle.metadata.analysis = "percussive";
    bundle.weights = exampleWeights();
    bundle.latents = {{0.1F, -2.5F, 1.0F, 1e-20F}, {0.25F, 3.0F, -1e20F, 0.0F}};
    return bundle;
}

void expectEqual(const ModelBundle& a, const ModelBundle& b) {
    EXPECT_EQ(a.config, b.config);
    EXPECT_EQ(a.metadata, b.metadata);
    EXPECT_TRUE(a.weights == b.weights);
    EXPECT_EQ(a.latents, b.latents);
}

// A folder with a sound model for a test to break.
class StoredModel {
public:
    StoredModel() {
        ModelStore::save(exampleBundle(), folder_.path());
        manifestText_ = readText(manifest());
    }

    [[nodiscard]] const fs::path& path() const { return folder_.path(); }
    [[nodiscard]] fs::path manifest() const { return folder_ / "model.json"; }
    [[nodiscard]] fs::path weights() const { return folder_ / "weights.bin"; }

    // The manifest as it was saved, with one difference.
    void changeManifest(const std::string& from, const std::string& to) const {
        std::string text = manifestText_;
        const std::size_t at = text.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        writeText(manifest(), text.replace(at, from.size(), to));
    }

    void setWeight(std::size_t index, float value) const {
        std::fstream file(weights(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(4 * index));
        file << ModelStore::weightsBlob({{value}});
        if (!file.flush()) throw std::runtime_error("cannot write " + weights().string());
    }

private:
    TempFolder folder_;
    std::string manifestText_;
};

// what() of the Error that action throws, or a text that says what happened instead.
template <typename Error>
std::string messageOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    } catch (const std::exception& other) {
        return std::string("another error: ") + other.what();
    }
    return "no error";
}

template <typename Error>
std::string loadMessage(const StoredModel& model) {
    return messageOf<Error>([&] { (void)ModelStore::load(model.path()); });
}

// ---- What the training began from

TEST(ModelStart, IsKeptWithTheModel) {
    const TempFolder folder;
    for (const ModelStart::Kind kind : {ModelStart::Kind::headStart, ModelStart::Kind::model}) {
        ModelBundle bundle = exampleBundle();
        bundle.metadata.start = ModelStart{kind, "Kicks \"2\"", "0123abcd"};
        ModelStore::save(bundle, folder.path());
        EXPECT_EQ(ModelStore::load(folder.path()).metadata.start, bundle.metadata.start);
    }
}

TEST(ModelStart, IsNoKeyOfAFreshModel) {
    const StoredModel model;
    EXPECT_EQ(readText(model.manifest()).find("\"start\""), std::string::npos);
    EXPECT_EQ(ModelStore::load(model.path()).metadata.start, std::nullopt);
}

TEST(ModelStore, KeepsHowManyStepsATrainingWasToTakeThatEndedEarly) {
    const TempFolder folder;
    ModelBundle bundle = exampleBundle();
    bundle.metadata.plannedSteps = 5000;
    ModelStore::save(bundle, folder.path());
    EXPECT_EQ(ModelStore::load(folder.path()).metadata, bundle.metadata);

    const StoredModel whole;
    EXPECT_EQ(readText(whole.manifest()).find("plannedSteps"), std::string::npos);
    EXPECT_EQ(ModelStore::load(whole.path()).metadata.plannedSteps, std::nullopt);
}

TEST(ModelStart, OfAnUnknownKindIsDamage) {
    const StoredModel model;
    model.changeManifest("\"steps\"",
                         "\"start\": {\"identity\": \"\", \"kind\": \"luck\", \"name\": \"\"}, \"steps\"");
    EXPECT_NE(loadMessage<DecodingError>(model).find("\"kind\" is \"luck\", which is no start"),
              std::string::npos);
}

// ---- Where models live

CorpusSummary corpusAt(const fs::path& directory) {
    CorpusSummary corpus;
    corpus.directory = directory;
    return corpus;
}

TEST(ModelStoreRoot, IsBelowXDGDataHomeWhenThatIsAbsolute) {
    const EnvironmentVariable data("XDG_DATA_HOME", "/data/of/user");
    EXPECT_EQ(ModelStore::rootDirectory(), "/data/of/user/Quillmere/Models");
}

TEST(ModelStoreRoot, IsBelowLocalShareWhenXDGDataHomeIsMissingEmptyOrRelative) {
    const EnvironmentVariable home("HOME", "/home/somebody");
    for (const auto& value : {std::optional<std::string>(), {""}, {"relative/data"}}) {
        const EnvironmentVariable data("XDG_DATA_HOME", value);
        EXPECT_EQ(ModelStore::rootDirectory(), "/home/somebody/.local/share/Quillmere/Models");
    }
}

TEST(ModelStoreRoot, TakesTheHomeDirectoryOfTheUserDatabaseWithoutAnAbsoluteHOME) {
    const EnvironmentVariable data("XDG_DATA_HOME", std::nullopt);
    const passwd* const entry = ::getpwuid(::getuid());
    ASSERT_NE(entry, nullptr);
    const fs::path expected = fs::path(entry->pw_dir) / ".local/share/Quillmere/Models";
    for (const auto& value : {std::optional<std::string>(), {""}, {"relative/home"}}) {
        const EnvironmentVariable home("HOME", value);
        EXPECT_EQ(ModelStore::rootDirectory(), expected);
    }
}

TEST(ModelStoreRoot, IsComputedOnEachAccessAndNotCreated) {
    const TempFolder folder;
    {
        const EnvironmentVariable data("XDG_DATA_HOME", (folder / "a").string());
        EXPECT_EQ(ModelStore::rootDirectory(), folder / "a/Quillmere/Models");
    }
    const EnvironmentVariable data("XDG_DATA_HOME", (folder / "b").string());
    EXPECT_EQ(ModelStore::rootDirectory(), folder / "b/Quillmere/Models");
    EXPECT_EQ(ModelStore::directory(corpusAt("/corpora/Kicks")).parent_path(), folder / "b/Quillmere/Models");
    EXPECT_EQ(testing::entriesIn(folder.path()), 0U);
}

TEST(ModelStoreFolder, IsNamedAfterTheCorpusFolderAndTheFingerprint) {
    EXPECT_EQ(ModelStore::folderName("Kicks", "3f2a9c0d11e4b7a5"), "Kicks-3f2a9c0d11e4b7a5");
    EXPECT_EQ(ModelStore::folderName("a/b/", "1"), "a_b_-1");
}

CorpusSummary corpusOfTwo() {
    CorpusSummary corpus = corpusAt("/corpora/Kicks");
    corpus.files = {{"/corpora/Kicks/a.wav", "a.wav", 100, 1000},
                    {"/corpora/Kicks/b.wav", "b.wav", 200, 1000}};
    return corpus;
}

TEST(ModelStoreFolder, DependsOnTheFolderNameNotOnItsPath) {
    const CorpusSummary corpus = corpusOfTwo();
    CorpusSummary copy = corpus;
    copy.directory = "/elsewhere/Kicks";
    EXPECT_EQ(ModelStore::directory(corpus, "/store"), ModelStore::directory(copy, "/store"));
    EXPECT_EQ(ModelStore::directory(corpus, "/store"), "/store/Kicks-" + corpus.fingerprint());
    copy.directory = "/corpora/Snares";
    EXPECT_NE(ModelStore::directory(corpus, "/store"), ModelStore::directory(copy, "/store"));
}

TEST(ModelStoreFolder, ChangesWithEveryChangeOfTheFiles) {
    const fs::path original = ModelStore::directory(corpusOfTwo(), "/store");
    const auto changed = [](const std::function<void(std::vector<CorpusFile>&)>& change) {
        CorpusSummary corpus = corpusOfTwo();
        change(corpus.files);
        return ModelStore::directory(corpus, "/store");
    };
    EXPECT_EQ(changed([](auto&) {}), original);
    EXPECT_NE(changed([](auto& files) {
                  files.push_back({"/corpora/Kicks/c.wav", "c.wav", 1, 1});
              }),
              original)
        << "added";
    EXPECT_NE(changed([](auto& files) { files.pop_back(); }), original) << "removed";
    EXPECT_NE(changed([](auto& files) { files[0].relativePath = "A.wav"; }), original) << "renamed";
    EXPECT_NE(changed([](auto& files) { files[0].size = 101; }), original) << "resized";
    EXPECT_NE(changed([](auto& files) { files[0].modified = 1001; }), original) << "touched";
}

TEST(ModelStoreFolder, OfAnEmptyCorpusEndsInTheEmptyFingerprint) {
    EXPECT_EQ(ModelStore::directory(corpusAt("/corpora/Empty"), "/store"), "/store/Empty-cbf29ce484222325");
}

TEST(ModelStoreFolder, IgnoresTrailingSlashesAndDots) {
    for (const char* path :
         {"/corpora/Kicks", "/corpora/Kicks/", "/corpora//Kicks/.", "/corpora/Kicks/sub/.."}) {
        EXPECT_EQ(ModelStore::corpusName(path), "Kicks") << path;
        EXPECT_EQ(ModelStore::corpusPath(path), "/corpora/Kicks") << path;
    }
}

TEST(ModelStoreFolder, ResolvesRelativeCorpusFolders) {
    EXPECT_EQ(ModelStore::corpusPath("Kicks/"), fs::current_path() / "Kicks");
    EXPECT_EQ(ModelStore::corpusName("."), fs::current_path().filename().string());
    EXPECT_EQ(ModelStore::corpusPath("."), fs::current_path());
}

TEST(ModelStoreFolder, OfTheRootDirectoryHasAnUnderscoreForItsName) {
    EXPECT_EQ(ModelStore::corpusName("/"), "/");
    EXPECT_EQ(ModelStore::directory(corpusAt("/"), "/store"), "/store/_-cbf29ce484222325");
}

TEST(ModelStoreFolder, TheFolderAboveALinkIsThatOfWhatItLeadsTo) {
    const TempFolder folder;
    const fs::path root = fs::canonical(folder.path());
    fs::create_directories(root / "real/inner");
    fs::create_directories(root / "corpora/Kicks");
    fs::create_directory_symlink(root / "real/inner", root / "corpora/link");
    EXPECT_EQ(ModelStore::corpusPath(root / "corpora/link/.."), root / "real");
    EXPECT_EQ(ModelStore::corpusName(root / "corpora/link/../"), "real");
    // Other links stay as they are written, and so do folders that are not there.
    EXPECT_EQ(ModelStore::corpusPath(root / "corpora/link"), root / "corpora/link");
    EXPECT_EQ(ModelStore::corpusPath(root / "corpora/link/./x/../y"), root / "corpora/link/y");
    EXPECT_EQ(ModelStore::corpusPath("/../nowhere/../x"), "/x");
}

// ---- Whether there is a model

// ---- Before a training

TEST(ModelStoreRoom, IsMadeWhereTheRootIsMissing) {
    const TempFolder folder;
    ModelStore::requireRoom(folder / "a/b/Kicks-12ab");
    EXPECT_TRUE(fs::is_directory(folder / "a/b"));
    EXPECT_EQ(testing::entriesIn(folder / "a/b"), 0U);
}

TEST(ModelStoreRoom, IsMissingForANameThatTheFileSystemCannotHave) {
    const TempFolder folder;
    ModelStore::requireRoom(folder / std::string(255, 'n'));
    const fs::path longer = folder / std::string(256, 'n');
    EXPECT_FALSE(ModelStore::isStored(longer)) << "no damage, and no model";
    EXPECT_EQ(messageOf<Failure>([&] { ModelStore::requireRoom(longer); }),
              "The name of this folder is too long for a model of it to be stored. Give the folder a shorter "
              "name.");
}

TEST(ModelStoreRoom, IsMissingWhereTheRootIsAFile) {
    const TempFolder folder;
    writeText(folder / "root", "in the way");
    EXPECT_THROW(ModelStore::requireRoom(folder / "root/Kicks-12ab"), FileError);
}

TEST(ModelStoreManifest, NeverTakesMoreThanItsBound) {
    ModelBundle bundle = exampleBundle();
    SeededRNG rng(7);
    bundle.metadata.clipNames.clear();
    bundle.latents.clear();
    for (int i = 0; i < 2000; ++i) {
        bundle.metadata.clipNames.push_back("sub/\"\n\xFF\xC3\xA9 " + std::to_string(i) + ".wav");
        std::vector<float>& latent = bundle.latents.emplace_back(64);
        for (float& value : latent)
            value = -std::ldexp(rng.uniform(), static_cast<int>(rng.intBelow(200)) - 120);
    }
    const std::uint64_t size = ModelFiles::manifestText(bundle).size();
    const std::uint64_t bound = ModelFiles::manifestBound(bundle.metadata.clipNames, 64);
    EXPECT_LE(size, bound);
    EXPECT_LT(bound, size + size / 2) << "a bound that is too wide refuses folders without need";
}

TEST(ModelStoreManifest, OfFiftyThousandClipsCanBeOpened) {
    std::vector<std::string> names(50000, "a folder/some sample of a drum.wav");
    EXPECT_EQ(ModelStore::problemWithNumber(names, 64), std::nullopt);
    names.resize(70000, names.front());
    const auto problem = ModelStore::problemWithNumber(names, 64);
    ASSERT_NE(problem, std::nullopt);
    const std::uint64_t most =
        names.size() * ModelFiles::maxManifestSize / ModelFiles::manifestBound(names, 64);
    EXPECT_EQ(problem->english(), "A model of 70000 samples could not be opened again: at most about " +
                                      std::to_string(most) +
                                      " are possible. Learn a folder with fewer samples.");
    EXPECT_GT(most, 50000U);
}

TEST(ModelStoreManifest, MayBeAsLargeAsCanBeOpenedAndNoLarger) {
    std::vector<std::string> names(1);
    names[0].assign(ModelFiles::maxManifestSize - ModelFiles::manifestBound(names, 64), 'n');
    EXPECT_EQ(ModelStore::problemWithNumber(names, 64), std::nullopt);
    names[0] += 'n';
    EXPECT_NE(ModelStore::problemWithNumber(names, 64), std::nullopt);
}

TEST(ModelStoreExists, OnlyWithBothFiles) {
    const TempFolder folder;
    EXPECT_FALSE(ModelStore::exists(folder / "missing"));
    EXPECT_FALSE(ModelStore::exists(folder.path()));
    writeText(folder / "json/model.json", "{}");
    EXPECT_FALSE(ModelStore::exists(folder / "json")) << "only model.json";
    writeText(folder / "bin/weights.bin", "");
    EXPECT_FALSE(ModelStore::exists(folder / "bin")) << "only weights.bin";
    writeText(folder / "bin/model.json", "{}");
    EXPECT_TRUE(ModelStore::exists(folder / "bin"));
    EXPECT_FALSE(ModelStore::exists(folder / "bin/model.json")) << "a file is no model folder";
}

// ---- Saving and loading

TEST(ModelStore, LoadsWhatItSaved) {
    const StoredModel model;
    expectEqual(ModelStore::load(model.path()), exampleBundle());
}

TEST(ModelStore, SavesAnAbsentAnalysisByLeavingItOut) {
    const TempFolder folder;
    ModelBundle bundle = exampleBundle();
    bundle.metadata.analysis.reset();
    ModelStore::save(bundle, folder.path());
    EXPECT_EQ(readText(folder / "model.json").find("analysis"), std::string::npos);
    expectEqual(ModelStore::load(folder.path()), bundle);
}

TEST(ModelStore, ReadsANullAnalysisAsAbsent) {
    const StoredModel model;
    model.changeManifest("\"analysis\": \"percussive\"", "\"analysis\": null");
    EXPECT_EQ(ModelStore::load(model.path()).metadata.analysis, std::nullopt);
}

TEST(ModelStore, CreatesTheFolderWithItsParentsAndLeavesNothingElse) {
    const TempFolder folder;
    const fs::path target = folder / "Quillmere/Models/Kicks-1";
    ModelStore::save(exampleBundle(), target);
    EXPECT_TRUE(ModelStore::exists(target));
    EXPECT_EQ(testing::entriesIn(target), 2U);
}

TEST(ModelStore, OverwritesAnExistingModel) {
    const StoredModel model;
    ModelBundle other = exampleBundle();
    other.config.latentDim = 2;
    other.metadata.clipNames = {"only.wav"};
    other.latents = {{1, 2}};
    other.weights = VAEArchitecture::initialWeights(other.config, 9);
    ModelStore::save(other, model.path());
    expectEqual(ModelStore::load(model.path()), other);
    EXPECT_EQ(testing::entriesIn(model.path()), 2U);
}

TEST(ModelStore, WritesAReadableManifestWithSortedKeys) {
    const StoredModel model;
    EXPECT_EQ(readText(model.manifest()), R"({
  "config": {
    "frames": 32,
    "hop": 64,
    "latentDim": 4,
    "nFFT": 256,
    "nMels": 32,
    "profile": "percussive",
    "sampleRate": 8000
  },
  "latents": [
    [0.1,-2.5,1.0,1e-20],
    [0.25,3.0,-1e+20,0.0]
  ],
  "metadata": {
    "analysis": "percussive",
    "clipNames": [
      "kick 1.wav",
      "sub/kick 2.flac"
    ],
    "corpusName": "Kicks",
    "corpusPath": "/home/user/My \"loud\" Kicks/\né",
    "finalLoss": 0.1,
    "finalReconstructionError": 0.012345679,
    "fingerprint": "3f2a9c0d11e4b7a5",
    "steps": 2500,
    "trainedAt": "2025-03-01T14:07:09Z"
  }
}
)");
}

TEST(ModelStore, WritesTheWeightsAsRawLittleEndianFloats) {
    EXPECT_EQ(ModelStore::weightsBlob({{1.0F, -2.0F}, {}, {0.1F}}),
              std::string("\x00\x00\x80\x3F\x00\x00\x00\xC0\xCD\xCC\xCC\x3D", 12));
    EXPECT_EQ(ModelStore::weightsBlob({}), "");
    const StoredModel model;
    EXPECT_EQ(readText(model.weights()), ModelStore::weightsBlob(exampleBundle().weights));
}

TEST(ModelStore, WeightsTakeFourBytesPerElement) {
    EXPECT_EQ(ModelStore::weightsSize(smallest), 4298788);
    const StoredModel model;
    EXPECT_EQ(fs::file_size(model.weights()), 4298788U);
}

TEST(ModelStore, KeepsEveryFloatOfTheLatentsExactly) {
    const TempFolder folder;
    ModelBundle bundle = exampleBundle();
    SeededRNG rng(5);
    bundle.latents.assign(200, {});
    for (std::vector<float>& latent : bundle.latents) {
        while (latent.size() < 64) {
            const auto value = std::bit_cast<float>(static_cast<std::uint32_t>(rng.next()));
            if (std::isfinite(value)) latent.push_back(value);
        }
    }
    bundle.latents.push_back({std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest(),
                              std::numeric_limits<float>::min(), std::numeric_limits<float>::denorm_min()});
    ModelStore::save(bundle, folder.path());
    EXPECT_EQ(ModelStore::load(folder.path()).latents, bundle.latents);
}

TEST(ModelStore, DoesNotDependOnTheLocale) {
    const StoredModel plain;
    const CommaLocale locale;
    std::ostringstream stream;
    stream << 0.5;
    ASSERT_EQ(stream.str(), "0,5");
    const StoredModel model;
    EXPECT_EQ(readText(model.manifest()), readText(plain.manifest()));
    expectEqual(ModelStore::load(model.path()), exampleBundle());
}

TEST(ModelStore, ReadsAnyValidJSON) {
    const StoredModel model;
    writeText(
        model.manifest(),
        R"({"metadata":{"trainedAt":"2025-03-01T14:07:09.750Z","steps":1,"finalLoss":1,"clipNames":[],)"
        R"("fingerprint":"","corpusPath":"","corpusName":"\u004bicks","finalReconstructionError":2.5e-1},)"
        R"("extra":[1,{"a":null}],"latents":[[1,2,3,4]],)"
        R"("config":{"profile":"percussive","sampleRate":8000,"nFFT":256,"hop":64,"nMels":32,)"
        R"("frames":32,"latentDim":4}})");
    const ModelBundle bundle = ModelStore::load(model.path());
    EXPECT_EQ(bundle.config, smallest);
    EXPECT_EQ(bundle.metadata.corpusName, "Kicks");
    EXPECT_EQ(bundle.metadata.finalLoss, 1.0F);
    EXPECT_EQ(bundle.metadata.finalReconstructionError, 0.25F);
    EXPECT_EQ(ModelStore::isoDate(bundle.metadata.trainedAt), "2025-03-01T14:07:09Z");
    EXPECT_EQ(bundle.metadata.analysis, std::nullopt);
    EXPECT_EQ(bundle.latents, (std::vector<std::vector<float>>{{1, 2, 3, 4}}));
}

TEST(ModelStore, StoresNamesThatAreNotUTF8WithReplacementCharacters) {
    const TempFolder folder;
    ModelBundle bundle = exampleBundle();
    bundle.metadata.clipNames = {"kick \xFF.wav", "b.wav"};
    ModelStore::save(bundle, folder.path());
    EXPECT_EQ(ModelStore::load(folder.path()).metadata.clipNames,
              (std::vector<std::string>{"kick \xEF\xBF\xBD.wav", "b.wav"}));
}

TEST(ModelStore, DoesNotCheckTheLatentsAgainstTheConfiguration) {
    const TempFolder folder;
    ModelBundle bundle = exampleBundle();
    bundle.latents = {{1}, {}, {1, 2, 3, 4, 5, 6}};
    ModelStore::save(bundle, folder.path());
    EXPECT_EQ(ModelStore::load(folder.path()).latents, bundle.latents);
    EXPECT_THROW((void)ModelStore::open(folder.path()), CorruptModelError);
}

// ---- Saving that fails

TEST(ModelStoreSave, RefusesNumbersThatAreNotFiniteAndWritesNothing) {
    const TempFolder folder;
    const fs::path target = folder / "Kicks-1";
    ModelBundle bundle = exampleBundle();
    for (float* const number : {&bundle.metadata.finalLoss, &bundle.metadata.finalReconstructionError,
                                &bundle.latents[1][2], &bundle.weights.back().front()}) {
        const float sound = *number;
        for (const float value : {notANumber, infinity, -infinity}) {
            *number = value;
            EXPECT_EQ(messageOf<CorruptModelError>([&] { ModelStore::save(bundle, target); }),
                      "The model of Kicks holds values that are not finite and cannot be saved");
        }
        *number = sound;
    }
    EXPECT_FALSE(fs::exists(target));
    ModelStore::save(bundle, target);
    EXPECT_TRUE(fs::exists(target));
}

TEST(ModelStoreSave, NamesTheFolderThatCannotBeCreated) {
    const TempFolder folder;
    writeText(folder / "file", "in the way");
    EXPECT_EQ(messageOf<FileError>([&] { ModelStore::save(exampleBundle(), folder / "file/Kicks-1"); }),
              (folder / "file/Kicks-1").string() + ": Not a directory");
    EXPECT_THROW(ModelStore::save(exampleBundle(), folder / "file"), FileError);
    EXPECT_EQ(readText(folder / "file"), "in the way");
}

TEST(ModelStoreSave, WritesTheWeightsBeforeTheManifest) {
    const TempFolder folder;
    fs::create_directory(folder / "model.json");
    const std::string message =
        messageOf<FileError>([&] { ModelStore::save(exampleBundle(), folder.path()); });
    EXPECT_TRUE(message.starts_with((folder / "model.json").string())) << message;
    EXPECT_EQ(fs::file_size(folder / "weights.bin"), 4298788U);
}

TEST(ModelStoreSave, WritesNoManifestWhenTheWeightsFail) {
    const TempFolder folder;
    fs::create_directory(folder / "weights.bin");
    EXPECT_THROW(ModelStore::save(exampleBundle(), folder.path()), FileError);
    EXPECT_FALSE(fs::exists(folder / "model.json"));
}

// ---- Loading what is broken

TEST(ModelStoreLoad, NamesTheMissingFile) {
    const TempFolder empty;
    EXPECT_EQ(messageOf<FileError>([&] { (void)ModelStore::load(empty.path()); }),
              (empty / "model.json").string() + ": No such file or directory");
    const StoredModel model;
    fs::remove(model.weights());
    EXPECT_EQ(loadMessage<FileError>(model), model.weights().string() + ": No such file or directory");
}

TEST(ModelStoreLoad, RefusesFoldersInPlaceOfTheFiles) {
    const StoredModel model;
    fs::remove(model.weights());
    fs::create_directory(model.weights());
    EXPECT_EQ(loadMessage<FileError>(model), model.weights().string() + ": Is a directory");
    fs::remove(model.manifest());
    fs::create_directory(model.manifest());
    EXPECT_EQ(loadMessage<FileError>(model), model.manifest().string() + ": Is a directory");
}

TEST(ModelStoreLoad, RefusesWeightsOneByteShort) {
    const StoredModel model;
    fs::resize_file(model.weights(), fs::file_size(model.weights()) - 1);
    EXPECT_EQ(loadMessage<CorruptModelError>(model), mismatch);
}

TEST(ModelStoreLoad, RefusesWeightsOneFloatTooLong) {
    const StoredModel model;
    fs::resize_file(model.weights(), fs::file_size(model.weights()) + 4);
    EXPECT_EQ(loadMessage<CorruptModelError>(model), mismatch);
}

TEST(ModelStoreLoad, RefusesEmptyAndEnormousWeightsWithoutReadingThem) {
    const StoredModel model;
    fs::resize_file(model.weights(), 0);
    EXPECT_EQ(loadMessage<CorruptModelError>(model), mismatch);
    fs::resize_file(model.weights(), std::uintmax_t{1} << 40);  // sparse
    EXPECT_EQ(loadMessage<CorruptModelError>(model), mismatch);
}

TEST(ModelStoreLoad, RefusesWeightsOfAnotherConfiguration) {
    const StoredModel model;
    model.changeManifest("\"latentDim\": 4", "\"latentDim\": 5");
    EXPECT_EQ(loadMessage<CorruptModelError>(model), mismatch);
}

TEST(ModelStoreLoad, RefusesWeightsThatAreNotFinite) {
    const StoredModel model;
    const std::size_t last = 4298788 / 4 - 1;
    for (const std::size_t index : {std::size_t{0}, last}) {
        for (const float value : {notANumber, infinity, -infinity}) {
            model.setWeight(index, value);
            EXPECT_EQ(loadMessage<CorruptModelError>(model),
                      model.weights().string() + ": holds weights that are not finite");
        }
        model.setWeight(index, 1);
    }
    EXPECT_NO_THROW((void)ModelStore::load(model.path()));
}

TEST(ModelStoreLoad, RefusesAManifestCutAnywhere) {
    const StoredModel model;
    const std::string text = readText(model.manifest());
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, text.size() / 2, text.size() - 3}) {
        writeText(model.manifest(), text.substr(0, length));
        EXPECT_EQ(loadMessage<DecodingError>(model),
                  model.manifest().string() + ": not valid JSON (byte " + std::to_string(length + 1) + ")");
    }
}

TEST(ModelStoreLoad, RefusesWhatIsNoManifest) {
    const StoredModel model;
    writeText(model.manifest(), "[]");
    EXPECT_EQ(loadMessage<DecodingError>(model), model.manifest().string() + ": not a JSON object");
    writeText(model.manifest(), std::string(100, '\0'));
    EXPECT_EQ(loadMessage<DecodingError>(model), model.manifest().string() + ": not valid JSON (byte 1)");
    writeText(model.manifest(), std::string(1 << 20, '['));
    EXPECT_EQ(loadMessage<DecodingError>(model), model.manifest().string() + ": nested too deeply");
}

TEST(ModelStoreLoad, RefusesAnEnormousManifestWithoutReadingIt) {
    const StoredModel model;
    fs::resize_file(model.manifest(), std::uintmax_t{1} << 40);  // sparse
    EXPECT_EQ(loadMessage<CorruptModelError>(model), model.manifest().string() + ": too large for a model");
}

TEST(ModelStoreLoad, RequiresEveryKeyButAnalysis) {
    const StoredModel model;
    for (const char* key :
         {"config", "latents", "metadata", "sampleRate", "profile", "clipNames", "corpusName", "corpusPath",
          "finalLoss", "finalReconstructionError", "fingerprint", "steps", "trainedAt"}) {
        const std::string quoted = '"' + std::string(key) + '"';
        model.changeManifest(quoted + ":", "\"other\":");
        EXPECT_EQ(loadMessage<DecodingError>(model),
                  model.manifest().string() + ": " + quoted + " is missing");
    }
    model.changeManifest("\"analysis\":", "\"other\":");
    EXPECT_EQ(ModelStore::load(model.path()).metadata.analysis, std::nullopt);
}

TEST(ModelStoreLoad, RefusesWrongTypes) {
    struct Case {
        const char* from;
        const char* to;
        const char* problem;
    };
    const Case cases[] = {
        {"\"steps\": 2500", "\"steps\": 2500.5", "\"steps\" must be an integer"},
        {"\"steps\": 2500", "\"steps\": \"2500\"", "\"steps\" must be an integer"},
        {"\"steps\": 2500", "\"steps\": 18446744073709551615", "\"steps\" must be a 64-bit integer"},
        {"\"finalLoss\": 0.1", "\"finalLoss\": null", "\"finalLoss\" must be a number"},
        {"\"finalLoss\": 0.1", "\"finalLoss\": true", "\"finalLoss\" must be a number"},
        {"\"finalLoss\": 0.1", "\"finalLoss\": 1e39", "a number is too large"},
        {"\"finalLoss\": 0.1", "\"finalLoss\": NaN", "not valid JSON (byte"},
        {"\"corpusName\": \"Kicks\"", "\"corpusName\": 5", "\"corpusName\" must be a text"},
        {"\"analysis\": \"percussive\"", "\"analysis\": 1", "\"analysis\" must be a text"},
        {"\"kick 1.wav\"", "1", "\"clipNames\" must be a list of texts"},
        {"\"clipNames\": [", "\"x\": 1, \"clipNames\": 3, \"y\": [", "\"clipNames\" must be a list"},
        {"[0.1,", "[\"0.1\",", "\"latents\" must be a list of lists of numbers"},
        {"[0.1,", "[null,", "\"latents\" must be a list of lists of numbers"},
        {"[0.1,-2.5,1.0,1e-20]", "0.1", "\"latents\" must be a list of lists of numbers"},
        {"\"latents\": [", "\"latents\": {}, \"x\": [", "\"latents\" must be a list"},
        {"\"config\": {", "\"config\": [], \"x\": {", "\"config\" must be an object"},
        {"\"metadata\": {", "\"metadata\": 1, \"x\": {", "\"metadata\" must be an object"},
        {"\"hop\": 64", "\"hop\": 64.0", "\"hop\" must be an integer"},
        {"\"profile\": \"percussive\"", "\"profile\": \"fast\"",
         "\"profile\" is \"fast\", which is no analysis profile"},
        {"2025-03-01T14:07:09Z", "yesterday", "\"trainedAt\" is \"yesterday\", which is no date"},
    };
    const StoredModel model;
    for (const Case& c : cases) {
        model.changeManifest(c.from, c.to);
        const std::string message = loadMessage<DecodingError>(model);
        EXPECT_TRUE(message.starts_with(model.manifest().string() + ": " + c.problem)) << message;
    }
}

TEST(ModelStoreLoad, RefusesSizesThatNoModelCanHave) {
    struct Case {
        const char* from;
        const char* to;
        const char* problem;
    };
    const Case cases[] = {
        {"\"sampleRate\": 8000", "\"sampleRate\": 0", "sampleRate is 0"},
        {"\"nFFT\": 256", "\"nFFT\": -256", "nFFT is -256"},
        {"\"nFFT\": 256", "\"nFFT\": 1000", "nFFT is 1000"},
        {"\"hop\": 64", "\"hop\": 0", "hop is 0"},
        {"\"nMels\": 32", "\"nMels\": 33", "nMels is 33"},
        {"\"nMels\": 32", "\"nMels\": 9223372036854775776", "nMels is 9223372036854775776"},
        {"\"frames\": 32", "\"frames\": -32", "frames is -32"},
        {"\"frames\": 32", "\"frames\": 4611686018427387904", "frames is 4611686018427387904"},
        {"\"latentDim\": 4", "\"latentDim\": -4", "latentDim is -4"},
        {"\"latentDim\": 4", "\"latentDim\": 9223372036854775807", "latentDim is 9223372036854775807"},
    };
    const StoredModel model;
    for (const Case& c : cases) {
        model.changeManifest(c.from, c.to);
        const std::string message = loadMessage<CorruptModelError>(model);
        EXPECT_TRUE(message.starts_with(model.manifest().string() + ": " + c.problem)) << message;
    }
}

TEST(ModelStoreLoad, LeavesABrokenModelAsItIs) {
    const StoredModel model;
    fs::resize_file(model.weights(), 10);
    const std::string manifest = readText(model.manifest());
    EXPECT_THROW((void)ModelStore::load(model.path()), CorruptModelError);
    EXPECT_EQ(readText(model.manifest()), manifest);
    EXPECT_EQ(fs::file_size(model.weights()), 10U);
}

// ---- What a generator needs

TEST(ModelStoreValidate, AcceptsASoundModel) {
    EXPECT_NO_THROW(ModelStore::validate(exampleBundle(), "/models/Kicks-1"));
}

TEST(ModelStoreValidate, RefusesAModelWithoutLatents) {
    ModelBundle bundle = exampleBundle();
    bundle.latents.clear();
    EXPECT_EQ(messageOf<CorruptModelError>([&] { ModelStore::validate(bundle, "/models/Kicks-1"); }),
              "/models/Kicks-1/model.json: holds no latent vectors");
}

TEST(ModelStoreValidate, RefusesShortAndNonFiniteLatents) {
    const std::string expected = "/models/Kicks-1/model.json: holds a latent vector without 4 finite values";
    for (const auto& latent : {std::vector<float>{1, 2, 3}, {}, {1, 2, 3, notANumber}, {1, 2, infinity, 4}}) {
        ModelBundle bundle = exampleBundle();
        bundle.latents.push_back(latent);
        EXPECT_EQ(messageOf<CorruptModelError>([&] { ModelStore::validate(bundle, "/models/Kicks-1"); }),
                  expected);
    }
}

TEST(ModelStoreValidate, AcceptsLongerLatentsAndAnyNumberOfThem) {
    ModelBundle bundle = exampleBundle();
    bundle.latents.push_back({1, 2, 3, 4, 5});
    EXPECT_NO_THROW(ModelStore::validate(bundle, "/models/Kicks-1"));
}

// ---- Dates

std::chrono::sys_seconds atSecond(std::int64_t seconds) {
    return std::chrono::sys_seconds(std::chrono::seconds(seconds));
}

TEST(ModelStoreDate, IsISO8601InUTC) {
    EXPECT_EQ(ModelStore::isoDate(atSecond(1740838029)), "2025-03-01T14:07:09Z");
    EXPECT_EQ(ModelStore::isoDate(atSecond(0)), "1970-01-01T00:00:00Z");
    EXPECT_EQ(ModelStore::isoDate(atSecond(-1)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(ModelStore::isoDate(atSecond(951782399)), "2000-02-28T23:59:59Z");
}

TEST(ModelStoreDate, IsReadBackExactly) {
    for (std::int64_t seconds = -3'000'000'000; seconds < 8'000'000'000; seconds += 86'399'977)
        EXPECT_EQ(ModelStore::parseISODate(ModelStore::isoDate(atSecond(seconds))), atSecond(seconds));
}

TEST(ModelStoreDate, MayBeTheLastSecondOfADay) {
    EXPECT_EQ(ModelStore::parseISODate("1969-12-31T23:59:59Z"), atSecond(-1));
}

TEST(ModelStoreDate, MayHaveAFractionOfASecondThatIsDropped) {
    EXPECT_EQ(ModelStore::parseISODate("2025-03-01T14:07:09.999Z"), atSecond(1740838029));
    EXPECT_EQ(ModelStore::parseISODate("2025-03-01T14:07:09.0Z"), atSecond(1740838029));
}

TEST(ModelStoreDate, RefusesEveryOtherText) {
    for (const char* text : {"",
                             "Z",
                             "2025-03-01",
                             "2025-03-01T14:07:09",
                             "2025-03-01 14:07:09Z",
                             "2025-03-01T14:07:09.Z",
                             "2025-03-01T14:07:09,5Z",
                             "2025-03-01T14:07:09+01:00",
                             "2025-02-29T14:07:09Z",
                             "2025-13-01T14:07:09Z",
                             "2025-00-01T14:07:09Z",
                             "2025-03-32T14:07:09Z",
                             "2025-03-01T24:00:00Z",
                             "2025-03-01T14:60:09Z",
                             "2025-03-01T14:07:60Z",
                             "2025-03-01T14:07:0xZ",
                             "-025-03-01T14:07:09Z",
                             "12025-03-01T14:07:09Z",
                             "2025-03-01T14:07:09Z ",
                             "2025-03-01T14:07:09.5xZ"}) {
        EXPECT_EQ(ModelStore::parseISODate(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace quillmere
