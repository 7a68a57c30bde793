#include "QuillmereApp/SoundMeasure.h"

#include "QuillmereCore/Origin/SoundPrint.h"

namespace quillmere {

QString SoundMeasure::noveltyText() const {
    if (novelty < 0) return {};
    const std::string_view word = rawValue(kinship(novelty));
    return QString::fromLatin1(word.data(), static_cast<qsizetype>(word.size()));
}

}  // namespace quillmere
