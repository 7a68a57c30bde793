#include "QuillmereCore/Network/Vulkan/Instance.h"

#include <algorithm>

#include "QuillmereCore/Network/Vulkan/Handle.h"
#include "QuillmereCore/Network/Vulkan/Shaders.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::network::vulkan {
namespace {

constexpr const char* loader = "Vulkan";  // what fails where there is no device yet
constexpr const char* validationLayer = "VK_LAYER_KHRONOS_validation";

VKAPI_ATTR VkBool32 VKAPI_CALL forwardMessage(VkDebugUtilsMessageSeverityFlagBitsEXT,
                                              VkDebugUtilsMessageTypeFlagsEXT,
                                              const VkDebugUtilsMessengerCallbackDataEXT* data, void* user) {
    static_cast<const Validation*>(user)->onMessage(data->pMessage);
    return VK_FALSE;
}

VkDebugUtilsMessengerCreateInfoEXT messengerInfo(Validation& validation) {
    VkDebugUtilsMessengerCreateInfoEXT info{};
    info.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_MESSENGER_CREATE_INFO_EXT;
    info.messageSeverity =
        VK_DEBUG_UTILS_MESSAGE_SEVERITY_WARNING_BIT_EXT | VK_DEBUG_UTILS_MESSAGE_SEVERITY_ERROR_BIT_EXT;
    info.messageType = VK_DEBUG_UTILS_MESSAGE_TYPE_VALIDATION_BIT_EXT;
    info.pfnUserCallback = forwardMessage;
    info.pUserData = &validation;
    return info;
}

std::vector<VkValidationFeatureEnableEXT> enabledFeatures(Validation::Extra extra) {
    switch (extra) {
        case Validation::Extra::none:
            return {};
        case Validation::Extra::synchronization:
            return {VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT};
        case Validation::Extra::gpuAssisted:
            return {VK_VALIDATION_FEATURE_ENABLE_GPU_ASSISTED_EXT,
                    VK_VALIDATION_FEATURE_ENABLE_GPU_ASSISTED_RESERVE_BINDING_SLOT_EXT};
    }
    fatal("unknown kind of validation");
}

ComputeDevice::Type typeOf(VkPhysicalDeviceType type) {
    using Type = ComputeDevice::Type;
    switch (type) {
        case VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU:
            return Type::discrete;
        case VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU:
            return Type::integrated;
        case VK_PHYSICAL_DEVICE_TYPE_VIRTUAL_GPU:
            return Type::virtualGPU;
        case VK_PHYSICAL_DEVICE_TYPE_CPU:
            return Type::software;
        default:
            return Type::other;
    }
}

std::uint64_t deviceMemory(VkPhysicalDevice device) {
    VkPhysicalDeviceMemoryProperties memory{};
    vkGetPhysicalDeviceMemoryProperties(device, &memory);
    std::uint64_t most = 0;
    for (std::uint32_t i = 0; i < memory.memoryHeapCount; ++i) {
        if ((memory.memoryHeaps[i].flags & VK_MEMORY_HEAP_DEVICE_LOCAL_BIT) != 0)
            most = std::max(most, static_cast<std::uint64_t>(memory.memoryHeaps[i].size));
    }
    return most;
}

ComputeDevice::Limits limitsOf(VkPhysicalDevice device, const VkPhysicalDeviceLimits& limits) {
    ComputeDevice::Limits result;
    result.memory = deviceMemory(device);
    result.largestTensor = limits.maxStorageBufferRange;
    result.sharedMemory = limits.maxComputeSharedMemorySize;
    result.workGroupThreads = limits.maxComputeWorkGroupInvocations;
    std::copy_n(limits.maxComputeWorkGroupCount, result.workGroups.size(), result.workGroups.begin());
    result.storageBuffers =
        std::min(limits.maxPerStageDescriptorStorageBuffers, limits.maxDescriptorSetStorageBuffers);
    return result;
}

std::string versionText(std::uint32_t version) {
    return std::to_string(VK_API_VERSION_MAJOR(version)) + "." +
           std::to_string(VK_API_VERSION_MINOR(version));
}

// Asks only what a Vulkan 1.1 device answers.
void describeDriver(VkPhysicalDevice device, ComputeDevice& result) {
    VkPhysicalDeviceIDProperties id{};
    id.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_ID_PROPERTIES;
    VkPhysicalDeviceDriverProperties driver{};
    driver.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_DRIVER_PROPERTIES;
    driver.pNext = &id;  // left empty by drivers older than Vulkan 1.2
    VkPhysicalDeviceProperties2 properties{};
    properties.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PROPERTIES_2;
    properties.pNext = &driver;
    vkGetPhysicalDeviceProperties2(device, &properties);
    std::copy_n(id.deviceUUID, result.identity.uuid.size(), result.identity.uuid.begin());
    result.driver = driver.driverName;
    if (driver.driverInfo[0] != '\0') result.driver += std::string(", ") + driver.driverInfo;
}

Message problemOf(VkPhysicalDevice device, const VkPhysicalDeviceProperties& properties,
                  const ComputeDevice::Limits& limits) {
    if (properties.apiVersion < VK_API_VERSION_1_1)
        return Message("its driver offers Vulkan {0}, and 1.1 is needed.",
                       versionText(properties.apiVersion));
    if (!computeQueueFamily(device)) return Message("it has no queue for computing.");
    if (limits.storageBuffers < mostBindings) {
        return Message("a shader can use {0} storage buffers, and {1} are needed.", limits.storageBuffers,
                       mostBindings);
    }
    return {};
}

}  // namespace

void check(VkResult result, const std::string& device, const char* what) {
    switch (result) {
        case VK_SUCCESS:
            return;
        case VK_ERROR_OUT_OF_DEVICE_MEMORY:
        case VK_ERROR_OUT_OF_HOST_MEMORY:
            throw DeviceError(
                "{0} has not enough free memory. Close other programs that use it, or choose another device.",
                device);
        case VK_ERROR_DEVICE_LOST:
            throw DeviceError("{0} was lost while {1}. Try again, or choose another device.", device,
                              Message::fromTable(what));
        default:
            throw DeviceError(
                "{0} failed while {1} (Vulkan error {2}). Update the graphics driver, or choose another "
                "device.",
                device, Message::fromTable(what), static_cast<int>(result));
    }
}

Instance::Instance(std::optional<Validation> validation) : validation_(std::move(validation)) {
    VkApplicationInfo application{};
    application.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO;
    application.pApplicationName = "Quillmere";
    application.apiVersion = VK_API_VERSION_1_1;
    VkInstanceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    info.pApplicationInfo = &application;
    if (!validation_) {
        check(vkCreateInstance(&info, nullptr, &instance_), loader,
              translatable("loading the graphics drivers"));
        return;
    }
    const char* const extension = VK_EXT_DEBUG_UTILS_EXTENSION_NAME;
    const VkDebugUtilsMessengerCreateInfoEXT messenger = messengerInfo(*validation_);
    const auto enabled = enabledFeatures(validation_->extra);
    VkValidationFeaturesEXT features{};
    features.sType = VK_STRUCTURE_TYPE_VALIDATION_FEATURES_EXT;
    features.pNext = &messenger;
    features.enabledValidationFeatureCount = static_cast<std::uint32_t>(enabled.size());
    features.pEnabledValidationFeatures = enabled.data();
    info.pNext = &features;
    info.enabledLayerCount = 1;
    info.ppEnabledLayerNames = &validationLayer;
    info.enabledExtensionCount = 1;
    info.ppEnabledExtensionNames = &extension;
    check(vkCreateInstance(&info, nullptr, &instance_), loader,
          translatable("loading the validation layers"));
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the loader's way to hand out functions
    const auto create = reinterpret_cast<PFN_vkCreateDebugUtilsMessengerEXT>(
        vkGetInstanceProcAddr(instance_, "vkCreateDebugUtilsMessengerEXT"));
    check(create(instance_, &messenger, nullptr, &messenger_), loader,
          translatable("watching the validation layers"));
}

Instance::~Instance() {
    if (messenger_ != VK_NULL_HANDLE) {
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
        const auto destroy = reinterpret_cast<PFN_vkDestroyDebugUtilsMessengerEXT>(
            vkGetInstanceProcAddr(instance_, "vkDestroyDebugUtilsMessengerEXT"));
        destroy(instance_, messenger_, nullptr);
    }
    vkDestroyInstance(instance_, nullptr);
}

std::vector<VkPhysicalDevice> Instance::physicalDevices() const {
    std::uint32_t count = 0;
    if (vkEnumeratePhysicalDevices(instance_, &count, nullptr) != VK_SUCCESS) return {};
    std::vector<VkPhysicalDevice> devices(count);
    // A device may have gone in between: what the second call leaves out does not count.
    if (vkEnumeratePhysicalDevices(instance_, &count, devices.data()) < 0) return {};
    devices.resize(count);
    return devices;
}

VkPhysicalDevice Instance::find(const DeviceIdentity& identity) const {
    for (const VkPhysicalDevice device : physicalDevices()) {
        if (describe(device).identity == identity) return device;
    }
    throw DeviceError("{0} is not there any more. Choose another device.", identity.name);
}

ComputeDevice describe(VkPhysicalDevice device) {
    VkPhysicalDeviceProperties properties{};
    vkGetPhysicalDeviceProperties(device, &properties);
    ComputeDevice result;
    result.identity.interface = DeviceIdentity::Interface::vulkan;
    result.identity.name = properties.deviceName;
    result.type = typeOf(properties.deviceType);
    result.api = "Vulkan " + versionText(properties.apiVersion);
    result.limits = limitsOf(device, properties.limits);
    if (properties.apiVersion >= VK_API_VERSION_1_1) describeDriver(device, result);
    result.problem = problemOf(device, properties, result.limits);
    return result;
}

std::optional<std::uint32_t> computeQueueFamily(VkPhysicalDevice device) {
    std::uint32_t count = 0;
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, nullptr);
    std::vector<VkQueueFamilyProperties> families(count);
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, families.data());
    for (std::uint32_t i = 0; i < count; ++i) {
        if ((families[i].queueFlags & VK_QUEUE_COMPUTE_BIT) != 0) return i;
    }
    return std::nullopt;
}

}  // namespace quillmere::network::vulkan
