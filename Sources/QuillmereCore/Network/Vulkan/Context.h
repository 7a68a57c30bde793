#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "QuillmereCore/Network/Device/ComputeDevice.h"
#include "QuillmereCore/Network/Vulkan/Handle.h"
#include "QuillmereCore/Network/Vulkan/Instance.h"
#include "QuillmereCore/Network/Vulkan/Shaders.h"
#include "QuillmereCore/Network/Vulkan/Tuning.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::network::vulkan {

class Context;

// Device memory as one array of bytes.
class Buffer {
public:
    enum class Place {
        device,    // only shaders and copies reach it
        upload,    // written by the host
        download,  // read by the host
    };

    // Binds to memory of its own. Throws DeviceError if there is not enough.
    Buffer(const Context& context, std::uint64_t bytes, Place place);
    Buffer(Buffer&&) noexcept = default;
    Buffer& operator=(Buffer&&) noexcept = default;

    [[nodiscard]] VkBuffer get() const { return buffer_.get(); }
    [[nodiscard]] std::uint64_t bytes() const { return bytes_; }
    // The host's view; empty for Place::device.
    [[nodiscard]] std::span<float> floats() const { return mapped_; }

private:
    std::uint64_t bytes_;
    MemoryHandle memory_;  // freed after the buffer
    BufferHandle buffer_;
    std::span<float> mapped_;
};

// A shader with its specialization constants, ready to be dispatched.
struct Pipeline {
    VkPipeline pipeline = VK_NULL_HANDLE;
    VkPipelineLayout layout = VK_NULL_HANDLE;
    VkDescriptorSetLayout setLayout = VK_NULL_HANDLE;
};

// An opened device with its queue and its pipelines, shared by all executors.
//
// Compiled pipelines are kept for later runs in the user's cache folder ($XDG_CACHE_HOME or ~/.cache, below
// it quillmere/), one file per device and driver.
// Threads: every member may be called from any thread.
class Context {
public:
    // Throws DeviceError.
    explicit Context(const ComputeDevice& description, std::optional<Validation> validation = {},
                     std::optional<Tuning> tuning = {});

    [[nodiscard]] const ComputeDevice& description() const { return description_; }
    [[nodiscard]] const Tuning& tuning() const { return tuning_; }
    [[nodiscard]] VkDevice device() const { return device_.object; }
    [[nodiscard]] const VkPhysicalDeviceMemoryProperties& memory() const { return memory_; }
    [[nodiscard]] std::uint32_t queueFamily() const { return queueFamily_; }
    // Nanoseconds of one unit of a timestamp; 0 if the queue has none.
    [[nodiscard]] double timestampPeriod() const { return timestampPeriod_; }

    // count floats. Throws DeviceError if they are more than one tensor may have, or memory is short.
    [[nodiscard]] Buffer makeBuffer(std::uint64_t count, Buffer::Place place = Buffer::Place::device) const;
    // Created on first use. constants: of the shader's specialization constants 0, 1, ...
    [[nodiscard]] Pipeline pipeline(Shader shader, const std::vector<std::uint32_t>& constants);
    // Writes the compiled pipelines to the cache folder if there are new ones.
    void savePipelines();

    // Runs the command buffer and waits for its end. Throws DeviceError.
    void run(VkCommandBuffer commands);
    // Whether a run found the device lost. That is for good: the device has to be opened again.
    [[nodiscard]] bool isLost() const { return isLost_; }

    // As the function of this name, for this device.
    void check(VkResult result, const char* what) const { vulkan::check(result, description_.name(), what); }
    // Creates an object with one of Vulkan's vkCreate... functions. Throws DeviceError.
    template <typename Owner, typename Create, typename Info>
    [[nodiscard]] Owner make(Create create, const Info& info, const char* what) const {
        decltype(std::declval<Owner>().get()) object = VK_NULL_HANDLE;
        check(create(device(), &info, nullptr, &object), what);
        return Owner(device(), object);
    }

private:
    struct Layout {
        SetLayoutHandle set;
        PipelineLayoutHandle pipeline;
    };

    struct OwnedDevice {
        VkDevice object = VK_NULL_HANDLE;

        OwnedDevice() = default;
        OwnedDevice(const OwnedDevice&) = delete;
        OwnedDevice& operator=(const OwnedDevice&) = delete;
        ~OwnedDevice() { vkDestroyDevice(object, nullptr); }
    };

    void open();
    void checkRun(VkResult result, const char* what);
    void loadPipelines();
    const Layout& layoutOf(Shader shader) QUILLMERE_REQUIRES(pipelineMutex_);

    ComputeDevice description_;
    Tuning tuning_;
    Instance instance_;
    VkPhysicalDevice physical_;
    std::uint32_t queueFamily_ = 0;
    double timestampPeriod_ = 0;
    VkPhysicalDeviceMemoryProperties memory_{};
    OwnedDevice device_;  // outlives what is made with it, which comes after it

    std::atomic<bool> isLost_ = false;

    Mutex queueMutex_;
    VkQueue queue_ QUILLMERE_GUARDED_BY(queueMutex_) = VK_NULL_HANDLE;

    Mutex pipelineMutex_;
    std::filesystem::path cacheFile_ QUILLMERE_GUARDED_BY(pipelineMutex_);
    PipelineCacheHandle cache_ QUILLMERE_GUARDED_BY(pipelineMutex_);
    // Whether the cache holds something that its file does not.
    bool cacheIsNew_ QUILLMERE_GUARDED_BY(pipelineMutex_) = false;
    std::map<Shader, Layout> layouts_ QUILLMERE_GUARDED_BY(pipelineMutex_);
    std::map<std::pair<Shader, std::vector<std::uint32_t>>, PipelineHandle> pipelines_
        QUILLMERE_GUARDED_BY(pipelineMutex_);
};

}  // namespace quillmere::network::vulkan
