// The power goes off at every moment of a command, on a disk that keeps no more than it must: what is there
// when the machine starts again is old or new, and a command that had ended well has not lost what it
// promised.

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Reliability/ForkedCommand.h"
#include "Reliability/PowerCutDisk.h"
#include "Reliability/Studio.h"
#include "Reliability/Subjects.h"

namespace quillmere::testing {
namespace {

using Files = std::map<std::string, std::string>;

class PowerCutTest : public ::testing::TestWithParam<Subject> {
protected:
    PowerCutTest() { GetParam().prepare(before_); }

    // The steps of a run that nothing happens to, and that run's result.
    std::vector<FileLog::Step> recordRun() {
        after_.become(before_);
        const TempFolder place(fastFolder());
        const FileLog log(place / "log");
        ended_ =
            ForkedCommand(GetParam().arguments(after_), [&] { log.record(after_.folder.path()); }).finish();
        EXPECT_EQ(ended_.exitCode, 0) << ended_.err;
        return log.steps();
    }

    // Everything that can be left of a disk at one moment and was not met yet.
    std::vector<Files> newRemains(const PowerCutDisk& disk) {
        std::vector<Files> remains;
        const auto add = [&](Files files) {
            if (met_.insert(files).second) remains.push_back(std::move(files));
        };
        using Unforced = PowerCutDisk::Unforced;
        for (const Unforced unforced : {Unforced::all, Unforced::half, Unforced::none})
            add(disk.left(unforced));
        for (unsigned choice = 0; choice < 1U << disk.unforcedFolders(); ++choice)
            add(disk.leftInAnyOrder(choice));
        return remains;
    }

    // The machine starts again with these files.
    void expectAllWell(const Files& files, bool hadEnded) {
        writeFiles(after_.folder.path(), files);
        for (const auto& sample : std::filesystem::directory_iterator(before_.corpus))
            std::filesystem::last_write_time(after_.corpus / sample.path().filename(),
                                             sample.last_write_time());
        GetParam().check(before_, after_, hadEnded ? &ended_ : nullptr);
        GetParam().expectNextRunClearsUp(after_);
    }

    [[nodiscard]] PowerCutDisk newDisk() {
        after_.become(before_);
        return PowerCutDisk(after_.folder.path());
    }

private:
    Studio before_, after_;
    ForkedCommand::Result ended_;
    std::set<Files> met_;
    const Studio::OwnFolders folders_ = after_.asOwnFolders();
};

INSTANTIATE_TEST_SUITE_P(Commands, PowerCutTest, ::testing::ValuesIn(subjects()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(PowerCutTest, LeavesOldOrNew) {
    const std::vector<FileLog::Step> steps = recordRun();
    ASSERT_GE(steps.size(), 5U);
    PowerCutDisk disk = newDisk();
    std::size_t cuts = 0;
    for (std::size_t done = 0; done <= steps.size(); ++done) {
        if (done > 0) disk.apply(steps[done - 1]);
        for (const Files& files : newRemains(disk)) {
            SCOPED_TRACE("after " + std::to_string(done) + " of " + std::to_string(steps.size()) + " steps");
            ++cuts;
            ASSERT_NO_FATAL_FAILURE(expectAllWell(files, done == steps.size()));
            if (HasFailure()) return;
        }
    }
    std::cout << steps.size() << " steps, " << cuts << " different remains\n";
}

}  // namespace
}  // namespace quillmere::testing
