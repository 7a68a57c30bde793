#pragma once

#include <pybind11/pybind11.h>

// The parts of the Python module quillmere._core, each of which adds its classes and functions. What a
// docstring says is for people who write Python; the headers that it stands for say the same with more
// precision.
//
// Work that takes long runs on a thread of its own, without Python's lock (Interruption.h).
namespace quillmere::python {

void bindFailures(pybind11::module_& module);
void bindParameters(pybind11::module_& module);
void bindAudio(pybind11::module_& module);
void bindCorpus(pybind11::module_& module);
void bindModel(pybind11::module_& module);
void bindTraining(pybind11::module_& module);
void bindGenerator(pybind11::module_& module);

}  // namespace quillmere::python
