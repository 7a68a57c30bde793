#include "QuillmerePython/Compute.h"

#include <pybind11/pybind11.h>

#include "QuillmereCore/Network/Device/DeviceChoice.h"
#include "QuillmereCore/Network/Device/GPU.h"

namespace quillmere::python {
namespace {

void warn(const std::string& message) {
    const pybind11::gil_scoped_acquire held;
    // Where warnings are errors, this one ends the work.
    if (PyErr_WarnEx(PyExc_RuntimeWarning, message.c_str(), 1) != 0) throw pybind11::error_already_set();
}

}  // namespace

Compute::Compute(const std::string& device)
    : device_(GPU::shared().machine(), network::DeviceChoice::fromOption(device),
              network::ChosenDevice::Otherwise::fail, {.opened = {}, .processorStandsIn = warn}) {}

}  // namespace quillmere::python
