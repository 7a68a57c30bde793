#include "QuillmereCore/Util/JSONDocument.h"

#include <limits>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::json {
namespace {

// Documents of this project are at most four levels deep; each level of a broken one costs memory.
constexpr int maxDepth = 64;

}  // namespace

std::string quoted(std::string_view text) {
    return '"' + std::string(text) + '"';
}

template <typename Document>
Document parseObject(std::string_view text) {
    const auto limitDepth = [](int depth, typename Document::parse_event_t, Document&) {
        if (depth > maxDepth) throw DecodingError("nested too deeply");
        return true;
    };
    try {
        Document document = Document::parse(text, limitDepth);
        if (!document.is_object()) throw DecodingError("not a JSON object");
        return document;
    } catch (const typename Document::parse_error& error) {
        throw DecodingError("not valid JSON (byte {0})", error.byte);
    } catch (const typename Document::out_of_range&) {
        throw DecodingError("a number is too large");
    }
}

template <typename Document>
const Document& member(const Document& object, std::string_view key) {
    const auto found = object.find(std::string(key));
    if (found == object.end()) throw DecodingError("{0} is missing", quoted(key));
    return *found;
}

template <typename Document>
std::int64_t integerMember(const Document& object, std::string_view key) {
    const Document& value = member(object, key);
    if (!value.is_number_integer()) throw DecodingError("{0} must be an integer", quoted(key));
    const bool tooLarge = value.is_number_unsigned() &&
                          value.template get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max();
    if (tooLarge) throw DecodingError("{0} must be a 64-bit integer", quoted(key));
    return value.template get<std::int64_t>();
}

template <typename Document>
typename Document::number_float_t numberMember(const Document& object, std::string_view key) {
    const Document& value = member(object, key);
    if (!value.is_number()) throw DecodingError("{0} must be a number", quoted(key));
    return value.template get<typename Document::number_float_t>();
}

template <typename Document>
const std::string& stringMember(const Document& object, std::string_view key) {
    const Document& value = member(object, key);
    if (!value.is_string()) throw DecodingError("{0} must be a text", quoted(key));
    return value.template get_ref<const std::string&>();
}

template <typename Document>
const Document& objectMember(const Document& object, std::string_view key) {
    const Document& value = member(object, key);
    if (!value.is_object()) throw DecodingError("{0} must be an object", quoted(key));
    return value;
}

template <typename Document>
const Document& arrayMember(const Document& object, std::string_view key) {
    const Document& value = member(object, key);
    if (!value.is_array()) throw DecodingError("{0} must be a list", quoted(key));
    return value;
}

template Json parseObject<Json>(std::string_view);
template DoubleJson parseObject<DoubleJson>(std::string_view);
template const Json& member(const Json&, std::string_view);
template const DoubleJson& member(const DoubleJson&, std::string_view);
template std::int64_t integerMember(const Json&, std::string_view);
template std::int64_t integerMember(const DoubleJson&, std::string_view);
template float numberMember(const Json&, std::string_view);
template double numberMember(const DoubleJson&, std::string_view);
template const std::string& stringMember(const Json&, std::string_view);
template const std::string& stringMember(const DoubleJson&, std::string_view);
template const Json& objectMember(const Json&, std::string_view);
template const DoubleJson& objectMember(const DoubleJson&, std::string_view);
template const Json& arrayMember(const Json&, std::string_view);
template const DoubleJson& arrayMember(const DoubleJson&, std::string_view);

}  // namespace quillmere::json
