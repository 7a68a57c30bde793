#include "QuillmereCore/Model/Training/Schedule.h"

#include <algorithm>
#include <cmath>

namespace quillmere::ModelTrainer {

Schedule schedule(std::int64_t t, std::int64_t T, float learningRate, float klWeight) {
    constexpr float pi = 3.1415927F;
    const auto step = static_cast<float>(t);
    const auto steps = static_cast<float>(T);
    Schedule result{};
    result.warm = std::min(step / 100.0F, 1.0F);
    result.decay = 0.05F + 0.475F * (1.0F + std::cos(pi * step / steps));
    result.bias = std::sqrt(1.0F - std::pow(0.999F, step)) / (1.0F - std::pow(0.9F, step));
    result.learningRate = learningRate * result.warm * result.decay * result.bias;
    result.klWeight = klWeight * std::min(step / (0.3F * steps), 1.0F);
    return result;
}

}  // namespace quillmere::ModelTrainer
