// Runs every reference vector as a test of its own: those next to this file, or those in the folder that
// the environment variable QUILLMERE_GOLDEN_DIR names (an absolute path, as ctest changes directories).

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "Golden/GoldenAreas.h"

namespace quillmere::golden {
namespace {

class CheckTest : public ::testing::Test {
public:
    explicit CheckTest(Check check) : check_(std::move(check)) {}

    void TestBody() override {
        for (const std::string& failure : check_.failures()) {
            ADD_FAILURE() << check_.suite << ", " << check_.name << ": " << failure;
        }
    }

private:
    Check check_;
};

// Names of tests are letters, digits and "_", so that --gtest_filter can select any.
std::string testName(std::string name) {
    std::replace_if(
        name.begin(), name.end(), [](unsigned char c) { return c >= 0x80 || std::isalnum(c) == 0; }, '_');
    return name;
}

void registerTests(const std::vector<Check>& checks) {
    for (const Check& check : checks) {
        ::testing::RegisterTest(check.suite.c_str(), testName(check.name).c_str(), nullptr, nullptr, __FILE__,
                                __LINE__, [check]() -> ::testing::Test* { return new CheckTest(check); });
    }
}

std::vector<std::string> namesOf(std::span<const Area> areas) {
    std::vector<std::string> names;
    for (const Area& area : areas) {
        names.push_back(area.name);
    }
    return names;
}

}  // namespace
}  // namespace quillmere::golden

int main(int argc, char** argv) {
    using namespace quillmere::golden;
    ::testing::InitGoogleTest(&argc, argv);
    const std::array areas{rngArea(),    stftArea(),    melArea(),        griffinLimArea(),
                           corpusArea(), clipsArea(),   featuresArea(),   configArea(),
                           vaeArea(),    trainerArea(), aestheticsArea(), samplerArea(),
                           renderArea(), finishArea(),  formatArea(),     detailArea()};
    // Another folder may hold any of the areas; ours holds all.
    const char* const folder = std::getenv("QUILLMERE_GOLDEN_DIR");
    const bool ours = folder == nullptr || *folder == '\0';
    registerTests(ours ? checks(QUILLMERE_TESTS_DIR "/Golden", areas, namesOf(areas))
                       : checks(folder, areas));
    return RUN_ALL_TESTS();
}
