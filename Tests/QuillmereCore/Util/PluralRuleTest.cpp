#include "QuillmereCore/Util/PluralRule.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmere {
namespace {

PluralRule ruleOf(const std::string& expression, int forms = 2) {
    const auto rule = PluralRule::parse("nplurals=" + std::to_string(forms) + "; plural=" + expression + ";");
    EXPECT_TRUE(rule) << expression;
    return rule.value_or(PluralRule());
}

// The forms of the counts from 0.
std::vector<std::size_t> formsOf(const PluralRule& rule, std::uint64_t counts) {
    std::vector<std::size_t> forms;
    for (std::uint64_t count = 0; count < counts; ++count)
        forms.push_back(rule.form(count));
    return forms;
}

std::string repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

TEST(PluralRule, IsThatOfEnglishUnlessToldOtherwise) {
    EXPECT_EQ(PluralRule().forms(), 2U);
    EXPECT_EQ(formsOf(PluralRule(), 4), (std::vector<std::size_t>{1, 0, 1, 1}));
}

TEST(PluralRule, OfLanguagesIsEvaluated) {
    EXPECT_EQ(formsOf(ruleOf("(n != 1)"), 4), (std::vector<std::size_t>{1, 0, 1, 1}));
    EXPECT_EQ(formsOf(ruleOf("(n > 1)"), 4), (std::vector<std::size_t>{0, 0, 1, 1}));
    EXPECT_EQ(formsOf(ruleOf("0", 1), 3), (std::vector<std::size_t>{0, 0, 0}));
    const PluralRule polish = ruleOf("(n==1 ? 0 : n%10>=2 && n%10<=4 && (n%100<10 || n%100>=20) ? 1 : 2)", 3);
    EXPECT_EQ(formsOf(polish, 6), (std::vector<std::size_t>{2, 0, 1, 1, 1, 2}));
    EXPECT_EQ(polish.form(12), 2U);
    EXPECT_EQ(polish.form(22), 1U);
    EXPECT_EQ(polish.form(112), 2U);
    const PluralRule arabic =
        ruleOf("n==0 ? 0 : n==1 ? 1 : n==2 ? 2 : n%100>=3 && n%100<=10 ? 3 : n%100>=11 ? 4 : 5", 6);
    EXPECT_EQ(formsOf(arabic, 4), (std::vector<std::size_t>{0, 1, 2, 3}));
    EXPECT_EQ(arabic.form(11), 4U);
    EXPECT_EQ(arabic.form(100), 5U);
}

TEST(PluralRule, BindsAsCDoes) {
    EXPECT_EQ(ruleOf("1+2*3==7").form(0), 1U);
    EXPECT_EQ(ruleOf("9-3-2==4").form(0), 1U);
    EXPECT_EQ(ruleOf("(9-(3-2))/4==2").form(0), 1U);
    EXPECT_EQ(ruleOf("1||0&&0").form(0), 1U);
    EXPECT_EQ(ruleOf("1<2==1").form(0), 1U);
    EXPECT_EQ(ruleOf("!n").form(0), 1U);
    EXPECT_EQ(ruleOf("!!n").form(7), 1U);
    EXPECT_EQ(ruleOf(" 17 % 5 <= 2 ").form(0), 1U);
    EXPECT_EQ(ruleOf("0-1>n").form(5), 1U);  // without a sign
}

TEST(PluralRule, GivesTheFirstFormWhereItGivesNone) {
    EXPECT_EQ(ruleOf("n").form(2), 0U);
    EXPECT_EQ(ruleOf("n").form(1), 1U);
    EXPECT_EQ(ruleOf("7/n").form(0), 0U);
    EXPECT_EQ(ruleOf("7%(n-n)").form(3), 0U);
}

TEST(PluralRule, ThatIsNoneIsRefused) {
    for (const char* const field :
         {"", "nplurals=2", "nplurals=2;", "nplurals=2; plural=;", "nplurals=0; plural=0;",
          "nplurals=11; plural=0;", "nplurals=x; plural=0;", "nplurals=-1; plural=0;",
          "plural=n; nplurals=2;", "nplurals=2; plural=n !=;", "nplurals=2; plural=n 1;",
          "nplurals=2; plural=(n;", "nplurals=2; plural=n);", "nplurals=2; plural=n?1;",
          "nplurals=2; plural=n?1:;", "nplurals=2; plural=m;", "nplurals=2; plural=n & 1;",
          "nplurals=2; plural=n = 1;", "nplurals=2; plural=99999999999999999999;"})
        EXPECT_FALSE(PluralRule::parse(field)) << field;
}

TEST(PluralRule, HasTheSizeOfALanguages) {
    const auto parse = [](const std::string& text) {
        return PluralRule::parse("nplurals=2; plural=" + text).has_value();
    };
    EXPECT_TRUE(parse(repeated("(", 15) + "n" + repeated(")", 15)));
    for (const int many : {100, 1000000}) {
        EXPECT_FALSE(parse(repeated("(", many) + "n" + repeated(")", many)));
        EXPECT_FALSE(parse(repeated("!", many) + "n"));
        EXPECT_FALSE(parse(repeated("n?", many) + "n" + repeated(":n", many)));
        EXPECT_FALSE(parse("n" + repeated("+n", many)));
    }
}

}  // namespace
}  // namespace quillmere
