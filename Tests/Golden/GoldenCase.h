#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Golden/GoldenInput.h"

// Runs reference vectors: files of cases in the format of FORMAT.md. A case names an operation of the
// library, its input and the expected results with their tolerance.
namespace quillmere::golden {

struct Case {
    std::string name;
    std::string operation;
    Json input;
    Json expect;
    Json tolerance;
};

// The results of one operation by name. A case may expect any of them, but no others.
class Outputs {
public:
    using Array = std::vector<double>;
    using Output = std::variant<Json, Array>;

    // Integers, numbers, texts, booleans, null, and lists and objects of them.
    void value(std::string name, Json value) { outputs_[std::move(name)] = std::move(value); }
    // Floating-point arrays.
    void array(std::string name, std::span<const float> values);
    void array(std::string name, std::span<const double> values);

    // Null when there is no such result.
    [[nodiscard]] const Output* find(std::string_view name) const;

private:
    std::map<std::string, Output, std::less<>> outputs_;
};

// Computes everything that a case of one operation may expect. An exception fails the case.
using Operation = std::function<Outputs(const Case&)>;

// The operations of an area as one implementation of it offers them.
struct Suite {
    std::string name;
    std::map<std::string, Operation, std::less<>> operations;
};

// An area with all its implementations; each has to meet every vector.
struct Area {
    std::string name;  // as in the files
    std::vector<Suite> suites;
};

// Runs one case. Empty when every expected result is met; otherwise one line per disagreement.
[[nodiscard]] std::vector<std::string> failures(const Case& vector, const Suite& suite);

// Something to test: one case in one suite, or one fact about the files.
struct Check {
    std::string suite;
    std::string name;
    std::function<std::vector<std::string>()> failures;
};

// One check per case and suite for the .json files directly in folder, and one that fails for a folder
// without any, for each file that cannot be read or is of no known area, and for each area of required
// without a file. areas must outlive the checks.
[[nodiscard]] std::vector<Check> checks(const std::filesystem::path& folder, std::span<const Area> areas,
                                        std::span<const std::string> required = {});

}  // namespace quillmere::golden
