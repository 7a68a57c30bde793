// Scans on a system in trouble. The test program stands in for the functions of the C library that look at
// folders and files; its copy of the core calls them instead.

#include <dirent.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/CorpusReport.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/Processor.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace {

// Error codes; 0 lets a function do its work.
std::atomic<int> listingFails = 0;
std::atomic<int> lookFails = 0;
std::atomic<int> readingFails = 0;

// While it lives, a function fails.
class Failing {
public:
    Failing(std::atomic<int>& function, int code) : function_(function) { function_ = code; }
    ~Failing() { function_ = 0; }
    Failing(const Failing&) = delete;
    Failing& operator=(const Failing&) = delete;

private:
    std::atomic<int>& function_;
};

template <typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" dirent* readdir(DIR* stream) {
    static auto* const real = next<decltype(readdir)>("readdir");
    if (listingFails == 0) return real(stream);
    errno = listingFails;
    return nullptr;
}

extern "C" int fstatat(int folder, const char* name, struct stat* status, int flags) {
    static auto* const real = next<decltype(fstatat)>("fstatat");
    if (lookFails == 0) return real(folder, name, status, flags);
    errno = lookFails;
    return -1;
}

extern "C" ssize_t pread(int file, void* buffer, std::size_t size, off_t offset) {
    static auto* const real = next<decltype(pread)>("pread");
    if (readingFails == 0) return real(file, buffer, size, offset);
    errno = readingFails;
    return -1;
}

namespace quillmere {
namespace {

using testing::TempFolder;
using testing::wavBytes;
using testing::writeText;

class CorpusTrouble : public ::testing::Test {
protected:
    CorpusTrouble() { writeText(folder / "x.wav", wavBytes({.rate = 8000}, std::string(200, '\1'))); }

    const TempFolder folder;
};

TEST_F(CorpusTrouble, AFolderThatCannotBeListedToItsEndIsAFailure) {
    EXPECT_EQ(Corpus::scan(folder.path()).fileCount(), 1);
    const Failing listing(listingFails, EIO);
    try {
        (void)Corpus::scan(folder.path());
        ADD_FAILURE() << "was scanned";
    } catch (const FileError& error) {
        EXPECT_EQ(error.reason(), std::errc::io_error);
        EXPECT_EQ(error.file(), folder.path());
    }
}

TEST_F(CorpusTrouble, AFileThatCannotBeLookedAtIsAFailure) {
    for (const int code : {EIO, ENOMEM}) {
        const Failing look(lookFails, code);
        EXPECT_THROW((void)Corpus::scan(folder.path()), FileError) << code;
    }
}

TEST_F(CorpusTrouble, AFileThatIsGoneByTheTimeOfTheLookIsNone) {
    const Failing look(lookFails, ENOENT);
    const CorpusSummary summary = Corpus::scan(folder.path());
    EXPECT_EQ(summary.fileCount(), 0);
    EXPECT_THAT(summary.passedOver, ::testing::IsEmpty());
}

TEST_F(CorpusTrouble, AFileThatTheSystemCannotReadIsAFailure) {
    for (const int code : {EIO, ENOMEM, EMFILE}) {
        const Failing reading(readingFails, code);
        try {
            (void)Corpus::scan(folder.path());
            ADD_FAILURE() << "was scanned";
        } catch (const AudioIOError& error) {
            EXPECT_TRUE(error.isSystemTrouble());
            EXPECT_THAT(error.what(), ::testing::StartsWith("Could not read x.wav: "));
        }
    }
    const Failing reading(readingFails, EACCES);
    EXPECT_EQ(Corpus::scan(folder.path()).unreadable, 1);
}

TEST_F(CorpusTrouble, NothingIsLearnedWithoutAFileThatTheSystemCannotRead) {
    const CorpusSummary corpus = Corpus::scan(folder.path());
    const Failing reading(readingFails, EIO);
    EXPECT_THROW((void)Corpus::inspect(corpus), AudioIOError);
    EXPECT_THROW((void)ModelTrainer::train(corpus, {}, {}, {}, testing::processor()), AudioIOError);
}

}  // namespace
}  // namespace quillmere
