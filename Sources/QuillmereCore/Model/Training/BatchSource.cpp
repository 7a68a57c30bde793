#include "QuillmereCore/Model/Training/BatchSource.h"

#include <numeric>
#include <utility>

#include "QuillmereCore/Model/Training/Augmentation.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::ModelTrainer {
namespace {

// Keeps the batches' random numbers apart from those of the initial weights.
constexpr std::uint64_t batchSeedOffset = 0x5EED;

}  // namespace

std::uint64_t boundedInteger(SeededRNG& rng, std::uint64_t bound) {
    __extension__ using Wide = unsigned __int128;
    require(bound > 0, "a random integer needs a positive bound");
    Wide product = static_cast<Wide>(rng.next()) * bound;
    if (static_cast<std::uint64_t>(product) < bound) {
        const std::uint64_t threshold = (0 - bound) % bound;  // 2^64 mod bound
        while (static_cast<std::uint64_t>(product) < threshold)
            product = static_cast<Wide>(rng.next()) * bound;
    }
    return static_cast<std::uint64_t>(product >> 64);
}

Deck::Deck(std::size_t clips) : clips_(clips) {
    require(clips > 0, "a deck needs at least one clip");
    cards_.reserve(clips);
}

std::size_t Deck::draw(SeededRNG& rng) {
    if (cards_.empty()) {
        cards_.resize(clips_);
        std::iota(cards_.begin(), cards_.end(), std::size_t{0});
        for (std::size_t i = 0; clips_ - i > 1; ++i)
            std::swap(cards_[i], cards_[i + boundedInteger(rng, clips_ - i)]);
    }
    const std::size_t card = cards_.back();
    cards_.pop_back();
    return card;
}

BatchSource::BatchSource(const ModelConfig& config, std::span<const std::vector<float>> images,
                         std::int64_t batchSize, std::uint64_t trainingSeed)
    : config_(config),
      images_(images),
      batchSize_(batchSize),
      rng_(trainingSeed + batchSeedOffset),
      deck_(images.size()) {
    require(batchSize >= 1, "a batch needs at least one image");
    indices_.reserve(static_cast<std::size_t>(batchSize));
}

void BatchSource::next(std::span<float> x, std::span<float> eps) {
    const std::size_t pixels = images_.front().size();
    const auto batch = static_cast<std::size_t>(batchSize_);
    require(x.size() == batch * pixels && eps.size() == batch * static_cast<std::size_t>(config_.latentDim),
            "the buffers of a batch have the wrong size");
    indices_.clear();
    for (std::size_t b = 0; b < batch; ++b) {
        indices_.push_back(deck_.draw(rng_));
        applyAugmentation(drawAugmentation(config_, rng_), config_, images_[indices_.back()],
                          x.subspan(b * pixels, pixels));
    }
    for (float& value : eps)
        value = rng_.gaussian();
}

}  // namespace quillmere::ModelTrainer
