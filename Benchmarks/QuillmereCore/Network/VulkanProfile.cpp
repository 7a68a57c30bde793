// Where a training step spends its time on a graphics processor, operation by operation, and how the step's
// time depends on the tiles of the product shader.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>

#include <CLI/CLI.hpp>

#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"
#include "QuillmereCore/Util/RNG.h"

namespace {

using namespace quillmere;
using namespace quillmere::network::vulkan;

struct Work {
    std::string device = "gpu";
    ModelConfig config;
    int batch = 16;
    int steps = 20;
};

// A compiled step with inputs; run() returns its milliseconds.
class Step {
public:
    Step(const Work& work, const network::ComputeDevice& device, std::optional<Tuning> tuning,
         Sequence::Mode mode)
        : executor_(std::make_shared<Context>(device, std::nullopt, tuning),
                    VAEGraphBuilder{work.config, work.batch}.build(), network::Purpose::training, mode),
          x_(static_cast<std::size_t>(work.batch * work.config.nMels * work.config.frames)),
          eps_(static_cast<std::size_t>(work.batch * work.config.latentDim)) {
        executor_.setWeights(VAEArchitecture::initialWeights(work.config, 1));
        SeededRNG rng(3);
        for (float& value : x_)
            value = rng.signedUniform();
        for (float& value : eps_)
            value = rng.gaussian();
        run();  // some drivers compile at the first use
    }

    double run() {
        const auto start = std::chrono::steady_clock::now();
        executor_.step(x_, eps_, 1e-4F, 0.002F);
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    }
    double median(int steps) {
        std::vector<double> times;
        times.reserve(static_cast<std::size_t>(steps));
        for (int i = 0; i < steps; ++i)
            times.push_back(run());
        std::sort(times.begin(), times.end());
        return times[times.size() / 2];
    }
    [[nodiscard]] const VulkanExecutor& executor() const { return executor_; }

private:
    VulkanExecutor executor_;
    std::vector<float> x_, eps_;
};

void profile(const Work& work, const network::ComputeDevice& device) {
    Step plain(work, device, {}, Sequence::Mode::plain);
    const Sequence& sequence = plain.executor().stepSequence();
    std::printf("%s: step %.3f ms, %zu operations, %zu barriers, %.0f MB\n", device.name().c_str(),
                plain.median(work.steps), sequence.operations(), sequence.barriers(),
                static_cast<double>(plain.executor().tensorBytes()) * 1e-6);
    Step profiled(work, device, {}, Sequence::Mode::profiled);
    profiled.run();
    std::vector<OperationTime> times = profiled.executor().stepSequence().times();
    double total = 0;
    for (const OperationTime& time : times)
        total += time.milliseconds;
    std::stable_sort(times.begin(), times.end(), [](const OperationTime& a, const OperationTime& b) {
        return a.milliseconds > b.milliseconds;
    });
    std::printf("alone, one after the other: %.3f ms\n", total);
    for (const OperationTime& time : times)
        std::printf("%10.4f ms  %5.1f %%  %s\n", time.milliseconds, 100 * time.milliseconds / total,
                    time.name.c_str());
}

// Bytes of the product's two tiles; see Product.comp.
std::uint32_t sharedMemory(const Tuning& t) {
    return 4 * t.depth * (t.threadRows * t.mostRowsPerThread + 1 + t.threadColumns * t.columnsPerThread + 1);
}

void sweep(const Work& work, const network::ComputeDevice& device) {
    std::printf("%-44s step, ms\n", "threads  per thread  depth  groups");
    for (const auto& [threadRows, threadColumns] : {std::pair{8U, 16U}, {16U, 8U}, {4U, 32U}}) {
        for (const auto& [rows, columns] : {std::pair{8U, 4U}, {8U, 8U}, {4U, 4U}, {6U, 6U}}) {
            for (const std::uint32_t depth : {8U, 16U}) {
                for (const std::uint32_t groups : {256U, 512U}) {
                    const Tuning tuning{threadRows, threadColumns, rows, columns, depth, groups};
                    if (sharedMemory(tuning) > device.limits.sharedMemory) continue;
                    Step step(work, device, tuning, Sequence::Mode::plain);
                    std::printf("%2ux%-2u    %ux%u         %2u     %3u %18.3f\n", threadRows, threadColumns,
                                rows, columns, depth, groups, step.median(work.steps));
                    std::fflush(stdout);
                }
            }
        }
    }
}

void run(int argc, char** argv) {
    CLI::App app("Profiles a training step on a graphics processor.");
    Work work;
    work.config.nMels = 96;
    work.config.frames = 192;
    work.config.profile = AnalysisProfile::percussive;
    bool tiles = false;
    app.add_option("--device", work.device, "As for quillmere-cli")->capture_default_str();
    app.add_option("--mels", work.config.nMels, "Rows of an image")->capture_default_str();
    app.add_option("--frames", work.config.frames, "Columns of an image")->capture_default_str();
    app.add_option("--batch", work.batch, "Images of a step")->capture_default_str();
    app.add_option("--steps", work.steps, "Steps to take the median of")->capture_default_str();
    app.add_flag("--tiles", tiles, "Time the step for many tiles instead");
    app.parse(argc, argv);
    const auto devices = GPU::shared().machine().list();
    const auto choice = network::DeviceChoice::fromOption(work.device);
    const network::ComputeDevice& device = choice.in(devices);
    if (device.type == network::ComputeDevice::Type::processor)
        throw network::DeviceError("This is for graphics processors.");
    tiles ? sweep(work, device) : profile(work, device);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        run(argc, argv);
        return 0;
    } catch (const CLI::CallForHelp&) {
        std::puts("VulkanProfile [--device D] [--mels M] [--frames F] [--batch B] [--steps N] [--tiles]");
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "VulkanProfile: %s\n", error.what());
        return 1;
    }
}
