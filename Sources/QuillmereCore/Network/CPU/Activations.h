#pragma once

#include "QuillmereCore/Network/CPU/Engine.h"
#include "QuillmereCore/Network/CPU/PaddedTensor.h"

namespace quillmere::network::cpu {

// What a layer with SiLU leaves: its activations and, for the way back, SiLU' of its pre-activations, which
// there becomes the gradient of the pre-activations. The view of derivative is null when nothing is trained.
struct Activations {
    Activations(Engine& engine, int images, int height, int width, int channels)
        : act(engine.arena(), images, height, width, channels) {
        if (engine.training()) derivative = PaddedTensor(engine.arena(), images, height, width, channels);
    }

    PaddedTensor act, derivative;
};

}  // namespace quillmere::network::cpu
