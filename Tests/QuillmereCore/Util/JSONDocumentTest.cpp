#include "QuillmereCore/Util/JSONDocument.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::json {
namespace {

std::string messageOf(const std::function<void()>& work) {
    try {
        work();
    } catch (const DecodingError& error) {
        return error.what();
    }
    return "nothing was thrown";
}

template <typename Document>
class JSONDocument : public ::testing::Test {
protected:
    const Document example = parseObject<Document>(
        R"({"whole": 3, "fraction": 0.1, "text": "x", "list": [1], "object": {"a": 1}, "large": 18446744073709551615})");

    [[nodiscard]] std::string parsing(const std::string& text) const {
        return messageOf([&] { (void)parseObject<Document>(text); });
    }
};

using Documents = ::testing::Types<Json, DoubleJson>;
TYPED_TEST_SUITE(JSONDocument, Documents);

TYPED_TEST(JSONDocument, GivesMembersOfTheTypeAskedFor) {
    const TypeParam& document = this->example;
    EXPECT_EQ(integerMember(document, "whole"), 3);
    EXPECT_EQ(numberMember(document, "whole"), 3);
    EXPECT_EQ(numberMember(document, "fraction"), static_cast<typename TypeParam::number_float_t>(0.1L));
    EXPECT_EQ(stringMember(document, "text"), "x");
    EXPECT_EQ(arrayMember(document, "list").size(), 1U);
    EXPECT_EQ(integerMember(objectMember(document, "object"), "a"), 1);
}

TYPED_TEST(JSONDocument, SaysWhatIsWrongWithAMember) {
    const TypeParam& document = this->example;
    EXPECT_EQ(messageOf([&] { (void)member(document, "none"); }), "\"none\" is missing");
    EXPECT_EQ(messageOf([&] { (void)integerMember(document, "fraction"); }),
              "\"fraction\" must be an integer");
    EXPECT_EQ(messageOf([&] { (void)integerMember(document, "large"); }),
              "\"large\" must be a 64-bit integer");
    EXPECT_EQ(messageOf([&] { (void)numberMember(document, "text"); }), "\"text\" must be a number");
    EXPECT_EQ(messageOf([&] { (void)stringMember(document, "whole"); }), "\"whole\" must be a text");
    EXPECT_EQ(messageOf([&] { (void)arrayMember(document, "object"); }), "\"object\" must be a list");
    EXPECT_EQ(messageOf([&] { (void)objectMember(document, "list"); }), "\"list\" must be an object");
}

TYPED_TEST(JSONDocument, SaysWhyATextIsNone) {
    EXPECT_EQ(this->parsing("[]"), "not a JSON object");
    EXPECT_EQ(this->parsing("{\"a\": }"), "not valid JSON (byte 7)");
    EXPECT_EQ(this->parsing("{\"a\": 1e999}"), "a number is too large");
    EXPECT_EQ(this->parsing(std::string(1 << 20, '[')), "nested too deeply");
}

}  // namespace
}  // namespace quillmere::json
