#include "QuillmereApp/Words.h"

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Language.h"

namespace quillmere {
namespace {

const QLatin1String candidatePrefix("Candidate ");
const QLatin1String mapEnding(" sounds of the map");

}  // namespace

QString Words::of(const Message& message) {
    return QString::fromStdString(Language::text(message));
}

QString Words::of(const std::exception& error) {
    const auto* const failure = dynamic_cast<const Failure*>(&error);
    return failure != nullptr ? of(failure->message()) : QString::fromUtf8(error.what());
}

QString Words::inTable(std::string_view text) {
    return of(Message::fromTable(text));
}

QString Words::of(const QDateTime& date) {
    return date.toLocalTime().toString(tr("d MMM yyyy, hh:mm"));
}

QString Words::keptName(int candidate) {
    return candidatePrefix + QString::number(candidate);
}

QString Words::keptNameOfMap(int sounds) {
    return QString::number(sounds) + mapEnding;
}

QString Words::ofSound(const QString& keptName) {
    bool isNumber = false;
    if (keptName.startsWith(candidatePrefix)) {
        const int number = keptName.mid(candidatePrefix.size()).toInt(&isNumber);
        if (isNumber) return tr("Candidate %1").arg(number);
    } else if (keptName.endsWith(mapEnding)) {
        const int sounds = keptName.chopped(mapEnding.size()).toInt(&isNumber);
        if (isNumber) return tr("%n sounds of the map", nullptr, sounds);
    }
    return keptName;
}

}  // namespace quillmere
