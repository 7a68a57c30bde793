#include "QuillmereCore/Origin/RecipeLookup.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "QuillmereCore/Audio/ByteSource.h"
#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/JSONDocument.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using Reader = json::DoubleJson;

constexpr std::int64_t longestDocument = std::int64_t{1} << 30;  // bytes: hundreds of thousands of recipes

// Runs work that reads a file byte by byte; its trouble becomes that of the file.
template <typename Work>
auto reading(const fs::path& file, const Work& work) {
    try {
        return work();
    } catch (const ReadError& error) {
        throw AudioIOError::unreadable(file, error.phrase(), error.isSystemTrouble());
    }
}

// Every byte in turn.
template <typename Take>
void readAll(const fs::path& file, const std::stop_token& stop, const Take& take) {
    reading(file, [&] {
        ByteSource bytes(file, true, stop, {});
        std::vector<std::byte> piece(std::size_t{1} << 16);
        for (std::int64_t at = 0; at < bytes.size();) {
            const std::size_t count = bytes.readAt(at, piece);
            if (count == 0) break;
            take(std::span(piece).first(count));
            at += static_cast<std::int64_t>(count);
            bytes.progress();
        }
    });
}

bool isDocument(const fs::path& file) {
    return reading(file, [&] {
        ByteSource bytes(file, true, {}, {});
        std::array<std::byte, 64> start{};
        const std::size_t count = bytes.readAt(0, start);
        const std::string_view text(reinterpret_cast<const char*>(start.data()), count);
        const std::size_t first = text.find_first_not_of(" \t\r\n");
        return first != std::string_view::npos && text[first] == '{';
    });
}

std::string readDocument(const fs::path& file) {
    std::string text;
    readAll(file, {}, [&](std::span<const std::byte> bytes) {
        text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        if (static_cast<std::int64_t>(text.size()) > longestDocument)
            throw FileError(file, std::make_error_code(std::errc::file_too_large));
    });
    return text;
}

// A recipe by itself, or one in an object that has it, as a journal's entry.
Recipe decodeEither(std::string_view text) {
    Reader object;
    try {
        object = json::parseObject<Reader>(text);
    } catch (const DecodingError& error) {
        throw RecipeError(RecipeError::Kind::damaged, "the recipe is damaged: {0}", error.message());
    }
    const auto inner = object.find("recipe");
    return inner == object.end() ? decodeRecipe(text) : decodeRecipe(inner->dump());
}

bool isBlank(std::string_view text) {
    return text.find_first_not_of(" \t\r") == std::string_view::npos;
}

std::vector<Recipe> decodeLines(std::string_view text, const fs::path& file) {
    std::vector<Recipe> recipes;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (isBlank(line)) continue;
        try {
            recipes.push_back(decodeEither(line));
        } catch (const RecipeError& error) {
            throw RecipeError(error.kind(), "{0}, line {1}: {2}", file, number, error.message());
        }
    }
    return recipes;
}

void decodeChunk(KnownFile& known) {
    known.carrier = KnownFile::Carrier::chunk;
    try {
        known.recipes = {decodeRecipe(known.chunk)};
    } catch (const RecipeError& error) {
        throw error.in(known.file);
    }
}

std::string soundOf(const fs::path& file, const std::stop_token& stop) {
    const AudioIO::MonoAudio audio = AudioIO::readMono(file, {.stop = stop, .followsLinks = true});
    return soundDigest(audio.samples, static_cast<std::int64_t>(audio.sampleRate));
}

// All that the file itself tells.
KnownFile lookInto(const fs::path& file, const std::stop_token& stop) {
    KnownFile known;
    known.file = file;
    try {
        if (isDocument(file)) {
            known.carrier = KnownFile::Carrier::document;
            known.recipes = readRecipes(file);
            return known;
        }
        known.digests.bytes = fileDigest(file, stop);
        if (auto chunk = RIFFChunk::find(file, recipeChunk)) {
            known.chunk = std::move(*chunk);
            decodeChunk(known);
            return known;
        }
        known.digests.sound = soundOf(file, stop);
    } catch (const Failure& failure) {
        known.problem = failure.message();
    }
    return known;
}

bool needsJournal(const KnownFile& known) {
    return known.recipes.empty() && known.problem.empty();
}

void takeEntry(KnownFile& known, std::optional<JournalEntry> entry) {
    known.carrier = KnownFile::Carrier::journal;
    known.entry = std::move(entry);
    if (known.entry) {
        known.recipes = {known.entry->recipe};
        return;
    }
    known.isUnknown = true;
    known.problem = Message(
        "{0}: nothing is known of where it comes from; it holds no recipe, and the journal has no file with "
        "its bytes or its sound",
        known.file);
}

}  // namespace

std::vector<KnownFile> lookUp(std::span<const fs::path> files, const Journal* journal,
                              const std::stop_token& stop) {
    std::vector<KnownFile> known(files.size());
    parallelFor(files.size(), [&](std::size_t i) {
        throwIfCancelled(stop);
        known[i] = lookInto(files[i], stop);
    });
    std::vector<std::size_t> open;  // those that the journal may know
    std::vector<FileDigests> wanted;
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (!needsJournal(known[i])) continue;
        open.push_back(i);
        wanted.push_back(known[i].digests);
    }
    std::vector<std::optional<JournalEntry>> entries(open.size());
    if (journal != nullptr && !open.empty()) entries = journal->find(wanted, stop);
    for (std::size_t i = 0; i < open.size(); ++i)
        takeEntry(known[open[i]], std::move(entries[i]));
    return known;
}

std::vector<Recipe> readRecipes(const fs::path& file) {
    const std::string text = readDocument(file);
    // One object over several lines is one recipe.
    if (Reader::accept(text)) {
        try {
            return {decodeEither(text)};
        } catch (const RecipeError& error) {
            throw error.in(file);
        }
    }
    std::vector<Recipe> recipes = decodeLines(text, file);
    if (recipes.empty())
        throw RecipeError(RecipeError::Kind::unknown, "there is no recipe in this file").in(file);
    return recipes;
}

std::string fileDigest(const fs::path& file, const std::stop_token& stop) {
    SHA256 digest;
    readAll(file, stop, [&](std::span<const std::byte> bytes) { digest.update(bytes); });
    return digest.finish();
}

FoundModel findModel(const Recipe& recipe, const fs::path& root, const std::stop_token& stop) {
    const fs::path likely = root / ModelStore::folderName(recipe.corpusName, recipe.fingerprint);
    auto model = findIdentified(recipe.model, root, likely, stop);
    if (!model) return {.bundle = {}, .folder = {}, .hasChanged = ModelStore::isStored(likely)};
    return {.bundle = std::move(model->bundle), .folder = std::move(model->folder)};
}

void requireFit(const Recipe& recipe, const ModelBundle& model) {
    if (std::ssize(recipe.latent) != model.config.latentDim)
        throw RecipeError(RecipeError::Kind::unusable,
                          "the recipe is damaged: its latent vector does not fit the model");
    const auto isClip = [&](const SampleOrigin::Source& source) {
        return source.clip < model.latents.size();
    };
    if (!std::ranges::all_of(recipe.sources, isClip))
        throw RecipeError(RecipeError::Kind::unusable,
                          "the recipe is damaged: its sources do not fit the model");
}

ClipSounds learnedSounds(const FoundModel& found, DetailBasis basis, const std::stop_token& stop) {
    if (basis == DetailBasis::noise) return {};
    if (basis == DetailBasis::kept) {
        ClipSounds kept = ClipSounds::keptWith(*found.bundle, found.folder);
        if (kept.origin() != ClipSounds::Origin::none) return kept;
    }
    const fs::path folder = found.bundle->metadata.corpusPath;
    std::error_code ignored;  // a folder that is gone has no sounds
    if (!fs::is_directory(folder, ignored)) return ClipSounds::keptWith(*found.bundle, found.folder);
    return ClipSounds::find(*found.bundle, Corpus::scan(folder, {}, stop), found.folder);
}

Message missingModelText(const Recipe& recipe, const FoundModel& found, const fs::path& root) {
    const std::string name = ModelStore::folderName(recipe.corpusName, recipe.fingerprint);
    if (found.hasChanged)
        return Message(
            "the model {0} in {1} is another one than the file was made with: the folder was learned again",
            name, root);
    return Message("its model, that of the folder {0}, is not among those in {1}", recipe.corpusName, root);
}

}  // namespace quillmere
