#include "QuillmereCore/Network/Vulkan/Context.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/InputFile.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::network::vulkan {
namespace {

constexpr std::uint32_t pushConstantBytes = 128;  // what every device has

std::string megabytes(std::uint64_t bytes) {
    return std::to_string((bytes + 999'999) / 1'000'000) + " MB";
}

// The kinds of memory wanted for a place, the best first.
std::vector<VkMemoryPropertyFlags> wishes(Buffer::Place place) {
    constexpr VkMemoryPropertyFlags host =
        VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
    switch (place) {
        case Buffer::Place::device:
            return {VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT, 0};
        case Buffer::Place::upload:
            return {host};
        // Reading memory that is not cached is slower by tens of times.
        case Buffer::Place::download:
            return {host | VK_MEMORY_PROPERTY_HOST_CACHED_BIT, host};
    }
    fatal("unknown place of a buffer");
}

std::uint32_t memoryType(const Context& context, std::uint32_t allowed, Buffer::Place place) {
    const VkPhysicalDeviceMemoryProperties& memory = context.memory();
    for (const VkMemoryPropertyFlags wish : wishes(place)) {
        for (std::uint32_t type = 0; type < memory.memoryTypeCount; ++type) {
            if ((allowed >> type & 1U) != 0 && (memory.memoryTypes[type].propertyFlags & wish) == wish)
                return type;
        }
    }
    throw DeviceError("{0} has no memory of the kind needed. Choose another device.",
                      context.description().name());
}

std::filesystem::path cacheFolder() {
    const char* const folder = std::getenv("XDG_CACHE_HOME");
    if (folder != nullptr && *folder == '/') return std::filesystem::path(folder) / "quillmere";
    const char* const home = std::getenv("HOME");
    if (home != nullptr && *home == '/') return std::filesystem::path(home) / ".cache" / "quillmere";
    return {};
}

// Whether data begins as this driver's own pipeline cache does. Not every driver checks that itself.
bool isCacheOf(std::span<const char> data, const VkPhysicalDeviceProperties& properties) {
    VkPipelineCacheHeaderVersionOne header{};
    if (data.size() < sizeof header) return false;
    std::memcpy(&header, data.data(), sizeof header);
    return header.headerVersion == VK_PIPELINE_CACHE_HEADER_VERSION_ONE &&
           header.vendorID == properties.vendorID && header.deviceID == properties.deviceID &&
           std::equal(std::begin(header.pipelineCacheUUID), std::end(header.pipelineCacheUUID),
                      std::begin(properties.pipelineCacheUUID));
}

// Nothing if there is no such file, or none that could be a cache.
std::string readCache(const std::filesystem::path& path) {
    constexpr std::uint64_t largest = 256U << 20U;  // bytes; a real one has some thousands
    try {
        InputFile file(path);
        return file.size() <= largest ? file.readAll() : std::string();
    } catch (const FileError&) {
        return {};  // pipelines are compiled again
    }
}

}  // namespace

Buffer::Buffer(const Context& context, std::uint64_t bytes, Place place) : bytes_(bytes) {
    const VkDevice device = context.device();
    VkBufferCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO;
    info.size = bytes;
    info.usage = VK_BUFFER_USAGE_TRANSFER_SRC_BIT | VK_BUFFER_USAGE_TRANSFER_DST_BIT;
    if (place == Place::device) info.usage |= VK_BUFFER_USAGE_STORAGE_BUFFER_BIT;
    buffer_ = context.make<BufferHandle>(vkCreateBuffer, info, translatable("creating a buffer"));
    VkMemoryRequirements requirements{};
    vkGetBufferMemoryRequirements(device, buffer_.get(), &requirements);
    VkMemoryAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    allocation.allocationSize = requirements.size;
    allocation.memoryTypeIndex = memoryType(context, requirements.memoryTypeBits, place);
    memory_ = context.make<MemoryHandle>(vkAllocateMemory, allocation, translatable("taking memory"));
    context.check(vkBindBufferMemory(device, buffer_.get(), memory_.get(), 0),
                  translatable("binding memory"));
    if (place == Place::device) return;
    void* address = nullptr;
    context.check(vkMapMemory(device, memory_.get(), 0, VK_WHOLE_SIZE, 0, &address),
                  translatable("mapping memory"));
    mapped_ = {static_cast<float*>(address), static_cast<std::size_t>(bytes / sizeof(float))};
}

Context::Context(const ComputeDevice& description, std::optional<Validation> validation,
                 std::optional<Tuning> tuning)
    : description_(description),
      tuning_(tuning.value_or(tuningFor(description))),
      instance_(std::move(validation)),
      physical_(instance_.find(description.identity)) {
    vkGetPhysicalDeviceMemoryProperties(physical_, &memory_);
    open();
    loadPipelines();
}

void Context::open() {
    const std::optional<std::uint32_t> family = computeQueueFamily(physical_);
    if (!family)
        throw DeviceError("{0} has no queue for computing. Choose another device.", description_.name());
    queueFamily_ = *family;
    constexpr float priority = 1;
    VkDeviceQueueCreateInfo queue{};
    queue.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queue.queueFamilyIndex = queueFamily_;
    queue.queueCount = 1;
    queue.pQueuePriorities = &priority;
    VkDeviceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    info.queueCreateInfoCount = 1;
    info.pQueueCreateInfos = &queue;
    check(vkCreateDevice(physical_, &info, nullptr, &device_.object), translatable("opening it"));
    {
        const MutexLock lock(queueMutex_);
        vkGetDeviceQueue(device(), queueFamily_, 0, &queue_);
    }

    std::uint32_t count = queueFamily_ + 1;
    std::vector<VkQueueFamilyProperties> families(count);
    vkGetPhysicalDeviceQueueFamilyProperties(physical_, &count, families.data());
    VkPhysicalDeviceProperties properties{};
    vkGetPhysicalDeviceProperties(physical_, &properties);
    if (families[queueFamily_].timestampValidBits > 0)
        timestampPeriod_ = static_cast<double>(properties.limits.timestampPeriod);
}

Buffer Context::makeBuffer(std::uint64_t count, Buffer::Place place) const {
    const std::uint64_t bytes = std::max<std::uint64_t>(count, 1) * sizeof(float);
    if (place == Buffer::Place::device && bytes > description_.limits.largestTensor) {
        throw DeviceError(
            "{0} takes tensors of at most {1}, and one of {2} is needed. Choose shorter clips, or another "
            "device.",
            description_.name(), megabytes(description_.limits.largestTensor), megabytes(bytes));
    }
    return {*this, bytes, place};
}

void Context::loadPipelines() {
    const MutexLock lock(pipelineMutex_);
    VkPhysicalDeviceProperties properties{};
    vkGetPhysicalDeviceProperties(physical_, &properties);
    std::string data;
    if (const std::filesystem::path folder = cacheFolder(); !folder.empty()) {
        cacheFile_ = folder / ("pipelines-" + Text::hexadecimal(properties.pipelineCacheUUID) + "-" +
                               std::to_string(properties.vendorID) + "-" +
                               std::to_string(properties.deviceID) + ".bin");
        data = readCache(cacheFile_);
        if (!isCacheOf(data, properties)) data.clear();
    }
    VkPipelineCacheCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_PIPELINE_CACHE_CREATE_INFO;
    info.initialDataSize = data.size();
    info.pInitialData = data.data();
    cache_ =
        make<PipelineCacheHandle>(vkCreatePipelineCache, info, translatable("creating the pipeline cache"));
}

void Context::savePipelines() {
    const MutexLock lock(pipelineMutex_);
    if (!cacheIsNew_ || cacheFile_.empty()) return;
    cacheIsNew_ = false;
    std::size_t size = 0;
    check(vkGetPipelineCacheData(device(), cache_.get(), &size, nullptr),
          translatable("reading the pipeline cache"));
    std::vector<std::byte> data(size);
    check(vkGetPipelineCacheData(device(), cache_.get(), &size, data.data()),
          translatable("reading the pipeline cache"));
    std::error_code error;
    std::filesystem::create_directories(cacheFile_.parent_path(), error);
    if (error) return;  // as below
    try {
        writeFileAtomically(cacheFile_, std::span(data).first(size), Durability::disposable);
    } catch (const FileError&) {
        cacheFile_.clear();  // without a cache the next run takes a moment longer; nothing else is lost
    }
}

const Context::Layout& Context::layoutOf(Shader shader) {
    const auto found = layouts_.find(shader);
    if (found != layouts_.end()) return found->second;
    std::vector<VkDescriptorSetLayoutBinding> bindings(bindingCount(shader));
    for (std::uint32_t i = 0; i < bindings.size(); ++i) {
        bindings[i].binding = i;
        bindings[i].descriptorType = VK_DESCRIPTOR_TYPE_STORAGE_BUFFER;
        bindings[i].descriptorCount = 1;
        bindings[i].stageFlags = VK_SHADER_STAGE_COMPUTE_BIT;
    }
    VkDescriptorSetLayoutCreateInfo setInfo{};
    setInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    setInfo.bindingCount = static_cast<std::uint32_t>(bindings.size());
    setInfo.pBindings = bindings.data();
    Layout layout;
    layout.set = make<SetLayoutHandle>(vkCreateDescriptorSetLayout, setInfo,
                                       translatable("creating a descriptor layout"));
    const VkDescriptorSetLayout set = layout.set.get();
    const VkPushConstantRange push{VK_SHADER_STAGE_COMPUTE_BIT, 0, pushConstantBytes};
    VkPipelineLayoutCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    info.setLayoutCount = 1;
    info.pSetLayouts = &set;
    info.pushConstantRangeCount = 1;
    info.pPushConstantRanges = &push;
    layout.pipeline =
        make<PipelineLayoutHandle>(vkCreatePipelineLayout, info, translatable("creating a pipeline layout"));
    return layouts_.emplace(shader, std::move(layout)).first->second;
}

Pipeline Context::pipeline(Shader shader, const std::vector<std::uint32_t>& constants) {
    const MutexLock lock(pipelineMutex_);
    const Layout& layout = layoutOf(shader);
    PipelineHandle& handle = pipelines_[{shader, constants}];
    const auto result = [&] { return Pipeline{handle.get(), layout.pipeline.get(), layout.set.get()}; };
    if (handle.get() != VK_NULL_HANDLE) return result();

    const std::span<const std::uint32_t> code = codeOf(shader);
    VkShaderModuleCreateInfo moduleInfo{};
    moduleInfo.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
    moduleInfo.codeSize = code.size_bytes();
    moduleInfo.pCode = code.data();
    const auto module =
        make<ShaderHandle>(vkCreateShaderModule, moduleInfo, translatable("loading a shader"));

    std::vector<VkSpecializationMapEntry> entries;
    for (std::uint32_t i = 0; i < constants.size(); ++i)
        entries.push_back({i, static_cast<std::uint32_t>(i * sizeof(std::uint32_t)), sizeof(std::uint32_t)});
    const VkSpecializationInfo specialization{static_cast<std::uint32_t>(entries.size()), entries.data(),
                                              constants.size() * sizeof(std::uint32_t), constants.data()};
    VkComputePipelineCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMPUTE_PIPELINE_CREATE_INFO;
    info.stage.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
    info.stage.stage = VK_SHADER_STAGE_COMPUTE_BIT;
    info.stage.module = module.get();
    info.stage.pName = "main";
    info.stage.pSpecializationInfo = &specialization;
    info.layout = layout.pipeline.get();
    VkPipeline created = VK_NULL_HANDLE;
    check(vkCreateComputePipelines(device(), cache_.get(), 1, &info, nullptr, &created),
          translatable("compiling a shader"));
    handle = PipelineHandle(device(), created);
    cacheIsNew_ = true;
    return result();
}

void Context::checkRun(VkResult result, const char* what) {
    if (result == VK_ERROR_DEVICE_LOST) isLost_ = true;
    check(result, what);
}

void Context::run(VkCommandBuffer commands) {
    VkFenceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_FENCE_CREATE_INFO;
    const auto fence = make<FenceHandle>(vkCreateFence, info, translatable("creating a fence"));
    VkSubmitInfo submit{};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &commands;
    {
        const MutexLock lock(queueMutex_);
        checkRun(vkQueueSubmit(queue_, 1, &submit, fence.get()), translatable("starting work"));
    }
    const VkFence waited = fence.get();
    checkRun(vkWaitForFences(device(), 1, &waited, VK_TRUE, UINT64_MAX), translatable("computing"));
}

}  // namespace quillmere::network::vulkan
