#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace quillmere {

// Which of a text's forms goes with a count, as the header of a catalogue says it in C: "n != 1". The rule is
// evaluated as C does with 64 bits without a sign, but that a division by zero gives zero.
//
// Threads: a rule does not change.
class PluralRule {
public:
    // Two forms, the first for one: as in English, and what a catalogue means that says nothing.
    PluralRule();

    // Of the header's field, "nplurals=2; plural=(n != 1);". Nothing for any other text, for no forms or more
    // than any language has, and for an expression longer or deeper than any language needs.
    [[nodiscard]] static std::optional<PluralRule> parse(std::string_view field);

    [[nodiscard]] std::size_t forms() const noexcept { return forms_; }
    // From 0; below forms(), whatever the expression gives: then the first one.
    [[nodiscard]] std::size_t form(std::uint64_t count) const;

private:
    friend class PluralParser;

    enum class Operation : std::uint8_t {
        number,
        count,
        negation,
        product,
        quotient,
        remainder,
        sum,
        difference,
        less,
        lessOrEqual,
        greater,
        greaterOrEqual,
        equal,
        unequal,
        conjunction,
        disjunction,
        choice,
    };
    struct Node {
        Operation operation;
        std::uint64_t number = 0;             // of Operation::number
        std::array<std::size_t, 3> operands;  // indices of nodes, as many as the operation has
    };

    [[nodiscard]] std::uint64_t value(std::size_t node, std::uint64_t count) const;
    [[nodiscard]] static std::uint64_t combined(Operation operation, std::uint64_t a, std::uint64_t b);

    std::size_t forms_ = 2;
    std::vector<Node> nodes_;
    std::size_t root_ = 0;
};

}  // namespace quillmere
