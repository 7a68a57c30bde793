#pragma once

#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// What becomes of one file of a corpus when a model learns it.
struct FileFate {
    enum class Use {
        whole,
        cut,         // only its beginning, up to the report's clip length, is learned
        silent,      // left out
        unreadable,  // left out
    };
    std::string name;  // the file's relative path
    Use use = Use::whole;
    Message reason;                          // of unreadable: the sentence that names the file and says why
    double seconds = 0;                      // the file's length; 0 when unreadable or silent
    AudioIO::Damage damage;                  // of a file that is used all the same
    std::optional<std::string> duplicateOf;  // the first file with the same bytes; both are learned

    [[nodiscard]] bool isUsedAsItIs() const { return use == Use::whole && !duplicateOf && !damage.any(); }
};

struct CorpusReport {
    std::vector<FileFate> files;  // one per file of the corpus, in its order
    // What automatic training would choose; the profile is automatic and the length 0 when no file is usable.
    AnalysisProfile profile = AnalysisProfile::automatic;
    double clipSeconds = 0;
};

namespace Corpus {

// Decodes every file, as training does, and says what training would make of it. stop is asked all the time;
// throws CancellationError, and AudioIOError where the system's trouble would hide a sound file.
[[nodiscard]] CorpusReport inspect(const CorpusSummary& corpus, const std::stop_token& stop = {});

}  // namespace Corpus
}  // namespace quillmere
