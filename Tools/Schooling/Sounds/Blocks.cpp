#include "Schooling/Sounds/Blocks.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quillmere::schooling {
namespace {

constexpr double twoPi = 2 * std::numbers::pi;
constexpr double nyquist = 0.5 * sampleRate;

double secondsAt(std::size_t index) {
    return static_cast<double>(index) / sampleRate;
}

// What rounds the step of a saw within one sample of it. phase: 0 ... 1; step: phase per sample.
double roundedStep(double phase, double step) {
    if (phase < step) {
        const double x = phase / step;
        return x + x - x * x - 1;
    }
    if (phase > 1 - step) {
        const double x = (phase - 1) / step;
        return x * x + x + x + 1;
    }
    return 0;
}

}  // namespace

std::size_t samplesIn(double seconds) {
    return static_cast<std::size_t>(std::max(1.0, seconds * sampleRate));
}

// ---- Chances

double Dice::between(double low, double high) {
    return low + (high - low) * static_cast<double>(rng_.uniform());
}

double Dice::logBetween(double low, double high) {
    return std::exp(between(std::log(low), std::log(high)));
}

bool Dice::chance(double probability) {
    return static_cast<double>(rng_.uniform()) < probability;
}

int Dice::below(int n) {
    return static_cast<int>(rng_.intBelow(n));
}

int Dice::from(int lowest, int highest) {
    return lowest + below(highest - lowest + 1);
}

double Dice::normal() {
    return static_cast<double>(rng_.gaussian());
}

double Dice::phase() {
    return between(0, twoPi);
}

// ---- Shapes

double Envelope::at(double seconds) const {
    if (seconds < attack) return seconds / attack;
    return std::exp(-std::max(0.0, seconds - attack - hold) / decay);
}

void Envelope::shape(std::span<float> samples) const {
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] *= static_cast<float>(at(secondsAt(i)));
}

double Glide::at(double seconds) const {
    return to + (from - to) * std::exp(-seconds / time);
}

double Vibrato::factorAt(double seconds) const {
    const double depthNow = depth * std::min(1.0, seconds / std::max(onset, 1e-3));
    return 1 + depthNow * std::sin(twoPi * hz * seconds + phase);
}

// ---- Sources

void Partial::addTo(std::span<float> samples) const {
    if (hz >= 0.98 * nyquist || hz <= 0) return;
    const double angle = twoPi * hz / sampleRate;
    const double shrink = std::exp(-1 / (decay * sampleRate));
    const double turnReal = shrink * std::cos(angle);
    const double turnImaginary = shrink * std::sin(angle);
    double real = amplitude * std::cos(phase);
    double imaginary = amplitude * std::sin(phase);
    constexpr double inaudible = 1e-7;
    for (float& sample : samples) {
        sample += static_cast<float>(imaginary);
        const double next = real * turnReal - imaginary * turnImaginary;
        imaginary = real * turnImaginary + imaginary * turnReal;
        real = next;
        if (std::abs(real) + std::abs(imaginary) < inaudible) return;
    }
}

float Saw::next(double hz) {
    const double step = std::min(hz / sampleRate, 0.49);
    phase_ += step;
    phase_ -= std::floor(phase_);
    return static_cast<float>(2 * phase_ - 1 - roundedStep(phase_, step));
}

Samples noise(Dice& dice, std::size_t count) {
    Samples samples(count);
    for (float& sample : samples)
        sample = static_cast<float>(dice.normal());
    return samples;
}

Samples bandNoise(Dice& dice, std::size_t count, double low, double high) {
    Samples samples = noise(dice, count);
    passBand(dice, samples, low, high);
    bringToPeak(samples, 1);
    return samples;
}

Samples StringLoop::pluck(Dice& dice, std::size_t count) const {
    // The loop's filter delays by half a sample; an all-pass makes up for the fraction that is left.
    const double period = sampleRate / std::min(hz, 0.2 * sampleRate) - 0.5;
    const auto delay = std::max<std::size_t>(2, static_cast<std::size_t>(period - 0.1));
    const double fraction = period - static_cast<double>(delay);
    const double allPass = (1 - fraction) / (1 + fraction);
    Samples line = noise(dice, delay);
    Filter pick(Filter::Kind::low, 400 + 12000 * brightness * brightness, 0.7);
    pick.run(line);
    Samples samples(count);
    std::size_t at = 0;
    double previous = 0, passedIn = 0, passedOut = 0;
    for (float& sample : samples) {
        const double now = static_cast<double>(line[at]);
        sample = static_cast<float>(now);
        const double smooth = 0.5 * loss * (now + previous);
        previous = now;
        passedOut = allPass * (smooth - passedOut) + passedIn;
        passedIn = smooth;
        line[at] = static_cast<float>(passedOut);
        at = at + 1 == delay ? 0 : at + 1;
    }
    bringToPeak(samples, 1);
    return samples;
}

// ---- Filters

void Filter::tune(double hz, double q) {
    g_ = std::tan(std::numbers::pi * std::clamp(hz, 5.0, 0.49 * sampleRate) / sampleRate);
    k_ = 1 / q;
}

float Filter::next(float input) {
    const double a = 1 / (1 + g_ * (g_ + k_));
    const double from = static_cast<double>(input) - second_;
    const double band = a * (first_ + g_ * from);
    const double low = second_ + g_ * band;
    first_ = 2 * band - first_;
    second_ = 2 * low - second_;
    switch (kind_) {
        case Kind::low:
            return static_cast<float>(low);
        case Kind::band:
            return static_cast<float>(k_ * band);
        case Kind::high:
            return static_cast<float>(static_cast<double>(input) - k_ * band - low);
    }
    return 0;
}

void Filter::run(std::span<float> samples) {
    for (float& sample : samples)
        sample = next(sample);
}

void passBand(Dice& dice, std::span<float> samples, double low, double high) {
    for (int i = dice.from(1, 2); i > 0; --i) {
        Filter(Filter::Kind::high, low, 0.71).run(samples);
        Filter(Filter::Kind::low, std::max(high, 1.2 * low), 0.71).run(samples);
    }
}

// ---- Mixing

void add(std::span<float> sum, std::span<const float> what, double gain) {
    for (std::size_t i = 0; i < std::min(sum.size(), what.size()); ++i)
        sum[i] += static_cast<float>(gain) * what[i];
}

void bringToPeak(std::span<float> samples, double peak) {
    float largest = 0;
    for (const float sample : samples)
        largest = std::max(largest, std::abs(sample));
    if (largest == 0) return;
    for (float& sample : samples)
        sample *= static_cast<float>(peak) / largest;
}

}  // namespace quillmere::schooling
