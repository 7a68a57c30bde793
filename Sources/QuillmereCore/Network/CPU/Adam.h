#pragma once

#include "QuillmereCore/Network/CPU/Engine.h"

namespace quillmere::network::cpu {

// The optimiser of a network that is trained: an engine's parameters from their gradients (Kingma and Ba,
// 2015; network::Optimiser has the settings). Needs an engine for training that outlives it.
class Adam {
public:
    explicit Adam(Engine& engine);

    // Sets both moments to zero.
    void reset();
    void update(float learningRate);

private:
    Engine& engine_;
    FloatBuffer firstMoment_, secondMoment_;  // in the layout of the parameters
};

}  // namespace quillmere::network::cpu
