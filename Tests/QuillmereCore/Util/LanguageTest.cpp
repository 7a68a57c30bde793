#include "QuillmereCore/Util/Language.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "Support/CatalogueFile.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::TempFolder;
using testing::writeCatalogue;
using testing::writeText;

using Names = std::vector<std::string>;
using Environment = std::map<std::string, std::string>;

Language::Variables variables(const Environment& environment) {
    return [environment](const char* name) {
        const auto found = environment.find(name);
        return found == environment.end() ? nullptr : found->second.c_str();
    };
}

Names wishes(const Environment& environment) {
    return Language::wishes(variables(environment));
}

const Names english;

// Speaks as an environment asks, and English again afterwards.
class Speaking {
public:
    Speaking(const std::filesystem::path& catalogues, const Environment& environment) {
        Language::take(catalogues, variables(environment));
    }
    ~Speaking() { Language::take({}, variables({})); }
    Speaking(const Speaking&) = delete;
    Speaking& operator=(const Speaking&) = delete;
};

std::string files(std::int64_t count) {
    return Language::text(Message::counted(count, "{0} file", "{0} files"));
}

TEST(Language, OfTheEnvironmentIsTheFirstVariableThatIsSet) {
    EXPECT_EQ(wishes({{"LANG", "de_AT.UTF-8"}}), (Names{"de_AT", "de"}));
    EXPECT_EQ(wishes({{"LANG", "de_AT.UTF-8"}, {"LC_MESSAGES", "fr_FR.utf8"}}), (Names{"fr_FR", "fr"}));
    EXPECT_EQ(wishes({{"LANG", "de"}, {"LC_MESSAGES", "fr.UTF-8"}, {"LC_ALL", "es_MX.UTF-8"}}),
              (Names{"es_MX", "es"}));
    EXPECT_EQ(wishes({{"LANG", "ca.UTF-8@valencia"}}), (Names{"ca@valencia", "ca"}));
}

TEST(Language, OfAnEmptyVariableIsThatOfOneThatIsNotSet) {
    EXPECT_EQ(wishes({{"LANGUAGE", ""}, {"LC_ALL", ""}, {"LC_MESSAGES", ""}, {"LANG", "de_DE.UTF-8"}}),
              (Names{"de_DE", "de"}));
}

TEST(Language, OfNoEnvironmentAndOfTheCLocaleIsEnglish) {
    EXPECT_EQ(wishes({}), english);
    for (const char* const locale : {"C", "POSIX", "C.UTF-8"})
        EXPECT_EQ(wishes({{"LANG", "de_DE.UTF-8"}, {"LC_ALL", locale}}), english) << locale;
}

TEST(Language, IsThatOfTheListUnlessTheLocaleIsC) {
    EXPECT_EQ(wishes({{"LANG", "ja_JP.UTF-8"}, {"LANGUAGE", "fr_CA:de"}}), (Names{"fr_CA", "fr", "de"}));
    EXPECT_EQ(wishes({{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}), (Names{"de"}));
    for (const char* const locale : {"C", "POSIX", ""})
        EXPECT_EQ(wishes({{"LANG", locale}, {"LANGUAGE", "de"}}), english) << locale;
}

TEST(Language, OfAListEndsWithEnglish) {
    EXPECT_EQ(wishes({{"LANG", "en_US.UTF-8"}, {"LANGUAGE", "en_US:en:de"}}), (Names{"en_US", "en"}));
    EXPECT_EQ(wishes({{"LANG", "en_US.UTF-8"}, {"LANGUAGE", "en_US:de"}}), (Names{"en_US", "en"}));
    EXPECT_EQ(wishes({{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "pt:en:de"}}), (Names{"pt", "en"}));
    EXPECT_EQ(wishes({{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "pt:C:de"}}), (Names{"pt"}));
    EXPECT_EQ(wishes({{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "::fr.UTF-8:"}}), (Names{"fr"}));
}

// xx is no language, so no system has its locale and knows its characters.
TEST(Language, IsEnglishWhereTheCharactersAreNotUTF8) {
    EXPECT_EQ(wishes({{"LC_ALL", "ja_JP.eucJP"}}), english);
    EXPECT_EQ(wishes({{"LANG", "xx_XX.ISO-8859-1"}, {"LANGUAGE", "de"}}), english);
    EXPECT_EQ(wishes({{"LANG", "de_DE.UTF-8"}, {"LC_CTYPE", "C"}}), english);
    EXPECT_EQ(wishes({{"LANG", "xx_XX"}}), (Names{"xx_XX", "xx"}));
    EXPECT_EQ(wishes({{"LC_MESSAGES", "xx_XX.ISO-8859-15"}, {"LC_CTYPE", "xx_XX.utf8"}}),
              (Names{"xx_XX", "xx"}));
    // As a Mac sends it to another machine.
    EXPECT_EQ(wishes({{"LANG", "xx_XX.ISO-8859-1"}, {"LC_CTYPE", "UTF-8"}}), (Names{"xx_XX", "xx"}));
    EXPECT_EQ(wishes({{"LC_MESSAGES", "xx_XX.UTF-8"}}), (Names{"xx_XX", "xx"}));
}

TEST(Language, IsNoWayToAnotherPlace) {
    EXPECT_EQ(wishes({{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "../..:/tmp/x:a b:de"}}), (Names{"de"}));
}

TEST(Language, IsEnglishUntilAProgramAsksForAnother) {
    EXPECT_EQ(files(2), "2 files");
    EXPECT_EQ(Language::name(), "");
}

TEST(Language, SpeaksTheFirstCatalogueThatIsThere) {
    const TempFolder folder;
    writeCatalogue(folder.path(), "xx",
                   {{std::string("{0} file\0{0} files", 18), std::string("A {0}\0B {0}", 11)}});
    writeCatalogue(folder.path(), "yy", {{"{0} file", "Y {0}"}});
    {
        const Speaking speaking(folder.path(), {{"LANG", "C.UTF-8"}, {"LANGUAGE", "zz:xx_XX:yy"}});
        EXPECT_EQ(Language::name(), "xx");
        EXPECT_EQ(files(1), "A 1");
        EXPECT_EQ(files(0), "A 0");
        EXPECT_EQ(files(2), "B 2");
        EXPECT_EQ(Language::text(Message("{0} is required", "FOLDER")), "FOLDER is required");
        std::string elsewhere;
        std::thread([&] { elsewhere = files(3); }).join();
        EXPECT_EQ(elsewhere, "B 3");
    }
    EXPECT_EQ(files(2), "2 files");
    const Speaking speaking(folder.path(), {{"LANG", "xx.UTF-8"}, {"LANGUAGE", "en:yy"}});
    EXPECT_EQ(Language::name(), "");
    EXPECT_EQ(files(2), "2 files");
}

TEST(Language, OfADamagedCatalogueIsTheNextOne) {
    const TempFolder folder;
    writeText(folder / "xx/LC_MESSAGES/quillmere.mo", "no catalogue");
    std::filesystem::create_directories(folder / "vv/LC_MESSAGES/quillmere.mo");
    writeCatalogue(folder.path(), "yy", {{"{0} file", "Y {0}"}});
    const Speaking speaking(folder.path(), {{"LANG", "xx.UTF-8"}, {"LANGUAGE", "vv:xx:yy"}});
    EXPECT_EQ(Language::name(), "yy");
}

TEST(Language, LeavesTheEnvironmentAlone) {
    const TempFolder folder;
    writeCatalogue(folder.path(), "xx", {});
    const char* const list = std::getenv("LANGUAGE");
    const std::string before = list != nullptr ? list : "(not set)";
    const Speaking speaking(folder.path(), {{"LANG", "xx.UTF-8"}});
    const char* const after = std::getenv("LANGUAGE");
    EXPECT_EQ(after != nullptr ? after : "(not set)", before);
}

TEST(Language, IsBesideTheProgram) {
    const auto program = std::filesystem::canonical("/proc/self/exe");
    EXPECT_EQ(Language::ownFolder(), program.parent_path().parent_path() / "share/locale");
}

}  // namespace
}  // namespace quillmere
