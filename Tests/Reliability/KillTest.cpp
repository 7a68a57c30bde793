// Programs that are killed, also while others work in the same folders. QUILLMERE_KILLS=N kills N times at
// random instead of the few times that a quick check has time for.

#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "Reliability/ForkedCommand.h"
#include "Reliability/Studio.h"
#include "Reliability/Subjects.h"
#include "Support/FaultLayer.h"

namespace quillmere::testing {
namespace {

constexpr int killed = 128 + SIGKILL;

int randomKills() {
    constexpr int few = 20;
    const char* const wanted = std::getenv("QUILLMERE_KILLS");
    return wanted == nullptr ? few : std::atoi(wanted);
}

bool changesNames(const FileCall& call) {
    using Kind = FileCall::Kind;
    return call.kind == Kind::rename || call.kind == Kind::link || call.kind == Kind::makeFolder ||
           call.kind == Kind::remove;
}

bool isAny(const FileCall&) {
    return true;
}

class KillTest : public ::testing::TestWithParam<Subject> {
protected:
    KillTest() { GetParam().prepare(before_); }

    // Kills a run just before the call of that number among those that are counted. Returns how many there
    // were.
    long runKilledAt(long number, bool (*isCounted)(const FileCall&)) {
        after_.become(before_);
        *calls_ = 0;
        const auto count = [&](const FileCall& call) {
            if (isCounted(call) && ++*calls_ == number) ::kill(::getpid(), SIGKILL);
            return 0;
        };
        const ForkedCommand::Result result = ForkedCommand(GetParam().arguments(after_), [&] {
                                                 watchFiles({after_.folder.path(), count});
                                             }).finish();
        SCOPED_TRACE("killed at call " + std::to_string(number));
        EXPECT_TRUE(result.exitCode == killed || result.exitCode == 0) << result.err;
        GetParam().check(before_, after_, result.exitCode == killed ? nullptr : &result);
        GetParam().expectNextRunClearsUp(after_);
        return *calls_;
    }

private:
    Studio before_, after_;
    Shared<std::atomic<long>> calls_;
    const Studio::OwnFolders folders_ = after_.asOwnFolders();
};

INSTANTIATE_TEST_SUITE_P(Commands, KillTest, ::testing::ValuesIn(subjects()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(KillTest, AtEveryChangeOfAName) {
    long kills = 0;
    while (runKilledAt(kills + 1, changesNames) > kills && !HasFailure())
        ++kills;
    std::cout << kills << " kills\n";
    EXPECT_GE(kills, 1);
}

TEST_P(KillTest, AtRandomCalls) {
    constexpr long never = 0;
    const long calls = runKilledAt(never, isAny);
    std::mt19937 random(11);
    for (int i = 0; i < randomKills() && !HasFailure(); ++i)
        (void)runKilledAt(std::uniform_int_distribution<long>(1, calls)(random), isAny);
    std::cout << randomKills() << " kills among " << calls << " calls\n";
}

// ---- Several at once

class TwoProgramsTest : public ::testing::Test {
protected:
    TwoProgramsTest() { studio_.become(Undisturbed::get().learned); }

    using Arguments = std::vector<std::string>;

    // Starts two commands, and kills one of them after a while that is chosen at random, unless it has ended.
    void run(const Arguments& first, const Arguments& second) {
        ForkedCommand one(first);
        ForkedCommand two(second);
        constexpr int longest = 60;  // milliseconds: about as long as a command takes
        std::this_thread::sleep_for(
            std::chrono::milliseconds(std::uniform_int_distribution(0, longest)(random_)));
        one.signal(SIGKILL);
        for (ForkedCommand* const command : {&one, &two}) {
            const ForkedCommand::Result result = command->finish();
            EXPECT_TRUE(result.exitCode == 0 || result.exitCode == killed ||
                        (result.exitCode == 1 && endsWithSentence(result)))
                << result.exitCode << " " << result.err;
        }
    }

    // The model, if there is one, is one of the two that were ever learned; sounds are whole.
    void expectOrder() const {
        const Undisturbed& undisturbed = Undisturbed::get();
        for (const auto& entry : std::filesystem::directory_iterator(studio_.models)) {
            if (entry.path().filename().string().starts_with('.')) continue;
            EXPECT_EQ(entry.path(), studio_.modelFolder());
            const std::string weights = Studio::weights(entry.path());
            EXPECT_TRUE(weights == undisturbed.oldWeights || weights == undisturbed.newWeights);
        }
        for (const auto& [name, content] : Studio::contents(studio_.output)) {
            if (name.starts_with('.')) continue;
            const bool isWhole =
                undisturbed.variations.contains(content) || undisturbed.newVariations.contains(content);
            EXPECT_TRUE(isWhole) << name;
        }
    }

    // The same command alone ends well and clears up.
    void expectAllClear() const {
        for (const Arguments& arguments : {studio_.train(Studio::oldSeed), studio_.generate(2)})
            EXPECT_EQ(ForkedCommand(arguments).finish().exitCode, 0);
        EXPECT_TRUE(studio_.remains().empty());
        expectOrder();
    }

    Studio studio_;
    std::mt19937 random_{12};

private:
    const Studio::OwnFolders folders_ = studio_.asOwnFolders();
};

TEST_F(TwoProgramsTest, LearnGenerateAndRemoveInTheSameFolders) {
    const Arguments train = studio_.train(Studio::newSeed);
    const Arguments trainOld = studio_.train(Studio::oldSeed);
    const Arguments generate = studio_.generate(2);
    const Arguments remove = studio_.removeModel();
    // Not generating beside removing: without a model that learns the folder, with as many steps as usual.
    const std::vector<std::pair<Arguments, Arguments>> pairs{
        {train, trainOld}, {train, generate},    {generate, train},    {train, remove},
        {remove, train},   {generate, generate}, {trainOld, generate}, {remove, remove}};
    std::uniform_int_distribution<std::size_t> any(0, pairs.size() - 1);
    for (int i = 0; i < randomKills() && !HasFailure(); ++i) {
        const auto& [first, second] = pairs[any(random_)];
        run(first, second);
        expectOrder();
        expectAllClear();
    }
    std::cout << randomKills() << " kills beside another program\n";
}

}  // namespace
}  // namespace quillmere::testing
