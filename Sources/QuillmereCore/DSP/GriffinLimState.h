#pragma once

#include <hwy/aligned_allocator.h>

#include <cstddef>
#include <span>
#include <vector>

#include "QuillmereCore/DSP/BatchedFFT.h"
#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/DSP/VectorLanes.h"

namespace quillmere {

// Memory of one phase reconstruction.
//
// The frames are divided into maxLanes runs of consecutive frames, and lane l of every vector belongs to
// run l. So a batch, the frames b of all runs, never holds two frames that overlap, and framing and
// overlap-add are plain loads and stores, whatever the hop. The signal of a run begins at its first frame's
// first sample; where runs overlap, the samples are kept in both.
struct GriffinLimState {
    // Requires stft.nFFT() >= 2 and frames >= 1. length: samples of the result; those outside count as 0.
    GriffinLimState(const STFT& stft, int frames, std::size_t length);

    // Position in the signal, counted from the first sample of frame 0, at which run l begins.
    [[nodiscard]] std::size_t runStart(std::size_t run) const { return run * runFrames * hop; }

    // Records of frames b of the runs l, l + 1, ...
    [[nodiscard]] float* recordsOf(std::size_t b, std::size_t l) {
        return records.get() + (b * maxLanes + l) * bins * 3;
    }

    RealFFTPlan plan;
    std::size_t frames;
    std::size_t hop;
    std::size_t bins;
    std::size_t runFrames;             // in each run; the last runs may have fewer or none
    std::size_t rows;                  // samples of a run
    std::vector<float> window;         // [nFFT], for analysis
    std::vector<float> inverseWindow;  // [nFFT], for synthesis: divided by the transform's scale

    std::vector<float> silence;  // [bins]

    using Buffer = hwy::AlignedFreeUniquePtr<float[]>;
    Buffer work;               // of the transform
    Buffer magRows, drawRows;  // [bins][maxLanes], of one batch
    Buffer records;            // [runFrames][bins] of 3 * maxLanes
    Buffer signal, next;       // [rows][maxLanes], of the previous pass and of this one
    Buffer reciprocal;         // [rows][maxLanes], of the summed squared window; 0 outside the result
    std::vector<float> reciprocals, samples;  // by position, all runs: of the summed squared window; result
};

}  // namespace quillmere
