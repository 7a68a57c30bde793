#include "QuillmereCore/DSP/BatchedFFT.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

#include "QuillmereCore/DSP/AlignedFloats.h"
#include "QuillmereCore/DSP/VectorLanes.h"
#include "QuillmereCore/Util/Failure.h"

#define HWY_TARGET_INCLUDE "QuillmereCore/DSP/BatchedFFT.cpp"
#include "QuillmereCore/Util/VectorTargets.h"

#include "QuillmereCore/DSP/BatchedFFT-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace {

// The parts of the scratch memory.
struct Buffers {
    Buffers(const RealFFTPlan& plan, float* scratch)
        : work(scratch),
          samples(work + plan.workSize()),
          re(samples + plan.n * lanes),
          im(re + (plan.half + 1) * lanes),
          unused(im + (plan.half + 1) * lanes) {}

    float* work;     // of FrameBatch
    float* samples;  // [n][lanes]
    float* re;       // [bins][lanes]
    float* im;       // [bins][lanes]
    float* unused;   // [n + 1], for lanes without a frame
};

struct SampleRows {
    const float* rows;
    HWY_INLINE Vector operator()(std::size_t i) const { return hn::Load(Tag(), rows + i * lanes); }
};

struct KeepSamples {
    float* rows;
    HWY_INLINE void operator()(std::size_t i, Vector value) const {
        hn::Store(value, Tag(), rows + i * lanes);
    }
};

struct KeepSpectrum {
    float* re;
    float* im;
    HWY_INLINE Complex operator()(std::size_t k, Complex value) const {
        const Vector half = hn::Set(Tag(), 0.5F);
        hn::Store(hn::Mul(value.re, half), Tag(), re + k * lanes);
        hn::Store(hn::Mul(value.im, half), Tag(), im + k * lanes);
        return value;
    }
};

struct SpectrumRows {
    const float* re;
    const float* im;
    HWY_INLINE Complex operator()(std::size_t k, Complex) const {
        return {hn::Load(Tag(), re + k * lanes), hn::Load(Tag(), im + k * lanes)};
    }
};

void forward(const RealFFTPlan& plan, float* scratch, const float* frames, std::size_t count, float* re,
             float* im) {
    const std::size_t bins = plan.half + 1;
    const Buffers buffers(plan, scratch);
    FrameBatch batch(plan, buffers.work);
    KeepSpectrum keep{buffers.re, buffers.im};
    for (std::size_t t = 0; t < count; t += lanes) {
        const std::size_t part = HWY_MIN(lanes, count - t);
        interleave(InputRows(frames + t * plan.n, plan.n, part).rows, plan.n, buffers.samples, lanes);
        batch.split(SampleRows{buffers.samples});
        batch.analyse(keep);
        deinterleave(buffers.re, lanes, bins, OutputRows(re + t * bins, bins, part, buffers.unused).rows);
        deinterleave(buffers.im, lanes, bins, OutputRows(im + t * bins, bins, part, buffers.unused).rows);
    }
}

void inverse(const RealFFTPlan& plan, float* scratch, const float* re, const float* im, std::size_t count,
             float* frames) {
    const std::size_t bins = plan.half + 1;
    const Buffers buffers(plan, scratch);
    FrameBatch batch(plan, buffers.work);
    SpectrumRows spectrum{buffers.re, buffers.im};
    for (std::size_t t = 0; t < count; t += lanes) {
        const std::size_t part = HWY_MIN(lanes, count - t);
        interleave(InputRows(re + t * bins, bins, part).rows, bins, buffers.re, lanes);
        interleave(InputRows(im + t * bins, bins, part).rows, bins, buffers.im, lanes);
        batch.synthesise(spectrum);
        batch.join(KeepSamples{buffers.samples});
        deinterleave(buffers.samples, lanes, plan.n,
                     OutputRows(frames + t * plan.n, plan.n, part, buffers.unused).rows);
    }
}

}  // namespace
}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere {
namespace {

// The first count of the n-th roots of unity, e^(-2 pi i k / n). Only the first eighth of the circle is
// computed, in double; the rest follows by reflection, so that symmetric roots are equal bit for bit.
class Roots {
public:
    explicit Roots(std::size_t n) : n_(n) {
        for (std::size_t k = 0; k <= n / 8; ++k) {
            const double angle = 2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
            eighth_.push_back({static_cast<float>(std::cos(angle)), static_cast<float>(-std::sin(angle))});
        }
    }

    // k < n.
    [[nodiscard]] RealFFTPlan::Root operator[](std::size_t k) const {
        if (8 * k <= n_) return eighth_[k];
        if (4 * k <= n_) {
            const RealFFTPlan::Root mirrored = (*this)[n_ / 4 - k];
            return {-mirrored.im, -mirrored.re};
        }
        if (2 * k <= n_) {
            const RealFFTPlan::Root quarterBack = (*this)[k - n_ / 4];
            return {quarterBack.im, -quarterBack.re};
        }
        const RealFFTPlan::Root halfBack = (*this)[k - n_ / 2];
        return {-halfBack.re, -halfBack.im};
    }

private:
    std::size_t n_;
    std::vector<RealFFTPlan::Root> eighth_;
};

// The radix of a pass over groups of `length` rows.
std::size_t radixFor(std::size_t length) {
    if (length == 16) return 4;  // 4 * 4 is faster than 8 * 2
    return std::min<std::size_t>(length, 8);
}

RealFFTPlan::Pass makePass(const Roots& roots, std::size_t n, std::size_t length) {
    RealFFTPlan::Pass pass{radixFor(length), length / radixFor(length), {}};
    for (std::size_t column = 0; column < pass.columns; ++column) {
        for (std::size_t k = 1; k < pass.radix; ++k)
            pass.twiddles.push_back(roots[column * k * (n / length)]);
    }
    return pass;
}

// The rows in which the passes leave the bins: each pass sorts its group by the lowest digit of k that is
// left.
std::vector<std::uint32_t> rowsOfBins(const std::vector<RealFFTPlan::Pass>& passes, std::size_t half) {
    std::vector<std::uint32_t> rows(half);
    for (std::size_t k = 0; k < half; ++k) {
        std::size_t digits = k;
        std::size_t row = 0;
        for (const RealFFTPlan::Pass& pass : passes) {
            row += (digits & (pass.radix - 1)) * pass.columns;
            digits >>= std::countr_zero(pass.radix);
        }
        rows[k] = static_cast<std::uint32_t>(row);
    }
    return rows;
}

}  // namespace

RealFFTPlan::RealFFTPlan(int points) : n(static_cast<std::size_t>(points)), half(n / 2) {
    require(points >= 1 && std::has_single_bit(n), "FFT: the length is no power of two");
    if (n == 1) return;
    const Roots roots(n);
    for (std::size_t length = half; passes.empty() || length > 1; length = passes.back().columns) {
        if (!passes.empty() && length <= maxBlock) ++blockPasses;
        passes.push_back(makePass(roots, n, length));
    }
    blockLength = blockPasses == 0 ? 1 : passes[passes.size() - blockPasses - 1].columns;
    pairBins();
}

void RealFFTPlan::pairBins() {
    const Roots roots(n);
    const std::vector<std::uint32_t> rowOf = rowsOfBins(passes, half);
    std::vector<std::uint32_t> binOf(half);
    for (std::uint32_t k = 0; k < half; ++k)
        binOf[rowOf[k]] = k;
    // The bins of a block are equal modulo the number of blocks.
    const std::size_t blocks = half / blockLength;
    for (std::size_t a = 0; a <= blocks / 2; ++a) {
        const std::uint32_t first = rowOf[a];
        const std::uint32_t second = rowOf[a == 0 ? 0 : blocks - a];
        for (std::uint32_t row = first; row < first + blockLength; ++row) {
            const std::uint32_t k = binOf[row];
            if (k == 0) continue;  // DC, with Nyquist
            const std::uint32_t partner = rowOf[half - k];
            if (first == second && partner < row) continue;  // already there
            pairs.push_back({k, row, partner, roots[k]});
        }
        blockPairs.push_back({first, second, pairs.size()});
    }
}

HWY_EXPORT(forward);
HWY_EXPORT(inverse);

struct BatchedFFT::State {
    explicit State(int n)
        : plan(n), scratch(allocateFloats(plan.workSize() + (2 * plan.n + 2) * maxLanes + plan.n + 1)) {}

    RealFFTPlan plan;
    AlignedFloats scratch;
};

BatchedFFT::BatchedFFT(int n) : state_(std::make_unique<State>(n)) {}
BatchedFFT::~BatchedFFT() = default;
BatchedFFT::BatchedFFT(BatchedFFT&&) noexcept = default;
BatchedFFT& BatchedFFT::operator=(BatchedFFT&&) noexcept = default;

void BatchedFFT::forward(std::span<const float> frames, std::size_t count, std::span<float> re,
                         std::span<float> im) {
    const RealFFTPlan& plan = state_->plan;
    const std::size_t size = count * (plan.half + 1);
    require(frames.size() >= count * plan.n && re.size() >= size && im.size() >= size,
            "FFT: buffer too small");
    if (plan.n == 1) {  // the transform of one point is that point
        std::copy_n(frames.begin(), count, re.begin());
        std::fill_n(im.begin(), count, 0.0F);
        return;
    }
    HWY_DYNAMIC_DISPATCH(forward)(plan, state_->scratch.get(), frames.data(), count, re.data(), im.data());
}

void BatchedFFT::inverse(std::span<const float> re, std::span<const float> im, std::size_t count,
                         std::span<float> frames) {
    const RealFFTPlan& plan = state_->plan;
    const std::size_t size = count * (plan.half + 1);
    require(frames.size() >= count * plan.n && re.size() >= size && im.size() >= size,
            "FFT: buffer too small");
    if (plan.n == 1) {
        std::copy_n(re.begin(), count, frames.begin());
        return;
    }
    HWY_DYNAMIC_DISPATCH(inverse)(plan, state_->scratch.get(), re.data(), im.data(), count, frames.data());
}

}  // namespace quillmere
#endif
