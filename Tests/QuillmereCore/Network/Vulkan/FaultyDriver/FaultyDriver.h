#pragma once

// A Vulkan layer, which stands between the product and the driver and fails when a test asks for it. The
// loader finds it through the environment (QUILLMERE_FAULTY_GPU in CMake); the test links it to give it
// orders. Threads: none of the orders may be given while the device is in use.
namespace quillmere::testing::FaultyDriver {

// No more faults; lost devices stay lost.
void behave();
// The submission of that number, 1 being the next, loses the device that it goes to: waiting for it says so,
// and so does everything that is submitted to it afterwards. A device opened later is another one.
void loseDeviceAt(int submission);
// From now on each submission loses its device.
void loseEveryDevice();
// No device opens.
void refuseToOpen();
// The allocation of that number, 1 being the next, and all after it find no memory.
void failAllocationsFrom(int allocation);

// Since the last order.
[[nodiscard]] int submissions();
[[nodiscard]] int allocations();
// Since the program began.
[[nodiscard]] int openedDevices();

}  // namespace quillmere::testing::FaultyDriver
