#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "QuillmereCore/Network/Vulkan/Context.h"
#include "QuillmereCore/Network/Vulkan/Operations.h"
#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"

namespace quillmere::testing {

// The software driver's device, which ctest makes the only one.
inline network::ComputeDevice softwareDevice() {
    for (const network::ComputeDevice& device : network::vulkan::devices()) {
        if (device.type == network::ComputeDevice::Type::software) return device;
    }
    ADD_FAILURE() << "There is no software device; run this test through ctest.";
    throw network::DeviceError("no software device");
}

// Operations on host arrays: arrays go up, operations are stated, run() computes, arrays come back.
class DeviceArrays {
public:
    explicit DeviceArrays(network::vulkan::Context& context)
        : context_(context), tensors_(context), sequence_(context) {}

    network::vulkan::Range up(const std::vector<float>& values) {
        const network::vulkan::Range host =
            tensors_.make(values.size(), network::vulkan::Buffer::Place::upload);
        std::copy(values.begin(), values.end(), host.buffer->floats().begin());
        const network::vulkan::Range tensor = tensors_.make(values.size());
        sequence_.copy(host, tensor);
        return tensor;
    }
    // Holds NaN, so that a value that nobody writes shows.
    network::vulkan::Range make(std::uint64_t count) {
        return up(std::vector<float>(count, std::numeric_limits<float>::quiet_NaN()));
    }
    network::vulkan::Operations operations() { return {context_, sequence_, tensors_}; }
    network::vulkan::Sequence& sequence() { return sequence_; }

    // Computes everything stated and returns tensor.
    std::vector<float> run(const network::vulkan::Range& tensor) { return run(std::vector{tensor}).front(); }
    std::vector<std::vector<float>> run(const std::vector<network::vulkan::Range>& tensors) {
        std::vector<network::vulkan::Range> hosts;
        hosts.reserve(tensors.size());
        for (const network::vulkan::Range& tensor : tensors) {
            hosts.push_back(tensors_.make(tensor.count, network::vulkan::Buffer::Place::download));
            sequence_.copy(tensor, hosts.back());
        }
        sequence_.record();
        sequence_.run();
        std::vector<std::vector<float>> results;
        results.reserve(hosts.size());
        for (const network::vulkan::Range& host : hosts)
            results.emplace_back(host.buffer->floats().begin(), host.buffer->floats().end());
        return results;
    }

private:
    network::vulkan::Context& context_;
    network::vulkan::Tensors tensors_;
    network::vulkan::Sequence sequence_;
};

}  // namespace quillmere::testing
