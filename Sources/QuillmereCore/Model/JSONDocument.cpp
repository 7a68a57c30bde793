#include "QuillmereCore/Model/JSONDocument.h"

#include <limits>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::json {
namespace {

// Documents of this project are at most four levels deep; each level of a broken one costs memory.
constexpr int maxDepth = 64;

[[noreturn]] void wrongType(const char* key, const char* expected) {
    throw DecodingError(quoted(key) + " must be " + expected);
}

}  // namespace

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

Json parseObject(std::string_view text) {
    const auto limitDepth = [](int depth, Json::parse_event_t, Json&) {
        if (depth > maxDepth) throw DecodingError("nested too deeply");
        return true;
    };
    try {
        Json document = Json::parse(text, limitDepth);
        if (!document.is_object()) throw DecodingError("not a JSON object");
        return document;
    } catch (const Json::parse_error& error) {
        throw DecodingError("not valid JSON (byte " + std::to_string(error.byte) + ")");
    } catch (const Json::out_of_range&) {
        throw DecodingError("a number is too large");
    }
}

const Json& member(const Json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end()) throw DecodingError(quoted(key) + " is missing");
    return *found;
}

std::int64_t integerMember(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (!value.is_number_integer()) wrongType(key, "an integer");
    const bool tooLarge =
        value.is_number_unsigned() && value.get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max();
    if (tooLarge) wrongType(key, "a 64-bit integer");
    return value.get<std::int64_t>();
}

float floatMember(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (!value.is_number()) wrongType(key, "a number");
    return value.get<float>();
}

const std::string& stringMember(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (!value.is_string()) wrongType(key, "a text");
    return value.get_ref<const std::string&>();
}

const Json& objectMember(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (!value.is_object()) wrongType(key, "an object");
    return value;
}

const Json& arrayMember(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (!value.is_array()) wrongType(key, "a list");
    return value;
}

}  // namespace quillmere::json
