#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <filesystem>
#include <span>
#include <string>
#include <vector>

// Numbers and names between the library and NumPy.
namespace quillmere::python {

// What a function takes as numbers: an array of single precision, row by row, is used where it lies; anything
// else that NumPy makes numbers of is converted.
using FloatArray = pybind11::array_t<float, pybind11::array::c_style | pybind11::array::forcecast>;
using Shape = std::vector<pybind11::ssize_t>;

// The array takes the values over; nothing is copied. shape: of as many elements.
[[nodiscard]] pybind11::array toArray(std::vector<float> values, Shape shape);
[[nodiscard]] pybind11::array toArray(std::vector<float> values);
// [rows][columns]; each row has columns values.
[[nodiscard]] pybind11::array toArray(std::span<const std::vector<float>> rows, std::size_t columns);

// A view that cannot be written to. owner: the object whose values these are; it lives as long as the view.
[[nodiscard]] pybind11::array viewOf(std::span<const float> values, Shape shape, pybind11::handle owner);
[[nodiscard]] pybind11::array viewOf(std::span<const double> values, pybind11::handle owner);

// The values in order, valid as long as the array.
[[nodiscard]] std::span<const float> valuesOf(const FloatArray& array);

// Throws Python's ValueError unless the array has this shape; -1 stands for any number. name: of the
// argument.
void requireShape(const FloatArray& array, std::span<const pybind11::ssize_t> shape, const std::string& name);

// The rows of an array [n][...].
[[nodiscard]] std::vector<std::vector<float>> rowsOf(const FloatArray& array);

// A name of the file system, whose bytes need not be UTF-8, as Python has it.
[[nodiscard]] pybind11::str nameOf(const std::string& bytes);
[[nodiscard]] pybind11::list namesOf(std::span<const std::string> names);

}  // namespace quillmere::python
