#include "QuillmerePython/Arrays.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace quillmere::python {
namespace py = pybind11;
namespace {

template <typename Value>
py::array readOnly(std::span<const Value> values, Shape shape, py::handle owner) {
    py::array array(py::dtype::of<Value>(), std::move(shape), values.data(), owner);
    array.attr("flags").attr("writeable") = false;
    return array;
}

std::string shapeText(std::span<const py::ssize_t> shape) {
    std::string text = "(";
    for (const py::ssize_t size : shape) {
        if (text.size() > 1) text += ", ";
        text += size < 0 ? "n" : std::to_string(size);
    }
    return text + ")";
}

bool hasShape(const FloatArray& array, std::span<const py::ssize_t> shape) {
    const auto matches = [](py::ssize_t size, py::ssize_t wanted) { return wanted < 0 || size == wanted; };
    return std::equal(array.shape(), array.shape() + array.ndim(), shape.begin(), shape.end(), matches);
}

}  // namespace

py::array toArray(std::vector<float> values, Shape shape) {
    auto kept = std::make_unique<std::vector<float>>(std::move(values));
    const float* const data = kept->data();
    const py::capsule owner(kept.get(), [](void* pointer) {
        std::default_delete<std::vector<float>>()(static_cast<std::vector<float>*>(pointer));
    });
    static_cast<void>(kept.release());  // the capsule has it now
    return {py::dtype::of<float>(), std::move(shape), data, owner};
}

py::array toArray(std::vector<float> values) {
    const auto count = static_cast<py::ssize_t>(values.size());
    return toArray(std::move(values), {count});
}

py::array toArray(std::span<const std::vector<float>> rows, std::size_t columns) {
    std::vector<float> values;
    values.reserve(rows.size() * columns);
    for (const std::vector<float>& row : rows)
        values.insert(values.end(), row.begin(), row.end());
    return toArray(std::move(values),
                   {static_cast<py::ssize_t>(rows.size()), static_cast<py::ssize_t>(columns)});
}

py::array viewOf(std::span<const float> values, Shape shape, py::handle owner) {
    return readOnly(values, std::move(shape), owner);
}

py::array viewOf(std::span<const double> values, py::handle owner) {
    return readOnly(values, {static_cast<py::ssize_t>(values.size())}, owner);
}

std::span<const float> valuesOf(const FloatArray& array) {
    return {array.data(), static_cast<std::size_t>(array.size())};
}

void requireShape(const FloatArray& array, std::span<const py::ssize_t> shape, const std::string& name) {
    if (hasShape(array, shape)) return;
    const std::span<const py::ssize_t> given(array.shape(), static_cast<std::size_t>(array.ndim()));
    throw py::value_error(name + " has the shape " + shapeText(given) + " instead of " + shapeText(shape));
}

std::vector<std::vector<float>> rowsOf(const FloatArray& array) {
    const std::span<const float> values = valuesOf(array);
    const auto count = static_cast<std::size_t>(array.shape(0));
    std::vector<std::vector<float>> rows;
    rows.reserve(count);
    const std::size_t size = count == 0 ? 0 : values.size() / count;
    for (std::size_t i = 0; i < count; ++i) {
        const std::span<const float> row = values.subspan(i * size, size);
        rows.emplace_back(row.begin(), row.end());
    }
    return rows;
}

py::str nameOf(const std::string& bytes) {
    const auto size = static_cast<py::ssize_t>(bytes.size());
    py::object name = py::reinterpret_steal<py::object>(PyUnicode_DecodeFSDefaultAndSize(bytes.data(), size));
    if (!name) throw py::error_already_set();
    return name;
}

py::list namesOf(std::span<const std::string> names) {
    py::list list;
    for (const std::string& name : names)
        list.append(nameOf(name));
    return list;
}

}  // namespace quillmere::python
