#pragma once

#include <utility>

#include <vulkan/vulkan.h>

// Owners of Vulkan objects. This header and those that include it stay inside Network/Vulkan.
namespace quillmere::network::vulkan {

// An object that belongs to a device and is destroyed with it last.
template <typename T, auto destroy>
class Handle {
public:
    Handle() = default;
    Handle(VkDevice device, T object) : device_(device), object_(object) {}
    Handle(Handle&& other) noexcept
        : device_(other.device_), object_(std::exchange(other.object_, VK_NULL_HANDLE)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(device_, other.device_);
        std::swap(object_, other.object_);
        return *this;
    }
    ~Handle() {
        if (object_ != VK_NULL_HANDLE) destroy(device_, object_, nullptr);
    }
    [[nodiscard]] T get() const { return object_; }

private:
    VkDevice device_ = VK_NULL_HANDLE;
    T object_ = VK_NULL_HANDLE;
};

using BufferHandle = Handle<VkBuffer, vkDestroyBuffer>;
using MemoryHandle = Handle<VkDeviceMemory, vkFreeMemory>;
using ShaderHandle = Handle<VkShaderModule, vkDestroyShaderModule>;
using SetLayoutHandle = Handle<VkDescriptorSetLayout, vkDestroyDescriptorSetLayout>;
using PipelineLayoutHandle = Handle<VkPipelineLayout, vkDestroyPipelineLayout>;
using PipelineHandle = Handle<VkPipeline, vkDestroyPipeline>;
using PipelineCacheHandle = Handle<VkPipelineCache, vkDestroyPipelineCache>;
using DescriptorPoolHandle = Handle<VkDescriptorPool, vkDestroyDescriptorPool>;
using CommandPoolHandle = Handle<VkCommandPool, vkDestroyCommandPool>;
using FenceHandle = Handle<VkFence, vkDestroyFence>;
using QueryPoolHandle = Handle<VkQueryPool, vkDestroyQueryPool>;

}  // namespace quillmere::network::vulkan
