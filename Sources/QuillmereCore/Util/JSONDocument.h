#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

// Reading JSON documents with errors that say what is wrong. For .cpp files only: it brings the JSON library
// with it. What cannot be read throws DecodingError.
namespace quillmere::json {

// Fractional numbers are single precision, so that a float is written in the few digits that identify it and
// read back as the same float. Integers are 64-bit.
using Json =
    nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;
// Fractional numbers are double precision.
using DoubleJson = nlohmann::json;

// text between quotation marks, for messages.
[[nodiscard]] std::string quoted(std::string_view text);

// What follows is there for these two kinds of documents.

template <typename Document = Json>
[[nodiscard]] Document parseObject(std::string_view text);

// The value of a key that must be there.
template <typename Document>
[[nodiscard]] const Document& member(const Document& object, std::string_view key);

// As member, with the value's type required. An integer is accepted where a number is asked for.
template <typename Document>
[[nodiscard]] std::int64_t integerMember(const Document& object, std::string_view key);
template <typename Document>
[[nodiscard]] typename Document::number_float_t numberMember(const Document& object, std::string_view key);
template <typename Document>
[[nodiscard]] const std::string& stringMember(const Document& object, std::string_view key);
template <typename Document>
[[nodiscard]] const Document& objectMember(const Document& object, std::string_view key);
template <typename Document>
[[nodiscard]] const Document& arrayMember(const Document& object, std::string_view key);

}  // namespace quillmere::json
