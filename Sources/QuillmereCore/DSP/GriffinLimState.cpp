#include "QuillmereCore/DSP/GriffinLimState.h"

#include <algorithm>

namespace quillmere {

GriffinLimState::GriffinLimState(const STFT& stft, int frameCount, std::size_t resultLength)
    : plan(stft.nFFT()),
      frames(static_cast<std::size_t>(frameCount)),
      hop(static_cast<std::size_t>(stft.hop())),
      bins(plan.half + 1),
      runFrames((frames + maxLanes - 1) / maxLanes),
      runRows(runFrames * hop),
      rows(std::max(runRows - hop + plan.n, runRows)),
      window(stft.window().begin(), stft.window().end()),
      inverseWindow(window),
      silence(bins),
      result(runStart(maxLanes - 1) + rows),
      length_(resultLength),
      weightFloor_(stft.weightFloor()),
      steadyWeights_(steadyWeights()),
      edges_(rows) {
    for (std::size_t i = 0; i < plan.n; ++i)
        inverseWindow[i] /= static_cast<float>(plan.n) * std::max(steadyWeights_[i % hop], weightFloor_);
    const std::vector<bool> isEdge = edgeRows();
    allocate(static_cast<std::size_t>(std::ranges::count(isEdge, true)));
    std::fill_n(previous, rows * maxLanes, 0.0F);
    for (float* const buffer : sums)
        std::fill_n(buffer, (plan.n + hop) * maxLanes, 0.0F);
    float* factors = edgeFactors_;
    for (std::size_t row = 0; row < rows; ++row) {
        if (!isEdge[row]) continue;
        edges_[row] = factors;
        for (std::size_t run = 0; run < maxLanes; ++run)
            *factors++ = edgeFactorAt(runStart(run) + row);
    }
}

// The sum of the squared windows where every frame that could overlap is there, by position modulo hop.
std::vector<float> GriffinLimState::steadyWeights() const {
    std::vector<float> weights(hop);
    const std::size_t lastOffset = (plan.n - 1) / hop * hop;
    for (std::size_t offset = 0; offset < plan.n; offset += hop) {
        // In the order of the frames, of which the first overlaps with its end.
        for (std::size_t i = lastOffset - offset; i < std::min(lastOffset - offset + hop, plan.n); ++i)
            weights[i % hop] += window[i] * window[i];
    }
    return weights;
}

// The same sum at one position, of the frames that exist.
float GriffinLimState::weightAt(std::size_t position) const {
    float weight = 0;
    const std::size_t first = position < plan.n ? 0 : (position - plan.n) / hop + 1;
    for (std::size_t t = first; t < frames && t * hop <= position; ++t) {
        const float w = window[position - t * hop];
        weight += w * w;
    }
    return weight;
}

// Positions inside the result where every frame that could overlap is there.
GriffinLimState::Range GriffinLimState::steadyPositions() const {
    const std::size_t begin = std::max(plan.n - std::min(plan.n, hop), plan.half);
    const std::size_t end = std::min(frames * hop, plan.half + length_);
    return {begin, std::max(begin, end)};
}

float GriffinLimState::edgeFactorAt(std::size_t position) const {
    const Range steady = steadyPositions();
    if (position >= steady.begin && position < steady.end) return 1;
    if (position < plan.half || position - plan.half >= length_) return 0;
    return std::max(steadyWeights_[position % hop], weightFloor_) /
           std::max(weightAt(position), weightFloor_);
}

// Which rows hold a position that frames cover and that is not steady.
std::vector<bool> GriffinLimState::edgeRows() const {
    const Range steady = steadyPositions();
    const std::size_t covered = (frames - 1) * hop + plan.n;
    std::vector<bool> isEdge(rows);
    const auto mark = [&](Range positions) {
        for (std::size_t run = 0; run < maxLanes; ++run) {
            const std::size_t start = runStart(run);
            for (std::size_t p = std::max(positions.begin, start); p < std::min(positions.end, start + rows);
                 ++p)
                isEdge[p - start] = true;
        }
    };
    mark({0, std::min(steady.begin, covered)});
    mark({steady.end, covered});
    return isEdge;
}

// One block for everything, which the memory allocator can reuse as a whole for the next reconstruction. The
// parts are whole pages apart: a load from nearly the same place of a page as a store before it would wait
// for the store.
void GriffinLimState::allocate(std::size_t edgeRowCount) {
    struct Part {
        float** pointer;
        std::size_t size;
    };
    const Part parts[] = {{&work, plan.workSize()},
                          {&startMag, bins * maxLanes},
                          {&startDraws, bins * maxLanes},
                          {&magnitudes, runFrames * bins * maxLanes},
                          {&signal, rows * maxLanes},
                          {&previous, rows * maxLanes},
                          {&sums[0], (plan.n + hop) * maxLanes},
                          {&sums[1], (plan.n + hop) * maxLanes},
                          {&edgeFactors_, edgeRowCount * maxLanes}};
    constexpr std::size_t page = 4096 / sizeof(float);
    const auto wholePages = [](std::size_t size) { return (size + page - 1) / page * page; };
    std::size_t total = 0;
    for (const Part& part : parts)
        total += wholePages(part.size);
    memory_ = allocateFloats(total);
    float* next = memory_.get();
    for (const Part& part : parts) {
        *part.pointer = next;
        next += wholePages(part.size);
    }
}

}  // namespace quillmere
