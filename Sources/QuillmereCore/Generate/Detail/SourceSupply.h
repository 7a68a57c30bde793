#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <vector>

#include "QuillmereCore/Generate/Detail/Attack.h"
#include "QuillmereCore/Generate/Detail/ClipSounds.h"
#include "QuillmereCore/Generate/Detail/DetailRenderer.h"
#include "QuillmereCore/Generate/Detail/TailCurve.h"
#include "QuillmereCore/Generate/LatentSampler.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::Detail {

// Reads what variations take from their sources, when it is first needed, and keeps the clips that were used
// last: at most clipMemory bytes of them however many variations there are.
// Threads: material() may be called by several at once; learnTail by one, and not at the same time.
class SourceSupply {
public:
    static constexpr std::size_t clipMemory = std::size_t{64} << 20;
    // Learned clips that the tail curve is made from, at even distances if there are more.
    static constexpr std::size_t tailClips = 256;

    // model: of the generator; not kept.
    SourceSupply(const ModelBundle& model, ClipSounds sounds);

    [[nodiscard]] const ClipSounds& sounds() const noexcept { return sounds_; }

    // The mix of a blend's sources. Nothing if one of them cannot be had. stft: made for the model. Throws as
    // ClipSounds::read.
    [[nodiscard]] std::optional<SourceMaterial> material(std::span<const LatentDraw::Source> sources,
                                                         STFT& stft, const std::stop_token& stop);

    // Compares the decoded clips with the real ones; only the first call does anything. latents: of the
    // model. Throws as ClipSounds::read; then nothing is learned yet.
    void learnTail(std::span<const std::vector<float>> latents, VAEInference& inference,
                   const std::stop_token& stop);
    // Null before learnTail and where no clip could be read.
    [[nodiscard]] const TailCurve* tail() const { return tail_ ? &*tail_ : nullptr; }

private:
    struct Clip {
        std::vector<float> samples;
        std::vector<float> image;  // of its first frames, [nMels][attack_.count()]
    };
    struct Kept {
        std::size_t number;
        std::shared_ptr<const Clip> clip;
    };

    // Null if it cannot be had.
    [[nodiscard]] std::shared_ptr<const Clip> clip(std::size_t number, STFT& stft,
                                                   const std::stop_token& stop);
    [[nodiscard]] std::shared_ptr<const Clip> kept(std::size_t number);
    void keep(std::size_t number, const std::shared_ptr<const Clip>& clip);
    [[nodiscard]] static std::size_t bytesOf(const Clip& clip);
    // The loudest bands of each frame of the real clips; empty for one that cannot be had.
    [[nodiscard]] std::vector<std::vector<float>> realPeaks(std::span<const std::size_t> clips,
                                                            const std::stop_token& stop) const;

    ModelConfig config_;
    AttackFrames attack_;
    FeatureExtractor firstFrames_;  // extractor of images that have only the frames of the attack
    ClipSounds sounds_;
    bool hasLearnedTail_ = false;
    std::optional<TailCurve> tail_;

    Mutex mutex_;
    std::list<Kept> kept_ QUILLMERE_GUARDED_BY(mutex_);  // the last used one first
    std::size_t bytes_ QUILLMERE_GUARDED_BY(mutex_) = 0;
};

}  // namespace quillmere::Detail
