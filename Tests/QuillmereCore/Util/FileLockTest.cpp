#include "QuillmereCore/Util/FileLock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCore/Util/Failure.h"
#include "Support/ChildProcess.h"
#include "Support/OtherUser.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::ChildProcess;
using testing::entriesIn;
using testing::OtherUser;
using testing::TempFolder;
using testing::writeText;

TEST(FileLock, KeepsOthersOutAndLeavesNoFile) {
    const TempFolder folder;
    {
        const auto lock = FileLock::acquire(folder / "lock", 0ms);
        ASSERT_TRUE(lock);
        EXPECT_FALSE(lock->isWithoutEffect());
        EXPECT_TRUE(FileLock::isHeld(folder / "lock"));
        EXPECT_FALSE(FileLock::acquire(folder / "lock", 0ms));
        EXPECT_FALSE(FileLock::acquire(folder / "lock", 50ms));
        ChildProcess child([&] { return !FileLock::acquire(folder / "lock", 0ms); });
        EXPECT_TRUE(child.succeeded());
    }
    EXPECT_FALSE(FileLock::isHeld(folder / "lock"));
    EXPECT_EQ(entriesIn(folder.path()), 0U);
    EXPECT_TRUE(FileLock::acquire(folder / "lock", 0ms));
}

TEST(FileLock, PassesOnWithItsObject) {
    const TempFolder folder;
    auto first = FileLock::acquire(folder / "lock", 0ms);
    ASSERT_TRUE(first);
    {
        const FileLock second = *std::move(first);
        first.reset();  // NOLINT(bugprone-use-after-move): that it does nothing any more
        EXPECT_TRUE(FileLock::isHeld(folder / "lock"));
    }
    EXPECT_EQ(entriesIn(folder.path()), 0U);
}

TEST(FileLock, OfAKilledProgramIsFree) {
    const TempFolder folder;
    ChildProcess child([&] {
        const auto lock = FileLock::acquire(folder / "lock", 0ms);
        ::raise(SIGKILL);
        return true;
    });
    EXPECT_FALSE(child.succeeded());
    EXPECT_TRUE(fs::exists(folder / "lock"));
    EXPECT_FALSE(FileLock::isHeld(folder / "lock"));
    EXPECT_TRUE(FileLock::acquire(folder / "lock", 0ms));
    EXPECT_EQ(entriesIn(folder.path()), 0U);
}

TEST(FileLock, WaitsForItsTurn) {
    const TempFolder folder;
    ChildProcess child([&] {
        const auto lock = FileLock::acquire(folder / "lock", 0ms);
        writeText(folder / "has it", "");
        while (!fs::exists(folder / "give it back")) {
        }
        return lock.has_value();
    });
    while (!fs::exists(folder / "has it")) {
    }
    EXPECT_FALSE(FileLock::acquire(folder / "lock", 0ms));
    writeText(folder / "give it back", "");
    EXPECT_TRUE(FileLock::acquire(folder / "lock", 60s));
    EXPECT_TRUE(child.succeeded());
}

TEST(FileLock, AWaitEndsAtOnceWhenItIsAskedTo) {
    const TempFolder folder;
    const auto lock = FileLock::acquire(folder / "lock", 0ms);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)FileLock::acquire(folder / "lock", 60s, stop.get_token()), CancellationError);
    EXPECT_TRUE(FileLock::acquire(folder / "free", 60s, stop.get_token())) << "there is nothing to wait for";
}

TEST(FileLock, IsWithoutEffectWhereNothingCanBeWritten) {
    const TempFolder folder;
    fs::permissions(folder.path(), fs::perms(0555));
    const OtherUser user;
    const auto lock = FileLock::acquire(folder / "lock", 0ms);
    ASSERT_TRUE(lock);
    EXPECT_TRUE(lock->isWithoutEffect());
    EXPECT_TRUE(FileLock::acquire(folder / "lock", 0ms));
}

TEST(FileLock, NamesTheFileThatCannotBeMade) {
    const TempFolder folder;
    try {
        (void)FileLock::acquire(folder / "missing/lock", 0ms);
        FAIL();
    } catch (const FileError& error) {
        EXPECT_EQ(error.file(), folder / "missing/lock");
        EXPECT_EQ(error.reason(), std::errc::no_such_file_or_directory);
    }
}

// Each reads a number, and writes it again with one added.
TEST(FileLock, ProgramsTakeTurns) {
    const TempFolder folder;
    constexpr int times = 40;
    writeText(folder / "number", "0");
    const auto work = [&] {
        for (int i = 0; i < times; ++i) {
            const auto lock = FileLock::acquire(folder / "lock", 60s);
            if (!lock) return false;
            const int number = std::stoi(testing::readText(folder / "number"));
            writeText(folder / "number", std::to_string(number + 1));
        }
        return true;
    };
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int child = 0; child < 3; ++child)
        children.push_back(std::make_unique<ChildProcess>(work));
    for (const auto& child : children)
        EXPECT_TRUE(child->succeeded());
    EXPECT_EQ(testing::readText(folder / "number"), std::to_string(3 * times));
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

}  // namespace
}  // namespace quillmere
