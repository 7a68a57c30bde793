#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

namespace quillmere {

// The places of a pattern, a bit for each.
[[nodiscard]] consteval std::size_t placesIn(std::string_view text) {
    std::size_t found = 0;
    for (std::size_t at = 0; at + 2 < text.size(); ++at) {
        if (text[at] != '{' || text[at + 2] != '}' || text[at + 1] < '0' || text[at + 1] > '9') continue;
        found |= std::size_t{1} << static_cast<std::size_t>(text[at + 1] - '0');
    }
    return found;
}

// A text in English with the places "{0}", "{1}" … for so many arguments, which the compiler checks: each has
// one at least. Only a literal can be one, so that the catalogues find it in the sources.
template <std::size_t arguments>
class Pattern {
public:
    // A literal is a pattern.
    consteval Pattern(const char* text) : text_(text) {
        if (placesIn(text) != (std::size_t{1} << arguments) - 1)
            throw "The places of the pattern are not those of its arguments.";
    }
    [[nodiscard]] constexpr const char* text() const { return text_; }

private:
    const char* text_;
};

// As a Pattern, but {0} may be missing: "A file was left out."
template <std::size_t arguments>
class SingularPattern {
public:
    // A literal is a pattern.
    consteval SingularPattern(const char* text) : text_(text) {
        if ((placesIn(text) | 1U) != (std::size_t{1} << arguments) - 1)
            throw "The places of the pattern are not those of its arguments.";
    }
    [[nodiscard]] constexpr const char* text() const { return text_; }

private:
    const char* text_;
};

// A sentence or a phrase for people, in English, that a program can show in another language: a pattern and
// what stands in its places. Where a std::string is asked for it is the English text; nothing that is stored
// or read by programs is ever translated.
//
// A pattern is a whole sentence or a whole phrase, because other languages have another order.
class Message {
public:
    // What a catalogue has for a pattern: its singular or, where there is one and the count asks for it, its
    // plural; singular or plural themselves where it has nothing. plural may be null.
    using Lookup = const char* (*)(const char* singular, const char* plural, std::uint64_t count);

    Message() = default;

    // Arguments are texts, paths, whole numbers, other messages and the system's errors. Explicit, because
    // the catalogues are made of what stands in Message("…") and its like.
    template <typename... Arguments>
    explicit Message(Pattern<sizeof...(Arguments)> pattern, const Arguments&... arguments)
        : Message(pattern.text(), {}, 1, {of(arguments)...}) {}

    // The one or the other by the count, which {0} stands for; the arguments follow from {1} on.
    template <typename... Arguments>
    [[nodiscard]] static Message counted(std::int64_t count,
                                         SingularPattern<sizeof...(Arguments) + 1> singular,
                                         Pattern<sizeof...(Arguments) + 1> plural,
                                         const Arguments&... arguments) {
        return {singular.text(), plural.text(), count, {of(count), of(arguments)...}};
    }

    // A name, a value: the same in every language.
    [[nodiscard]] static Message verbatim(std::string text);
    // A text of a table, which says by translatable() that catalogues have it; without places.
    [[nodiscard]] static Message fromTable(std::string_view text) { return {text, {}, 1, {}}; }
    // What the system says of an error.
    [[nodiscard]] static Message system(const std::error_code& error);

    [[nodiscard]] const std::string& english() const& noexcept { return english_; }
    [[nodiscard]] std::string english() && noexcept { return std::move(english_); }
    // The English text is what a message is. By value: a reference to that of a message which nobody keeps
    // would be one to nothing.
    operator std::string() const& { return english_; }
    operator std::string() && noexcept { return std::move(english_); }
    [[nodiscard]] bool empty() const noexcept { return english_.empty(); }

    // In the language of lookup. Threads: as lookup.
    [[nodiscard]] std::string translated(Lookup lookup) const;

    friend bool operator==(const Message& a, const Message& b) { return a.english_ == b.english_; }
    friend bool operator==(const Message& a, std::string_view english) { return a.english_ == english; }
    friend std::ostream& operator<<(std::ostream& out, const Message& message);

private:
    Message(std::string_view singular, std::string_view plural, std::int64_t count,
            std::vector<Message> arguments);

    [[nodiscard]] static Message of(const Message& message) { return message; }
    [[nodiscard]] static Message of(const std::error_code& error) { return system(error); }
    [[nodiscard]] static Message of(const std::filesystem::path& path);
    template <std::convertible_to<std::string_view> String>
    requires(!std::same_as<String, Message>) [[nodiscard]] static Message of(const String& text) {
        return verbatim(std::string(std::string_view(text)));
    }
    template <std::integral Number>
    requires(!std::same_as<Number, bool> && !std::same_as<Number, char>) [[nodiscard]] static Message
        of(Number number) {
        return verbatim(std::to_string(number));
    }

    std::string english_;
    std::string singular_;    // empty: nothing to translate
    std::string plural_;      // empty: there is none
    std::int64_t count_ = 1;  // of the plural
    std::vector<Message> arguments_;
};

// Marks a literal of a table for the catalogues; Message::fromTable shows it.
[[nodiscard]] consteval const char* translatable(const char* text) {
    return text;
}

}  // namespace quillmere
