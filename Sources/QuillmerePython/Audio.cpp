#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmerePython/Arrays.h"
#include "QuillmerePython/Bindings.h"
#include "QuillmerePython/Formats.h"
#include "QuillmerePython/Interruption.h"

namespace quillmere::python {
namespace py = pybind11;
namespace {

py::tuple readMono(const std::filesystem::path& file) {
    AudioIO::MonoAudio audio = interruptibly([&](const std::stop_token& stop) {
        return AudioIO::readMono(file, {.stop = stop, .followsLinks = true});
    });
    return py::make_tuple(toArray(std::move(audio.samples)), audio.sampleRate);
}

void write(const std::filesystem::path& file, const FloatArray& samples, int sampleRate,
           const std::string& format) {
    constexpr std::array<py::ssize_t, 1> mono{-1};
    requireShape(samples, mono, "samples");
    if (sampleRate <= 0) throw py::value_error("sample_rate must be above 0");
    const OutputFormat chosen = formatNamed(format);
    const std::span<const float> values = valuesOf(samples);
    const py::gil_scoped_release released;
    AudioIO::write(values, file, sampleRate, chosen);
}

}  // namespace

OutputFormat formatNamed(const std::string& name) {
    const std::optional<OutputFormat> format = outputFormat(name);
    if (!format) throw py::value_error("There is no format " + name);
    return *format;
}

void bindAudio(py::module_& module) {
    module.def(
        "read_mono", readMono, py::arg("file"),
        "Decodes a whole audio file and averages its channels.\n\n"
        "Returns the samples, nominally within -1 and 1, and the sample rate in Hz. Raises AudioError.");
    module.def(
        "write", write, py::arg("file"), py::arg("samples"), py::arg("sample_rate"),
        py::arg("format") = "wav24",
        "Writes mono samples as a WAV file, whole or not at all; a file of that name is replaced.\n\n"
        "format: 'wav16', 'wav24' or 'wav32float'. Values beyond -1 and 1 saturate in the first two. Raises "
        "FileError.");
}

}  // namespace quillmere::python
