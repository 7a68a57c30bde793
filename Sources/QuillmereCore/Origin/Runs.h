#pragma once

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Origin/Journal.h"

// What was made at one time, as the journal remembers it. Any thread.
namespace quillmere {

// The files of one job, or a set that was only heard.
struct JournalRun {
    std::vector<JournalEntry> files;  // by the indices of their variations; none for a set
    std::optional<JournalSet> set{};

    // Of its first variation.
    [[nodiscard]] const Recipe& recipe() const { return set ? set->first : files.front().recipe; }
    // When it began, as JournalEntry::written. Candidates are kept in any order.
    [[nodiscard]] const std::string& made() const;
};

// The corpus whose runs are wanted. Any of these is enough: a folder that has other files by now has another
// fingerprint, one that was renamed another name, and one that was copied may use the model of the other one.
struct RunsCorpus {
    std::string name;
    std::string fingerprint;  // or empty
    std::string model{};      // modelIdentity of the one that is in use, or empty
};

struct RunsLimits {
    std::size_t runs = 300;
    std::size_t files = 20'000;  // of all runs; the newest run is there whole
};

// The runs with models of a corpus, newest first, as many of the newest as the limits allow. Files are of one
// run that one after the other have the same model, seed, parameters, detail, format and folder, each with an
// index of its own. Of several files that had one name after another only the newest is there. Throws as
// Journal::find.
[[nodiscard]] std::vector<JournalRun> runsOf(const RunsCorpus& corpus, const Journal& journal,
                                             const RunsLimits& limits = {}, const std::stop_token& stop = {});

}  // namespace quillmere
