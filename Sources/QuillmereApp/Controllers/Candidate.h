#pragma once

#include <QList>
#include <QUrl>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "QuillmereApp/Player.h"
#include "QuillmereCore/Generate/Generator.h"

namespace quillmere {

// What a set of candidates is made with: that of a generation with the same seed.
struct CandidatesOrder {
    Aesthetics aesthetics;
    std::uint64_t seed = 0;
    double detail = 0;
};

// One variation that was rendered and not written, or not yet.
struct Candidate {
    int number = 0;      // from 1, in its set
    QUrl name;           // what it is called while it plays
    std::string prefix;  // of the name of its file
    PlayableSound sound;
    SampleOrigin origin;
    QList<qreal> peaks;  // as ResultsModel has them
    bool isBeingKept = false;
    QUrl file;  // where it was kept; empty while it is not

    [[nodiscard]] bool isKept() const { return !file.isEmpty(); }
};
using CandidateHandle = std::shared_ptr<Candidate>;

struct CandidateSet {
    CandidatesOrder order;
    std::vector<CandidateHandle> candidates;  // that are not discarded, by their numbers
};

}  // namespace quillmere
