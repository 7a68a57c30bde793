#include "QuillmereApp/ModelText.h"

#include <QDateTime>
#include <algorithm>

#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

QString stepsText(const ModelMetadata& metadata) {
    if (metadata.plannedSteps && metadata.continued.empty())
        return Words::tr("%1 of %n steps", nullptr, static_cast<int>(*metadata.plannedSteps))
            .arg(metadata.steps);
    const auto* const quality = std::ranges::find(
        allQualities, metadata.steps, metadata.start ? &QualityInfo::stepsFromStart : &QualityInfo::steps);
    if (quality != allQualities.end()) return Words::inTable(quality->label);
    return metadata.steps == 1 ? Words::tr("1 step")
                               : Words::tr("%n steps", nullptr, static_cast<int>(metadata.steps));
}

}  // namespace

QString ModelText::effort(const ModelMetadata& metadata) {
    QString steps = stepsText(metadata);
    if (!metadata.start) return steps;
    return metadata.start->kind == ModelStart::Kind::headStart
               ? Words::tr("%1 from a head start").arg(steps)
               : Words::tr("%1 onto %2").arg(steps, QString::fromStdString(metadata.start->name));
}

QString ModelText::learnedAt(const ModelMetadata& metadata) {
    return Words::of(QDateTime::fromSecsSinceEpoch(metadata.trainedAt.time_since_epoch().count()));
}

QString ModelText::size(std::uintmax_t bytes) {
    return Words::tr("%1 MB").arg(QString::fromStdString(Text::fixed(static_cast<double>(bytes) / 1e6, 1)));
}

}  // namespace quillmere
