#include "QuillmereCore/Origin/JournalPreference.h"

#include <gtest/gtest.h>

#include "QuillmereCore/Util/Failure.h"
#include "Support/Environment.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

class PreferringAJournal : public ::testing::Test {
protected:
    const testing::TempFolder folder;
    const fs::path own = folder / "preferences" / "Quillmere";

private:
    const testing::EnvironmentVariable preferences_{"XDG_CONFIG_HOME", (folder / "preferences").string()};
};

TEST_F(PreferringAJournal, ThereIsOneUnlessItWasSwitchedOff) {
    EXPECT_TRUE(JournalPreference::isOn());
    EXPECT_FALSE(fs::exists(folder / "preferences")) << "a look creates nothing";
    JournalPreference::set(false);
    EXPECT_FALSE(JournalPreference::isOn());
    JournalPreference::set(false);
    EXPECT_FALSE(JournalPreference::isOn());
    JournalPreference::set(true);
    EXPECT_TRUE(JournalPreference::isOn());
    JournalPreference::set(true);
    EXPECT_TRUE(JournalPreference::isOn());
}

TEST_F(PreferringAJournal, AnyFileOfThatNameSwitchesItOff) {
    fs::create_directories(own);
    fs::create_symlink("nowhere", own / "no-journal");
    EXPECT_FALSE(JournalPreference::isOn());
    JournalPreference::set(true);
    EXPECT_TRUE(JournalPreference::isOn());
}

TEST_F(PreferringAJournal, ALookThatFailsIsNoYes) {
    testing::writeText(folder / "preferences", "a file");
    EXPECT_TRUE(JournalPreference::isOn()) << "below a file there is nothing";
    EXPECT_THROW(JournalPreference::set(false), FileError);
    fs::remove(folder / "preferences");
    fs::create_symlink("preferences", folder / "preferences");
    EXPECT_THROW((void)JournalPreference::isOn(), FileError);
}

TEST(JournalPreferencePlace, IsInTheUsersConfiguration) {
    const testing::EnvironmentVariable home("HOME", "/home/somebody");
    const testing::EnvironmentVariable preferences("XDG_CONFIG_HOME", "relative");
    EXPECT_EQ(JournalPreference::place(), "/home/somebody/.config/Quillmere/no-journal");
}

}  // namespace
}  // namespace quillmere
