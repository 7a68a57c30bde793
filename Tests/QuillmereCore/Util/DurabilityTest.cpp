// What is on the disk, and in which order it gets there; temporary files that nobody owns any more.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/ChildProcess.h"
#include "Support/Processor.h"
#include "Support/SmallModel.h"
#include "Support/SystemCalls.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::bytesOf;
using testing::ChildProcess;
using ::testing::ElementsAre;
using testing::entriesIn;
using testing::readText;
using testing::SystemCall;
using testing::SystemCallsAsk;
using testing::TempFolder;
using testing::writeText;

// The names of the system calls that work makes.
std::vector<std::string> callsOf(const std::function<void()>& work) {
    std::vector<std::string> calls;
    const SystemCallsAsk record([&](const SystemCall& call) {
        calls.emplace_back(call.name);
        return 0;
    });
    work();
    return calls;
}

// The reason for which work fails when every call of that name does; nothing if it succeeds.
std::error_code failureOf(const std::function<void()>& work, std::string_view name) {
    const SystemCallsAsk fail([&](const SystemCall& call) { return call.name == name ? EIO : 0; });
    try {
        work();
    } catch (const FileError& error) {
        return error.reason();
    }
    return {};
}

TEST(Durability, BytesAreOnTheDiskBeforeTheirNameIs) {
    const TempFolder folder;
    const auto replace = [&] { writeFileAtomically(folder / "file", bytesOf("new")); };
    EXPECT_THAT(callsOf(replace), ElementsAre("flock", "write", "fsync", "rename", "fsync"));
    const auto create = [&] { EXPECT_TRUE(writeNewFile(folder / "other", bytesOf("new"))); };
    EXPECT_THAT(callsOf(create), ElementsAre("flock", "write", "fsync", "renameat2"));
}

TEST(Durability, WhatIsDisposableWaitsForNoDisk) {
    const TempFolder folder;
    const auto write = [&] { writeFileAtomically(folder / "file", bytesOf("new"), Durability::disposable); };
    EXPECT_THAT(callsOf(write), ElementsAre("flock", "write", "rename"));
}

TEST(Durability, ADiskThatFailsIsAFailureAndLeavesTheOldFile) {
    const TempFolder folder;
    writeText(folder / "file", "old");
    EXPECT_EQ(failureOf([&] { writeFileAtomically(folder / "file", bytesOf("new")); }, "fsync"),
              std::errc::io_error);
    EXPECT_EQ(failureOf([&] { (void)writeNewFile(folder / "other", bytesOf("new")); }, "fsync"),
              std::errc::io_error);
    EXPECT_EQ(readText(folder / "file"), "old");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(Durability, AFileSystemWithoutDiskIsNoFailure) {
    const TempFolder folder;
    const SystemCallsAsk refuse([](const SystemCall& call) { return call.name == "fsync" ? EINVAL : 0; });
    writeFileAtomically(folder / "file", bytesOf("new"));
    EXPECT_TRUE(writeNewFile(folder / "other", bytesOf("new")));
    EXPECT_EQ(entriesIn(folder.path()), 2U);
}

// ---- Samples

GenerationRequest requestInto(const fs::path& folder) {
    return {.count = 3,
            .outputDirectory = folder,
            .aesthetics = {.phaseIterations = 1},
            .seed = 42,
            .namePrefix = "kick"};
}

TEST(Durability, ABatchOfSamplesEndsWithItsNamesOnTheDisk) {
    const TempFolder folder;
    SampleGenerator generator(testing::smallModel(), testing::processor());
    std::atomic<int> renamed = 0;
    std::atomic<int> synced = 0;
    std::atomic<bool> namesAreSafe = false;
    {
        const SystemCallsAsk record([&](const SystemCall& call) {
            if (call.name == "renameat2") ++renamed;
            if (call.name == "fsync") {
                ++synced;
                namesAreSafe = renamed == 3;
            }
            return 0;
        });
        (void)generator.generate(requestInto(folder / "out"), {}, {});
    }
    EXPECT_EQ(renamed, 3);
    EXPECT_EQ(synced, 4) << "the bytes of each and the folder";
    EXPECT_TRUE(namesAreSafe);
}

TEST(Durability, AFolderThatFailsIsAFailureOfTheRun) {
    const TempFolder folder;
    SampleGenerator generator(testing::smallModel(), testing::processor());
    std::atomic<int> renamed = 0;
    const SystemCallsAsk fail([&](const SystemCall& call) {
        if (call.name == "renameat2") ++renamed;
        return call.name == "fsync" && renamed == 3 ? EIO : 0;
    });
    try {
        (void)generator.generate(requestInto(folder / "out"), {}, {});
        FAIL() << "nothing was thrown";
    } catch (const FileError& error) {
        EXPECT_EQ(error.file(), folder / "out");
        EXPECT_EQ(error.reason(), std::errc::io_error);
    }
    EXPECT_EQ(entriesIn(folder / "out"), 3U);
}

// ---- Abandoned files

TEST(AbandonedFiles, OfAKilledWriterAreRemoved) {
    const TempFolder folder;
    ChildProcess killed([&] {
        const SystemCallsAsk die([](const SystemCall& call) -> int {
            if (call.name == "fsync") ::_exit(0);
            return 0;
        });
        writeFileAtomically(folder / "file", bytesOf("half"));
        return false;
    });
    ASSERT_TRUE(killed.succeeded());
    ASSERT_EQ(entriesIn(folder.path()), 1U);
    removeAbandonedFiles(folder.path());
    EXPECT_EQ(entriesIn(folder.path()), 0U);
}

TEST(AbandonedFiles, OfAWriterAtWorkStay) {
    const TempFolder folder;
    const SystemCallsAsk sweep([&](const SystemCall& call) {
        if (call.name == "rename" || call.name == "renameat2") {
            std::thread([&] { removeAbandonedFiles(folder.path()); }).join();
        }
        return 0;
    });
    writeFileAtomically(folder / "file", bytesOf("whole"));
    EXPECT_TRUE(writeNewFile(folder / "other", bytesOf("whole")));
    EXPECT_EQ(readText(folder / "file"), "whole");
    EXPECT_EQ(readText(folder / "other"), "whole");
    EXPECT_EQ(entriesIn(folder.path()), 2U);
}

// Who looks for abandoned files finds one between its making and its lock.
TEST(AbandonedFiles, AFileLostBeforeItsLockIsMadeAnew) {
    const TempFolder folder;
    bool isFirst = true;
    const SystemCallsAsk sweep([&](const SystemCall& call) {
        if (call.name == "flock" && std::exchange(isFirst, false)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(folder.path()))
                fs::remove(entry.path());
        }
        return 0;
    });
    writeFileAtomically(folder / "file", bytesOf("whole"));
    EXPECT_EQ(readText(folder / "file"), "whole");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(AbandonedFiles, AFileThatIsLockedByWhoeverRemovesItIsMadeAnew) {
    const TempFolder folder;
    fs::path taken;
    int lock = -1;
    const SystemCallsAsk sweep([&](const SystemCall& call) {
        if (call.name == "flock" && taken.empty()) {
            taken = fs::directory_iterator(folder.path())->path();
            lock = ::open(taken.c_str(), O_RDONLY | O_CLOEXEC);
            EXPECT_EQ(::flock(lock, LOCK_EX | LOCK_NB), 0);
        }
        if (call.name == "rename") fs::remove(taken);
        return 0;
    });
    writeFileAtomically(folder / "file", bytesOf("whole"));
    EXPECT_EQ(::close(lock), 0);
    EXPECT_EQ(readText(folder / "file"), "whole");
    EXPECT_EQ(entriesIn(folder.path()), 1U);
}

TEST(AbandonedFiles, NothingElseIsTouched) {
    const TempFolder folder;
    for (const char* name :
         {"sound.wav", ".quillmere-.tmp", ".quillmere-12-x.tmp", ".quillmere-12-3.wav", ".tmp"})
        writeText(folder / name, "mine");
    fs::create_directory(folder / ".quillmere-1-1.tmp");
    writeText(folder / "target", "mine");
    fs::create_symlink(folder / "target", folder / ".quillmere-1-2.tmp");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    const std::size_t before = entriesIn(folder.path());
    removeAbandonedFiles(folder.path());
    EXPECT_EQ(entriesIn(folder.path()), before);
    removeAbandonedFiles(folder / "missing");
}

TEST(AbandonedFiles, AreRemovedByTheNextRun) {
    const TempFolder folder;
    writeText(folder / ".quillmere-999999-0.tmp", "half");
    SampleGenerator generator(testing::smallModel(), testing::processor());
    (void)generator.generate(requestInto(folder.path()), {}, {});
    EXPECT_EQ(entriesIn(folder.path()), 3U);
}

}  // namespace
}  // namespace quillmere
