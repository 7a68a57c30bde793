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
    const std::string amount = "Detail " + Text::fixed(amount_, 2);
    if (withNoise_ < variations_)
        console.print(amount + (origin_ == ClipSounds::Origin::model
                                    ? " from the samples that were kept with the model."
                                    : " from the learned samples."));
    if (nearCopies_ > 0)
        console.note("Note: " + std::to_string(nearCopies_) + " of " +
                     counted(variations_, "variation", "variations") + (nearCopies_ == 1 ? " is" : " are") +
                     " nearly a copy of a learned sample; more sources, drift or samples keep them apart.");
    if (withNoise_ == 0) return;
    console.note(origin_ == ClipSounds::Origin::none
                     ? "Note: the folder no longer holds what was learned, so noise stands in for the detail "
                       "of the samples."
                     : "Note: for " + std::to_string(withNoise_) + " of " +
                           counted(variations_, "variation", "variations") +
                           " a learned sample could not be read; noise stands in for its detail.");
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
