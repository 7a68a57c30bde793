// Generation under conditions that need a process of its own. Generators live in the child processes only:
// this process must have one thread when it forks.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "QuillmereCore/Generate/Generator.h"
#include "Support/ChildProcess.h"
#include "Support/Processor.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::ChildProcess;
using testing::smallModel;
using testing::TempFolder;

GenerationRequest requestInto(const fs::path& folder, std::int64_t count, std::uint64_t seed = 42) {
    return {.count = count,
            .outputDirectory = folder,
            .aesthetics = {.stretchJitter = 1, .phaseIterations = 2},
            .seed = seed,
            .format = OutputFormat::wav32float,
            .namePrefix = "kick"};
}

// The error that generating ends with; nothing on success.
std::error_code failureOf(const GenerationRequest& request) {
    try {
        (void)SampleGenerator(smallModel(), testing::processor()).generate(request, {}, {});
    } catch (const FileError& error) {
        return error.reason();
    }
    return {};
}

void becomeOrdinaryUser() {
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setuid(nobody) != 0) throw std::runtime_error("cannot drop privileges");
}

void limitFileSize(std::size_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, bytes};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("cannot limit the file size");
}

// Bytes of each variation's file, in order of their indices.
std::vector<std::size_t> fileSizes(const GenerationRequest& request) {
    constexpr std::size_t header = 58;  // of a WAV file of floats
    SampleGenerator generator(smallModel(), testing::processor());
    std::vector<std::size_t> sizes;
    for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(request.count); ++i) {
        const std::uint64_t seed = SampleGenerator::variationSeed(request.seed, i);
        sizes.push_back(header + 4 * generator.audition(request.aesthetics, seed).size());
    }
    return sizes;
}

TEST(GeneratorProcess, ProcessesInOneFolderNeverOverwrite) {
    const TempFolder folder;
    const auto writer = [&](std::uint64_t seed) {
        return [&, seed] { return !failureOf(requestInto(folder.path(), 20, seed)); };
    };
    ChildProcess first(writer(1));
    ChildProcess second(writer(2));
    ChildProcess third(writer(3));
    EXPECT_TRUE(first.succeeded());
    EXPECT_TRUE(second.succeeded());
    EXPECT_TRUE(third.succeeded());
    std::set<std::string> contents;
    for (const auto& entry : fs::directory_iterator(folder.path()))
        contents.insert(testing::readText(entry.path()));
    EXPECT_EQ(testing::entriesIn(folder.path()), 60U);
    EXPECT_EQ(contents.size(), 60U);
}

TEST(GeneratorProcess, AFolderWithoutWritePermissionIsAFileError) {
    const TempFolder folder;
    fs::create_directory(folder / "locked");
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder / "locked", fs::perms(0555));
    ChildProcess child([&] {
        becomeOrdinaryUser();
        return failureOf(requestInto(folder / "locked", 2)) == std::errc::permission_denied;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(testing::entriesIn(folder / "locked"), 0U);
    fs::permissions(folder / "locked", fs::perms(0755));
}

TEST(GeneratorProcess, AFolderThatCannotBeCreatedIsAFileError) {
    const TempFolder folder;
    fs::permissions(folder.path(), fs::perms(0555));
    ChildProcess child([&] {
        becomeOrdinaryUser();
        return failureOf(requestInto(folder / "new", 2)) == std::errc::permission_denied;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(testing::entriesIn(folder.path()), 0U);
    fs::permissions(folder.path(), fs::perms(0755));
}

// Writable and searchable, but not readable: others' files may be there unseen.
TEST(GeneratorProcess, AFolderThatCannotBeListedIsNumberedFromTheFirstFreeName) {
    const TempFolder folder;
    fs::create_directory(folder / "blind");
    testing::writeText(folder / "blind" / "kick_var_0001.wav", "mine");
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder / "blind", fs::perms(0333));
    ChildProcess child([&] {
        becomeOrdinaryUser();
        return !failureOf(requestInto(folder / "blind", 2));
    });
    EXPECT_TRUE(child.succeeded());
    fs::permissions(folder / "blind", fs::perms(0755));
    EXPECT_EQ(testing::entriesIn(folder / "blind"), 3U);
    EXPECT_EQ(testing::readText(folder / "blind" / "kick_var_0001.wav"), "mine");
}

TEST(GeneratorProcess, ADiskWithoutRoomLeavesNothingBehind) {
    const TempFolder folder;
    ChildProcess child([&] {
        limitFileSize(100);
        return failureOf(requestInto(folder.path(), 3)) == std::errc::file_too_large;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_EQ(testing::entriesIn(folder.path()), 0U);
}

TEST(GeneratorProcess, FilesThatFoundRoomStayAndAreWhole) {
    const TempFolder folder;
    const GenerationRequest request = requestInto(folder.path(), 6);
    ChildProcess child([&] {
        std::vector<std::size_t> sizes = fileSizes(request);
        std::ranges::sort(sizes);
        const std::size_t limit = sizes[2];
        limitFileSize(limit);
        if (failureOf(request) != std::errc::file_too_large) return false;
        std::vector<std::size_t> written;
        for (const auto& entry : fs::directory_iterator(folder.path()))
            written.push_back(entry.file_size());
        std::ranges::sort(written);
        sizes.erase(std::ranges::upper_bound(sizes, limit), sizes.end());
        return written == sizes;
    });
    EXPECT_TRUE(child.succeeded());
    EXPECT_GE(testing::entriesIn(folder.path()), 3U);
    EXPECT_LT(testing::entriesIn(folder.path()), 6U);
}

}  // namespace
}  // namespace quillmere
