// Storing models where other programs read and store them, where programs are killed, and where the system
// refuses. Child processes stand for other programs: this process must have one thread.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelPlace.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/FileLock.h"
#include "Support/ChildProcess.h"
#include "Support/OtherUser.h"
#include "Support/SmallModel.h"
#include "Support/SystemCalls.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::bytesOf;
using testing::ChildProcess;
using testing::entriesIn;
using testing::OtherUser;
using testing::pretend;
using testing::readText;
using testing::SystemCall;
using testing::SystemCallsAsk;
using testing::TempFolder;
using testing::writeText;

constexpr const char* name = "Kicks-3f2a9c0d11e4b7a5";

// A model that can be told from others by its number, in its weights as in its latents.
ModelBundle numbered(float number) {
    static const ModelBundle model = testing::smallModel();
    ModelBundle bundle = model;
    bundle.weights.front().front() = number;
    bundle.weights.back().back() = number;
    bundle.latents.front().front() = number;
    bundle.metadata.clipNames.assign(bundle.latents.size(), "clip.wav");
    return bundle;
}

// The number of a model that is one; -1 for parts of two.
float numberOf(const ModelBundle& bundle) {
    const float number = bundle.latents.front().front();
    const bool isOne = bundle.weights.front().front() == number && bundle.weights.back().back() == number;
    return isOne ? number : -1;
}

// A root with a model in it.
class ModelReplace : public ::testing::Test {
protected:
    void store(float number) const { ModelStore::replace(numbered(number), model); }
    [[nodiscard]] float stored() const { return numberOf(ModelStore::open(model)); }
    [[nodiscard]] std::set<std::string> names(const fs::path& where) const {
        std::set<std::string> found;
        for (const fs::directory_entry& entry : fs::directory_iterator(where))
            found.insert(entry.path().filename().string());
        return found;
    }
    void expectNothingBesides(const std::set<std::string>& expected = {name}) const {
        EXPECT_EQ(names(root), expected);
    }
    void damageWeights() const { fs::resize_file(model / "weights.bin", 100); }
    // Other users may look into what is ours.
    void openToAll() const {
        for (const fs::path& path : {folder.path(), root, model})
            fs::permissions(path, fs::perms(0755));
    }

    const TempFolder folder;
    const fs::path root = folder / "Models";
    const fs::path model = root / name;
};

// What a file system that cannot exchange two names, or keep a name from being taken, answers.
int withoutFlags(const SystemCall& call) {
    return call.name == "renameat2" && call.flags != 0 ? EINVAL : 0;
}
int withFlags(const SystemCall&) {
    return 0;
}
// Forcing bytes to the disk takes long, and no test could tell.
int withoutForcing(const SystemCall& call) {
    return call.name == "fsync" ? pretend : 0;
}

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

// ---- One program

TEST_F(ModelReplace, StoresWhatOpenGives) {
    ModelStore::replace(numbered(1), model);
    const ModelBundle bundle = ModelStore::open(model);
    EXPECT_EQ(bundle.config, numbered(1).config);
    EXPECT_EQ(bundle.metadata, numbered(1).metadata);
    EXPECT_TRUE(bundle.weights == numbered(1).weights);
    EXPECT_EQ(bundle.latents, numbered(1).latents);
    EXPECT_EQ(names(model), (std::set<std::string>{"SHA256SUMS", "model.json", "weights.bin"}));
    expectNothingBesides();
}

TEST_F(ModelReplace, WritesTheTwoFilesAsSaveDoes) {
    store(1);
    ModelStore::save(numbered(1), folder / "saved");
    for (const char* file : {"model.json", "weights.bin"})
        EXPECT_TRUE(readText(model / file) == readText(folder / "saved" / file)) << file;
}

TEST_F(ModelReplace, WritesDigestsThatTheUsualToolsCheck) {
    store(1);
    EXPECT_EQ(readText(model / "SHA256SUMS"),
              sha256(bytesOf(readText(model / "model.json"))) + "  model.json\n" +
                  sha256(bytesOf(readText(model / "weights.bin"))) + "  weights.bin\n");
    const std::string check = "cd '" + model.string() + "' && sha256sum --check --status --strict SHA256SUMS";
    EXPECT_EQ(std::system(check.c_str()), 0);
}

TEST_F(ModelReplace, ReplacesTheModel) {
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        const SystemCallsAsk asking(fileSystem);
        store(1);
        store(2);
        EXPECT_EQ(stored(), 2);
        EXPECT_EQ(entriesIn(model), 3U);
        expectNothingBesides();
    }
}

TEST_F(ModelReplace, TakesTheNameOfAnEmptyFolderAndOfHalfAModel) {
    fs::create_directories(model);
    store(1);
    fs::remove(model / "model.json");
    EXPECT_FALSE(ModelStore::isStored(model));
    store(2);
    EXPECT_EQ(stored(), 2);
    expectNothingBesides();
}

TEST_F(ModelReplace, RefusesTheNameOfAFile) {
    writeText(model, "precious");
    EXPECT_THAT(messageOf<FileError>([&] { store(1); }), ::testing::StartsWith(model.string() + ": "));
    EXPECT_EQ(readText(model), "precious");
    expectNothingBesides();
}

TEST_F(ModelReplace, FollowsALinkToAModelElsewhere) {
    ModelStore::replace(numbered(1), folder / "elsewhere" / name);
    fs::create_directory(root);
    fs::create_directory_symlink(folder / "elsewhere" / name, model);
    store(2);
    EXPECT_TRUE(fs::is_symlink(model));
    EXPECT_EQ(numberOf(ModelStore::open(folder / "elsewhere" / name)), 2);
    expectNothingBesides();
    EXPECT_EQ(names(folder / "elsewhere"), std::set<std::string>{name});
}

TEST_F(ModelReplace, TakesNamesWithASlashAtTheirEndAndRelativeOnes) {
    ModelStore::replace(numbered(1), model / "");
    const fs::path before = fs::current_path();
    fs::current_path(root);
    ModelStore::replace(numbered(2), name);
    fs::current_path(before);
    EXPECT_EQ(stored(), 2);
    expectNothingBesides();
}

TEST_F(ModelReplace, TakesTheLongestNamesThatFilesCanHave) {
    const fs::path longest = root / std::string(255, 'n');
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        const SystemCallsAsk asking(fileSystem);
        ModelStore::replace(numbered(1), longest);
        ModelStore::replace(numbered(2), longest);
        EXPECT_EQ(numberOf(ModelStore::open(longest)), 2);
        expectNothingBesides({longest.filename().string()});
    }
    EXPECT_TRUE(ModelStore::remove(longest));
    expectNothingBesides({});
}

TEST_F(ModelReplace, HiddenNamesHaveTheWholeNameUpTo200Bytes) {
    const std::string whole(200, 'n');
    EXPECT_EQ(ModelPlace(root / whole).stem(), whole);
    const std::string shortened = ModelPlace(root / (whole + "n")).stem();
    EXPECT_EQ(shortened.size(), 177U);
    EXPECT_EQ(shortened.substr(0, 161), std::string(160, 'n') + "~");
    EXPECT_NE(shortened, ModelPlace(root / (whole + "m")).stem());
}

TEST_F(ModelReplace, LeavesFilesOfOthersInTheFolder) {
    store(1);
    writeText(model / "notes.txt", "precious");
    writeText(model / "sub/more.txt", "more");
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        const SystemCallsAsk asking(fileSystem);
        store(2);
        EXPECT_EQ(readText(model / "notes.txt"), "precious");
        EXPECT_EQ(readText(model / "sub/more.txt"), "more");
        expectNothingBesides();
    }
}

TEST_F(ModelReplace, HonoursTheUmask) {
    ChildProcess child([&] {
        ::umask(027);
        store(1);
        return true;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(fs::status(model).permissions(), fs::perms(0750));
    EXPECT_EQ(fs::status(model / "weights.bin").permissions(), fs::perms(0640));
}

TEST_F(ModelReplace, RefusesNumbersThatAreNotFiniteAndChangesNothing) {
    store(1);
    EXPECT_THROW(store(std::numeric_limits<float>::infinity()), CorruptModelError);
    EXPECT_EQ(stored(), 1);
    expectNothingBesides();
}

// ---- What cannot be used

TEST_F(ModelReplace, KeepsWhatCannotBeUsedUnderTheNextFreeName) {
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        const SystemCallsAsk asking(fileSystem);
        fs::remove_all(root);
        store(1);
        writeText(root / (std::string(name) + ".damaged"), "taken by a file");
        fs::create_directory(root / (std::string(name) + ".damaged-2"));
        writeText(root / (std::string(name) + ".damaged-3/model.json"), "{}");
        damageWeights();
        store(2);
        EXPECT_EQ(stored(), 2);
        const fs::path kept = root / (std::string(name) + ".damaged-4");
        EXPECT_EQ(fs::file_size(kept / "weights.bin"), 100U);
        EXPECT_EQ(entriesIn(root), 5U);
    }
}

TEST_F(ModelReplace, KeepsWhatCannotBeUsedOfTheLongestNameUnderAShorterOne) {
    const std::string longest(255, 'n');
    ModelStore::replace(numbered(1), root / longest);
    fs::resize_file(root / longest / "weights.bin", 100);
    ModelStore::replace(numbered(2), root / longest);
    EXPECT_EQ(numberOf(ModelStore::open(root / longest)), 2);
    expectNothingBesides({longest, std::string(247, 'n') + ".damaged"});
}

TEST_F(ModelReplace, KeepsAModelThatCanBeUsedWhenAskedTo) {
    const auto storeAndKeep = [&](float number) {
        ModelStore::replace(numbered(number), model, {}, ModelStore::storingPatience,
                            ModelStore::Former::kept);
    };
    storeAndKeep(1);  // there is none yet
    expectNothingBesides();
    storeAndKeep(2);
    storeAndKeep(3);
    EXPECT_EQ(stored(), 3);
    EXPECT_EQ(numberOf(ModelStore::open(root / (std::string(name) + ".kept"))), 1);
    EXPECT_EQ(numberOf(ModelStore::open(root / (std::string(name) + ".kept-2"))), 2);
    damageWeights();
    storeAndKeep(4);
    EXPECT_EQ(fs::file_size(root / (std::string(name) + ".damaged/weights.bin")), 100U);
}

TEST_F(ModelReplace, KeepsWhatCannotBeReadButNotWhatFailsForWantOfMemory) {
    store(1);
    fs::remove(model / "weights.bin");
    fs::create_directory(model / "weights.bin");
    store(2);
    EXPECT_TRUE(fs::is_directory(root / (std::string(name) + ".damaged/weights.bin")));
    EXPECT_EQ(stored(), 2);
    fs::remove_all(root / (std::string(name) + ".damaged"));
    ChildProcess child([&] {
        const rlimit none{0, 0};
        if (::setrlimit(RLIMIT_NOFILE, &none) != 0) return false;
        try {
            store(3);
        } catch (const FileError& error) {
            return error.reason() == std::errc::too_many_files_open;
        }
        return false;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(stored(), 2);
    expectNothingBesides();
}

// ---- Digests

class ModelDigests : public ModelReplace {
protected:
    ModelDigests() { store(1); }

    // One bit of a file the other way round.
    void flip(const fs::path& file, std::streamoff position) const {
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekg(position);
        const int byte = stream.get();
        stream.seekp(position);
        stream.put(static_cast<char>(byte ^ 1));
        ASSERT_TRUE(stream.flush());
    }
    [[nodiscard]] std::string damage() const {
        const std::string message = messageOf<CorruptModelError>([&] { (void)ModelStore::open(model); });
        EXPECT_EQ(messageOf<CorruptModelError>([&] { (void)ModelStore::load(model); }), message);
        return message;
    }
};

TEST_F(ModelDigests, NameTheFileThatDiffers) {
    flip(model / "weights.bin", 4000);
    EXPECT_EQ(damage(), (model / "weights.bin").string() + ": differs from what was stored (SHA256SUMS)");
    store(2);
    const std::string text = readText(model / "model.json");
    flip(model / "model.json", static_cast<std::streamoff>(text.find("\"steps\": ") + 9));
    EXPECT_EQ(damage(), (model / "model.json").string() + ": differs from what was stored (SHA256SUMS)");
}

TEST_F(ModelDigests, RefuseWeightsOfAnotherModel) {
    ModelStore::replace(numbered(2), folder / "other");
    fs::copy_file(folder / "other/weights.bin", model / "weights.bin", fs::copy_options::overwrite_existing);
    EXPECT_THAT(damage(), ::testing::HasSubstr("weights.bin: differs"));
}

TEST_F(ModelDigests, AreNotNeeded) {
    fs::remove(model / "SHA256SUMS");
    EXPECT_EQ(stored(), 1);
}

TEST_F(ModelDigests, MayHaveTheOtherFormsThatTheToolTakes) {
    const auto digest = [&](const char* file) { return sha256(bytesOf(readText(model / file))); };
    std::string capitals = digest("weights.bin");
    std::ranges::transform(capitals, capitals.begin(),
                           [](char c) { return static_cast<char>(std::toupper(c)); });
    writeText(model / "SHA256SUMS", "# a remark\n" + capitals + " *weights.bin\n" + std::string(64, '0') +
                                        "  other.txt\n" + digest("model.json") + "  model.json");
    EXPECT_EQ(stored(), 1);
}

TEST_F(ModelDigests, MustNameBothFiles) {
    const std::string text = readText(model / "SHA256SUMS");
    const std::string lacks = (model / "SHA256SUMS").string() + ": lacks the digest of a file";
    for (const std::string& broken :
         {std::string(), text.substr(0, text.find('\n')), text.substr(10), text.substr(0, text.size() - 2)}) {
        writeText(model / "SHA256SUMS", broken);
        EXPECT_EQ(damage(), lacks);
    }
    fs::resize_file(model / "SHA256SUMS", std::uintmax_t{1} << 40);
    EXPECT_EQ(damage(), (model / "SHA256SUMS").string() + ": too large for a model");
}

TEST_F(ModelDigests, GoWhenAModelIsSavedOverThem) {
    ModelStore::save(numbered(2), model);
    EXPECT_EQ(entriesIn(model), 2U);
    EXPECT_EQ(stored(), 2);
}

TEST_F(ModelDigests, TellASaveThatEndedBetweenTheTwoFiles) {
    ChildProcess child([&] {
        int renames = 0;
        const SystemCallsAsk asking([&](const SystemCall& call) {
            if (call.name == "rename" && ++renames == 2) ::raise(SIGKILL);
            return 0;
        });
        ModelStore::save(numbered(2), model);
        return true;
    });
    EXPECT_FALSE(child.succeeded());
    EXPECT_THAT(damage(), ::testing::HasSubstr("weights.bin: differs"));
}

// ---- Whether there is a model

TEST_F(ModelReplace, NothingIsStoredWhereThereIsNothing) {
    EXPECT_FALSE(ModelStore::isStored(model));
    fs::create_directories(model);
    EXPECT_FALSE(ModelStore::isStored(model));
    writeText(folder / "file", "");
    EXPECT_FALSE(ModelStore::isStored(folder / "file" / name));
    store(1);
    EXPECT_TRUE(ModelStore::isStored(model));
    fs::remove(model / "weights.bin");
    EXPECT_FALSE(ModelStore::isStored(model));
    EXPECT_EQ(messageOf<FileError>([&] { (void)ModelStore::open(model); }),
              (model / "weights.bin").string() + ": No such file or directory");
    EXPECT_EQ(messageOf<FileError>([&] { (void)ModelStore::open(folder / "missing"); }),
              (folder / "missing/model.json").string() + ": No such file or directory");
}

TEST_F(ModelReplace, ALookThatFailsIsAnErrorAndNoAbsence) {
    store(1);
    openToAll();
    for (const fs::path& closed : {model, root}) {
        fs::permissions(closed, fs::perms(0600));
        {
            const OtherUser user;
            const auto isDenied = [](const std::function<void()>& action) {
                return messageOf<FileError>(action).ends_with(": Permission denied");
            };
            EXPECT_TRUE(isDenied([&] { (void)ModelStore::isStored(model); }));
            EXPECT_TRUE(isDenied([&] { (void)ModelStore::open(model); }));
            EXPECT_FALSE(ModelStore::exists(model));
        }
        fs::permissions(closed, fs::perms(0755));
    }
}

TEST_F(ModelReplace, AReadOnlyRootCanBeOpenedButNotStoredIn) {
    store(1);
    openToAll();
    fs::permissions(root, fs::perms(0555));
    {
        const OtherUser user;
        EXPECT_TRUE(ModelStore::isStored(model));
        EXPECT_EQ(stored(), 1);
        EXPECT_EQ(ModelStore::list(root).size(), 1U);
        EXPECT_EQ(messageOf<FileError>([&] { store(2); }), model.string() + ": Permission denied");
        EXPECT_EQ(messageOf<FileError>([&] { (void)ModelStore::remove(model); }),
                  model.string() + ": Permission denied");
    }
    fs::permissions(root, fs::perms(0755));
    EXPECT_EQ(stored(), 1);
    expectNothingBesides();
}

// ---- Programs that are killed

// Kills a child at its step-th system call while it does work on a file system. True: it did all of it.
bool survives(int step, int (*fileSystem)(const SystemCall&), const std::function<void()>& work) {
    ChildProcess child([&] {
        const SystemCallsAsk asking([&, count = 0](const SystemCall& call) mutable {
            if (count++ == step) ::raise(SIGKILL);
            return call.name == "fsync" ? pretend : fileSystem(call);
        });
        work();
        return true;
    });
    return child.succeeded();
}

TEST_F(ModelReplace, KilledAtAnyStepTheOldModelIsThereOrTheNewOne) {
    const SystemCallsAsk asking(withoutForcing);
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        bool done = false;
        int seenOld = 0;
        for (int step = 0; !done; ++step) {
            store(1);
            done = survives(step, fileSystem, [&] { store(2); });
            EXPECT_TRUE(ModelStore::isStored(model)) << step;
            const float found = stored();
            EXPECT_TRUE(found == 2 || (found == 1 && !done)) << found << " after step " << step;
            seenOld += found == 1 ? 1 : 0;
            store(3);
            EXPECT_EQ(stored(), 3);
            expectNothingBesides();
        }
        EXPECT_GT(seenOld, 5);
    }
}

TEST_F(ModelReplace, KilledAtAnyStepTheFirstModelIsThereOrNone) {
    const SystemCallsAsk asking(withoutForcing);
    bool done = false;
    for (int step = 0; !done; ++step) {
        fs::remove_all(root);
        done = survives(step, withFlags, [&] { store(1); });
        EXPECT_TRUE(!ModelStore::isStored(model) || stored() == 1) << step;
        store(2);
        expectNothingBesides();
    }
}

TEST_F(ModelReplace, KilledAtAnyStepADamagedModelIsKept) {
    const SystemCallsAsk asking(withoutForcing);
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        bool done = false;
        for (int step = 0; !done; ++step) {
            fs::remove_all(root);
            store(1);
            damageWeights();
            done = survives(step, fileSystem, [&] { store(2); });
            store(3);
            EXPECT_EQ(stored(), 3);
            EXPECT_EQ(fs::file_size(root / (std::string(name) + ".damaged/weights.bin")), 100U) << step;
            expectNothingBesides({name, std::string(name) + ".damaged"});
        }
    }
}

TEST_F(ModelReplace, KilledAtAnyStepOfARemovalTheModelIsThereOrGone) {
    const SystemCallsAsk asking(withoutForcing);
    bool done = false;
    for (int step = 0; !done; ++step) {
        store(1);
        done = survives(step, withFlags, [&] { (void)ModelStore::remove(model); });
        EXPECT_TRUE(!ModelStore::isStored(model) || stored() == 1) << step;
        (void)ModelStore::remove(model);
        EXPECT_FALSE(ModelStore::isStored(model));
    }
    expectNothingBesides({});
}

TEST_F(ModelReplace, KilledAtAnyStepFilesOfOthersAreThere) {
    const SystemCallsAsk asking(withoutForcing);
    bool done = false;
    for (int step = 0; !done; ++step) {
        fs::remove_all(root);
        store(1);
        writeText(model / "notes.txt", "precious");
        done = survives(step, withFlags, [&] { store(2); });
        store(3);
        EXPECT_EQ(readText(model / "notes.txt"), "precious") << step;
        expectNothingBesides();
    }
}

// A model as a kill between the two renames leaves it where names cannot be exchanged.
class StrandedModel : public ModelReplace {
protected:
    StrandedModel() {
        store(1);
        fs::rename(model, hidden);
    }
    const fs::path hidden = root / ("." + std::string(name) + ".old");
};

TEST_F(StrandedModel, ComesBackWhenItIsLookedForOrOpenedOrReplacedOrListed) {
    EXPECT_FALSE(ModelStore::exists(model));
    EXPECT_TRUE(ModelStore::isStored(model));
    expectNothingBesides();
    fs::rename(model, hidden);
    EXPECT_EQ(stored(), 1);
    expectNothingBesides();
    fs::rename(model, hidden);
    EXPECT_EQ(ModelStore::list(root).size(), 1U);
    expectNothingBesides();
    fs::rename(model, hidden);
    fs::resize_file(hidden / "weights.bin", 100);
    store(2);
    EXPECT_EQ(stored(), 2);
    expectNothingBesides({name, std::string(name) + ".damaged"});
}

TEST_F(StrandedModel, IsOpenedWhereItIsWhereNothingCanBeChanged) {
    for (const fs::path& path : {folder.path(), root, hidden})
        fs::permissions(path, fs::perms(0755));
    {
        const OtherUser user;
        EXPECT_TRUE(ModelStore::isStored(model));
        EXPECT_EQ(stored(), 1);
        const auto models = ModelStore::list(root);
        ASSERT_EQ(models.size(), 1U);
        EXPECT_EQ(models[0].folder, model);
        EXPECT_TRUE(models[0].holdsModel);
        EXPECT_EQ(models[0].remains, 0U);
    }
    expectNothingBesides({hidden.filename().string()});
}

TEST_F(StrandedModel, IsLeftToTheProgramThatIsJustReplacingIt) {
    const auto lock = FileLock::acquire(root / ("." + std::string(name) + ".lock"), 0ms);
    ASSERT_TRUE(lock);
    EXPECT_EQ(stored(), 1);
    EXPECT_TRUE(fs::exists(hidden));
}

TEST_F(StrandedModel, IsAMereRemainderOnceThereIsANewOne) {
    fs::copy(hidden, model);
    EXPECT_GT(ModelStore::list(root).at(0).remains, 4'000'000U);
    store(2);
    EXPECT_EQ(stored(), 2);
    expectNothingBesides();
}

// Another program would bring back half of it.
TEST_F(StrandedModel, IsNotTakenApartUnderItsName) {
    fs::copy(hidden, model);
    const std::size_t files = entriesIn(hidden);
    bool isHalf = false;
    const SystemCallsAsk asking([&](const SystemCall& call) {
        if (call.name == "unlink" || call.name == "rmdir")
            isHalf = isHalf || (fs::exists(hidden) && entriesIn(hidden) < files);
        return 0;
    });
    store(2);
    EXPECT_FALSE(isHalf);
    expectNothingBesides();
}

TEST_F(StrandedModel, LeavesFilesOfOthersButToNoneOfTheSameName) {
    fs::copy(hidden, model);
    writeText(hidden / "notes.txt", "old");
    writeText(hidden / "more.txt", "more");
    writeText(model / "notes.txt", "new");
    const SystemCallsAsk asking([](const SystemCall&) {
        errno = ENOENT;  // what an earlier call may have left
        return 0;
    });
    store(2);
    EXPECT_EQ(readText(model / "notes.txt"), "new");
    EXPECT_EQ(readText(model / "more.txt"), "more");
}

TEST_F(StrandedModel, IsRemovedAsAnyModel) {
    EXPECT_TRUE(ModelStore::remove(model));
    expectNothingBesides({});
    EXPECT_FALSE(ModelStore::isStored(model));
}

// ---- Calls that fail

TEST_F(ModelReplace, AFailureAtAnyStepLeavesTheOldModel) {
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        bool done = false;
        int failures = 0;
        for (int step = 0; !done; ++step) {
            store(1);
            bool failed = false;
            {
                const SystemCallsAsk asking([&, count = 0](const SystemCall& call) mutable {
                    if (count++ == step) return EIO;
                    done = count <= step;
                    return fileSystem(call);
                });
                try {
                    store(2);
                } catch (const FileError&) {
                    failed = true;
                }
            }
            EXPECT_EQ(stored(), failed ? 1 : 2) << step;
            failures += failed ? 1 : 0;
            store(3);
            expectNothingBesides();
        }
        EXPECT_GT(failures, 5);
    }
}

TEST_F(ModelReplace, AFullDiskLeavesTheOldModelAndNoRemains) {
    store(1);
    ChildProcess child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1'000'000, 1'000'000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
        return messageOf<FileError>([&] { store(2); }) ==
               (model / "weights.bin").string() + ": File too large";
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(stored(), 1);
    expectNothingBesides();
}

// ---- Several programs

TEST_F(ModelReplace, AWriterThatWaitsInVainSaysWhoStoresAndChangesNothing) {
    store(1);
    const auto lock = FileLock::acquire(root / ("." + std::string(name) + ".lock"), 0ms);
    ASSERT_TRUE(lock);
    ChildProcess child([&] {
        const auto isBusy = [](const std::function<void()>& action) {
            return messageOf<ModelBusyError>(action) ==
                   "Another program is storing the model of this folder. Try again in a moment.";
        };
        return isBusy([&] { ModelStore::replace(numbered(2), model, {}, 50ms); }) &&
               isBusy([&] { (void)ModelStore::remove(model, {}, 0ms); }) && stored() == 1;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(stored(), 1);
}

TEST_F(ModelReplace, AWaitEndsWhenItIsAskedTo) {
    store(1);
    const auto lock = FileLock::acquire(root / ("." + std::string(name) + ".lock"), 0ms);
    ASSERT_TRUE(lock);
    std::stop_source stop;
    int attempts = 0;
    const SystemCallsAsk asking([&](const SystemCall& call) {
        if (call.name == "flock" && ++attempts == 3) stop.request_stop();
        return 0;
    });
    EXPECT_THROW(ModelStore::replace(numbered(2), model, stop.get_token()), CancellationError);
    EXPECT_EQ(attempts, 3);
    EXPECT_EQ(stored(), 1);
}

TEST_F(ModelReplace, StoresWhereThereAreNoLocksButSweepsNothing) {
    store(1);
    const std::string remains = "." + std::string(name) + ".new-1-0";
    writeText(root / remains / "weights.bin", "another program may be writing this");
    const SystemCallsAsk asking([&](const SystemCall& call) { return call.name == "flock" ? ENOLCK : 0; });
    store(2);
    EXPECT_EQ(stored(), 2);
    expectNothingBesides({name, remains});
}

TEST_F(ModelReplace, LeavesHiddenFoldersOfOtherModelsAlone) {
    store(1);
    const std::set<std::string> others{
        "." + std::string(name) + ".new-3.new-12-0",  // of a model called NAME.new-3
        "." + std::string(name) + ".new-12", "." + std::string(name) + ".new-12-x",
        "." + std::string(name) + "0.old", "." + std::string(name) + ".older"};
    for (const std::string& other : others)
        writeText(root / other / "weights.bin", "x");
    store(2);
    std::set<std::string> expected = others;
    expected.insert(name);
    expectNothingBesides(expected);
}

TEST_F(ModelReplace, ProgramsThatStoreTheSameModelAtOnceAreNeverSeenHalfDone) {
    constexpr int times = 50;
    for (const auto& fileSystem : {withFlags, withoutFlags}) {
        store(1);
        const fs::path done = folder / "done";
        const auto quick = [fileSystem](const SystemCall& call) {
            return call.name == "fsync" ? pretend : fileSystem(call);
        };
        const auto writer = [&](float first) {
            return std::make_unique<ChildProcess>([&, first] {
                const SystemCallsAsk asking(quick);
                for (int i = 0; i < times; ++i)
                    ModelStore::replace(numbered(first + static_cast<float>(i)), model, {}, 60s);
                return true;
            });
        };
        ChildProcess reader([&] {
            while (!fs::exists(done)) {
                if (!ModelStore::isStored(model) || stored() < 1) return false;
            }
            return true;
        });
        const auto one = writer(1000);
        const auto other = writer(2000);
        EXPECT_TRUE(one->succeeded());
        EXPECT_TRUE(other->succeeded());
        writeText(done, "");
        EXPECT_TRUE(reader.succeeded());
        fs::remove(done);
        EXPECT_TRUE(stored() == 1000 + times - 1 || stored() == 2000 + times - 1);
        expectNothingBesides();
    }
}

// ---- Lists

TEST_F(ModelReplace, AListShowsModelsAndWhatKilledProgramsLeft) {
    store(1);
    ModelStore::replace(numbered(2), root / "Snares-1");
    writeText(root / "notes/text.txt", "no model");
    writeText(root / "file", "no model");
    writeText(root / ("." + std::string(name) + ".new-7-0") / "weights.bin", "12345");
    writeText(root / ".Toms-2.new-7-1/weights.bin", "123");
    writeText(root / ".Toms-2.new-7-1/model.json", "4567");
    const std::vector<ModelStore::StoredFolder> models = ModelStore::list(root);
    ASSERT_EQ(models.size(), 3U);
    EXPECT_EQ(models[0].folder, model);
    EXPECT_TRUE(models[0].holdsModel);
    EXPECT_GT(models[0].bytes, 4'000'000U);
    EXPECT_EQ(models[0].remains, 5U);
    EXPECT_EQ(models[1].folder, root / "Snares-1");
    EXPECT_EQ(models[1].remains, 0U);
    EXPECT_EQ(models[2].folder, root / "Toms-2");
    EXPECT_FALSE(models[2].holdsModel);
    EXPECT_EQ(models[2].bytes, 0U);
    EXPECT_EQ(models[2].remains, 7U);

    EXPECT_TRUE(ModelStore::remove(root / "Toms-2"));
    EXPECT_FALSE(ModelStore::remove(root / "Toms-2"));
    EXPECT_TRUE(ModelStore::remove(model));
    expectNothingBesides({"Snares-1", "file", "notes"});
}

TEST_F(ModelReplace, RemovingNothingRemovesALockThatWasLeft) {
    const fs::path lock = root / ("." + std::string(name) + ".lock");
    writeText(lock, "");
    EXPECT_FALSE(ModelStore::remove(model));
    EXPECT_FALSE(fs::exists(lock));
}

TEST_F(ModelReplace, AListIsInTheOrderOfTheNames) {
    std::vector<fs::path> expected;
    for (const char letter : std::string("qwertasdf")) {
        expected.push_back(root / std::string(1, letter));
        writeText(expected.back() / "model.json", "a part of a model");
    }
    std::ranges::sort(expected);
    std::vector<fs::path> listed;
    for (const ModelStore::StoredFolder& stored : ModelStore::list(root))
        listed.push_back(stored.folder);
    EXPECT_EQ(listed, expected);
}

TEST_F(ModelReplace, AListShowsASingleByteThatIsLeft) {
    writeText(root / ".Toms-2.new-7-0/weights.bin", "1");
    EXPECT_EQ(ModelStore::list(root).at(0).remains, 1U);
}

TEST_F(ModelReplace, AListDoesNotTakeWorkInHandForRemains) {
    store(1);
    const std::string hidden = "." + std::string(name) + ".new-7-0";
    writeText(root / hidden / "weights.bin", "12345");
    const auto lock = FileLock::acquire(root / ("." + std::string(name) + ".lock"), 0ms);
    ASSERT_TRUE(lock);
    EXPECT_EQ(ModelStore::list(root).at(0).remains, 0U);
}

TEST_F(ModelReplace, AListOfNoRootIsEmptyAndOfAFileAFailure) {
    EXPECT_TRUE(ModelStore::list(root).empty());
    writeText(root, "a file");
    EXPECT_THROW((void)ModelStore::list(root), FileError);
}

TEST_F(ModelReplace, RemovalTouchesNeitherLinksNorFilesOfOthers) {
    store(1);
    fs::create_directory_symlink(model, folder / "link");
    EXPECT_FALSE(ModelStore::remove(folder / "link"));
    EXPECT_FALSE(ModelStore::remove(folder / "missing"));
    writeText(model / "notes.txt", "precious");
    EXPECT_EQ(messageOf<Failure>([&] { (void)ModelStore::remove(model); }),
              model.string() + " holds other files too; nothing was removed.");
    EXPECT_EQ(stored(), 1);
}

}  // namespace
}  // namespace quillmere
