#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillmere::testing {

// An SFZ file as a strict reader takes it: comments, <group> and <region> headers, and opcodes that it knows,
// each with a value. Throws std::runtime_error for anything else.
class SFZDocument {
public:
    using Opcodes = std::map<std::string, std::string>;

    explicit SFZDocument(const std::string& text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            readLine(line);
        if (regions_.empty()) throw std::runtime_error("no region");
    }

    // The regions with the opcodes of their groups.
    [[nodiscard]] const std::vector<Opcodes>& regions() const { return regions_; }
    // Those that a note plays at the given number of times it was played before.
    [[nodiscard]] std::vector<std::string> played(int key, int velocity, int before) const {
        std::vector<std::string> samples;
        for (const Opcodes& region : regions_) {
            const auto number = [&](const char* name) { return std::stoi(region.at(name)); };
            if (number("key") == key && number("lovel") <= velocity && velocity <= number("hivel") &&
                before % number("seq_length") == number("seq_position") - 1)
                samples.push_back(region.at("sample"));
        }
        return samples;
    }

private:
    void readLine(const std::string& line) {
        if (line.starts_with("//")) return;
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            if (word == "<group>" || word == "<region>") {
                open(word);
            } else {
                readOpcode(word);
            }
        }
    }
    void open(const std::string& header) {
        if (header == "<group>") group_.clear();
        isRegion_ = header == "<region>";
        if (isRegion_) regions_.push_back(group_);
    }
    void readOpcode(const std::string& word) {
        static const std::set<std::string> known{"key",        "lovel",        "hivel", "loop_mode",
                                                 "seq_length", "seq_position", "sample"};
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos || equals + 1 == word.size()) throw std::runtime_error(word);
        const std::string name = word.substr(0, equals);
        if (!known.contains(name)) throw std::runtime_error("unknown opcode " + name);
        Opcodes& target = isRegion_ ? regions_.back() : group_;
        if (!target.emplace(name, word.substr(equals + 1)).second) throw std::runtime_error("twice: " + name);
    }

    Opcodes group_;
    bool isRegion_ = false;
    std::vector<Opcodes> regions_;
};

}  // namespace quillmere::testing
