#include "QuillmereCore/Util/AtomicFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <array>
#include <csignal>
#include <memory>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "QuillmereCore/Util/Failure.h"
#include "Support/ChildProcess.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::bytesOf;
using testing::ChildProcess;
using testing::entriesIn;
using testing::readText;
using testing::TempFolder;
using testing::writeText;

// The failure of a write, or nothing.
std::optional<FileError> failureOf(const std::function<void()>& write) {
    try {
        write();
    } catch (const FileError& error) {
        return error;
    }
    return std::nullopt;
}

mode_t permissionsOf(const fs::path& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    return status.st_mode & 0777;
}

TEST(AtomicFile, HoldsExactlyTheBytesGiven) {
    const TempFolder folder;
    const std::string bytes("a\0b\xff\n", 5);
    writeFileAtomically(folder / "file", bytesOf(bytes));
    EXPECT_EQ(readText(folder / "file"), bytes);
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(AtomicFile, MayBeEmpty) {
    const TempFolder folder;
    writeFileAtomically(folder / "replaced", {});
    EXPECT_TRUE(writeNewFile(folder / "new", {}));
    EXPECT_EQ(fs::file_size(folder / "replaced"), 0U);
    EXPECT_EQ(fs::file_size(folder / "new"), 0U);
}

TEST(AtomicFile, ReplacesAnExistingFile) {
    const TempFolder folder;
    writeText(folder / "file", "something much longer");
    writeFileAtomically(folder / "file", bytesOf("new"));
    EXPECT_EQ(readText(folder / "file"), "new");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(AtomicFile, ReplacingKeepsASymbolicLink) {
    const TempFolder folder;
    writeText(folder / "sub/target", "old");
    fs::create_symlink("sub/target", folder / "link");
    writeFileAtomically(folder / "link", bytesOf("new"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(readText(folder / "sub/target"), "new");
    EXPECT_EQ(entriesIn(folder / "sub"), 1U);
}

TEST(AtomicFile, RefusesToReplaceAFolder) {
    const TempFolder folder;
    fs::create_directory(folder / "sub");
    const auto failure = failureOf([&] { writeFileAtomically(folder / "sub", bytesOf("new")); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->reason(), std::errc::is_a_directory);
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

// As root, a rename would put a plain file where /dev/null was.
TEST(AtomicFile, RefusesToReplaceAPipe) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_TRUE(failureOf([&] { writeFileAtomically(folder / "pipe", bytesOf("new")); }));
    EXPECT_TRUE(fs::is_fifo(folder / "pipe"));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(AtomicFile, HonoursTheUmask) {
    const TempFolder folder;
    ChildProcess child([&] {
        ::umask(027);
        writeFileAtomically(folder / "replaced", bytesOf("x"));
        return writeNewFile(folder / "new", bytesOf("x"));
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(permissionsOf(folder / "replaced"), 0640U);
    EXPECT_EQ(permissionsOf(folder / "new"), 0640U);
}

TEST(AtomicFile, FailureNamesTheFileAndTheReason) {
    const TempFolder folder;
    const fs::path file = folder / "missing/sub/out.wav";
    const auto failure = failureOf([&] { writeFileAtomically(file, bytesOf("x")); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->file(), file);
    EXPECT_EQ(failure->reason(), std::errc::no_such_file_or_directory);
    EXPECT_THAT(failure->what(), ::testing::StartsWith(file.string() + ": "));
}

TEST(AtomicFile, AFileInsteadOfAFolderIsAFailure) {
    const TempFolder folder;
    writeText(folder / "file", "x");
    const auto failure = failureOf([&] { (void)writeNewFile(folder / "file/out.wav", bytesOf("x")); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->reason(), std::errc::not_a_directory);
}

TEST(AtomicFile, ANameTooLongIsAFailureAndLeavesNothing) {
    const TempFolder folder;
    const fs::path file = folder / std::string(300, 'n');
    EXPECT_TRUE(failureOf([&] { writeFileAtomically(file, bytesOf("x")); }));
    EXPECT_TRUE(failureOf([&] { (void)writeNewFile(file, bytesOf("x")); }));
    EXPECT_EQ(entriesIn(folder.path()), 0U);
}

// A limit on the file size stops a write half-way, as a full disk does.
TEST(AtomicFile, AWriteThatFailsHalfWayLeavesTheOldFileAndNoTemporaryBehind) {
    const TempFolder folder;
    writeText(folder / "old", "old");
    ChildProcess child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
        const std::string bytes(5000, 'x');
        const auto replacing = failureOf([&] { writeFileAtomically(folder / "old", bytesOf(bytes)); });
        const auto creating = failureOf([&] { (void)writeNewFile(folder / "new", bytesOf(bytes)); });
        return replacing && replacing->file() == folder / "old" &&  //
               creating && creating->file() == folder / "new" &&
               creating->reason() == std::errc::file_too_large;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(readText(folder / "old"), "old");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(AtomicFile, AFolderThatMovesMeanwhileKeepsNoTemporary) {
    const TempFolder folder;
    fs::create_directory(folder / "here");
    std::jthread mover([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            fs::rename(folder / "here", folder / "there");
            fs::rename(folder / "there", folder / "here");
        }
    });
    constexpr int writes = 2000;
    int failed = 0;
    for (int i = 0; i < writes; ++i) {
        if (failureOf(
                [&] { writeFileAtomically(folder / "here/file", bytesOf("x"), Durability::disposable); }))
            ++failed;
    }
    mover.request_stop();
    mover.join();
    EXPECT_THAT(failed, ::testing::AllOf(::testing::Gt(0), ::testing::Lt(writes)));
    EXPECT_EQ(entriesIn(folder / "here"), 1U);
}

TEST(AtomicFile, ANewFileNeverReplacesAnything) {
    const TempFolder folder;
    writeText(folder / "file", "old");
    fs::create_directory(folder / "folder");
    fs::create_symlink("nowhere", folder / "dangling");
    for (const char* name : {"file", "folder", "dangling"}) {
        EXPECT_FALSE(writeNewFile(folder / name, bytesOf("new"))) << name;
    }
    EXPECT_EQ(readText(folder / "file"), "old");
    EXPECT_TRUE(fs::is_symlink(folder / "dangling"));
    EXPECT_EQ(entriesIn(folder.path()), 3U);
}

TEST(AtomicFile, LeftoverTemporaryNamesAreNoObstacle) {
    const TempFolder folder;
    const std::string prefix = ".quillmere-" + std::to_string(::getpid()) + "-";
    writeText(folder / (prefix + "0.tmp"), "left over");
    writeText(folder / (prefix + "1.tmp"), "left over");
    EXPECT_TRUE(writeNewFile(folder / "file", bytesOf("new")));
    EXPECT_EQ(readText(folder / (prefix + "0.tmp")), "left over");
    EXPECT_EQ(entriesIn(folder.path()), 3U);
}

// Claims the names 0, 1, ... of a folder until it owns count of them, as generation does; every file says
// who wrote it.
std::vector<int> claimNames(const fs::path& folder, std::size_t count, const std::string& owner) {
    std::vector<int> claimed;
    for (int number = 0; claimed.size() < count; ++number) {
        const bool isMine = writeNewFile(folder / std::to_string(number), bytesOf(owner));
        if (isMine) claimed.push_back(number);
    }
    return claimed;
}

TEST(AtomicFile, ProcessesThatClaimNamesAtOnceNeverOverwriteEachOther) {
    const TempFolder folder;
    constexpr std::size_t each = 50;
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (const std::string owner : {"first", "second", "third"}) {
        children.push_back(std::make_unique<ChildProcess>([&folder, owner] {
            for (const int number : claimNames(folder.path(), each, owner)) {
                if (readText(folder / std::to_string(number)) != owner) return false;
            }
            return true;
        }));
    }
    for (const auto& child : children)
        EXPECT_TRUE(child->succeeded());
    EXPECT_EQ(entriesIn(folder.path()), 3 * each);
}

TEST(AtomicFile, ThreadsThatClaimNamesAtOnceNeverOverwriteEachOther) {
    const TempFolder folder;
    constexpr std::size_t each = 50;
    std::array<std::vector<int>, 3> claimed;
    std::vector<std::thread> threads;
    threads.reserve(claimed.size());
    for (std::size_t i = 0; i < claimed.size(); ++i) {
        threads.emplace_back([&, i] { claimed[i] = claimNames(folder.path(), each, std::to_string(i)); });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t i = 0; i < claimed.size(); ++i) {
        for (const int number : claimed[i])
            EXPECT_EQ(readText(folder / std::to_string(number)), std::to_string(i));
    }
    EXPECT_EQ(entriesIn(folder.path()), 3 * each);
}

using Claim = std::optional<bool> (*)(const fs::path& from, const fs::path& to);

class NameClaimTest : public ::testing::TestWithParam<Claim> {};

TEST_P(NameClaimTest, TakesAFreeName) {
    const TempFolder folder;
    writeText(folder / "from", "content");
    EXPECT_EQ(GetParam()(folder / "from", folder / "to"), true);
    EXPECT_EQ(readText(folder / "to"), "content");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST_P(NameClaimTest, LeavesATakenNameAlone) {
    const TempFolder folder;
    writeText(folder / "from", "content");
    writeText(folder / "to", "other");
    EXPECT_EQ(GetParam()(folder / "from", folder / "to"), false);
    EXPECT_EQ(readText(folder / "from"), "content");
    EXPECT_EQ(readText(folder / "to"), "other");
}

TEST_P(NameClaimTest, ReportsAFailure) {
    const TempFolder folder;
    writeText(folder / "from", "content");
    const auto failure = failureOf([&] { (void)GetParam()(folder / "from", folder / "missing/to"); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->reason(), std::errc::no_such_file_or_directory);
    EXPECT_EQ(readText(folder / "from"), "content");
}

TEST(NameClaim, APlaceholderGoesWhenTheRenameFails) {
    const TempFolder folder;
    EXPECT_TRUE(failureOf([&] { (void)NameClaim::byPlaceholder(folder / "missing", folder / "to"); }));
    EXPECT_EQ(entriesIn(folder.path()), 0U);
}

std::size_t openDescriptors() {
    return entriesIn("/proc/self/fd");
}

TEST(AtomicFile, NoDescriptorStaysOpen) {
    const TempFolder folder;
    writeText(folder / "from", "content");
    const std::size_t before = openDescriptors();
    writeFileAtomically(folder / "file", bytesOf("old"));
    EXPECT_TRUE(writeNewFile(folder / "new", bytesOf("new")));
    EXPECT_FALSE(writeNewFile(folder / "new", bytesOf("newer")));
    createFile(folder / "created", bytesOf("created"));
    EXPECT_TRUE(NameClaim::byPlaceholder(folder / "from", folder / "to"));
    EXPECT_EQ(openDescriptors(), before);
}

std::optional<bool> claimByPlaceholder(const fs::path& from, const fs::path& to) {
    return NameClaim::byPlaceholder(from, to);
}

std::string wayName(const ::testing::TestParamInfo<Claim>& test) {
    constexpr std::array names{"ExclusiveRename", "HardLink", "Placeholder"};
    return names.at(test.index);
}

INSTANTIATE_TEST_SUITE_P(Ways, NameClaimTest,
                         ::testing::Values(&NameClaim::byExclusiveRename, &NameClaim::byHardLink,
                                           &claimByPlaceholder),
                         wayName);

}  // namespace
}  // namespace quillmere
