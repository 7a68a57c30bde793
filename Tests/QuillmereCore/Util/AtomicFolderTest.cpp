#include "QuillmereCore/Util/AtomicFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "QuillmereCore/Util/Failure.h"
#include "Support/SystemCalls.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::entriesIn;
using testing::readText;
using testing::SystemCall;
using testing::SystemCallsAsk;
using testing::TempFolder;
using testing::writeText;

int unknownFlag(const SystemCall& call) {
    return call.name == "renameat2" ? EINVAL : 0;
}

std::optional<FileError> failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const FileError& error) {
        return error;
    }
    return std::nullopt;
}

// With renames that refuse to replace, and without.
class MoveFolder : public ::testing::TestWithParam<bool> {
protected:
    MoveFolder() {
        if (!GetParam()) asking_.emplace(unknownFlag);
        writeText(folder / "from/file", "content");
    }
    const TempFolder folder;

private:
    std::optional<SystemCallsAsk> asking_;
};

TEST_P(MoveFolder, TakesAFreeName) {
    EXPECT_TRUE(moveFolder(folder / "from", folder / "to"));
    EXPECT_EQ(readText(folder / "to/file"), "content");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST_P(MoveFolder, LeavesTakenNamesAlone) {
    writeText(folder / "full/other", "other");
    fs::create_directory(folder / "empty");
    writeText(folder / "file", "");
    fs::create_symlink("nowhere", folder / "link");
    for (const char* taken : {"full", "empty", "file", "link"})
        EXPECT_FALSE(moveFolder(folder / "from", folder / taken)) << taken;
    EXPECT_EQ(readText(folder / "from/file"), "content");
    EXPECT_EQ(readText(folder / "full/other"), "other");
    EXPECT_EQ(entriesIn(folder.path()), 5U);
}

TEST_P(MoveFolder, NamesTheFolderThatCannotBeMoved) {
    const auto failure = failureOf([&] { (void)moveFolder(folder / "missing", folder / "to"); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->file(), folder / "missing");
    EXPECT_EQ(failure->reason(), std::errc::no_such_file_or_directory);
}

INSTANTIATE_TEST_SUITE_P(Ways, MoveFolder, ::testing::Bool(), [](const auto& test) {
    return std::string(test.param ? "WithExclusiveRename" : "WithoutExclusiveRename");
});

TEST(MoveFolderTaken, IsWhatEitherErrorSays) {
    const TempFolder folder;
    writeText(folder / "from/file", "");
    for (const int error : {EEXIST, ENOTEMPTY}) {
        const SystemCallsAsk asking([error](const SystemCall&) { return error; });
        EXPECT_FALSE(moveFolder(folder / "from", folder / "to")) << error;
    }
}

TEST(ExchangeFolders, ExchangesTheirNames) {
    const TempFolder folder;
    writeText(folder / "a/file", "a");
    writeText(folder / "b/file", "b");
    EXPECT_TRUE(exchangeFolders(folder / "a", folder / "b"));
    EXPECT_EQ(readText(folder / "a/file"), "b");
    EXPECT_EQ(readText(folder / "b/file"), "a");
}

TEST(ExchangeFolders, SaysWhenTheFileSystemCannot) {
    const TempFolder folder;
    writeText(folder / "a/file", "a");
    writeText(folder / "b/file", "b");
    for (const int error : {EINVAL, ENOSYS, ENOTSUP}) {
        const SystemCallsAsk asking([error](const SystemCall&) { return error; });
        EXPECT_FALSE(exchangeFolders(folder / "a", folder / "b"));
    }
    EXPECT_EQ(readText(folder / "a/file"), "a");
}

TEST(ExchangeFolders, NamesTheFirstFolderWhenOneIsMissing) {
    const TempFolder folder;
    fs::create_directory(folder / "a");
    const auto failure = failureOf([&] { (void)exchangeFolders(folder / "a", folder / "b"); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->file(), folder / "a");
}

TEST(SyncFolder, SaysWhatWentWrong) {
    const TempFolder folder;
    EXPECT_FALSE(syncFolder(folder.path()));
    EXPECT_EQ(syncFolder(folder / "missing"), std::errc::no_such_file_or_directory);
    for (const auto& [error, isFailure] : {std::pair{EIO, true}, {EINVAL, false}, {ENOTSUP, false}}) {
        const SystemCallsAsk asking([code = error](const SystemCall&) { return code; });
        EXPECT_EQ(static_cast<bool>(syncFolder(folder.path())), isFailure) << error;
    }
}

}  // namespace
}  // namespace quillmere
