#include "QuillmereCore/DSP/PhaseIntegration.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>
#include <vector>

#include "QuillmereCore/DSP/AlignedFloats.h"
#include "QuillmereCore/DSP/RankQueue.h"
#include "QuillmereCore/DSP/VectorLanes.h"
#include "QuillmereCore/Util/Failure.h"

#define HWY_TARGET_INCLUDE "QuillmereCore/DSP/PhaseIntegration.cpp"
#include "QuillmereCore/Util/VectorTargets.h"

#include <hwy/contrib/math/math-inl.h>

#include "QuillmereCore/DSP/BatchedFFT-inl.h"
#include "QuillmereCore/DSP/UnitCircle-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace {

// The largest value, at least 0; not a number if one of them is not finite.
float largest(const float* values, std::size_t count) {
    const Tag d;
    Vector most = hn::Zero(d);
    Vector defect = hn::Zero(d);  // 0 times each value
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const Vector x = hn::LoadU(d, values + i);
        most = hn::Max(most, x);
        defect = hn::MulAdd(x, hn::Zero(d), defect);
    }
    float loudest = hn::GetLane(hn::MaxOfLanes(d, most));
    float sum = hn::GetLane(hn::SumOfLanes(d, defect));
    for (; i < count; ++i) {
        loudest = HWY_MAX(loudest, values[i]);
        sum += 0.0F * values[i];
    }
    return loudest + sum;
}

// Natural logarithms in place, of values not below floor. count: a multiple of the lanes.
void logarithms(float* values, std::size_t count, float floor) {
    const Tag d;
    for (std::size_t i = 0; i < count; i += lanes)
        hn::Store(hn::Log(d, hn::Max(hn::Load(d, values + i), hn::Set(d, floor))), d, values + i);
}

// scale * (after - before) turns as Phase, on top of offset.
HWY_INLINE void storeTurns(const float* before, const float* after, float scale, std::uint32_t* turns) {
    const Tag d;
    const hn::RebindToSigned<Tag> di;
    const Vector difference = hn::Sub(hn::LoadU(d, after), hn::LoadU(d, before));
    const Vector x = hn::Mul(difference, hn::Set(d, scale));
    const Vector fraction = hn::Sub(x, hn::Round(x));
    const auto fixed = hn::ConvertTo(di, hn::Mul(fraction, hn::Set(d, 4294967296.0F)));
    hn::Store(hn::BitCast(hn::RebindToUnsigned<Tag>(), fixed), hn::RebindToUnsigned<Tag>(), turns);
}

// Half of what the phase gains from one frame, and from one bin, to the next. count: a multiple of the lanes.
void halfSteps(const float* const (&rows)[3], std::size_t count, float timeScale, float binScale,
               std::uint32_t* alongTime, std::uint32_t* alongBins) {
    for (std::size_t k = 0; k < count; k += lanes) {
        storeTurns(rows[1] + k - 1, rows[1] + k + 1, timeScale, alongTime + k);
        storeTurns(rows[0] + k, rows[2] + k, binScale, alongBins + k);
    }
}

HWY_INLINE Complex directionOf(hn::Vec<hn::RebindToUnsigned<Tag>> phase) {
    const Tag d;
    const hn::RebindToUnsigned<Tag> du;
    const hn::RebindToSigned<Tag> di;
    // The nearest multiple of a quarter turn, and what is left of it.
    const auto quarters = hn::ShiftRight<30>(hn::Add(phase, hn::Set(du, 1U << 29)));
    const auto rest = hn::BitCast(di, hn::Sub(phase, hn::ShiftLeft<30>(quarters)));
    const Vector radians = hn::Mul(hn::ConvertTo(d, rest), hn::Set(d, 1.4629180792671596e-9F));
    return onCircle(radians, hn::BitCast(di, quarters));
}

void toSpectrum(const float* mag, const std::uint32_t* phases, std::size_t count, float* re, float* im) {
    const Tag d;
    const hn::RebindToUnsigned<Tag> du;
    const auto convert = [&](const float* m, const std::uint32_t* phase, float* x, float* y) HWY_ATTR {
        const Vector magnitude = hn::LoadU(d, m);
        const Complex direction = directionOf(hn::LoadU(du, phase));
        hn::StoreU(hn::Mul(magnitude, direction.re), d, x);
        hn::StoreU(hn::Mul(magnitude, direction.im), d, y);
    };
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        convert(mag + i, phases + i, re + i, im + i);
    if (i == count) return;
    float m[lanes]{};
    float x[lanes];
    float y[lanes];
    std::uint32_t phase[lanes]{};
    std::copy(mag + i, mag + count, m);
    std::copy(phases + i, phases + count, phase);
    convert(m, phase, x, y);
    std::copy(x, x + (count - i), re + i);
    std::copy(y, y + (count - i), im + i);
}

}  // namespace
}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere {
namespace {

HWY_EXPORT(largest);
HWY_EXPORT(logarithms);
HWY_EXPORT(halfSteps);
HWY_EXPORT(toSpectrum);

using PhaseIntegration::Phase;
using PhaseIntegration::Shape;

constexpr std::uint32_t settled = ~std::uint32_t{0};

// A bin of the spectrogram. The steps to a neighbour add up to its half and one's own: trapezoids.
struct Cell {
    Phase alongTime = 0;  // half of the step to the next frame
    Phase alongBins = 0;  // half of the step to the next bin
    Phase phase = 0;
    std::uint32_t rank = settled;  // among the bins in range, or settled
};

// The logarithms of one frame after the other, three of which are held at a time.
class LogRows {
public:
    LogRows(std::span<const float> mag, std::size_t bins, float floor)
        : mag_(mag),
          bins_(bins),
          stride_(margin + (bins + 1 + maxLanes - 1) / maxLanes * maxLanes + margin),
          floor_(floor),
          memory_(allocateFloats(3 * stride_)) {
        std::fill_n(memory_.get(), 3 * stride_, 1.0F);
    }

    // Of frame t; overwrites that of frame t - 3. Bin k is at [k], also for one k beyond either end.
    const float* compute(std::size_t t) {
        float* const row = memory_.get() + t % 3 * stride_ + margin;
        std::copy_n(mag_.begin() + static_cast<std::ptrdiff_t>(t * bins_), bins_, row);
        row[0] = row[1];
        row[bins_ - 1] = row[bins_ - 2];
        row[bins_] = row[bins_ - 1];
        HWY_DYNAMIC_DISPATCH(logarithms)(row, stride_ - 2 * margin, floor_);
        row[-1] = row[0];
        return row;
    }

private:
    static constexpr std::size_t margin = maxLanes;

    std::span<const float> mag_;
    std::size_t bins_;
    std::size_t stride_;
    float floor_;
    AlignedFloats memory_;
};

// The bins in range as keys whose ascending order is that of falling magnitudes.
struct Ranking {
    struct Entry {
        std::uint32_t key, cell;
    };

    // Stable, so equal keys keep the order of the cells.
    void sort() {
        constexpr int digitBits = 9;
        constexpr std::uint32_t digitMask = (1U << digitBits) - 1;
        std::vector<Entry> other(entries.size());
        for (int shift = 0; shift < 3 * digitBits; shift += digitBits) {
            std::array<std::uint32_t, digitMask + 2> begins{};
            for (const Entry& entry : entries)
                ++begins[(entry.key >> shift & digitMask) + 1];
            for (std::size_t digit = 1; digit < begins.size(); ++digit)
                begins[digit] += begins[digit - 1];
            for (const Entry& entry : entries)
                other[begins[entry.key >> shift & digitMask]++] = entry;
            entries.swap(other);
        }
    }

    std::vector<Entry> entries;
};

// Cells surrounded by settled ones: one row before the first frame and one after the last, and one cell
// between rows.
class Sweep {
public:
    Sweep(std::span<const float> mag, const Shape& shape, float loudest)
        : shape_(shape),
          frames_(static_cast<std::size_t>(shape.frames)),
          bins_(static_cast<std::size_t>(shape.nFFT) / 2 + 1),
          stride_(bins_ + 1),
          cells_((frames_ + 2) * stride_ + 1),
          ranked_(rankingOf(mag, loudest)),
          queue_(ranked_.size()) {
        constexpr float floorBelowLoudest = 1e-5F;  // 20 dB below the range
        constexpr float leastFloor = 1e-12F;
        fillSteps(mag, loudest * floorBelowLoudest + leastFloor);
    }

    void run(std::span<const std::uint8_t> known, std::span<Phase> phases) {
        for (std::size_t t = 0; t < frames_; ++t) {
            for (std::size_t k = 0; k < bins_; ++k)
                cells_[cellOf(t, k)].phase = phases[t * bins_ + k];
        }
        for (std::size_t i = 0; i < known.size(); ++i) {
            if (known[i] != 0) settle(cells_[cellOf(i / bins_, i % bins_)]);
        }
        spread();
        for (const std::uint32_t cell : ranked_) {
            if (cells_[cell].rank == settled) continue;
            settle(cells_[cell]);
            spread();
        }
        for (std::size_t t = 0; t < frames_; ++t) {
            for (std::size_t k = 0; k < bins_; ++k)
                phases[t * bins_ + k] = cells_[cellOf(t, k)].phase;
        }
    }

private:
    [[nodiscard]] std::size_t cellOf(std::size_t t, std::size_t k) const { return (t + 1) * stride_ + k; }

    // Ranks the bins in range and returns their cells in the order of the ranks.
    std::vector<std::uint32_t> rankingOf(std::span<const float> mag, float loudest) {
        require(cells_.size() < settled, "PhaseIntegration: too many bins");
        const float quietest = loudest * PhaseIntegration::range;
        const auto top = std::bit_cast<std::uint32_t>(loudest);
        Ranking ranking;
        ranking.entries.reserve(mag.size());
        for (std::size_t t = 0; t < frames_; ++t) {
            const float* const row = &mag[t * bins_];
            for (std::size_t k = 0; k < bins_; ++k) {
                const float value = row[std::clamp<std::size_t>(k, 1, bins_ - 2)];
                if (!(value > quietest)) continue;
                // The bits of positive numbers are in the order of the numbers.
                ranking.entries.push_back(
                    {top - std::bit_cast<std::uint32_t>(value), static_cast<std::uint32_t>(cellOf(t, k))});
            }
        }
        ranking.sort();
        std::vector<std::uint32_t> ranked;
        ranked.reserve(ranking.entries.size());
        for (const Ranking::Entry& entry : ranking.entries) {
            cells_[entry.cell].rank = static_cast<std::uint32_t>(ranked.size());
            ranked.push_back(entry.cell);
        }
        return ranked;
    }

    // With g = 0.25645 nFFT^2, for which a Gaussian exp(-pi n^2 / g) comes nearest to the window, the phase
    // gains 2 pi k hop / nFFT + (hop nFFT / g) d ln A / dk from frame to frame. From bin to bin it gains
    // -(g / (nFFT hop)) d ln A / dt, less half a turn since a frame begins half a window before its centre.
    void fillSteps(std::span<const float> mag, float floor) {
        constexpr double windowArea = 0.25645;
        const double timeScale = static_cast<double>(shape_.hop) / (windowArea * shape_.nFFT);
        constexpr double halfTurns = 0.5 / (2 * std::numbers::pi);  // half of so many radians, in turns
        const auto centralTime = static_cast<float>(timeScale * halfTurns * 0.5);
        const auto oneSidedBins = static_cast<float>(-1 / timeScale * halfTurns);
        const std::size_t padded = (bins_ + maxLanes - 1) / maxLanes * maxLanes;
        const auto memory = hwy::AllocateAligned<Phase>(2 * padded);
        if (!memory) throw std::bad_alloc();
        Phase* const alongTime = memory.get();
        Phase* const alongBins = alongTime + padded;
        LogRows logs(mag, bins_, floor);
        const float* before = logs.compute(0);
        const float* here = before;
        for (std::size_t t = 0; t < frames_; ++t) {
            const bool isLast = t + 1 == frames_;
            const float* const after = isLast ? here : logs.compute(t + 1);
            const float binScale = t == 0 || isLast ? oneSidedBins : oneSidedBins * 0.5F;
            HWY_DYNAMIC_DISPATCH(halfSteps)
            ({before, here, after}, padded, centralTime, binScale, alongTime, alongBins);
            fillRow(t, alongTime, alongBins);
            before = here;
            here = after;
        }
    }

    void fillRow(std::size_t t, const Phase* alongTime, const Phase* alongBins) {
        constexpr Phase quarterTurn = Phase{1} << 30;
        // nFFT is a power of two, so half of a bin's carrier is a whole number of the smallest fractions.
        const auto nFFT = static_cast<std::uint32_t>(shape_.nFFT);
        const Phase halfCarrier = (Phase{1} << 31) / nFFT * static_cast<std::uint32_t>(shape_.hop);
        Cell* const row = &cells_[cellOf(t, 0)];
        Phase carrier = 0;
        for (std::size_t k = 0; k < bins_; ++k) {
            row[k].alongTime = alongTime[k] + carrier;
            row[k].alongBins = alongBins[k] - quarterTurn;
            carrier += halfCarrier;
        }
    }

    void settle(Cell& cell) {
        if (cell.rank == settled) return;
        queue_.insert(cell.rank);
        cell.rank = settled;
    }

    // From the loudest bin on that is settled and not yet left, until none is.
    void spread() {
        while (!queue_.isEmpty()) {
            Cell* const from = &cells_[ranked_[queue_.takeLowest()]];
            const auto reach = [&](Cell& to, Phase step) {
                if (to.rank == settled) return;
                to.phase = from->phase + step;
                settle(to);
            };
            Cell& nextFrame = from[stride_];
            Cell& previousFrame = *(from - stride_);
            Cell& nextBin = from[1];
            Cell& previousBin = from[-1];
            reach(nextFrame, from->alongTime + nextFrame.alongTime);
            reach(previousFrame, 0U - (from->alongTime + previousFrame.alongTime));
            reach(nextBin, from->alongBins + nextBin.alongBins);
            reach(previousBin, 0U - (from->alongBins + previousBin.alongBins));
        }
    }

    Shape shape_;
    std::size_t frames_;
    std::size_t bins_;
    std::size_t stride_;
    std::vector<Cell> cells_;
    std::vector<std::uint32_t> ranked_;  // cells, the loudest first
    RankQueue queue_;
};

}  // namespace

void PhaseIntegration::integrate(std::span<const float> mag, const Shape& shape,
                                 std::span<const std::uint8_t> known, std::span<Phase> phases) {
    require(shape.frames >= 0 && shape.nFFT >= 4 && std::has_single_bit(static_cast<unsigned>(shape.nFFT)) &&
                shape.hop >= 1,
            "PhaseIntegration: impossible shape");
    const auto size = static_cast<std::size_t>(checkedMultiply(shape.frames, shape.nFFT / 2 + 1));
    require(mag.size() == size && phases.size() == size && known.size() <= size,
            "PhaseIntegration: a size does not match its buffer");
    const float loudest = HWY_DYNAMIC_DISPATCH(largest)(mag.data(), mag.size());
    if (size == 0 || !std::isfinite(loudest)) return;
    Sweep(mag, shape, loudest).run(known, phases);
}

void PhaseIntegration::toSpectrum(std::span<const float> mag, std::span<const Phase> phases,
                                  std::span<float> re, std::span<float> im) {
    require(phases.size() == mag.size() && re.size() == mag.size() && im.size() == mag.size(),
            "PhaseIntegration: a size does not match its buffer");
    HWY_DYNAMIC_DISPATCH(toSpectrum)(mag.data(), phases.data(), mag.size(), re.data(), im.data());
}

PhaseIntegration::Phase PhaseIntegration::phaseOf(float re, float im) {
    constexpr double smallestPerTurn = 4294967296.0;
    const double turns =
        std::atan2(static_cast<double>(im), static_cast<double>(re)) / (2 * std::numbers::pi);
    return static_cast<Phase>(static_cast<std::int64_t>(std::floor(turns * smallestPerTurn)));
}

}  // namespace quillmere
#endif
