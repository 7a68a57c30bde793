#pragma once

#include <QList>
#include <QString>
#include <QUrl>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereApp/Player.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere {

inline constexpr int candidatesPerSet = 12;  // of a whole set

// Candidates that have something in common with a sound, or with several (Likeness).
struct CandidatesRelation {
    enum class Way {
        like,   // places around its own
        body,   // its place, and another skin
        skin,   // other places, and its skin
        inTurn  // places around those of several, one after the other
    };
    Way way = Way::like;
    Recipe parent{};
    QString name{};                 // of the parent, or of all, for people
    std::vector<Recipe> parents{};  // of inTurn: at least one, of one model
};

// What a set of candidates is made with: that of a generation with the same seed, unless they are relatives.
struct CandidatesOrder {
    Aesthetics aesthetics;
    std::uint64_t seed = 0;
    double detail = 0;
    std::optional<CandidatesRelation> relation{};
    bool isNoted = false;  // the journal has it: it is rendered once more
    std::string model{};   // modelIdentity of the one that it is to be of; empty for the present one
};

// One variation that was rendered and not written, or not yet.
struct Candidate {
    int number = 0;  // from 1, in its set
    QUrl name;       // what it is called while it plays
    PlayableSound sound;
    std::shared_ptr<const RecipeBase> base;  // of its recipe; the format is that of its file
    SampleOrigin origin;
    QList<qreal> peaks;  // as ResultsModel has them
    bool isBeingKept = false;
    QUrl file;     // where it was kept; empty while it is not
    QUrl trashed;  // where it was kept before that file went to the trash

    [[nodiscard]] bool isKept() const { return !file.isEmpty(); }
};
using CandidateHandle = std::shared_ptr<Candidate>;

struct CandidateSet {
    CandidatesOrder order;
    std::vector<CandidateHandle> candidates;  // that are not discarded, by their numbers
};

}  // namespace quillmere
