#include "QuillmereCore/Network/CPU/Engine.h"

#include <algorithm>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {
namespace {

constexpr int mostGroups = 8;

}  // namespace

Engine::Engine(const Plan& plan, Purpose purpose)
    : plan_(plan),
      purpose_(purpose),
      kernels_(cpu::kernels()),
      layout_(plan),
      groupSize_((plan.batch + mostGroups - 1) / mostGroups),
      groups_((plan.batch + groupSize_ - 1) / groupSize_),
      parameters_(arena_.take(layout_.size())) {
    if (training()) gradients_ = arena_.take(layout_.size());
}

void Engine::useImages(std::size_t count) {
    require(count <= static_cast<std::size_t>(batch()), "more images than the batch holds");
    images_ = static_cast<int>(count);
}

ImageRange Engine::group(int index) const {
    const int first = index * groupSize_;
    return {first, std::min(batch(), first + groupSize_)};
}

void Engine::sumGroups(const std::vector<FloatBuffer>& parts, std::size_t first, std::span<float> total) {
    for (std::size_t i = 0; i < total.size(); ++i) {
        float sum = 0;
        for (const FloatBuffer& part : parts)
            sum += part.data()[first + i];
        total[i] = sum;
    }
}

// Denormals are flushed in every thread that takes part: Adam's moments decay into them.
void Engine::run(std::size_t count, const std::function<void(int, int)>& body) {
    team_.run(count, [&](std::size_t index, int worker) {
        const FlushDenormals flush;
        body(static_cast<int>(index), worker);
    });
}

}  // namespace quillmere::network::cpu
