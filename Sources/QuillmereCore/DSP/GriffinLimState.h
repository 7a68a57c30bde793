#pragma once

#include <cstddef>
#include <vector>

#include "QuillmereCore/DSP/AlignedFloats.h"
#include "QuillmereCore/DSP/BatchedFFT.h"
#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/DSP/VectorLanes.h"

namespace quillmere {

// Memory of one phase reconstruction.
//
// The frames are divided into maxLanes runs of consecutive frames, and lane l of every vector belongs to
// run l. So a batch, the frames b of all runs, never holds two frames that overlap, and framing and
// overlap-add are plain loads and stores, whatever the hop. The signal of a run begins with its first frame;
// where runs overlap, both hold the samples. A position is counted from the first sample of frame 0, which
// is half a frame before the first sample of the result.
struct GriffinLimState {
    // Requires stft.nFFT() >= 2 and frames >= 1. length: samples of the result; positions outside it count
    // as 0.
    GriffinLimState(const STFT& stft, int frames, std::size_t length);

    // Position at which run l begins.
    [[nodiscard]] std::size_t runStart(std::size_t run) const { return run * runRows; }

    // Magnitudes of frames b of the runs l, l + 1, ... as many as a vector has lanes.
    [[nodiscard]] float* magnitudesOf(std::size_t b, std::size_t l) const {
        return magnitudes + (b * maxLanes + l) * bins;
    }

    // Near the ends of the signal fewer frames overlap than inverseWindow assumes, and outside the result the
    // signal is 0: factors for the lanes of such a row. Null for every other row.
    [[nodiscard]] const float* edgeFactorsOf(std::size_t row) const { return edges_[row]; }

    RealFFTPlan plan;
    std::size_t frames;
    std::size_t hop;
    std::size_t bins;
    std::size_t runFrames;      // in each run; the last runs may have fewer or none
    std::size_t runRows;        // from the beginning of a run to that of the next one
    std::size_t rows;           // positions that a run's frames cover, at least runRows
    std::vector<float> window;  // [nFFT], for analysis

    // [nFFT], for synthesis: divided by the transform's scale and by what the squared windows of all frames
    // that could overlap there add up to.
    std::vector<float> inverseWindow;
    std::vector<float> silence;  // [bins]

    float* work;        // of the transform
    float* startMag;    // [bins][maxLanes], of one batch
    float* startDraws;  // [bins][maxLanes]
    float* magnitudes;  // [runFrames][bins][maxLanes], the bins in the order of FrameBatch's visits
    float* signal;      // [rows][maxLanes], extrapolated, for analysis
    float* previous;    // [rows][maxLanes], before extrapolation
    float* sums[2];     // [nFFT + hop][maxLanes], overlap-add up to a batch and to the one before

    std::vector<float> result;  // by position

private:
    struct Range {
        std::size_t begin, end;
    };

    [[nodiscard]] std::vector<float> steadyWeights() const;
    [[nodiscard]] float weightAt(std::size_t position) const;
    [[nodiscard]] Range steadyPositions() const;
    [[nodiscard]] float edgeFactorAt(std::size_t position) const;
    [[nodiscard]] std::vector<bool> edgeRows() const;
    void allocate(std::size_t edgeRowCount);

    std::size_t length_;
    float weightFloor_;
    std::vector<float> steadyWeights_;  // [hop]
    std::vector<const float*> edges_;   // [rows]
    float* edgeFactors_;
    AlignedFloats memory_;
};

}  // namespace quillmere
