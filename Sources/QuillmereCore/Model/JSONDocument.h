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

// text between quotation marks, for messages.
[[nodiscard]] std::string quoted(std::string_view text);

[[nodiscard]] Json parseObject(std::string_view text);

// The value of a key that must be there.
[[nodiscard]] const Json& member(const Json& object, const char* key);

// As member, with the value's type required. An integer is accepted where a float is asked for.
[[nodiscard]] std::int64_t integerMember(const Json& object, const char* key);
[[nodiscard]] float floatMember(const Json& object, const char* key);
[[nodiscard]] const std::string& stringMember(const Json& object, const char* key);
[[nodiscard]] const Json& objectMember(const Json& object, const char* key);
[[nodiscard]] const Json& arrayMember(const Json& object, const char* key);

}  // namespace quillmere::json
