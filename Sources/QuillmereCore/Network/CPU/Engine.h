#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/CPU/FloatBuffer.h"
#include "QuillmereCore/Network/CPU/Kernels.h"
#include "QuillmereCore/Network/CPU/ParameterLayout.h"
#include "QuillmereCore/Network/Plan.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere::network::cpu {

// Some images of a batch, half-open.
struct ImageRange {
    int first, last;
};

// What the parts of a compiled network share: plan, memory, parameters and their gradients, vector code and
// threads.
//
// The images of a batch are divided into groups. Gradients are summed for each group by itself and the
// groups' sums added in order: the number of groups does not depend on the number of threads, so neither do
// the results.
class Engine {
public:
    Engine(const Plan& plan, Purpose purpose);

    [[nodiscard]] const Plan& plan() const noexcept { return plan_; }
    [[nodiscard]] bool training() const noexcept { return purpose_ == Purpose::training; }
    [[nodiscard]] const KernelTable& kernels() const noexcept { return kernels_; }

    // Memory that lives as long as the engine, zero at first.
    [[nodiscard]] FloatArena& arena() noexcept { return arena_; }
    [[nodiscard]] FloatBuffer take(std::size_t count) { return arena_.take(count); }

    // All parameters, and their gradients when training, in one layout.
    [[nodiscard]] const ParameterLayout& layout() const noexcept { return layout_; }
    [[nodiscard]] const FloatBuffer& parameters() const noexcept { return parameters_; }
    [[nodiscard]] const FloatBuffer& gradients() const noexcept { return gradients_; }
    // The place of one parameter (an index of the plan).
    [[nodiscard]] float* parameter(int index) const { return parameters_.data() + layout_.offset(index); }
    [[nodiscard]] float* gradient(int index) const { return gradients_.data() + layout_.offset(index); }

    [[nodiscard]] int batch() const noexcept { return plan_.batch; }
    // Images of the batch that the call in hand uses: the first ones. More than the batch holds stop the
    // program.
    [[nodiscard]] int images() const noexcept { return images_; }
    void useImages(std::size_t count);

    [[nodiscard]] int groups() const noexcept { return groups_; }
    [[nodiscard]] ImageRange group(int index) const;
    // total[i] = sum of the groups' parts[first + i], in order.
    static void sumGroups(const std::vector<FloatBuffer>& parts, std::size_t first, std::span<float> total);

    // Number of workers.
    [[nodiscard]] int threads() const noexcept { return team_.threads(); }
    // Calls body(index, worker) once for each index in [0, count), in parallel, with denormals flushed.
    void run(std::size_t count, const std::function<void(int index, int worker)>& body);

private:
    Plan plan_;
    Purpose purpose_;
    const KernelTable& kernels_;
    ParameterLayout layout_;
    WorkerTeam team_;
    int groupSize_;  // images
    int groups_;
    int images_ = 0;
    FloatArena arena_;
    FloatBuffer parameters_, gradients_;
};

}  // namespace quillmere::network::cpu
