#include "QuillmereCore/Model/Training/TrainingHooks.h"

#include "QuillmereCore/Model/VAE.h"

namespace quillmere::ModelTrainer {

ModelBundle modelOf(const Glimpse& glimpse, network::Backend& backend) {
    VAEInference inference(glimpse.config, glimpse.weights, backend);
    ModelBundle bundle;
    bundle.config = glimpse.config;
    bundle.metadata.steps = glimpse.step;
    bundle.weights = glimpse.weights;
    bundle.latents = inference.encode(glimpse.images);
    return bundle;
}

}  // namespace quillmere::ModelTrainer
