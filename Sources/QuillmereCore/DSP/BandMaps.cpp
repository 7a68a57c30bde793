#include "QuillmereCore/DSP/BandMaps.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "QuillmereCore/DSP/AlignedFloats.h"
#include "QuillmereCore/DSP/VectorLanes.h"
#include "QuillmereCore/Util/Failure.h"

#define HWY_TARGET_INCLUDE "QuillmereCore/DSP/BandMaps.cpp"
#include "QuillmereCore/Util/VectorTargets.h"

#include "QuillmereCore/DSP/BandTables.h"
#include "QuillmereCore/DSP/BatchedFFT-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace {

constexpr float least = 1e-12F;  // keeps divisors from 0

// The parts of the scratch memory, each with one frame per lane.
struct Buffers {
    Buffers(std::size_t bands, std::size_t bins, float* scratch)
        : spectra(scratch),
          mel(spectra + bins * lanes),
          ratios(mel + bands * lanes),
          unused(ratios + bands * lanes) {}

    float* spectra;  // [bins][lanes]
    float* mel;      // [bands][lanes]
    float* ratios;   // [bands][lanes]
    float* unused;   // [max(bins, bands)], for lanes without a frame
};

// done(row, sum) takes the product of each row with the columns [columns][lanes].
template <class Done>
HWY_INLINE void multiply(const Sparse& matrix, const float* columns, const Done& done) {
    const Tag d;
    const Sparse::Term* term = matrix.terms.data();
    const std::uint32_t* const ends = matrix.ends.data();
    for (std::size_t row = 0; row < matrix.ends.size(); ++row) {
        Vector sum = hn::Zero(d);
        for (const auto* const end = matrix.terms.data() + ends[row]; term != end; ++term)
            sum = hn::MulAdd(hn::Set(d, term->weight), hn::Load(d, columns + term->column * lanes), sum);
        done(row, sum);
    }
}

// out [frames][rows] = matrix * in [frames][columns].
void apply(const Sparse& matrix, const float* in, std::size_t columns, std::size_t frames, float* scratch,
           float* out) {
    const std::size_t rows = matrix.ends.size();
    float* const from = scratch;
    float* const to = from + columns * lanes;
    float* const unused = to + rows * lanes;
    for (std::size_t t = 0; t < frames; t += lanes) {
        const std::size_t part = HWY_MIN(lanes, frames - t);
        interleave(InputRows(in + t * columns, columns, part).rows, columns, from, lanes);
        multiply(matrix, from,
                 [&](std::size_t row, Vector sum) HWY_ATTR { hn::Store(sum, Tag(), to + row * lanes); });
        deinterleave(to, lanes, rows, OutputRows(out + t * rows, rows, part, unused).rows);
    }
}

void refine(const BandTables& tables, std::size_t bands, std::size_t bins, float* spectra, const float* mel,
            std::size_t frames, int rounds, float* scratch) {
    const Tag d;
    const Buffers buffers(bands, bins, scratch);
    const std::uint32_t* const updated = tables.updatedBins.data();
    for (std::size_t t = 0; t < frames; t += lanes) {
        const std::size_t part = HWY_MIN(lanes, frames - t);
        float* const first = spectra + t * bins;
        interleave(InputRows(first, bins, part).rows, bins, buffers.spectra, lanes);
        interleave(InputRows(mel + t * bands, bands, part).rows, bands, buffers.mel, lanes);
        for (int round = 0; round < rounds; ++round) {
            multiply(tables.forward, buffers.spectra, [&](std::size_t band, Vector present) HWY_ATTR {
                const Vector wanted = hn::Load(d, buffers.mel + band * lanes);
                const Vector ratio = hn::Div(wanted, hn::Max(present, hn::Set(d, least)));
                hn::Store(ratio, d, buffers.ratios + band * lanes);
            });
            multiply(tables.update, buffers.ratios, [&](std::size_t row, Vector factor) HWY_ATTR {
                float* const bin = buffers.spectra + updated[row] * lanes;
                hn::Store(hn::Mul(hn::Load(d, bin), factor), d, bin);
            });
        }
        deinterleave(buffers.spectra, lanes, bins, OutputRows(first, bins, part, buffers.unused).rows);
    }
}

}  // namespace
}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere {
namespace {

using Terms = std::vector<Sparse::Term>;

// The bands that cover each bin, with the weights that weightOf(row, raw weight) gives them.
template <class Weight>
std::vector<Terms> coverage(const MelFilterBank& bank, const Weight& weightOf) {
    std::vector<Terms> bins(static_cast<std::size_t>(bank.bins()));
    for (std::size_t band = 0; band < bank.rows().size(); ++band) {
        const MelFilterBank::Row& row = bank.rows()[band];
        for (std::size_t j = 0; j < row.weights.size(); ++j) {
            const std::size_t bin = static_cast<std::size_t>(row.start) + j;
            bins[bin].push_back({static_cast<std::uint32_t>(band), weightOf(row, row.weights[j])});
        }
    }
    return bins;
}

void divide(Terms& terms, float divisor) {
    for (Sparse::Term& term : terms)
        term.weight /= divisor;
}

Sparse forwardOf(const MelFilterBank& bank) {
    Sparse forward;
    for (const MelFilterBank::Row& row : bank.rows()) {
        Terms terms;
        for (std::size_t j = 0; j < row.weights.size(); ++j)
            terms.push_back({static_cast<std::uint32_t>(row.start) + static_cast<std::uint32_t>(j),
                             row.weights[j] / row.sum});
        forward.addRow(terms);
    }
    return forward;
}

// A bin that no band covers repeats the covered one below it.
Sparse inverseOf(const MelFilterBank& bank) {
    constexpr float covered = 1.0e-6F;
    Sparse inverse;
    Terms held;
    std::vector<Terms> bins = coverage(bank, [](const MelFilterBank::Row&, float weight) { return weight; });
    for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        if (bank.binSum()[bin] > covered) {
            held = std::move(bins[bin]);
            divide(held, bank.binSum()[bin]);
        }
        inverse.addRow(held);
    }
    return inverse;
}

BandTables tablesOf(const MelFilterBank& bank) {
    BandTables tables{forwardOf(bank), inverseOf(bank), {}, {}};
    std::vector<Terms> bins =
        coverage(bank, [](const MelFilterBank::Row& row, float weight) { return weight / row.sum; });
    for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        float sum = 0;
        for (const Sparse::Term& term : bins[bin])
            sum += term.weight;
        if (!(sum > 1.0e-9F)) continue;
        divide(bins[bin], sum);
        tables.update.addRow(bins[bin]);
        tables.updatedBins.push_back(static_cast<std::uint32_t>(bin));
    }
    return tables;
}

}  // namespace

HWY_EXPORT(apply);
HWY_EXPORT(refine);

struct BandMaps::State {
    explicit State(const MelFilterBank& bank)
        : tables(tablesOf(bank)), scratch(allocateFloats(scratchSize(bank))) {}

    static std::size_t scratchSize(const MelFilterBank& bank) {
        const auto bands = static_cast<std::size_t>(bank.nMels());
        const auto bins = static_cast<std::size_t>(bank.bins());
        return (bins + 2 * bands) * maxLanes + std::max(bins, bands);
    }

    BandTables tables;
    AlignedFloats scratch;
};

BandMaps::BandMaps(const MelFilterBank& bank)
    : bands_(static_cast<std::size_t>(bank.nMels())),
      bins_(static_cast<std::size_t>(bank.bins())),
      state_(std::make_unique<State>(bank)) {}
BandMaps::~BandMaps() = default;
BandMaps::BandMaps(BandMaps&&) noexcept = default;
BandMaps& BandMaps::operator=(BandMaps&&) noexcept = default;

std::size_t BandMaps::frameCount(std::size_t spectraSize, std::size_t melSize) const {
    const std::size_t frames = spectraSize / bins_;
    require(spectraSize == frames * bins_ && melSize == frames * bands_,
            "BandMaps: spectra and bands do not fit each other");
    return frames;
}

void BandMaps::forward(std::span<const float> spectra, std::span<float> mel) {
    const std::size_t frames = frameCount(spectra.size(), mel.size());
    HWY_DYNAMIC_DISPATCH(apply)
    (state_->tables.forward, spectra.data(), bins_, frames, state_->scratch.get(), mel.data());
}

void BandMaps::inverse(std::span<const float> mel, std::span<float> spectra) {
    const std::size_t frames = frameCount(spectra.size(), mel.size());
    HWY_DYNAMIC_DISPATCH(apply)
    (state_->tables.inverse, mel.data(), bands_, frames, state_->scratch.get(), spectra.data());
}

void BandMaps::refine(std::span<float> spectra, std::span<const float> mel, int rounds) {
    const std::size_t frames = frameCount(spectra.size(), mel.size());
    HWY_DYNAMIC_DISPATCH(refine)
    (state_->tables, bands_, bins_, spectra.data(), mel.data(), frames, rounds, state_->scratch.get());
}

}  // namespace quillmere
#endif
