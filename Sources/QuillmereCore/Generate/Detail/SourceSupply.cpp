#include "QuillmereCore/Generate/Detail/SourceSupply.h"

#include <algorithm>
#include <utility>

#include "QuillmereCore/Generate/Detail/Donor.h"
#include "QuillmereCore/Generate/Detail/Sameness.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere::Detail {
namespace {

ModelConfig withFrames(ModelConfig config, std::size_t frames) {
    config.frames = static_cast<std::int64_t>(frames);
    return config;
}

}  // namespace

SourceSupply::SourceSupply(const ModelBundle& model, ClipSounds sounds)
    : config_(model.config),
      attack_(AttackFrames::forHop(config_.hop)),
      firstFrames_(withFrames(config_, attack_.count())),
      sounds_(std::move(sounds)) {}

std::optional<SourceMaterial> SourceSupply::material(std::span<const LatentDraw::Source> sources, STFT& stft,
                                                     const std::stop_token& stop) {
    if (sounds_.origin() == ClipSounds::Origin::none) return std::nullopt;
    SourceMaterial material;
    material.donor.resize(static_cast<std::size_t>(config_.clipSamples()));
    material.course.resize(static_cast<std::size_t>(config_.nMels) * attack_.count());
    for (const LatentDraw::Source& source : sources) {
        const std::shared_ptr<const Clip> found = clip(source.clip, stft, stop);
        if (!found) return std::nullopt;
        addScaled(found->samples, source.weight, material.donor);
        addCourse(found->image, attack_.count(), attack_, source.weight, material.course);
        const auto beginning =
            std::span(found->samples).first(std::min(found->samples.size(), samplesCompared));
        material.beginnings.emplace_back(beginning.begin(), beginning.end());
    }
    return material;
}

void SourceSupply::learnTail(std::span<const std::vector<float>> latents, VAEInference& inference,
                             const std::stop_token& stop) {
    if (hasLearnedTail_ || sounds_.origin() == ClipSounds::Origin::none) return;
    const std::size_t count = std::min(latents.size(), tailClips);
    std::vector<std::size_t> clips;
    for (std::size_t i = 0; i < count; ++i)
        clips.push_back(i * latents.size() / count);
    const std::vector<std::vector<float>> real = realPeaks(clips, stop);

    const auto frames = static_cast<std::size_t>(config_.frames);
    std::vector<TailCurve::Levels> levels;
    for (std::size_t i = 0; i < count; i += VAEInference::batch) {
        throwIfCancelled(stop);
        const std::size_t end = std::min<std::size_t>(count, i + VAEInference::batch);
        std::vector<std::vector<float>> chosen;
        for (std::size_t j = i; j < end; ++j)
            chosen.push_back(latents[clips[j]]);
        const std::vector<std::vector<float>> images = inference.decode(chosen);
        for (std::size_t j = i; j < end; ++j) {
            if (real[j].empty()) continue;
            const std::vector<float> decoded = framePeaks(images[j - i], frames);
            for (std::size_t t = 0; t < frames; ++t)
                levels.push_back({decoded[t], real[j][t]});
        }
    }
    if (!levels.empty()) tail_.emplace(levels);
    hasLearnedTail_ = true;
}

std::vector<std::vector<float>> SourceSupply::realPeaks(std::span<const std::size_t> clips,
                                                        const std::stop_token& stop) const {
    const FeatureExtractor extractor(config_);
    std::vector<std::vector<float>> peaks(clips.size());
    WorkerTeam team;
    std::vector<std::optional<STFT>> transforms(static_cast<std::size_t>(team.threads()));
    team.run(clips.size(), [&](std::size_t i, int worker) {
        const FlushDenormals flush;
        const auto samples = sounds_.read(clips[i], stop);
        if (!samples) return;
        std::optional<STFT>& stft = transforms[static_cast<std::size_t>(worker)];
        if (!stft) stft = extractor.makeSTFT();
        peaks[i] = framePeaks(extractor.features(*samples, *stft), static_cast<std::size_t>(config_.frames));
    });
    return peaks;
}

std::shared_ptr<const SourceSupply::Clip> SourceSupply::clip(std::size_t number, STFT& stft,
                                                             const std::stop_token& stop) {
    if (auto found = kept(number)) return found;
    auto samples = sounds_.read(number, stop);
    if (!samples) return nullptr;
    const auto read = std::make_shared<Clip>();
    read->image = firstFrames_.features(*samples, stft);
    read->samples = *std::move(samples);
    keep(number, read);
    return read;
}

std::shared_ptr<const SourceSupply::Clip> SourceSupply::kept(std::size_t number) {
    const MutexLock lock(mutex_);
    const auto found = std::ranges::find(kept_, number, &Kept::number);
    if (found == kept_.end()) return nullptr;
    kept_.splice(kept_.begin(), kept_, found);
    return found->clip;
}

void SourceSupply::keep(std::size_t number, const std::shared_ptr<const Clip>& clip) {
    const MutexLock lock(mutex_);
    // Another thread may have read it meanwhile.
    if (std::ranges::find(kept_, number, &Kept::number) != kept_.end()) return;
    kept_.push_front({number, clip});
    bytes_ += bytesOf(*clip);
    while (bytes_ > clipMemory) {
        bytes_ -= bytesOf(*kept_.back().clip);
        kept_.pop_back();
    }
}

std::size_t SourceSupply::bytesOf(const Clip& clip) {
    return (clip.samples.size() + clip.image.size()) * sizeof(float);
}

}  // namespace quillmere::Detail
