#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Origin/Recipe.h"
#include "QuillmereCore/Util/Message.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {

// Where the recipes of a job go.
struct RecipeCarriers {
    std::optional<std::filesystem::path> journal{};   // its file; Journal::place() unless someone wants none
    bool embedded = false;                            // into the files themselves
    std::optional<std::filesystem::path> document{};  // a file to append lines to, of the journal's form
};

// Keeps the recipe of each file of a job. Outlives the job that has its hooks.
class RecipeKeeper {
public:
    RecipeKeeper(RecipeCarriers carriers, RecipeBase base);

    // To be handed to SampleGenerator::generate; origin is left empty.
    [[nodiscard]] GenerationHooks hooks();

    // Why a recipe is missing from the journal, a sentence; nothing if none is. The files are there all the
    // same: a journal that cannot be written is no reason to lose them. What cannot be written to the
    // document, in contrast, ends the job with a FileError.
    [[nodiscard]] std::optional<Message> journalProblem() const;

private:
    void keep(const GenerationHooks::WrittenFile& file);
    void keepInJournal(const JournalEntry& entry);

    const RecipeBase base_;
    const bool embedded_;
    std::optional<Journal> journal_;
    std::optional<Journal> document_;
    mutable Mutex mutex_;
    std::optional<Message> problem_ QUILLMERE_GUARDED_BY(mutex_);
};

}  // namespace quillmere
