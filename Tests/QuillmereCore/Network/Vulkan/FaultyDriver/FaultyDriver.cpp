#include "QuillmereCore/Network/Vulkan/FaultyDriver/FaultyDriver.h"

#include <vulkan/vk_layer.h>
#include <vulkan/vulkan.h>

#include <atomic>
#include <climits>
#include <cstring>
#include <map>

#include "QuillmereCore/Util/ThreadSafety.h"

// How layers work: https://github.com/KhronosGroup/Vulkan-Loader/blob/main/docs/LoaderLayerInterface.md

namespace quillmere::testing {
namespace {

struct Orders {
    std::atomic<int> submissions = 0, allocations = 0, openedDevices = 0;
    std::atomic<int> loseFrom = INT_MAX, loseUntil = INT_MAX;  // submissions that lose their device
    std::atomic<int> failFrom = INT_MAX;
    std::atomic<bool> refusesToOpen = false;
};

Orders& orders() {
    static Orders instance;
    return instance;
}

// What comes after this layer.
struct NextInstance {
    VkInstance instance = VK_NULL_HANDLE;
    PFN_vkGetInstanceProcAddr function = nullptr;
};
struct NextDevice {
    VkDevice device = VK_NULL_HANDLE;
    PFN_vkGetDeviceProcAddr function = nullptr;
    bool isLost = false;
};

struct Chain {
    Mutex mutex;
    std::map<void*, NextInstance> instances QUILLMERE_GUARDED_BY(mutex);
    std::map<void*, NextDevice> devices QUILLMERE_GUARDED_BY(mutex);
};

Chain& chain() {
    static Chain instance;
    return instance;
}

// Objects begin with a pointer that an instance shares with its physical devices, and a device with its
// queues.
template <typename Object>
void* keyOf(Object object) {
    void* key = nullptr;
    std::memcpy(&key, object, sizeof key);
    return key;
}

template <typename Object>
NextInstance& nextInstance(Object object) {
    const MutexLock lock(chain().mutex);
    return chain().instances.at(keyOf(object));
}
template <typename Object>
NextDevice& nextDevice(Object object) {
    const MutexLock lock(chain().mutex);
    return chain().devices.at(keyOf(object));
}

template <typename Function>
Function as(PFN_vkVoidFunction function) {
    return reinterpret_cast<Function>(function);
}
template <typename Function>
PFN_vkVoidFunction plain(Function function) {
    return reinterpret_cast<PFN_vkVoidFunction>(function);
}

// The loader's own structure in what an instance or a device is created with: where the chain goes on.
template <typename Link, typename Info>
Link& linkIn(const Info& info, VkStructureType type) {
    auto* link = static_cast<Link*>(const_cast<void*>(info.pNext));
    while (link->sType != type || link->function != VK_LAYER_LINK_INFO)
        link = static_cast<Link*>(const_cast<void*>(link->pNext));
    return *link;
}

VKAPI_ATTR VkResult VKAPI_CALL createInstance(const VkInstanceCreateInfo* info,
                                              const VkAllocationCallbacks* allocator, VkInstance* instance) {
    auto& link =
        linkIn<VkLayerInstanceCreateInfo>(*info, VK_STRUCTURE_TYPE_LOADER_INSTANCE_CREATE_INFO).u.pLayerInfo;
    const PFN_vkGetInstanceProcAddr next = link->pfnNextGetInstanceProcAddr;
    link = link->pNext;
    const VkResult result =
        as<PFN_vkCreateInstance>(next(VK_NULL_HANDLE, "vkCreateInstance"))(info, allocator, instance);
    if (result != VK_SUCCESS) return result;
    const MutexLock lock(chain().mutex);
    chain().instances[keyOf(*instance)] = {*instance, next};
    return result;
}

VKAPI_ATTR VkResult VKAPI_CALL createDevice(VkPhysicalDevice physical, const VkDeviceCreateInfo* info,
                                            const VkAllocationCallbacks* allocator, VkDevice* device) {
    if (orders().refusesToOpen) return VK_ERROR_INITIALIZATION_FAILED;
    auto& link =
        linkIn<VkLayerDeviceCreateInfo>(*info, VK_STRUCTURE_TYPE_LOADER_DEVICE_CREATE_INFO).u.pLayerInfo;
    const PFN_vkGetInstanceProcAddr next = link->pfnNextGetInstanceProcAddr;
    const PFN_vkGetDeviceProcAddr nextOfDevice = link->pfnNextGetDeviceProcAddr;
    link = link->pNext;
    const VkResult result = as<PFN_vkCreateDevice>(next(nextInstance(physical).instance, "vkCreateDevice"))(
        physical, info, allocator, device);
    if (result != VK_SUCCESS) return result;
    ++orders().openedDevices;
    const MutexLock lock(chain().mutex);
    chain().devices[keyOf(*device)] = {*device, nextOfDevice};
    return result;
}

template <typename Function>
Function nextOf(const NextDevice& device, const char* name) {
    return as<Function>(device.function(device.device, name));
}

VKAPI_ATTR VkResult VKAPI_CALL allocateMemory(VkDevice device, const VkMemoryAllocateInfo* info,
                                              const VkAllocationCallbacks* allocator,
                                              VkDeviceMemory* memory) {
    if (++orders().allocations >= orders().failFrom) return VK_ERROR_OUT_OF_DEVICE_MEMORY;
    return nextOf<PFN_vkAllocateMemory>(nextDevice(device), "vkAllocateMemory")(device, info, allocator,
                                                                                memory);
}

// The submission that loses the device still reaches the driver, which knows of no loss.
VKAPI_ATTR VkResult VKAPI_CALL queueSubmit(VkQueue queue, std::uint32_t count, const VkSubmitInfo* submits,
                                           VkFence fence) {
    NextDevice& device = nextDevice(queue);
    if (device.isLost) return VK_ERROR_DEVICE_LOST;
    const int number = ++orders().submissions;
    device.isLost = number >= orders().loseFrom && number < orders().loseUntil;
    return nextOf<PFN_vkQueueSubmit>(device, "vkQueueSubmit")(queue, count, submits, fence);
}

VKAPI_ATTR VkResult VKAPI_CALL waitForFences(VkDevice device, std::uint32_t count, const VkFence* fences,
                                             VkBool32 all, std::uint64_t nanoseconds) {
    const NextDevice& next = nextDevice(device);
    const VkResult result =
        nextOf<PFN_vkWaitForFences>(next, "vkWaitForFences")(device, count, fences, all, nanoseconds);
    return next.isLost ? VK_ERROR_DEVICE_LOST : result;
}

PFN_vkVoidFunction VKAPI_CALL deviceFunction(VkDevice device, const char* name);
PFN_vkVoidFunction VKAPI_CALL instanceFunction(VkInstance instance, const char* name);

PFN_vkVoidFunction ownDeviceFunction(const char* name) {
    if (std::strcmp(name, "vkGetDeviceProcAddr") == 0) return plain(deviceFunction);
    if (std::strcmp(name, "vkAllocateMemory") == 0) return plain(allocateMemory);
    if (std::strcmp(name, "vkQueueSubmit") == 0) return plain(queueSubmit);
    if (std::strcmp(name, "vkWaitForFences") == 0) return plain(waitForFences);
    return nullptr;
}

PFN_vkVoidFunction VKAPI_CALL deviceFunction(VkDevice device, const char* name) {
    if (const PFN_vkVoidFunction own = ownDeviceFunction(name)) return own;
    return nextDevice(device).function(device, name);
}

PFN_vkVoidFunction VKAPI_CALL instanceFunction(VkInstance instance, const char* name) {
    if (std::strcmp(name, "vkGetInstanceProcAddr") == 0) return plain(instanceFunction);
    if (std::strcmp(name, "vkCreateInstance") == 0) return plain(createInstance);
    if (std::strcmp(name, "vkCreateDevice") == 0) return plain(createDevice);
    if (const PFN_vkVoidFunction own = ownDeviceFunction(name)) return own;
    if (instance == VK_NULL_HANDLE) return nullptr;
    return nextInstance(instance).function(instance, name);
}

}  // namespace

namespace FaultyDriver {

void behave() {
    orders().submissions = orders().allocations = 0;
    orders().loseFrom = orders().loseUntil = orders().failFrom = INT_MAX;
    orders().refusesToOpen = false;
}
void loseDeviceAt(int submission) {
    behave();
    orders().loseFrom = submission;
    orders().loseUntil = submission + 1;
}
void loseEveryDevice() {
    behave();
    orders().loseFrom = 1;
}
void refuseToOpen() {
    behave();
    orders().refusesToOpen = true;
}
void failAllocationsFrom(int allocation) {
    behave();
    orders().failFrom = allocation;
}

int submissions() {
    return orders().submissions;
}
int allocations() {
    return orders().allocations;
}
int openedDevices() {
    return orders().openedDevices;
}

}  // namespace FaultyDriver
}  // namespace quillmere::testing

// Where the loader begins.
extern "C" VKAPI_ATTR VkResult VKAPI_CALL
vkNegotiateLoaderLayerInterfaceVersion(VkNegotiateLayerInterface* interface) {
    interface->loaderLayerInterfaceVersion = 2;
    interface->pfnGetInstanceProcAddr = quillmere::testing::instanceFunction;
    interface->pfnGetDeviceProcAddr = quillmere::testing::deviceFunction;
    interface->pfnGetPhysicalDeviceProcAddr = nullptr;
    return VK_SUCCESS;
}
