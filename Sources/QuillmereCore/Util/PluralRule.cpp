#include "QuillmereCore/Util/PluralRule.h"

#include <algorithm>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

// The languages of the world do with six forms, six choices and thirty operations.
constexpr std::uint64_t maxForms = 10;
constexpr std::size_t maxNodes = 200;
constexpr int maxDepth = 40;

constexpr std::string_view blanks = " \t\n";

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

}  // namespace

// Takes an expression apart, from left to right. A method gives the node of what it has read, or nothing.
class PluralParser {
public:
    using Operation = PluralRule::Operation;
    using Parsed = std::optional<std::size_t>;

    explicit PluralParser(std::string_view text) : rest_(text) {}

    // The whole text.
    std::optional<PluralRule> rule(std::size_t forms) {
        const Parsed root = choice();
        skipBlanks();
        if (!root || !rest_.empty()) return std::nullopt;
        PluralRule rule;
        rule.forms_ = forms;
        rule.nodes_ = std::move(nodes_);
        rule.root_ = *root;
        return rule;
    }

private:
    struct Binary {
        std::string_view sign;
        int rank;  // the higher one binds closer
        Operation operation;
    };
    // A sign before those that it begins with.
    static constexpr std::array binaries{
        Binary{"||", 0, Operation::disjunction}, Binary{"&&", 1, Operation::conjunction},
        Binary{"==", 2, Operation::equal},       Binary{"!=", 2, Operation::unequal},
        Binary{"<=", 3, Operation::lessOrEqual}, Binary{">=", 3, Operation::greaterOrEqual},
        Binary{"<", 3, Operation::less},         Binary{">", 3, Operation::greater},
        Binary{"+", 4, Operation::sum},          Binary{"-", 4, Operation::difference},
        Binary{"*", 5, Operation::product},      Binary{"/", 5, Operation::quotient},
        Binary{"%", 5, Operation::remainder}};
    static constexpr int closest = 5;

    // How deep what is being read is nested.
    class Level {
    public:
        explicit Level(int& depth) : depth_(++depth) {}
        ~Level() { --depth_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;
        [[nodiscard]] bool tooDeep() const { return depth_ > maxDepth; }

    private:
        int& depth_;
    };

    void skipBlanks() { rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size())); }

    bool take(std::string_view sign) {
        skipBlanks();
        if (!rest_.starts_with(sign)) return false;
        rest_.remove_prefix(sign.size());
        return true;
    }

    Parsed add(PluralRule::Node node) {
        if (nodes_.size() == maxNodes) return std::nullopt;
        nodes_.push_back(node);
        return nodes_.size() - 1;
    }

    Parsed choice() {
        const Level level(depth_);
        if (level.tooDeep()) return std::nullopt;
        const Parsed condition = binary(0);
        if (!condition || !take("?")) return condition;
        const Parsed yes = choice();
        if (!yes || !take(":")) return std::nullopt;
        const Parsed no = choice();
        if (!no) return std::nullopt;
        return add({Operation::choice, 0, {*condition, *yes, *no}});
    }

    const Binary* takeBinary(int rank) {
        const auto* const found = std::ranges::find_if(
            binaries, [&](const Binary& binary) { return binary.rank == rank && take(binary.sign); });
        return found == binaries.end() ? nullptr : found;
    }

    Parsed binary(int rank) {
        if (rank > closest) return unary();
        Parsed left = binary(rank + 1);
        while (left) {
            const Binary* const found = takeBinary(rank);
            if (found == nullptr) break;
            const Parsed right = binary(rank + 1);
            if (!right) return std::nullopt;
            left = add({found->operation, 0, {*left, *right, 0}});
        }
        return left;
    }

    Parsed unary() {
        const Level level(depth_);
        if (level.tooDeep()) return std::nullopt;
        if (take("!")) {
            const Parsed operand = unary();
            return operand ? add({Operation::negation, 0, {*operand, 0, 0}}) : std::nullopt;
        }
        if (take("(")) {
            const Parsed inner = choice();
            return inner && take(")") ? inner : std::nullopt;
        }
        if (take("n")) return add({Operation::count, 0, {}});
        return number();
    }

    Parsed number() {
        const auto end = std::ranges::find_if_not(rest_, isDigit);
        const auto length = static_cast<std::size_t>(end - rest_.begin());
        const std::optional<std::uint64_t> value = Text::parseUnsigned(rest_.substr(0, length));
        if (!value) return std::nullopt;
        rest_.remove_prefix(length);
        return add({Operation::number, *value, {}});
    }

    std::string_view rest_;
    std::vector<PluralRule::Node> nodes_;
    int depth_ = 0;
};

PluralRule::PluralRule()
    : nodes_{{Operation::count, 0, {}}, {Operation::number, 1, {}}, {Operation::unequal, 0, {0, 1, 0}}},
      root_(2) {}

std::optional<PluralRule> PluralRule::parse(std::string_view field) {
    constexpr std::string_view formsField = "nplurals=";
    constexpr std::string_view ruleField = "plural=";
    const std::size_t border = field.find(';');
    if (!field.starts_with(formsField) || border == std::string_view::npos) return std::nullopt;
    const auto forms = Text::parseUnsigned(field.substr(formsField.size(), border - formsField.size()));
    if (!forms || *forms == 0 || *forms > maxForms) return std::nullopt;

    std::string_view rule = field.substr(border + 1);
    rule.remove_prefix(std::min(rule.find_first_not_of(blanks), rule.size()));
    if (!rule.starts_with(ruleField)) return std::nullopt;
    rule.remove_prefix(ruleField.size());
    return PluralParser(rule.substr(0, rule.find(';'))).rule(static_cast<std::size_t>(*forms));
}

std::size_t PluralRule::form(std::uint64_t count) const {
    const std::uint64_t form = value(root_, count);
    return form < forms_ ? static_cast<std::size_t>(form) : 0;
}

std::uint64_t PluralRule::value(std::size_t node, std::uint64_t count) const {
    const auto& [operation, number, operands] = nodes_[node];
    switch (operation) {
        case Operation::number:
            return number;
        case Operation::count:
            return count;
        case Operation::negation:
            return value(operands[0], count) == 0 ? 1 : 0;
        case Operation::choice:
            return value(operands[value(operands[0], count) != 0 ? 1 : 2], count);
        default:
            return combined(operation, value(operands[0], count), value(operands[1], count));
    }
}

std::uint64_t PluralRule::combined(Operation operation, std::uint64_t a, std::uint64_t b) {
    switch (operation) {
        case Operation::product:
            return a * b;
        case Operation::quotient:
            return b == 0 ? 0 : a / b;
        case Operation::remainder:
            return b == 0 ? 0 : a % b;
        case Operation::sum:
            return a + b;
        case Operation::difference:
            return a - b;
        case Operation::less:
            return a < b ? 1 : 0;
        case Operation::lessOrEqual:
            return a <= b ? 1 : 0;
        case Operation::greater:
            return a > b ? 1 : 0;
        case Operation::greaterOrEqual:
            return a >= b ? 1 : 0;
        case Operation::equal:
            return a == b ? 1 : 0;
        case Operation::unequal:
            return a != b ? 1 : 0;
        case Operation::conjunction:
            return a != 0 && b != 0 ? 1 : 0;
        case Operation::disjunction:
            return a != 0 || b != 0 ? 1 : 0;
        default:
            fatal("not an operation of two numbers");
    }
}

}  // namespace quillmere
