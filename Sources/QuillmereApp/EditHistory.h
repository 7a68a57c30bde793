#pragma once

#include <QString>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "QuillmereCore/Generate/Aesthetics.h"

namespace quillmere {

// What is set beside the parameters where all settings of a sound are taken at once.
struct SoundSettings {
    QString seedText;
    double detail = 0;
};

// The settings before that and after it.
struct TakenSettings {
    SoundSettings before;
    SoundSettings after;
};

// The parameters as the user sees them.
struct Character {
    Aesthetics aesthetics;
    QString presetName;  // the preset they came from; empty when none
    // Of the step that led here; null for all others.
    std::shared_ptr<const TakenSettings> taken{};

    friend bool operator==(const Character&, const Character&) = default;
};

// Undo and redo of the parameters: whole states, the current one included. The oldest of more than 500 steps
// are forgotten.
class EditHistory {
public:
    explicit EditHistory(Character start) : current_(std::move(start)) {}

    [[nodiscard]] const Character& current() const { return current_; }
    [[nodiscard]] bool canUndo() const { return !past_.empty() || (open_ > 0 && beforeEdit_ != current_); }
    [[nodiscard]] bool canRedo() const { return !future_.empty(); }

    // All changes between begin and end are one step; pairs nest. An end without its begin does nothing.
    void begin();
    void end();
    // Nothing happens when next is the current state.
    void change(Character next);
    // False when there is nothing to go to. What an open edit has changed so far is a step of its own, and so
    // is what it changes from then on.
    bool undo();
    bool redo();

private:
    static constexpr std::size_t limit = 500;

    void remember(Character state);
    bool step(std::vector<Character>& from, std::vector<Character>& to);

    std::vector<Character> past_;    // oldest first
    std::vector<Character> future_;  // the next redo last
    Character current_;
    Character beforeEdit_;
    int open_ = 0;
};

}  // namespace quillmere
