#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "QuillmereCore/DSP/MelFilterBank.h"

namespace quillmere {

// The maps of a filter bank for many frames at once, and a finer way back from bands to bins.
//
// Spectra are frame-major [frames][bins], band levels frame-major [frames][bands]. Both are linear and not
// negative. The number of frames follows from the sizes, which must fit each other. A frame's result depends
// on that frame alone.
// Threads: an instance owns scratch memory; one thread at a time.
class BandMaps {
public:
    explicit BandMaps(const MelFilterBank& bank);
    ~BandMaps();
    BandMaps(BandMaps&&) noexcept;
    BandMaps& operator=(BandMaps&&) noexcept;

    [[nodiscard]] std::size_t bands() const noexcept { return bands_; }
    [[nodiscard]] std::size_t bins() const noexcept { return bins_; }

    // MelFilterBank::forward and inverse; the values differ from theirs in the last places.
    void forward(std::span<const float> spectra, std::span<float> mel);
    void inverse(std::span<const float> mel, std::span<float> spectra);

    // Changes spectra so that forward() comes nearer to mel, while the differences between neighbouring bins
    // stay: in each round every bin is multiplied by the weighted mean, over the bands that cover it, of
    // wanted over present level. Multiplicative updates as in Lee and Seung's for the divergence (1999). Bins
    // that no band covers stay as they are, and so does 0.
    void refine(std::span<float> spectra, std::span<const float> mel, int rounds);

private:
    struct State;

    [[nodiscard]] std::size_t frameCount(std::size_t spectraSize, std::size_t melSize) const;

    std::size_t bands_;
    std::size_t bins_;
    std::unique_ptr<State> state_;
};

}  // namespace quillmere
