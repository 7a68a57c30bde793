#include "Golden/GoldenCase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fstream>
#include <set>
#include <stdexcept>

namespace quillmere::golden {
namespace {

// Enough to see what went wrong in an array.
constexpr std::size_t maxLinesPerOutput = 8;

// The shortest text that reads back as value.
std::string shown(double value) {
    std::array<char, 32> text;
    const std::to_chars_result result = std::to_chars(text.data(), text.data() + text.size(), value);
    return {text.data(), result.ptr};
}

struct Tolerance {
    double abs = 0;
    double rel = 0;

    [[nodiscard]] double at(double expected) const { return abs + rel * std::abs(expected); }
    [[nodiscard]] bool accepts(double got, double expected) const {
        return std::abs(got - expected) <= at(expected);
    }
};

Tolerance toleranceOf(const Case& vector, const std::string& output) {
    const Json& general = vector.tolerance;
    const bool special = general.contains("keys") && general.at("keys").contains(output);
    const Json& entry = special ? general.at("keys").at(output) : general;
    return {entry.at("abs").get<double>(), entry.at("rel").get<double>()};
}

// Compares results with their expectation and collects what disagrees.
class Comparison {
public:
    explicit Comparison(Tolerance tolerance) : tolerance_(tolerance) {}

    void compare(const std::string& where, const Outputs::Output& got, const Json& expected) {
        if (isArray(expected)) {
            compareArray(where, numbers(where, got), expected);
        } else if (const auto* const values = std::get_if<Outputs::Array>(&got)) {
            compareJSON(where, Json(*values), expected);
        } else {
            compareJSON(where, std::get<Json>(got), expected);
        }
    }

    [[nodiscard]] std::vector<std::string> takeLines() {
        if (lines_.size() > maxLinesPerOutput) {
            const std::size_t more = lines_.size() - maxLinesPerOutput;
            lines_.resize(maxLinesPerOutput);
            lines_.push_back("... and " + std::to_string(more) + " more");
        }
        return std::move(lines_);
    }

private:
    static bool isArray(const Json& expected) {
        return expected.is_object() && expected.contains("count") && expected.contains("values");
    }

    static Outputs::Array numbers(const std::string& where, const Outputs::Output& got) {
        if (const auto* const values = std::get_if<Outputs::Array>(&got)) return *values;
        const Json& json = std::get<Json>(got);
        const bool numeric = json.is_array() && std::all_of(json.begin(), json.end(), [](const Json& entry) {
                                 return entry.is_number();
                             });
        if (!numeric) throw std::runtime_error(where + ": an array is expected, got " + json.dump());
        return json.get<Outputs::Array>();
    }

    void compareNumber(const std::string& where, double got, double expected, Tolerance tolerance) {
        if (tolerance.accepts(got, expected)) return;
        lines_.push_back(where + ": got " + shown(got) + ", expected " + shown(expected) + ", off by " +
                         shown(std::abs(got - expected)) + ", allowed " + shown(tolerance.at(expected)) +
                         " (abs " + shown(tolerance.abs) + ", rel " + shown(tolerance.rel) + ")");
    }

    void compareArray(const std::string& where, const Outputs::Array& got, const Json& expected) {
        for (const auto& member : expected.items()) {
            if (!std::set<std::string>{"count", "values", "at", "sum", "sumTol", "sumSq", "sumSqTol"}
                     .contains(member.key())) {
                throw std::runtime_error(where + ": unknown member " + member.key() + " of an array");
            }
        }
        const auto count = expected.at("count").get<std::size_t>();
        if (got.size() != count) {
            lines_.push_back(where + ": got " + std::to_string(got.size()) + " values, expected " +
                             std::to_string(count));
            return;
        }
        compareSelected(where, got, expected);
        if (expected.contains("at") || expected.contains("sum") || expected.contains("sumSq")) {
            compareSums(where, got, expected);
        }
    }

    void compareSelected(const std::string& where, const Outputs::Array& got, const Json& expected) {
        const Json& values = expected.at("values");
        const bool selected = expected.contains("at");
        if (values.size() != (selected ? expected.at("at").size() : got.size())) {
            throw std::runtime_error(where + ": the number of values does not fit");
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            const std::size_t index = selected ? expected.at("at").at(i).get<std::size_t>() : i;
            compareNumber(where + "[" + std::to_string(index) + "]", got.at(index),
                          values.at(i).get<double>(), tolerance_);
        }
    }

    void compareSums(const std::string& where, const Outputs::Array& got, const Json& expected) {
        double sum = 0, sumOfSquares = 0;
        for (const double value : got) {
            sum += value;
            sumOfSquares += value * value;
        }
        compareNumber(where + " sum", sum, expected.at("sum").get<double>(),
                      {.abs = expected.at("sumTol").get<double>()});
        compareNumber(where + " sum of squares", sumOfSquares, expected.at("sumSq").get<double>(),
                      {.abs = expected.at("sumSqTol").get<double>()});
    }

    void compareJSON(const std::string& where, const Json& got, const Json& expected) {
        if (isArray(expected)) {
            compareArray(where, numbers(where, got), expected);
        } else if (expected.is_object() && got.is_object()) {
            compareMembers(where, got, expected);
        } else if (expected.is_array() && got.is_array()) {
            compareLists(where, got, expected);
        } else if (expected.is_number_float() && got.is_number()) {
            compareNumber(where, got.get<double>(), expected.get<double>(), tolerance_);
        } else if (got != expected) {
            lines_.push_back(where + ": got " + got.dump() + ", expected " + expected.dump());
        }
    }

    void compareMembers(const std::string& where, const Json& got, const Json& expected) {
        for (const auto& member : expected.items()) {
            const std::string name = where + "." + member.key();
            if (got.contains(member.key())) {
                compareJSON(name, got.at(member.key()), member.value());
            } else {
                lines_.push_back(name + ": got nothing, expected " + member.value().dump());
            }
        }
    }

    void compareLists(const std::string& where, const Json& got, const Json& expected) {
        if (got.size() != expected.size()) {
            lines_.push_back(where + ": got " + std::to_string(got.size()) + " entries, expected " +
                             std::to_string(expected.size()));
            return;
        }
        for (std::size_t i = 0; i < got.size(); ++i) {
            compareJSON(where + "[" + std::to_string(i) + "]", got.at(i), expected.at(i));
        }
    }

    Tolerance tolerance_;
    std::vector<std::string> lines_;
};

std::vector<std::string> disagreements(const Case& vector, const Outputs& outputs) {
    std::vector<std::string> lines;
    for (const auto& expected : vector.expect.items()) {
        const Outputs::Output* const got = outputs.find(expected.key());
        if (got == nullptr) {
            lines.push_back(expected.key() + ": " + vector.operation + " has no such result");
            continue;
        }
        Comparison comparison(toleranceOf(vector, expected.key()));
        comparison.compare(expected.key(), *got, expected.value());
        const std::vector<std::string> found = comparison.takeLines();
        lines.insert(lines.end(), found.begin(), found.end());
    }
    return lines;
}

struct VectorFile {
    std::string area;
    std::vector<Case> cases;
};

VectorFile readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot be opened");
    const Json json = Json::parse(stream);
    if (json.at("version") != 1) throw std::runtime_error("unknown version " + json.at("version").dump());
    VectorFile file{.area = json.at("area").get<std::string>(), .cases = {}};
    std::set<std::string> names;
    for (const Json& entry : json.at("cases")) {
        file.cases.push_back({.name = entry.at("name").get<std::string>(),
                              .operation = entry.at("op").get<std::string>(),
                              .input = entry.at("input"),
                              .expect = entry.at("expect"),
                              .tolerance = entry.at("tolerance")});
        if (!names.insert(file.cases.back().name).second) {
            throw std::runtime_error("two cases are named " + file.cases.back().name);
        }
    }
    if (file.cases.empty()) throw std::runtime_error("holds no cases");
    return file;
}

Check failing(std::string name, std::string line) {
    return {"Files", std::move(name), [line = std::move(line)] { return std::vector{line}; }};
}

std::vector<std::filesystem::path> vectorFiles(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".json") files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Adds a check per case and suite and returns the name of the area.
std::string addFile(const std::filesystem::path& path, std::span<const Area> areas,
                    std::vector<Check>& checks) {
    VectorFile file = readFile(path);
    const auto area =
        std::find_if(areas.begin(), areas.end(), [&](const Area& a) { return a.name == file.area; });
    if (area == areas.end()) throw std::runtime_error("unknown area " + file.area);
    for (const Case& vector : file.cases) {
        for (const Suite& suite : area->suites) {
            checks.push_back({suite.name, vector.name, [vector, &suite] { return failures(vector, suite); }});
        }
    }
    return file.area;
}

}  // namespace

void Outputs::array(std::string name, std::span<const float> values) {
    outputs_[std::move(name)] = Array(values.begin(), values.end());
}

void Outputs::array(std::string name, std::span<const double> values) {
    outputs_[std::move(name)] = Array(values.begin(), values.end());
}

const Outputs::Output* Outputs::find(std::string_view name) const {
    const auto found = outputs_.find(name);
    return found == outputs_.end() ? nullptr : &found->second;
}

std::vector<std::string> failures(const Case& vector, const Suite& suite) {
    const auto operation = suite.operations.find(vector.operation);
    if (operation == suite.operations.end()) return {"unknown operation " + vector.operation};
    if (!vector.expect.is_object() || vector.expect.empty()) return {"nothing is expected"};
    try {
        return disagreements(vector, operation->second(vector));
    } catch (const std::exception& error) {
        return {vector.operation + " threw: " + error.what()};
    }
}

std::vector<Check> checks(const std::filesystem::path& folder, std::span<const Area> areas,
                          std::span<const std::string> required) {
    std::vector<Check> result;
    std::set<std::string> found;
    const std::vector<std::filesystem::path> files = vectorFiles(folder);
    if (files.empty()) result.push_back(failing("AreThere", folder.string() + " holds no reference vectors"));
    for (const std::filesystem::path& file : files) {
        try {
            found.insert(addFile(file, areas, result));
        } catch (const std::exception& error) {
            result.push_back(failing(file.filename().string(), file.string() + ": " + error.what()));
        }
    }
    for (const std::string& area : required) {
        if (!found.contains(area)) result.push_back(failing(area, "no vectors of area " + area));
    }
    return result;
}

}  // namespace quillmere::golden
