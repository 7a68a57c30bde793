#pragma once

#include <span>
#include <vector>

namespace quillmere {

// Triangular filters, equally spaced in mel (HTK formula: 2595 log10(1 + f / 700)) from 0 Hz to Nyquist.
// Immutable after construction; any number of threads may share one.
class MelFilterBank {
public:
    // One filter: the weights of bins start, start + 1, ...; never empty.
    struct Row {
        int start = 0;
        std::vector<float> weights;
        float sum = 0;
    };

    MelFilterBank(int sampleRate, int nFFT, int nMels);

    [[nodiscard]] int nMels() const noexcept { return nMels_; }
    [[nodiscard]] int bins() const noexcept { return bins_; }
    [[nodiscard]] int sampleRate() const noexcept { return sampleRate_; }
    [[nodiscard]] std::span<const float> centers() const noexcept { return centers_; }  // Hz, [nMels]
    [[nodiscard]] std::span<const Row> rows() const noexcept { return rows_; }          // [nMels]
    [[nodiscard]] std::span<const float> binSum() const noexcept { return binSum_; }    // [bins]

    // spectrum [bins] to out [nMels]: the weighted average of each filter's bins, so flat stays flat.
    void forward(std::span<const float> spectrum, std::span<float> out) const;

    // mel [nMels] to out [bins]: the transpose normalised per bin. A bin that no filter covers repeats the
    // value of the covered bin below it; bins below the first covered one are 0.
    void inverse(std::span<const float> mel, std::span<float> out) const;

private:
    int nMels_;
    int bins_;
    int sampleRate_;
    std::vector<float> centers_;
    std::vector<Row> rows_;
    std::vector<float> binSum_;
};

}  // namespace quillmere
