#pragma once

#include <QString>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "QuillmereApp/Environment.h"
#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Origin/RecipeKeeper.h"

namespace quillmere {

// How the window's runs are noted in the journal, as those of the commands are. A copy of what it needs of
// the environment, for work in the background.
class Noting {
public:
    explicit Noting(const Environment& environment)
        : file_(environment.journalFile), isOn_(environment.journalIsOn) {}

    // Where a run that begins notes its files. Where it cannot be told whether the user wants that, nowhere,
    // and problem becomes the sentence to tell.
    [[nodiscard]] RecipeCarriers carriers(QString& problem) const;
    // The sentence to tell when keeper could not note all files; empty when it could.
    [[nodiscard]] static QString problemOf(const RecipeKeeper& keeper);
    // The same for that reason.
    [[nodiscard]] static QString notNoted(const Message& reason);

    // Notes a set that is only heard. Returns the sentence to tell when that fails, else nothing.
    [[nodiscard]] QString note(const JournalSet& set) const;

private:
    std::optional<std::filesystem::path> file_;
    std::function<bool()> isOn_;
};

}  // namespace quillmere
