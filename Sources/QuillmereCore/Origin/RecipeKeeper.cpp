#include "QuillmereCore/Origin/RecipeKeeper.h"

#include <cstdint>
#include <limits>
#include <utility>

#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Paths.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

// A document is one file of any length.
constexpr Journal::Limits endless{.segmentBytes = std::numeric_limits<std::uint64_t>::max(), .segments = 1};

}  // namespace

RecipeKeeper::RecipeKeeper(RecipeCarriers carriers, RecipeBase base)
    : base_(std::move(base)), embedded_(carriers.embedded) {
    if (carriers.journal) journal_.emplace(std::move(*carriers.journal));
    if (carriers.document) document_.emplace(std::move(*carriers.document), endless);
}

GenerationHooks RecipeKeeper::hooks() {
    GenerationHooks hooks;
    if (embedded_) {
        hooks.chunk = [this](const SampleOrigin& origin) {
            return GenerationHooks::Chunk{std::string(recipeChunk), encodeJSON(makeRecipe(origin, base_))};
        };
    }
    if (journal_ || document_)
        hooks.written = [this](const GenerationHooks::WrittenFile& file) { keep(file); };
    return hooks;
}

std::optional<Message> RecipeKeeper::journalProblem() const {
    const MutexLock lock(mutex_);
    return problem_;
}

void RecipeKeeper::keep(const GenerationHooks::WrittenFile& file) {
    const std::vector<float> heard = AudioIO::asWritten(file.samples, base_.format);
    const JournalEntry entry{.digests = {sha256(file.bytes), soundDigest(heard, file.sampleRate)},
                             .file = Text::utf8(Paths::plain(file.sample.url)),
                             .written = journalTime(),
                             .recipe = makeRecipe(file.sample.origin, base_)};
    if (document_) document_->append(entry);
    if (journal_) keepInJournal(entry);
}

void RecipeKeeper::keepInJournal(const JournalEntry& entry) {
    try {
        journal_->append(entry);
    } catch (const FileError& error) {
        const MutexLock lock(mutex_);
        if (!problem_) problem_ = error.message();
    }
}

}  // namespace quillmere
