#include "QuillmereCore/DSP/MelFilterBank.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

double melOfHz(double hz) {
    return 2595 * std::log10(1 + hz / 700);
}

double hzOfMel(double mel) {
    return (std::pow(10.0, mel / 2595) - 1) * 700;
}

// nMels + 2 frequencies in Hz, equally spaced in mel, from 0 to Nyquist.
std::vector<double> bandEdges(int sampleRate, int nMels) {
    const double top = melOfHz(0.5 * sampleRate);
    std::vector<double> edges(static_cast<std::size_t>(nMels) + 2);
    for (std::size_t i = 0; i < edges.size(); ++i)
        edges[i] = hzOfMel(static_cast<double>(i) * top / (nMels + 1));
    return edges;
}

// A triangle over (left, right) in Hz that peaks at 1 in its centre.
struct Triangle {
    double left, centre, right;

    [[nodiscard]] double weightAt(double hz) const {
        if (left < hz && hz <= centre) return (hz - left) / (centre - left);
        if (centre < hz && hz < right) return (right - hz) / (right - centre);
        return 0;
    }
};

MelFilterBank::Row sampleTriangle(const Triangle& triangle, int bins, double binHz) {
    MelFilterBank::Row row;
    for (int k = 0; k < bins; ++k) {
        const double weight = triangle.weightAt(k * binHz);
        if (weight <= 0) continue;
        if (row.weights.empty()) row.start = k;
        row.weights.push_back(static_cast<float>(weight));
    }
    if (row.weights.empty()) {
        // Narrower than one bin: the bin nearest to the centre stands for the band.
        row.start =
            static_cast<int>(std::min(static_cast<double>(bins - 1), std::round(triangle.centre / binHz)));
        row.weights.push_back(1.0F);
    }
    for (const float weight : row.weights)
        row.sum += weight;
    return row;
}

}  // namespace

MelFilterBank::MelFilterBank(int sampleRate, int nFFT, int nMels)
    : nMels_(nMels), bins_(nFFT / 2 + 1), sampleRate_(sampleRate) {
    require(sampleRate >= 1 && nFFT >= 1 && nMels >= 0, "MelFilterBank: impossible size");
    const double binHz = static_cast<double>(sampleRate) / nFFT;
    const std::vector<double> edges = bandEdges(sampleRate, nMels);
    binSum_.assign(static_cast<std::size_t>(bins_), 0.0F);
    for (std::size_t m = 0; m < static_cast<std::size_t>(nMels); ++m) {
        Row row = sampleTriangle({edges[m], edges[m + 1], edges[m + 2]}, bins_, binHz);
        for (std::size_t j = 0; j < row.weights.size(); ++j)
            binSum_[static_cast<std::size_t>(row.start) + j] += row.weights[j];
        rows_.push_back(std::move(row));
        centers_.push_back(static_cast<float>(edges[m + 1]));
    }
}

void MelFilterBank::forward(std::span<const float> spectrum, std::span<float> out) const {
    require(spectrum.size() >= binSum_.size() && out.size() >= rows_.size(),
            "MelFilterBank: buffer too small");
    for (std::size_t m = 0; m < rows_.size(); ++m) {
        const Row& row = rows_[m];
        const float* const covered = spectrum.data() + row.start;
        float total = 0;
        for (std::size_t j = 0; j < row.weights.size(); ++j)
            total += row.weights[j] * covered[j];
        out[m] = total / row.sum;
    }
}

void MelFilterBank::inverse(std::span<const float> mel, std::span<float> out) const {
    require(mel.size() >= rows_.size() && out.size() >= binSum_.size(), "MelFilterBank: buffer too small");
    std::fill_n(out.begin(), binSum_.size(), 0.0F);
    for (std::size_t m = 0; m < rows_.size(); ++m) {
        const Row& row = rows_[m];
        float* const covered = out.data() + row.start;
        for (std::size_t j = 0; j < row.weights.size(); ++j)
            covered[j] += row.weights[j] * mel[m];
    }
    float held = 0;
    for (std::size_t k = 0; k < binSum_.size(); ++k) {
        if (binSum_[k] > 1.0e-6F) held = out[k] / binSum_[k];
        out[k] = held;
    }
}

}  // namespace quillmere
