#pragma once

#include <cstdint>

namespace quillmere::ModelTrainer {

struct Schedule {
    float warm, decay, bias;  // factors of the learning rate
    float learningRate;       // handed to the step
    float klWeight;
};

// Step t of T, t from 1, with the peak learning rate and the final KL weight of a run. The learning rate
// warms up over 100 steps, falls by half a cosine to 5 % and carries Adam's bias correction (Kingma and Ba,
// 2015), which the update leaves out; the KL weight grows over the first 30 % of the steps (as in Bowman et
// al., 2016). All in single precision.
[[nodiscard]] Schedule schedule(std::int64_t t, std::int64_t T, float learningRate, float klWeight);

}  // namespace quillmere::ModelTrainer
