#include "QuillmereApp/Controllers/Noting.h"

#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

QString Noting::notNoted(const Message& reason) {
    return Words::tr("How the files were made could not be noted everywhere. %1.").arg(Words::of(reason));
}

// A preference that cannot be read may well be that there be no journal.
RecipeCarriers Noting::carriers(QString& problem) const {
    try {
        if (!isOn_ || isOn_()) return {.journal = file_};
    } catch (const FileError& error) {
        problem = Words::tr("The journal stays as it is, because it cannot be told whether it is wanted. %1.")
                      .arg(Words::of(error));
    }
    return {};
}

QString Noting::problemOf(const RecipeKeeper& keeper) {
    const auto problem = keeper.journalProblem();
    return problem ? notNoted(*problem) : QString();
}

QString Noting::note(const JournalSet& set) const {
    QString problem;
    const RecipeCarriers where = carriers(problem);
    if (!where.journal) return problem;
    try {
        Journal(*where.journal).append(set);
    } catch (const FileError& error) {
        return notNoted(error.message());
    }
    return {};
}

}  // namespace quillmere
