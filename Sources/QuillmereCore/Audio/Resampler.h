#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

namespace quillmere {

// Converts the sample rate of a signal that comes in pieces: the same samples, bit for bit, whatever the
// pieces. Internal to AudioIO; one thread at a time.
class Resampler {
public:
    class Error : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    // Takes the next converted samples.
    using Sink = std::function<void(std::span<const float>)>;

    // The greatest ratio of two rates. Beyond it a conversion takes time and memory out of all proportion.
    static constexpr double greatestRatio = 1024;

    // Rates in Hz. Throws Error.
    Resampler(double from, double to);
    ~Resampler();
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    // Throws Error, and whatever sink throws.
    void add(std::span<const float> samples, const Sink& sink);
    // What the filter still holds; nothing may be added afterwards.
    void finish(const Sink& sink);

private:
    struct State;
    std::unique_ptr<State> state_;
    std::vector<float> converted_;
};

}  // namespace quillmere
