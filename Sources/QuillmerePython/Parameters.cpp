#include <pybind11/stl.h>

#include <algorithm>
#include <string>

#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmerePython/Bindings.h"

namespace quillmere::python {
namespace py = pybind11;
namespace {

// "phase-iterations" as Python can write it.
std::string pythonName(const ParameterSpec& spec) {
    std::string name(spec.id);
    std::ranges::replace(name, '-', '_');
    return name;
}

const ParameterSpec& specNamed(const std::string& name) {
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        if (pythonName(spec) == name) return spec;
    }
    throw py::type_error("There is no parameter " + name);
}

void set(Aesthetics& aesthetics, const ParameterSpec& spec, double value) {
    if (!(value >= spec.lower && value <= spec.upper)) {
        throw py::value_error(pythonName(spec) + " goes from " + spec.format(spec.lower) + " to " +
                              spec.format(spec.upper));
    }
    aesthetics.set(spec, value);
}

void setAll(Aesthetics& aesthetics, const py::kwargs& values) {
    for (const auto& [name, value] : values)
        set(aesthetics, specNamed(py::cast<std::string>(name)), py::cast<double>(value));
}

const Preset& presetNamed(const std::string& name) {
    const Preset* const preset = Preset::named(name);
    if (preset == nullptr) throw py::value_error("There is no preset " + name);
    return *preset;
}

std::string documentation(const ParameterSpec& spec) {
    return std::string(spec.title) + ", from " + spec.format(spec.lower) + " to " + spec.format(spec.upper) +
           ". " + std::string(spec.help);
}

// Those that differ from the defaults: "Aesthetics(pitch=-5.0)".
std::string textOf(const Aesthetics& aesthetics) {
    std::string text;
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const double value = spec.value(aesthetics);
        if (value == spec.value(Aesthetics())) continue;
        if (!text.empty()) text += ", ";
        text += pythonName(spec) + "=" + py::cast<std::string>(py::repr(py::float_(value)));
    }
    return "Aesthetics(" + text + ")";
}

void bindSpec(py::module_& module) {
    py::class_<ParameterSpec>(module, "Parameter", "What there is to know of one of the twenty parameters.")
        .def_property_readonly("name", pythonName, "Name of the attribute of Aesthetics.")
        .def_property_readonly(
            "title", [](const ParameterSpec& spec) { return spec.title; }, "What the window calls it.")
        .def_property_readonly(
            "help", [](const ParameterSpec& spec) { return spec.help; },
            "What it does, in a sentence or two.")
        .def_property_readonly(
            "group", [](const ParameterSpec& spec) { return rawValue(spec.group); },
            "Where it stands in the window.")
        .def_readonly("lower", &ParameterSpec::lower, "The least value.")
        .def_readonly("upper", &ParameterSpec::upper, "The greatest value.")
        .def_readonly("step", &ParameterSpec::step, "What a slider moves by.")
        .def_property_readonly(
            "unit", [](const ParameterSpec& spec) { return spec.unit; },
            "The unit of its values; may be empty.")
        .def_property_readonly(
            "default", [](const ParameterSpec& spec) { return spec.value(Aesthetics()); },
            "The value unless one is set.")
        .def("__repr__", [](const ParameterSpec& spec) { return "<Parameter " + pythonName(spec) + ">"; });
}

py::dict valuesOf(const Aesthetics& aesthetics) {
    py::dict values;
    for (const ParameterSpec& spec : Aesthetics::specs())
        values[py::str(pythonName(spec))] = spec.value(aesthetics);
    return values;
}

void bindAesthetics(py::module_& module) {
    py::class_<Aesthetics> type(
        module, "Aesthetics",
        "The twenty parameters of a generation, each an attribute.\n\n"
        "Aesthetics(pitch=-5) has the defaults for all others. A value beyond the range of its "
        "parameter is a ValueError.");
    type.def(py::init([](const py::kwargs& values) {
                 Aesthetics aesthetics;
                 setAll(aesthetics, values);
                 return aesthetics;
             }),
             "Takes any of the parameters by name.")
        .def_static(
            "preset",
            [](const std::string& name, const py::kwargs& values) {
                Aesthetics aesthetics = presetNamed(name).aesthetics;
                setAll(aesthetics, values);
                return aesthetics;
            },
            py::arg("name"), "Those of a built-in preset, letter case ignored; others are set on top of it.")
        .def("values", valuesOf, "All of them by name.")
        .def(
            "__eq__", [](const Aesthetics& self, const Aesthetics& other) { return self == other; },
            py::is_operator())
        .def("__repr__", textOf);
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const std::string name = pythonName(spec);
        const std::string text = documentation(spec);
        type.def_property(
            name.c_str(), [&spec](const Aesthetics& self) { return spec.value(self); },
            [&spec](Aesthetics& self, double value) { set(self, spec, value); }, text.c_str());
    }
    type.attr("__hash__") = py::none();
}

}  // namespace

void bindParameters(py::module_& module) {
    bindSpec(module);
    bindAesthetics(module);
    module.def(
        "parameters",
        [] {
            py::list list;
            for (const ParameterSpec& spec : Aesthetics::specs())
                list.append(py::cast(&spec, py::return_value_policy::reference));
            return list;
        },
        "The twenty parameters, in their order.");
    module.def(
        "presets",
        [] {
            py::dict presets;
            for (const Preset& preset : Preset::all())
                presets[py::cast(preset.name)] = preset.blurb;
            return presets;
        },
        "The built-in presets by name, each with a few words.");
}

}  // namespace quillmere::python
