#include "QuillmerePython/Bindings.h"

PYBIND11_MODULE(_core, module) {
    namespace python = quillmere::python;
    module.doc() = "The core library behind the package quillmere.";
    module.attr("__version__") = QUILLMERE_VERSION;
    python::bindFailures(module);
    python::bindParameters(module);
    python::bindAudio(module);
    python::bindCorpus(module);
    python::bindModel(module);
    python::bindTraining(module);
    python::bindGenerator(module);
}
