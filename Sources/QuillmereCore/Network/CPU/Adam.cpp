#include "QuillmereCore/Network/CPU/Adam.h"

#include <algorithm>

namespace quillmere::network::cpu {
namespace {

constexpr std::size_t block = 32768;  // floats of one parallel task

}  // namespace

Adam::Adam(Engine& engine)
    : engine_(engine),
      firstMoment_(engine.take(engine.layout().size())),
      secondMoment_(engine.take(engine.layout().size())) {}

void Adam::reset() {
    firstMoment_.clear();
    secondMoment_.clear();
}

void Adam::update(float learningRate) {
    const std::size_t count = engine_.layout().size();
    engine_.run((count + block - 1) / block, [&](int index, int) {
        const std::size_t first = static_cast<std::size_t>(index) * block;
        engine_.kernels().adam(engine_.plan().optimiser, learningRate, std::min(block, count - first),
                               engine_.gradients().data() + first, firstMoment_.data() + first,
                               secondMoment_.data() + first, engine_.parameters().data() + first);
    });
}

}  // namespace quillmere::network::cpu
