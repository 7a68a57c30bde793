#include "QuillmereApp/SoundMeasure.h"

#include "QuillmereApp/Words.h"
#include "QuillmereCore/Origin/SoundPrint.h"

namespace quillmere {

QString SoundMeasure::noveltyText() const {
    if (novelty < 0) return {};
    const std::string_view word = rawValue(kinship(novelty));
    return QString::fromLatin1(word.data(), static_cast<qsizetype>(word.size()));
}

QString SoundMeasure::noveltyWord() const {
    if (novelty < 0) return {};
    switch (kinship(novelty)) {
        case Kinship::copy:
            return Words::tr("copy", "how new a sound is");
        case Kinship::close:
            return Words::tr("close", "how new a sound is");
        case Kinship::fresh:
            return Words::tr("new", "how new a sound is");
        case Kinship::far:
            break;
    }
    return Words::tr("far", "how new a sound is");
}

}  // namespace quillmere
