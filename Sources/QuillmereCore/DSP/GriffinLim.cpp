#include "QuillmereCore/DSP/GriffinLim.h"

#include <algorithm>

#include "QuillmereCore/DSP/VectorLanes.h"
#include "QuillmereCore/Util/Failure.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QuillmereCore/DSP/GriffinLim.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/aligned_allocator.h>
#include <hwy/highway.h>

#include "QuillmereCore/DSP/BatchedFFT-inl.h"
#include "QuillmereCore/DSP/GriffinLimState.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace {

// e^(i x) for x in [0, 2 pi], to about one unit in the last place: x less a multiple of pi / 2 (Cody and
// Waite, in three parts of which the first two have so few bits that their multiples are exact), then Cephes'
// polynomials on [-pi / 4, pi / 4].
HWY_INLINE Complex unitCircle(Vector x) {
    const Tag d;
    const hn::RebindToSigned<Tag> di;
    const Vector turns = hn::Round(hn::Mul(x, hn::Set(d, 0.63661977F)));  // quarter turns
    Vector r = hn::NegMulAdd(turns, hn::Set(d, 0x1.921fbp0F), x);
    r = hn::NegMulAdd(turns, hn::Set(d, 0x1.5110bp-22F), r);
    r = hn::NegMulAdd(turns, hn::Set(d, 0x1.184698p-44F), r);
    const Vector r2 = hn::Mul(r, r);
    Vector sin = hn::MulAdd(r2, hn::Set(d, -1.9515295891e-4F), hn::Set(d, 8.3321608736e-3F));
    sin = hn::MulAdd(r2, sin, hn::Set(d, -1.6666654611e-1F));
    sin = hn::MulAdd(hn::Mul(r2, r), sin, r);
    Vector cos = hn::MulAdd(r2, hn::Set(d, 2.443315711809948e-5F), hn::Set(d, -1.388731625493765e-3F));
    cos = hn::MulAdd(r2, cos, hn::Set(d, 4.166664568298827e-2F));
    cos = hn::MulAdd(hn::Mul(r2, r2), cos, hn::NegMulAdd(r2, hn::Set(d, 0.5F), hn::Set(d, 1.0F)));
    // Each quarter turn takes (cos, sin) to (-sin, cos).
    const auto quarters = hn::ConvertTo(di, turns);
    const auto one = hn::Set(di, 1);
    const auto odd = hn::RebindMask(d, hn::Eq(hn::And(quarters, one), one));
    const auto signOfSin = hn::ShiftLeft<30>(hn::And(quarters, hn::Set(di, 2)));
    const auto signOfCos = hn::ShiftLeft<30>(hn::And(hn::Add(quarters, one), hn::Set(di, 2)));
    return {hn::Xor(hn::IfThenElse(odd, sin, cos), hn::BitCast(d, signOfCos)),
            hn::Xor(hn::IfThenElse(odd, cos, sin), hn::BitCast(d, signOfSin))};
}

// What is kept of a bin from pass to pass, in the order of FrameBatch's visits: target magnitude and the
// latest projection, twice its real and imaginary part; a vector each.
inline constexpr std::size_t recordSize = 3 * lanes;

// First visit of the bins: random phases. Writes the records.
struct StartBin {
    const float* mag;    // [bins][lanes]
    const float* draws;  // [bins][lanes], uniform in [0, 1)
    float* record;

    HWY_INLINE Complex operator()(std::size_t k, Complex) {
        const Tag d;
        const Vector magnitude = hn::Load(d, mag + k * lanes);
        const Vector u = hn::Load(d, draws + k * lanes);
        const Complex phase = unitCircle(hn::Mul(hn::Add(u, u), hn::Set(d, 3.1415927F)));
        hn::Store(magnitude, d, record);
        hn::Store(hn::Zero(d), d, record + lanes);
        hn::Store(hn::Zero(d), d, record + 2 * lanes);
        record += recordSize;
        return {hn::Mul(magnitude, phase.re), hn::Mul(magnitude, phase.im)};
    }
};

// Every later visit: extrapolates from the previous projection through the new one and gives the result the
// target magnitude. Both projections are twice the spectrum; the factor cancels.
struct RefineBin {
    Vector momentum;
    float* record;

    HWY_INLINE Complex operator()(std::size_t, Complex fresh) {
        const Tag d;
        const Vector magnitude = hn::Load(d, record);
        const Complex previous = {hn::Load(d, record + lanes), hn::Load(d, record + 2 * lanes)};
        hn::Store(fresh.re, d, record + lanes);
        hn::Store(fresh.im, d, record + 2 * lanes);
        record += recordSize;
        const Vector a = hn::MulAdd(hn::Sub(fresh.re, previous.re), momentum, fresh.re);
        const Vector b = hn::MulAdd(hn::Sub(fresh.im, previous.im), momentum, fresh.im);
        const Vector r = hn::Sqrt(hn::MulAdd(a, a, hn::Mul(b, b)));
        const auto defined = hn::Gt(r, hn::Set(d, 2 * 1e-12F));  // not so when r is NaN
        const Vector scale = hn::Div(magnitude, r);
        return {hn::IfThenElse(defined, hn::Mul(a, scale), magnitude),
                hn::IfThenElseZero(defined, hn::Mul(b, scale))};
    }
};

struct LoadWindowed {
    const float* signal;
    const float* window;
    HWY_INLINE Vector operator()(std::size_t i) const {
        return hn::Mul(hn::Load(Tag(), signal + i * maxLanes), hn::Set(Tag(), window[i]));
    }
};

struct OverlapAdd {
    float* signal;
    const float* window;
    HWY_INLINE void operator()(std::size_t i, Vector value) const {
        float* const to = signal + i * maxLanes;
        hn::Store(hn::MulAdd(value, hn::Set(Tag(), window[i]), hn::Load(Tag(), to)), Tag(), to);
    }
};

void clearRows(float* signal, std::size_t first, std::size_t end) {
    for (float* p = signal + first * maxLanes; p != signal + end * maxLanes; p += lanes)
        hn::Store(hn::Zero(Tag()), Tag(), p);
}

// Adds the samples of each run past its own frames' hops to the run they belong to, the next one. The last
// run keeps them.
void handOverhangs(const GriffinLimState& state, float* signal) {
    const Tag d;
    const std::size_t runRows = state.runFrames * state.hop;
    for (std::size_t row = state.rows; row-- > runRows;) {
        const float* const from = signal + row * maxLanes;
        float* const to = signal + (row - runRows) * maxLanes;
        for (std::size_t l = 0; l < maxLanes; l += lanes) {
            Vector shifted = hn::LoadU(d, from + l - 1);  // the lane below
            if (l == 0) shifted = hn::IfThenZeroElse(hn::FirstN(d, 1), shifted);
            hn::Store(hn::Add(hn::Load(d, to + l), shifted), d, to + l);
        }
    }
}

// Copies the complete samples back to the overlapping end of the run before.
void copyOverhangs(const GriffinLimState& state, float* signal) {
    const Tag d;
    const std::size_t runRows = state.runFrames * state.hop;
    for (std::size_t row = runRows; row < state.rows; ++row) {
        const float* const from = signal + (row - runRows) * maxLanes;
        float* const to = signal + row * maxLanes;
        for (std::size_t l = 0; l < maxLanes; l += lanes) {
            Vector shifted = hn::LoadU(d, from + l + 1);  // the lane above
            if (l + lanes == maxLanes)
                shifted = hn::IfThenElse(hn::FirstN(d, lanes - 1), shifted, hn::Load(d, to + l));
            hn::Store(shifted, d, to + l);
        }
    }
}

// Outside the result the signal is 0, even where the overlap-add is not a number.
void normalise(const GriffinLimState& state, float* signal) {
    const Tag d;
    const float* const reciprocal = state.reciprocal.get();
    for (std::size_t i = 0; i < state.rows * maxLanes; i += lanes) {
        const Vector r = hn::Load(d, reciprocal + i);
        const Vector normalised = hn::Mul(hn::Load(d, signal + i), r);
        hn::Store(hn::IfThenZeroElse(hn::Eq(r, hn::Zero(d)), normalised), d, signal + i);
    }
}

// Runs the batches of a pass. step(batch, b, l, row) adds frames b of the runs l, l + 1, ... to the rows of
// state.next that begin at row.
template <class Step>
HWY_INLINE void pass(GriffinLimState& state, Step step) {
    FrameBatch batch(state.plan, state.work.get());
    float* const signal = state.next.get();
    std::size_t cleared = 0;
    for (std::size_t b = 0; b < state.runFrames; ++b) {
        const std::size_t row = b * state.hop;
        clearRows(signal, cleared, row + state.plan.n);
        cleared = row + state.plan.n;
        for (std::size_t l = 0; l < maxLanes; l += lanes)
            step(batch, b, l, row * maxLanes + l);
    }
    handOverhangs(state, signal);
    normalise(state, signal);
    copyOverhangs(state, signal);
    std::swap(state.signal, state.next);
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
    GriffinLimState& state;
    const float* mag;
    const float* draws;

    HWY_INLINE void operator()(FrameBatch& batch, std::size_t b, std::size_t l, std::size_t offset) {
        gatherFrames(state, mag, b, l, state.magRows.get());
        gatherFrames(state, draws, b, l, state.drawRows.get());
        StartBin bin{state.magRows.get(), state.drawRows.get(), state.recordsOf(b, l)};
        batch.synthesise(bin);
        batch.join(OverlapAdd{state.next.get() + offset, state.inverseWindow.data()});
    }
};

struct RefineStep {
    GriffinLimState& state;
    float momentum;

    HWY_INLINE void operator()(FrameBatch& batch, std::size_t b, std::size_t l, std::size_t offset) {
        RefineBin bin{hn::Set(Tag(), momentum), state.recordsOf(b, l)};
        batch.split(LoadWindowed{state.signal.get() + offset, state.window.data()});
        batch.refine(bin);
        batch.join(OverlapAdd{state.next.get() + offset, state.inverseWindow.data()});
    }
};

// mag and draws: [frames][bins]. Leaves the result in state.samples.
void run(GriffinLimState& state, const float* mag, const float* draws, long long iterations, float momentum) {
    const float* reciprocals[maxLanes];
    float* samples[maxLanes];
    for (std::size_t l = 0; l < maxLanes; ++l) {
        reciprocals[l] = state.reciprocals.data() + state.runStart(l);
        samples[l] = state.samples.data() + state.runStart(l);
    }
    for (std::size_t l = 0; l < maxLanes; l += lanes)
        interleave(reciprocals + l, state.rows, state.reciprocal.get() + l, maxLanes);
    pass(state, StartStep{state, mag, draws});
    for (long long i = 0; i < iterations; ++i)  // there is nothing to extrapolate from in the first
        pass(state, RefineStep{state, i == 0 ? 0.0F : momentum});
    for (std::size_t l = 0; l < maxLanes; l += lanes)
        deinterleave(state.signal.get() + l, maxLanes, state.rows, samples + l);
}

}  // namespace
}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere {

HWY_EXPORT(run);

GriffinLimState::GriffinLimState(const STFT& stft, int frameCount, std::size_t length)
    : plan(stft.nFFT()),
      frames(static_cast<std::size_t>(frameCount)),
      hop(static_cast<std::size_t>(stft.hop())),
      bins(plan.half + 1),
      runFrames((frames + maxLanes - 1) / maxLanes),
      rows((runFrames - 1) * hop + plan.n),
      window(stft.window().begin(), stft.window().end()),
      inverseWindow(window),
      silence(bins),
      work(hwy::AllocateAligned<float>(plan.workSize())),
      magRows(hwy::AllocateAligned<float>(bins * maxLanes)),
      drawRows(hwy::AllocateAligned<float>(bins * maxLanes)),
      records(hwy::AllocateAligned<float>(runFrames * bins * 3 * maxLanes)),
      signal(hwy::AllocateAligned<float>(rows * maxLanes)),
      next(hwy::AllocateAligned<float>(rows * maxLanes)),
      reciprocal(hwy::AllocateAligned<float>(rows * maxLanes)),
      reciprocals(runStart(maxLanes - 1) + rows),
      samples(reciprocals.size()) {
    require(work && magRows && drawRows && records && signal && next && reciprocal, "GriffinLim: no memory");
    for (float& w : inverseWindow)
        w /= static_cast<float>(plan.n);  // exact: a power of two
    for (std::size_t t = 0; t < frames; ++t) {
        for (std::size_t i = 0; i < plan.n; ++i)
            reciprocals[t * hop + i] += window[i] * window[i];
    }
    for (std::size_t position = 0; position < reciprocals.size(); ++position) {
        const bool inside = position >= plan.half && position - plan.half < length;
        reciprocals[position] = inside ? 1.0F / std::max(reciprocals[position], stft.weightFloor()) : 0.0F;
    }
}

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
    const std::size_t count = std::min(samples.size(), state.samples.size() - state.plan.half);
    std::copy_n(state.samples.begin() + static_cast<std::ptrdiff_t>(state.plan.half), count, samples.begin());
    return samples;
}

}  // namespace quillmere
#endif
