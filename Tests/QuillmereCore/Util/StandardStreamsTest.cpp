#include "QuillmereCore/Util/StandardStreams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>
#include <string>

#include "Support/ChildProcess.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::ChildProcess;
using testing::readText;
using testing::TempFolder;

bool cannotWrite(int stream) {
    return ::write(stream, "said", 4) < 0 && errno == EBADF;
}

bool cannotRead(int stream) {
    char byte = 0;
    return ::read(stream, &byte, 1) < 0 && errno == EBADF;
}

class WithoutAStream : public ::testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(StandardStreams, WithoutAStream,
                         ::testing::Values(STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO));

TEST_P(WithoutAStream, NoFileTakesItsNumber) {
    const TempFolder folder;
    const std::string file = folder / "file";
    EXPECT_TRUE(ChildProcess([&] {
                    ::close(GetParam());
                    occupyStandardStreams();
                    const int opened = ::open(file.c_str(), O_WRONLY | O_CREAT, 0600);
                    const bool isSilent =
                        GetParam() == STDIN_FILENO ? cannotRead(GetParam()) : cannotWrite(GetParam());
                    return opened > STDERR_FILENO && isSilent;
                }).succeeded());
    EXPECT_EQ(readText(file), "");
}

TEST(StandardStreams, AllMayBeMissing) {
    EXPECT_TRUE(ChildProcess([] {
                    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                        ::close(stream);
                    occupyStandardStreams();
                    return cannotRead(STDIN_FILENO) && cannotWrite(STDOUT_FILENO) &&
                           cannotWrite(STDERR_FILENO);
                }).succeeded());
}

TEST(StandardStreams, ThoseThatAreThereStayAsTheyAre) {
    const TempFolder folder;
    const std::string file = folder / "file";
    EXPECT_TRUE(ChildProcess([&] {
                    const int opened = ::open(file.c_str(), O_WRONLY | O_CREAT, 0600);
                    ::dup2(opened, STDOUT_FILENO);
                    occupyStandardStreams();
                    return ::write(STDOUT_FILENO, "said", 4) == 4;
                }).succeeded());
    EXPECT_EQ(readText(file), "said");
}

}  // namespace
}  // namespace quillmere
