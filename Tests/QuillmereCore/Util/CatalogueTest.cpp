#include "QuillmereCore/Util/Catalogue.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

#include "Support/CatalogueFile.h"

namespace quillmere {
namespace {

using testing::catalogueFile;
using testing::catalogueHeader;

using Texts = std::map<std::string, std::string>;

const Texts& usual() {
    static const Texts texts{
        {"", catalogueHeader()},
        {"Try --help.", "Siehe --help."},
        {std::string("{0} file\0{0} files", 18), std::string("{0} Datei\0{0} Dateien", 21)}};
    return texts;
}

std::optional<Catalogue> withHeader(const std::string& header) {
    return Catalogue::read(catalogueFile({{"", header}, {"a", "b"}}));
}

// A file with a number of its own at a place.
std::string withNumber(std::string file, std::size_t at, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i, number >>= 8U)
        file[at + i] = static_cast<char>(number & 0xFFU);
    return file;
}

TEST(Catalogue, HasTextsAndTheirForms) {
    for (const bool isBig : {false, true}) {
        const auto catalogue = Catalogue::read(catalogueFile(usual(), isBig));
        ASSERT_TRUE(catalogue) << isBig;
        EXPECT_EQ(catalogue->size(), 2U);
        EXPECT_STREQ(catalogue->find("Try --help.", 1), "Siehe --help.");
        EXPECT_STREQ(catalogue->find("Try --help.", 7), "Siehe --help.");
        EXPECT_STREQ(catalogue->find("{0} file", 1), "{0} Datei");
        EXPECT_STREQ(catalogue->find("{0} file", 0), "{0} Datei");  // (n > 1), as its header says
        EXPECT_STREQ(catalogue->find("{0} file", 2), "{0} Dateien");
    }
}

TEST(Catalogue, SaysWhatItHasNot) {
    const auto catalogue =
        Catalogue::read(catalogueFile({{"", catalogueHeader()}, {"a", ""}, {std::string("b\0c", 3), "B"}}));
    ASSERT_TRUE(catalogue);
    EXPECT_EQ(catalogue->find("missing", 1), nullptr);
    EXPECT_EQ(catalogue->find("a", 1), nullptr);
    EXPECT_EQ(catalogue->find("", 1), nullptr);
    EXPECT_STREQ(catalogue->find("b", 2), "B");  // a form that it lacks
}

TEST(Catalogue, WithoutARuleHasThatOfEnglish) {
    const auto catalogue = Catalogue::read(catalogueFile({{"", "Content-Type: text/plain; charset=UTF-8\n"},
                                                          {std::string("b\0c", 3), std::string("x\0y", 3)}}));
    ASSERT_TRUE(catalogue);
    EXPECT_STREQ(catalogue->find("b", 1), "x");
    EXPECT_STREQ(catalogue->find("b", 0), "y");
}

TEST(Catalogue, IsOfUTF8WithARuleThatCanBeRead) {
    EXPECT_TRUE(withHeader(catalogueHeader()));
    EXPECT_FALSE(withHeader("Content-Type: text/plain; charset=ISO-8859-1\n"));
    EXPECT_FALSE(withHeader("Language: de\n"));
    EXPECT_FALSE(withHeader(catalogueHeader("nplurals=2; plural=m;")));
    EXPECT_FALSE(Catalogue::read(catalogueFile({{"a", "b"}})));
}

TEST(Catalogue, SteersNoTerminal) {
    for (const char* const text : {"\x1B[2J", "\r", "\x7F", "\xC2\x9B", "\xFF", "\xC3"})
        EXPECT_FALSE(Catalogue::read(catalogueFile({{"", catalogueHeader()}, {"a", text}}))) << text;
    EXPECT_TRUE(Catalogue::read(catalogueFile({{"", catalogueHeader()}, {"a", "é 音\n\t"}})));
}

TEST(Catalogue, ThatIsNoneIsRefused) {
    EXPECT_FALSE(Catalogue::read(""));
    EXPECT_FALSE(Catalogue::read("RIFF"));
    EXPECT_FALSE(Catalogue::read(std::string(100, '\0')));
}

TEST(Catalogue, CutShortIsRefused) {
    const std::string file = catalogueFile(usual());
    for (std::size_t length = 0; length < file.size(); ++length)
        EXPECT_FALSE(Catalogue::read(file.substr(0, length))) << length;
}

TEST(Catalogue, WithPlacesOutsideIsRefused) {
    const std::string file = catalogueFile(usual());
    const std::size_t texts = 28 + 8 * usual().size();
    // Count, the two tables; a source's length and place, a text's.
    for (const std::size_t at : {std::size_t{8}, std::size_t{12}, std::size_t{16}, std::size_t{36},
                                 std::size_t{40}, texts + 8, texts + 12}) {
        for (const std::uint32_t number : {0xFFFFFFFFU, 0x80000000U, static_cast<std::uint32_t>(file.size())})
            EXPECT_FALSE(Catalogue::read(withNumber(file, at, number))) << at << ' ' << number;
    }
}

TEST(Catalogue, OfALaterFormatIsRefused) {
    constexpr std::size_t revisionAt = 4;
    const std::string file = catalogueFile(usual());
    EXPECT_TRUE(Catalogue::read(withNumber(file, revisionAt, 0x10001)));  // 1.1, with texts for other systems
    EXPECT_FALSE(Catalogue::read(withNumber(file, revisionAt, 0x20000)));
}

TEST(Catalogue, WithATextThatDoesNotEndIsRefused) {
    std::string file = catalogueFile(usual());
    file.back() = 'x';
    EXPECT_FALSE(Catalogue::read(file));
}

// So that a small file cannot become a large catalogue.
TEST(Catalogue, WhoseTextsLieUponEachOtherIsRefused) {
    const std::string large(1000, 'x');
    const Texts texts{{"", catalogueHeader()}, {"a", large}, {"b", ""}, {"c", ""}};
    std::string file = catalogueFile(texts);
    const std::size_t records = 28 + 8 * texts.size();
    for (const std::size_t i : {std::size_t{2}, std::size_t{3}})
        file.replace(records + 8 * i, 8, file, records + 8, 8);
    EXPECT_FALSE(Catalogue::read(file));
}

TEST(Catalogue, WithATextTwiceIsRefused) {
    EXPECT_FALSE(
        Catalogue::read(catalogueFile({{"", catalogueHeader()}, {"a", "x"}, {std::string("a\0b", 3), "y"}})));
}

}  // namespace
}  // namespace quillmere
