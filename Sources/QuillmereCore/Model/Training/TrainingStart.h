#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// A network that has learned something.
struct TaughtNetwork {
    ModelConfig config;
    std::vector<std::vector<float>> weights;  // in VAEArchitecture::params(config) order
};

// What a training begins from instead of random weights: a network for each analysis that it is meant for.
// Immutable; any thread.
class TrainingStart {
public:
    // networks: at least one, no two of them for the same images. origin: what a model that begins here says
    // of it.
    TrainingStart(ModelStart origin, std::vector<TaughtNetwork> networks);
    // "Build on what that folder taught." model: as ModelStore::open gives it.
    explicit TrainingStart(const ModelBundle& model);

    [[nodiscard]] const ModelStart& origin() const noexcept { return origin_; }

    // Why a training of this configuration cannot begin here, as a sentence; nothing if it can. The length of
    // the clips does not matter, nor does their rate.
    [[nodiscard]] std::optional<Message> problemWith(const ModelConfig& config) const;

    // The weights to begin with, in VAEArchitecture::params(config) order; no problemWith. They are those of
    // the network itself where its images are as wide as config's, else see ofWidth.
    [[nodiscard]] std::vector<std::vector<float>> weightsFor(const ModelConfig& config,
                                                             network::Backend& backend) const;

private:
    [[nodiscard]] const TaughtNetwork* networkFor(const ModelConfig& config) const;

    ModelStart origin_;
    std::vector<TaughtNetwork> networks_;
};

// The network for images of another width. The convolutions stay as they are, for they know no width; the
// dense layers between them and the latent vector lose or gain columns at the end of the image, and their
// biases change so that a silent image keeps its latent vector. What a narrower image no longer shows counts
// as silence. A wider image goes on as the narrow one ends, and what is new in it does not move the latent
// vector before it has been learned.
[[nodiscard]] TaughtNetwork ofWidth(const TaughtNetwork& network, std::int64_t frames,
                                    network::Backend& backend);

}  // namespace quillmere
