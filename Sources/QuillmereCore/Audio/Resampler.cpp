#include "QuillmereCore/Audio/Resampler.h"

#include <soxr.h>

namespace quillmere {
namespace {

// Samples that are converted in one go.
constexpr std::size_t blockSamples = 16384;

void check(soxr_error_t error) {
    if (error != nullptr) throw Resampler::Error(error);
}

}  // namespace

struct Resampler::State {
    State(double from, double to) {
        const soxr_io_spec_t floats = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_VHQ, 0);
        const soxr_runtime_spec_t oneThread = soxr_runtime_spec(1);
        soxr_error_t error = nullptr;
        filter = soxr_create(from, to, 1, &error, &floats, &quality, &oneThread);
        check(error);
    }
    ~State() { soxr_delete(filter); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    soxr_t filter = nullptr;
};

Resampler::Resampler(double from, double to)
    : state_(std::make_unique<State>(from, to)), converted_(blockSamples) {}

Resampler::~Resampler() = default;

void Resampler::add(std::span<const float> samples, const Sink& sink) {
    while (!samples.empty()) {
        std::size_t taken = 0;
        std::size_t given = 0;
        check(soxr_process(state_->filter, samples.data(), samples.size(), &taken, converted_.data(),
                           converted_.size(), &given));
        samples = samples.subspan(taken);
        if (given > 0) sink(std::span(converted_).first(given));
    }
}

void Resampler::finish(const Sink& sink) {
    std::size_t given = converted_.size();
    while (given == converted_.size()) {
        check(
            soxr_process(state_->filter, nullptr, 0, nullptr, converted_.data(), converted_.size(), &given));
        if (given > 0) sink(std::span(converted_).first(given));
    }
}

}  // namespace quillmere
