#include "QuillmereCLI/DetailReport.h"

#include <string>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {

ClipSounds soundsFor(double detail, const ModelBundle& bundle, const KnownCorpus& corpus) {
    return detail > 0 ? ClipSounds::find(bundle, corpus.summary, corpus.modelFolder) : ClipSounds();
}

void DetailReport::count(const SampleOrigin& origin) {
    ++variations_;
    if (origin.detailBasis == DetailBasis::noise) ++withNoise_;
    if (origin.sameness >= nearCopy) ++nearCopies_;
}

void DetailReport::print(Console& console) const {
    if (!(amount_ > 0)) return;
    const std::string amount = Text::fixed(amount_, 2);
    if (withNoise_ < variations_)
        console.print(origin_ == ClipSounds::Origin::model
                          ? tr("Detail {0} from the samples that were kept with the model.", amount)
                          : tr("Detail {0} from the learned samples.", amount));
    const std::string all = trCounted(variations_, "{0} variation", "{0} variations");
    if (nearCopies_ > 0)
        console.note(
            trCounted(nearCopies_,
                      "Note: {0} of {1} is nearly a copy of a learned sample; more sources, drift or "
                      "samples keep them apart.",
                      "Note: {0} of {1} are nearly a copy of a learned sample; more sources, drift or "
                      "samples keep them apart.",
                      all));
    if (withNoise_ == 0) return;
    if (origin_ == ClipSounds::Origin::none) {
        console.note(
            tr("Note: the folder no longer holds what was learned, so noise stands in for the detail of the "
               "samples."));
    } else {
        console.note(trCounted(
            withNoise_,
            "Note: for {0} of {1} a learned sample could not be read; noise stands in for its detail.",
            "Note: for {0} of {1} a learned sample could not be read; noise stands in for its detail.", all));
    }
}

void DetailReport::addTo(JSON& result) const {
    if (!(amount_ > 0)) return;
    JSON detail = JSON::object();
    detail["amount"] = amount_;
    detail["sounds"] = rawValue(origin_);
    detail["withNoise"] = withNoise_;
    detail["nearCopies"] = nearCopies_;
    result["detail"] = std::move(detail);
}

}  // namespace quillmere::cli
