#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Origin/Recipe.h"
#include "QuillmereCore/Util/Message.h"

// From a file to its recipe, and from a recipe to its model. Any thread.
namespace quillmere {

// What is known of where a file comes from.
struct KnownFile {
    enum class Carrier {
        chunk,     // the recipe is in the file
        journal,   // the journal has an entry with its bytes, or else with its sound
        document,  // the file is JSON: one recipe, or one per line, of the form of Recipe or JournalEntry
    };
    std::filesystem::path file;
    Carrier carrier = Carrier::chunk;
    std::vector<Recipe> recipes;  // one; of a document, one or more; none where there is a problem
    FileDigests digests;          // sound is empty where nobody had to decode it; both are for a document
    std::optional<JournalEntry> entry;  // of the journal, where that has it
    std::string chunk;                  // the text of the recipe in the file
    Message problem;                    // why there is no recipe: a sentence that names the file
    bool isUnknown = false;             // the problem is that nothing is known of it
};

// In the order of files. A recipe in the file goes before the journal. journal may be null. Trouble with one
// file is that file's problem. Throws FileError about the journal, and CancellationError.
[[nodiscard]] std::vector<KnownFile> lookUp(std::span<const std::filesystem::path> files,
                                            const Journal* journal, const std::stop_token& stop = {});

// The recipes of a JSON file, as KnownFile::Carrier::document says; at least one. Throws FileError, or
// RecipeError that names the file and the line.
[[nodiscard]] std::vector<Recipe> readRecipes(const std::filesystem::path& file);

// The SHA-256 of a file's bytes. Throws AudioIOError (unreadable) and CancellationError.
[[nodiscard]] std::string fileDigest(const std::filesystem::path& file, const std::stop_token& stop = {});

// The model of a recipe among those that are stored.
struct FoundModel {
    std::optional<ModelBundle> bundle;  // nothing: there is none
    std::filesystem::path folder;       // of the model
    // Where there is none: the folder that has the corpus's name and fingerprint holds another model, which
    // was learned in its place.
    bool hasChanged = false;
};
// Looks first where the recipe's corpus has its model, then at all models of root. Models that cannot be
// opened are passed over. Throws FileError when root cannot be read, and CancellationError.
[[nodiscard]] FoundModel findModel(const Recipe& recipe, const std::filesystem::path& root,
                                   const std::stop_token& stop = {});
// Throws RecipeError (unusable) unless the recipe's latent vector has the model's size and its sources are
// clips of the model.
void requireFit(const Recipe& recipe, const ModelBundle& model);
// The sounds of a model's clips, for detail: those that a file with this basis was made of. Where these are
// gone, or nothing is known of any, what is there of the folder's and those that were kept with the model, in
// this order. None for noise. found: with a bundle. Throws CancellationError, and FileError and AudioIOError
// for the system's trouble.
[[nodiscard]] ClipSounds learnedSounds(const FoundModel& found, DetailBasis basis,
                                       const std::stop_token& stop = {});
// Why there is none, a sentence without the file's name.
[[nodiscard]] Message missingModelText(const Recipe& recipe, const FoundModel& found,
                                       const std::filesystem::path& root);

}  // namespace quillmere
