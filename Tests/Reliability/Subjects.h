#pragma once

#include <functional>
#include <ostream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Reliability/ForkedCommand.h"
#include "Reliability/Studio.h"

namespace quillmere::testing {

// One command of the command line, and what must hold after a run of it, however it ended.
struct Subject {
    const char* name;
    bool startsWithModel;
    std::function<std::vector<std::string>(const Studio&)> arguments;
    // before: what the run began with. ended: nothing if it was killed.
    std::function<void(const Studio& before, const Studio& after, const ForkedCommand::Result* ended)> check;

    // Makes a studio what the command begins with.
    void prepare(Studio& studio) const;
    // The same command again, with nothing in its way: it must find all well and leave nothing behind.
    void expectNextRunClearsUp(const Studio& studio) const;

    friend void PrintTo(const Subject& subject, std::ostream* stream) { *stream << subject.name; }
};

// Learning a folder, learning it again, generating, auditioning, removing a model.
[[nodiscard]] const std::vector<Subject>& subjects();
[[nodiscard]] const Subject& subjectNamed(std::string_view name);

// What runs write that nothing happens to.
struct Undisturbed {
    static const Undisturbed& get();

    Studio learned;
    std::string oldWeights, newWeights;
    std::set<std::string> variations;     // contents of the files of Studio::generate(2), of the old model
    std::set<std::string> newVariations;  // of the new model
    std::string audition;

private:
    Undisturbed();
};

// A command that failed by itself says so in one line, which a person can read.
[[nodiscard]] bool endsWithSentence(const ForkedCommand::Result& result);

}  // namespace quillmere::testing
