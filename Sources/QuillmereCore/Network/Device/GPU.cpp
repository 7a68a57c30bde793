#include "QuillmereCore/Network/Device/GPU.h"

namespace quillmere {

GPU::GPU()
    : machine_(network::thisMachine()),
      automatic_(*machine_, network::DeviceChoice(), network::ChosenDevice::Otherwise::automatic) {}

GPU& GPU::shared() {
    // Never destroyed: when static objects go, the drivers that its devices need may have gone already.
    static GPU* const instance = new GPU;
    return *instance;
}

}  // namespace quillmere
