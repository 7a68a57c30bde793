#pragma once

#include <optional>
#include <span>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/CPU/Adam.h"
#include "QuillmereCore/Network/CPU/Bottleneck.h"
#include "QuillmereCore/Network/CPU/Decoder.h"
#include "QuillmereCore/Network/CPU/Encoder.h"
#include "QuillmereCore/Network/CPU/Engine.h"
#include "QuillmereCore/Network/CPU/Layers.h"

namespace quillmere::network::cpu {

// A plan on the processor's vector units: the order in which its parts work. Nothing is allocated after
// construction.
class CPUExecutor final : public Executor {
public:
    CPUExecutor(const Plan& plan, Purpose purpose);

    void setWeights(std::span<const std::vector<float>> weights) override;
    [[nodiscard]] std::vector<std::vector<float>> weights() const override;
    [[nodiscard]] std::vector<std::vector<float>> gradients() const override;
    StepResult step(std::span<const float> x, std::span<const float> eps, float learningRate,
                    float klWeight) override;
    void encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) override;
    void decode(std::span<const float> z, std::span<float> images) override;

private:
    void prepareWeights();
    void encodeImages(std::span<const float> x);

    Engine engine_;
    std::optional<Adam> adam_;  // of a training executor
    Layers layers_;
    Encoder encoder_;
    Bottleneck bottleneck_;
    Decoder decoder_;
    bool prepared_ = false;  // whether the layers know the present parameters
};

}  // namespace quillmere::network::cpu
