// The commands need nobody: they work where every door to others is shut, and write nowhere but where they
// should.

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fcntl.h>
#include <array>
#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

#include "Reliability/ForkedCommand.h"
#include "Reliability/Studio.h"
#include "Reliability/Subjects.h"
#include "Support/ChildProcess.h"
#include "Support/FaultLayer.h"

namespace quillmere::testing {
namespace {

// From here on this process ends when it asks for a connection to anybody, or for another program. False
// where the system does not allow such a promise.
bool shutTheDoors() {
    constexpr std::array<unsigned, 7> doors{SYS_socket, SYS_socketpair, SYS_connect, SYS_bind,
                                            SYS_listen, SYS_execve,     SYS_execveat};
    std::vector<sock_filter> filter{BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const unsigned door : doors) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, door, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

bool changesSomething(const FileCall& call) {
    using Kind = FileCall::Kind;
    switch (call.kind) {
        case Kind::open:
            return (call.flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0;
        case Kind::write:
        case Kind::rename:
        case Kind::link:
        case Kind::makeFolder:
        case Kind::remove:
            return true;
        default:
            return false;
    }
}

class IsolationTest : public ::testing::TestWithParam<Subject> {
protected:
    IsolationTest() { GetParam().prepare(studio_); }

    Studio studio_;

private:
    const Studio::OwnFolders folders_ = studio_.asOwnFolders();
};

INSTANTIATE_TEST_SUITE_P(Commands, IsolationTest, ::testing::ValuesIn(subjects()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(IsolationTest, NeedsNobody) {
    if (!ChildProcess(shutTheDoors).succeeded()) GTEST_SKIP() << "the system allows no such filter";
    const auto result = ForkedCommand(GetParam().arguments(studio_), [] {
                            if (!shutTheDoors()) ::_exit(99);
                        }).finish();
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

TEST_P(IsolationTest, ChangesNothingOutsideOfItsFolders) {
    struct Findings {
        std::atomic<long> changes{0};
        std::atomic<long> outside{0};
        std::array<char, 256> first{};  // outside
    };
    const Shared<Findings> findings;
    const std::string own = studio_.folder.path().string() + "/";
    const auto look = [&](const FileCall& call) {
        if (!changesSomething(call)) return 0;
        ++findings->changes;
        const bool isOwn = call.path.starts_with(own) &&
                           (call.other.empty() || call.other.starts_with(own)) &&
                           !call.path.starts_with(studio_.corpus.string());
        if (!isOwn && findings->outside++ == 0)
            (std::string(call.name) + " " + call.path).copy(findings->first.data(), 255);
        return 0;
    };
    const auto result = ForkedCommand(GetParam().arguments(studio_), [&] {
                            watchFiles({"/", look});
                        }).finish();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_GT(findings->changes, 0);
    EXPECT_EQ(findings->outside, 0) << findings->first.data();
}

TEST(Isolation, IsSeenToBeBroken) {
    const auto knock = [] { return shutTheDoors() && ::socket(AF_INET, SOCK_STREAM, 0) >= 0; };
    EXPECT_FALSE(ChildProcess(knock).succeeded());
}

}  // namespace
}  // namespace quillmere::testing
