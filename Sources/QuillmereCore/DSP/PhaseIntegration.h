#pragma once

#include <cstdint>
#include <span>

// Phases for a magnitude spectrogram by integration of the phase gradient that its slopes imply: "A
// Noniterative Method for Reconstruction of Phase From STFT Magnitude" (Prusa, Balazs and Sondergaard, 2017),
// for the window and the frames of STFT. One sweep from the loudest bin outward, no iteration.
//
// Phases are 32-bit fractions of a turn (2^31 is half a turn), relative to the first sample of the frame:
// they wrap around without loss. Spectrograms are frame-major [frames][bins], bins = nFFT / 2 + 1. Stateless;
// any thread.
namespace quillmere::PhaseIntegration {

using Phase = std::uint32_t;

struct Shape {
    int frames = 0;
    int nFFT = 0;  // a power of two >= 4
    int hop = 0;
};

// The share of the loudest magnitude, -80 dB, above which bins take part.
inline constexpr float range = 1e-4F;

// mag: finite; a spectrogram with other values is left alone. DC and Nyquist, which no band of a filter bank
// covers, take part with the magnitudes of their neighbours.
// known: for the bins of the first frames, as many as there are values, whether phases holds their true
// phase; it stays. phases: on return the integrated ones. Where nothing leads to, the phases that were there
// before remain: in bins below the range, and in the loudest bin of each region without a known one. The
// order of the sweep is that of the magnitudes, equal ones by their index, so the same input gives the same
// bits on one machine.
void integrate(std::span<const float> mag, const Shape& shape, std::span<const std::uint8_t> known,
               std::span<Phase> phases);

// The complex spectrum of magnitudes and phases. All of one size.
void toSpectrum(std::span<const float> mag, std::span<const Phase> phases, std::span<float> re,
                std::span<float> im);

// The phase of a complex number; 0 for 0.
[[nodiscard]] Phase phaseOf(float re, float im);

}  // namespace quillmere::PhaseIntegration
