// Every call in which a command meets its files fails once, in a run of its own. The command must then do its
// work all the same or end with a sentence and an exit code, leave what was there or put the whole of
// something new in its place, and the next run must find nothing in its way and clear up.
//
// The errors take turns; with QUILLMERE_EVERY_ERROR set, each call fails with each of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <span>
#include <string>

#include "Reliability/ForkedCommand.h"
#include "Reliability/Studio.h"
#include "Reliability/Subjects.h"
#include "Support/FaultLayer.h"

namespace quillmere::testing {
namespace {

struct Error {
    const char* name;
    int number;
};

constexpr std::array<Error, 4> errors{
    {{"EIO", EIO}, {"ENOSPC", ENOSPC}, {"EACCES", EACCES}, {"EMFILE", EMFILE}}};

// Those that the call of that number fails with.
std::span<const Error> errorsOf(long number) {
    const std::span<const Error> all(errors);
    return std::getenv("QUILLMERE_EVERY_ERROR") != nullptr
               ? all
               : all.subspan(static_cast<std::size_t>(number) % all.size(), 1);
}

class FaultTest : public ::testing::TestWithParam<Subject> {
protected:
    FaultTest() { GetParam().prepare(before_); }

    // Whether the run came to a call of that number, which failed, or with it all that came after.
    bool meetsFault(long number, const Error& error, bool isLasting = false) {
        after_.become(before_);
        progress_->calls = 0;
        progress_->wasRefused = false;
        progress_->refused = {};
        const auto refuse = [&](const FileCall& call) { return answer(call, number, error, isLasting); };
        const ForkedCommand::Result result = ForkedCommand(GetParam().arguments(after_), [&] {
                                                 watchFiles({after_.folder.path(), refuse});
                                             }).finish();
        if (!progress_->wasRefused) {
            EXPECT_EQ(result.exitCode, 0) << result.err;
            return false;
        }
        SCOPED_TRACE(std::string(progress_->refused.data()) + " failed with " + error.name + "\n" +
                     result.err);
        EXPECT_TRUE(result.exitCode == 0 || (result.exitCode == 1 && endsWithSentence(result)))
            << "exit code " << result.exitCode;
        GetParam().check(before_, after_, &result);
        if (!isAsBefore()) GetParam().expectNextRunClearsUp(after_);
        return true;
    }

private:
    // Nothing has changed: the next run would be the first one again.
    [[nodiscard]] bool isAsBefore() const {
        return after_.remains().empty() &&
               Studio::contents(after_.folder.path()) == Studio::contents(before_.folder.path());
    }

    struct Progress {
        std::atomic<long> calls{0};
        std::atomic<bool> wasRefused{false};
        std::array<char, 256> refused{};  // which call that was
    };

    // In the child.
    [[nodiscard]] int answer(const FileCall& call, long number, const Error& error, bool isLasting) const {
        const long current = ++progress_->calls;
        if (current > number && isLasting) return error.number;
        if (current != number) return 0;
        const std::string text = std::string(call.name) + " " + call.path + " " + call.other;
        text.copy(progress_->refused.data(), progress_->refused.size() - 1);
        progress_->wasRefused = true;
        return error.number;
    }

    Studio before_, after_;
    Shared<Progress> progress_;
    const Studio::OwnFolders folders_ = after_.asOwnFolders();
};

INSTANTIATE_TEST_SUITE_P(Commands, FaultTest, ::testing::ValuesIn(subjects()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(FaultTest, LeavesOldOrNewASentenceAndNothingElse) {
    long faults = 0;
    bool isMet = true;
    for (long number = 1; isMet && !HasFailure(); ++number) {
        for (const Error& error : errorsOf(number)) {
            isMet = meetsFault(number, error);
            faults += isMet ? 1 : 0;
        }
    }
    std::cout << faults << " faults injected into " << GetParam().name << "\n";
    EXPECT_GT(faults, 10);
}

TEST_P(FaultTest, EndsWhenNothingWorksAnyMore) {
    constexpr long stride = 7;
    long faults = 0;
    for (long number = 1; !HasFailure() && meetsFault(number, errorsOf(number).front(), true);
         number += stride)
        ++faults;
    std::cout << faults << " times nothing worked any more in " << GetParam().name << "\n";
    EXPECT_GT(faults, 2);
}

}  // namespace
}  // namespace quillmere::testing
