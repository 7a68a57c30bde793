#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Training/TrainingError.h"
#include "QuillmereCore/Network/Device/ComputeDevice.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmerePython/Bindings.h"

namespace quillmere::python {
namespace py = pybind11;
namespace {

// One that is more special than others must come after them.
template <typename Error>
void bindFailure(py::module_& module, const char* name, py::handle base, const char* documentation) {
    const py::exception<Error>& type = py::register_exception<Error>(module, name, base);
    type.attr("__doc__") = documentation;
}

}  // namespace

void bindFailures(py::module_& module) {
    bindFailure<Failure>(module, "Failure", PyExc_Exception,
                         "What the user can have caused; its text is a sentence for people.");
    const py::object failure = module.attr("Failure");
    bindFailure<FileError>(module, "FileError", failure,
                           "Trouble that the file system reports, with its reason.");
    bindFailure<DecodingError>(
        module, "DecodingError", failure,
        "A document lacks a key, has a value of the wrong type, or is no document at all.");
    bindFailure<AudioIOError>(module, "AudioError", failure, "Trouble with an audio file.");
    bindFailure<CorruptModelError>(module, "CorruptModelError", failure, "A stored model is damaged.");
    bindFailure<ModelBusyError>(module, "ModelBusyError", failure,
                                "Another program, or another thread, is storing the model.");
    bindFailure<TrainingError>(module, "TrainingError", failure,
                               "Nothing can be learned from the folder, or the learning went astray.");
    bindFailure<InvalidParameterError>(module, "InvalidParameterError", failure,
                                       "A parameter has a value that no generation can work with.");
    bindFailure<network::DeviceError>(module, "DeviceError", failure,
                                      "A device is gone, cannot be used, or is not what was asked for.");
}

}  // namespace quillmere::python
