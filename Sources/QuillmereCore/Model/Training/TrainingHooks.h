#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stop_token>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Network/Backend.h"

namespace quillmere {

// The network in the middle of its training, with some of the images that it learns: enough to listen to.
struct Glimpse {
    static constexpr std::size_t mostImages = 16;  // spread evenly over all

    ModelConfig config;
    std::int64_t step = 0;                    // the last one that was done
    std::vector<std::vector<float>> weights;  // in VAEArchitecture::params(config) order
    std::vector<std::vector<float>> images;   // each [nMels][frames]
};

// What a caller may want of a training besides its result. Nothing of it changes what is learned up to a
// step.
struct TrainingHooks {
    // Asked after each step: the training ends there, as if it had come to its last step, with what has been
    // learned. The weights are those of that step of a training of all steps.
    std::stop_token enough;
    // Asked after each step but the last, on the thread that trains; where it says so, glimpsed gets what
    // there is. Both or none.
    std::function<bool()> wantsGlimpse;
    std::function<void(Glimpse)> glimpsed;
};

namespace ModelTrainer {

// A model of what is seen, with the latent vectors of these images and nothing else in its metadata but the
// number of steps. Any backend does: another one than the training's leaves that alone.
[[nodiscard]] ModelBundle modelOf(const Glimpse& glimpse, network::Backend& backend);

}  // namespace ModelTrainer
}  // namespace quillmere
