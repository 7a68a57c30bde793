#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere::ModelTrainer {

// Uniform integer in [0, bound) by the multiply-high method with rejection (Lemire, 2019). bound > 0.
[[nodiscard]] std::uint64_t boundedInteger(SeededRNG& rng, std::uint64_t bound);

// Clip indices in shuffled order (Fisher and Yates): every clip once before any again.
class Deck {
public:
    explicit Deck(std::size_t clips);  // > 0
    std::size_t draw(SeededRNG& rng);

private:
    std::size_t clips_;
    std::vector<std::size_t> cards_;
};

// Draws the inputs of successive steps: augmented clips and noise, from one generator derived from the seed
// of the run. The images belong to the caller and must outlive the source. next() allocates nothing.
class BatchSource {
public:
    BatchSource(const ModelConfig& config, std::span<const std::vector<float>> images, std::int64_t batchSize,
                std::uint64_t trainingSeed);
    // Overwrites x [batch][nMels][frames] and eps [batch][latentDim].
    void next(std::span<float> x, std::span<float> eps);
    // Clip indices of the last batch.
    [[nodiscard]] std::span<const std::size_t> indices() const { return indices_; }
    [[nodiscard]] const SeededRNG& rng() const { return rng_; }

private:
    ModelConfig config_;
    std::span<const std::vector<float>> images_;
    std::int64_t batchSize_;
    SeededRNG rng_;
    Deck deck_;
    std::vector<std::size_t> indices_;
};

}  // namespace quillmere::ModelTrainer
