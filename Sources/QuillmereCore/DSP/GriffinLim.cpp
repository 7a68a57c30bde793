#include "QuillmereCore/DSP/GriffinLim.h"

#include <algorithm>
#include <utility>

#include "QuillmereCore/DSP/VectorLanes.h"
#include "QuillmereCore/Util/Failure.h"

#define HWY_TARGET_INCLUDE "QuillmereCore/DSP/GriffinLim.cpp"
#include "QuillmereCore/Util/VectorTargets.h"

#include "QuillmereCore/DSP/BatchedFFT-inl.h"
#include "QuillmereCore/DSP/GriffinLimState.h"
#include "QuillmereCore/DSP/UnitCircle-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace {

// e^(i x) for x in [0, 2 pi], to about one unit in the last place: x less a multiple of pi / 2 (Cody and
// Waite, in three parts of which the first two have so few bits that their multiples are exact).
HWY_INLINE Complex unitCircle(Vector x) {
    const Tag d;
    const Vector turns = hn::Round(hn::Mul(x, hn::Set(d, 0.63661977F)));  // quarter turns
    Vector r = hn::NegMulAdd(turns, hn::Set(d, 0x1.921fbp0F), x);
    r = hn::NegMulAdd(turns, hn::Set(d, 0x1.5110bp-22F), r);
    r = hn::NegMulAdd(turns, hn::Set(d, 0x1.184698p-44F), r);
    return onCircle(r, hn::ConvertTo(hn::RebindToSigned<Tag>(), turns));
}

// First visit of the bins: random phases. Writes the magnitudes in the order of the visits.
struct StartBin {
    const float* mag;    // [bins][lanes]
    const float* draws;  // [bins][lanes], uniform in [0, 1)
    float* target;

    HWY_INLINE Complex operator()(std::size_t k, Complex) {
        const Tag d;
        const Vector magnitude = hn::Load(d, mag + k * lanes);
        const Vector u = hn::Load(d, draws + k * lanes);
        const Complex phase = unitCircle(hn::Mul(hn::Add(u, u), hn::Set(d, 3.1415927F)));
        hn::Store(magnitude, d, target);
        target += lanes;
        return {hn::Mul(magnitude, phase.re), hn::Mul(magnitude, phase.im)};
    }
};

// Every later visit: the phase of value with the target magnitude, or no phase where value vanishes or is not
// a number. value is twice the spectrum; the factor cancels.
struct RefineBin {
    const float* target;

    HWY_INLINE Complex operator()(std::size_t, Complex value) {
        const Tag d;
        const Vector magnitude = hn::Load(d, target);
        target += lanes;
        const Vector r = hn::Sqrt(hn::MulAdd(value.re, value.re, hn::Mul(value.im, value.im)));
        const auto defined = hn::Gt(r, hn::Set(d, 2 * 1e-12F));
        const Vector scale = hn::Div(magnitude, r);
        return {hn::IfThenElse(defined, hn::Mul(value.re, scale), magnitude),
                hn::IfThenElseZero(defined, hn::Mul(value.im, scale))};
    }
};

struct LoadWindowed {
    const float* signal;
    const float* window;

    HWY_INLINE Vector operator()(std::size_t i) const {
        return hn::Mul(hn::Load(Tag(), signal + i * maxLanes), hn::Set(Tag(), window[i]));
    }
};

// Adds the windowed frames to the sums of the frames before, which begin a hop earlier.
struct OverlapAdd {
    const float* before;  // from the first sample of these frames
    std::size_t overlap;  // samples that `before` reaches
    float* sums;
    const float* window;

    HWY_INLINE void operator()(std::size_t i, Vector value) const {
        const Tag d;
        const Vector w = hn::Set(d, window[i]);
        const Vector sum =
            i < overlap ? hn::MulAdd(value, w, hn::Load(d, before + i * maxLanes)) : hn::Mul(value, w);
        hn::Store(sum, d, sums + i * maxLanes);
    }
};

// Turns complete sums into the signal of these rows, and extrapolates it from the previous pass for analysis.
// The transform is linear: the spectra of the result are the spectra of both signals, extrapolated.
void finishRows(const GriffinLimState& state, float momentum, const float* sums, std::size_t first,
                std::size_t end) {
    const Tag d;
    const Vector m = hn::Set(d, momentum);
    for (std::size_t row = first; row < end; ++row, sums += maxLanes) {
        const float* const edge = state.edgeFactorsOf(row);
        float* const previous = state.previous + row * maxLanes;
        float* const signal = state.signal + row * maxLanes;
        for (std::size_t l = 0; l < maxLanes; l += lanes) {
            Vector x = hn::Load(d, sums + l);
            if (edge) {
                // Outside the result the signal is 0, even where the sum is not a number.
                const Vector factor = hn::Load(d, edge + l);
                x = hn::IfThenZeroElse(hn::Eq(factor, hn::Zero(d)), hn::Mul(x, factor));
            }
            const Vector change = hn::Sub(x, hn::Load(d, previous + l));
            hn::Store(hn::MulAdd(change, m, x), d, signal + l);
            hn::Store(x, d, previous + l);
        }
    }
}

void copyRows(const float* from, std::size_t count, float* to) {
    for (std::size_t i = 0; i < count * maxLanes; i += lanes)
        hn::Store(hn::Load(Tag(), from + i), Tag(), to + i);
}

// Adds what each run's frames contribute past its end to the next run, to which these positions belong. The
// last run keeps them. rows: sums of all rows.
void handOverhangs(const GriffinLimState& state, float* rows) {
    const Tag d;
    for (std::size_t row = state.rows; row-- > state.runRows;) {
        const float* const from = rows + row * maxLanes;
        float* const to = rows + (row - state.runRows) * maxLanes;
        for (std::size_t l = 0; l < maxLanes; l += lanes) {
            Vector shifted = hn::LoadU(d, from + l - 1);  // the lane below
            if (l == 0) shifted = hn::IfThenZeroElse(hn::FirstN(d, 1), shifted);
            hn::Store(hn::Add(hn::Load(d, to + l), shifted), d, to + l);
        }
    }
}

// Copies the signal of each run back past the end of the run before, where its last frames need it.
void copyOverhangs(const GriffinLimState& state, float* rows) {
    const Tag d;
    for (std::size_t row = state.runRows; row < state.rows; ++row) {
        const float* const from = rows + (row - state.runRows) * maxLanes;
        float* const to = rows + row * maxLanes;
        for (std::size_t l = 0; l < maxLanes; l += lanes) {
            Vector shifted = hn::LoadU(d, from + l + 1);  // the lane above
            if (l + lanes == maxLanes)
                shifted = hn::IfThenElse(hn::FirstN(d, lanes - 1), shifted, hn::Load(d, to + l));
            hn::Store(shifted, d, to + l);
        }
    }
}

// Runs the batches of a pass. step(batch, b, l) analyses or makes the spectra of frames b of the runs l,
// l + 1, ..., which are then added up.
template <class Step>
HWY_INLINE void pass(const GriffinLimState& state, float momentum, Step step) {
    FrameBatch batch(state.plan, state.work);
    const std::size_t n = state.plan.n;
    const std::size_t hop = state.hop;
    const std::size_t overlap = n > hop ? n - hop : 0;
    float* before = state.sums[0];
    float* sums = state.sums[1];
    for (std::size_t b = 0; b < state.runFrames; ++b) {
        for (std::size_t l = 0; l < maxLanes; l += lanes) {
            step(batch, b, l);
            batch.join(OverlapAdd{before + hop * maxLanes + l, b == 0 ? 0 : overlap, sums + l,
                                  state.inverseWindow.data()});
        }
        // These rows are complete, except that the first ones of a run lack what the run before adds to them.
        // They wait in the signal, which is no longer needed there.
        const std::size_t row = b * hop;
        const std::size_t ready = std::clamp(overlap, row, row + hop);
        copyRows(sums, ready - row, state.signal + row * maxLanes);
        finishRows(state, momentum, sums + (ready - row) * maxLanes, ready, row + hop);
        std::swap(before, sums);
    }
    copyRows(before + hop * maxLanes, overlap, state.signal + state.runRows * maxLanes);
    handOverhangs(state, state.signal);
    finishRows(state, momentum, state.signal, 0, std::min(overlap, state.runRows));
    finishRows(state, momentum, state.signal + state.runRows * maxLanes, state.runRows, state.rows);
    copyOverhangs(state, state.signal);
}

// Interleaves row b of the runs l, l + 1, ... of a spectrogram [frames][bins]; frames that do not exist are
// 0.
void gatherFrames(const GriffinLimState& state, const float* spectrogram, std::size_t b, std::size_t l,
                  float* out) {
    const float* rows[lanes];
    for (std::size_t i = 0; i < lanes; ++i) {
        const std::size_t t = (l + i) * state.runFrames + b;
        rows[i] = t < state.frames ? spectrogram + t * state.bins : state.silence.data();
    }
    interleave(rows, state.bins, out, lanes);
}

struct StartStep {
    const GriffinLimState& state;
    const float* mag;
    const float* draws;

    HWY_INLINE void operator()(FrameBatch& batch, std::size_t b, std::size_t l) {
        gatherFrames(state, mag, b, l, state.startMag);
        gatherFrames(state, draws, b, l, state.startDraws);
        StartBin bin{state.startMag, state.startDraws, state.magnitudesOf(b, l)};
        batch.synthesise(bin);
    }
};

struct RefineStep {
    const GriffinLimState& state;

    HWY_INLINE void operator()(FrameBatch& batch, std::size_t b, std::size_t l) {
        RefineBin bin{state.magnitudesOf(b, l)};
        batch.split(LoadWindowed{state.signal + b * state.hop * maxLanes + l, state.window.data()});
        batch.refine(bin);
    }
};

// mag and draws: [frames][bins]. Leaves the signal in state.result.
void run(GriffinLimState& state, const float* mag, const float* draws, long long iterations, float momentum) {
    // There is nothing to extrapolate from in the first pass.
    pass(state, 0.0F, StartStep{state, mag, draws});
    for (long long i = 0; i < iterations; ++i)
        pass(state, momentum, RefineStep{state});
    float* samples[maxLanes];
    for (std::size_t l = 0; l < maxLanes; ++l)
        samples[l] = state.result.data() + state.runStart(l);
    for (std::size_t l = 0; l < maxLanes; l += lanes)
        deinterleave(state.previous + l, maxLanes, state.runRows, samples + l);
    for (std::size_t row = state.runRows; row < state.rows; ++row)
        samples[maxLanes - 1][row] = state.previous[row * maxLanes + maxLanes - 1];
}

}  // namespace
}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere {

HWY_EXPORT(run);

std::vector<float> GriffinLim::reconstruct(std::span<const float> mag, int frames, long long length,
                                           long long iterations, STFT& stft, SeededRNG& rng, float momentum) {
    require(frames >= 0 && length >= 0, "GriffinLim: negative size");
    const auto size = static_cast<std::size_t>(checkedMultiply(frames, stft.bins()));
    require(mag.size() >= size, "GriffinLim: magnitude too small");
    std::vector<float> draws(size);
    for (float& draw : draws)
        draw = rng.uniform();
    std::vector<float> samples(static_cast<std::size_t>(length));
    // The window of a frame of one sample is 0, and so is everything made of it.
    if (frames == 0 || stft.nFFT() == 1) return samples;
    GriffinLimState state(stft, frames, samples.size());
    HWY_DYNAMIC_DISPATCH(run)(state, mag.data(), draws.data(), iterations, momentum);
    const std::size_t count = std::min(samples.size(), state.result.size() - state.plan.half);
    std::copy_n(state.result.begin() + static_cast<std::ptrdiff_t>(state.plan.half), count, samples.begin());
    return samples;
}

}  // namespace quillmere
#endif
