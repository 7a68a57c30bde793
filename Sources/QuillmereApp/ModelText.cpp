#include "QuillmereApp/ModelText.h"

#include <algorithm>

#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

QString stepsText(const ModelMetadata& metadata) {
    if (metadata.plannedSteps && metadata.continued.empty())
        return QStringLiteral("%1 of %2 steps").arg(metadata.steps).arg(*metadata.plannedSteps);
    const auto* const quality = std::ranges::find(
        allQualities, metadata.steps, metadata.start ? &QualityInfo::stepsFromStart : &QualityInfo::steps);
    if (quality != allQualities.end()) return text(quality->label);
    return metadata.steps == 1 ? QStringLiteral("1 step") : QStringLiteral("%1 steps").arg(metadata.steps);
}

}  // namespace

QString ModelText::effort(const ModelMetadata& metadata) {
    QString steps = stepsText(metadata);
    if (!metadata.start) return steps;
    return steps + (metadata.start->kind == ModelStart::Kind::headStart
                        ? QStringLiteral(" from a head start")
                        : QStringLiteral(" onto %1").arg(QString::fromStdString(metadata.start->name)));
}

QString ModelText::size(std::uintmax_t bytes) {
    return QString::fromStdString(Text::fixed(static_cast<double>(bytes) / 1e6, 1)) + QStringLiteral(" MB");
}

}  // namespace quillmere
