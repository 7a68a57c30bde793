#include "QuillmereCore/Model/Corpus.h"

#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "QuillmerePython/Arrays.h"
#include "QuillmerePython/Bindings.h"
#include "QuillmerePython/Interruption.h"

namespace quillmere::python {
namespace py = pybind11;
namespace {

CorpusSummary scan(const std::filesystem::path& folder, const py::object& progress) {
    const CountProgress report = listener<std::int64_t, std::int64_t>(progress);
    return interruptibly([&](const std::stop_token& stop) { return Corpus::scan(folder, report, stop); });
}

py::list fileNames(const CorpusSummary& corpus) {
    py::list names;
    for (const CorpusFile& file : corpus.files)
        names.append(nameOf(file.relativePath));
    return names;
}

py::list passedOver(const CorpusSummary& corpus) {
    py::list folders;
    for (const PassedOver& folder : corpus.passedOver)
        folders.append(py::make_tuple(nameOf(folder.folder), nameOf(folder.reason)));
    return folders;
}

std::string textOf(const CorpusSummary& corpus) {
    return "<Corpus of " + std::to_string(corpus.fileCount()) + " files>";
}

}  // namespace

void bindCorpus(py::module_& module) {
    py::class_<CorpusSummary, std::shared_ptr<CorpusSummary>>(
        module, "Corpus", "What a scan has found in a folder. Its length is the number of files.")
        .def_property_readonly(
            "directory", [](const CorpusSummary& corpus) { return corpus.directory; },
            "The folder, as it was given.")
        .def_property_readonly(
            "files", fileNames,
            "Names of all audio files below the folder, in the order of a file browser, also of "
            "those that cannot be read.")
        .def_property_readonly(
            "durations",
            [](const py::object& self) {
                return viewOf(py::cast<const CorpusSummary&>(self).durations, self);
            },
            "Seconds of each file that can be read, in the order of files. A view that cannot be written to.")
        .def_readonly("total_seconds", &CorpusSummary::totalSeconds, "Of all files that can be read.")
        .def_readonly("sample_rates", &CorpusSummary::sampleRates,
                      "How many files have each sample rate (Hz).")
        .def_readonly("unreadable", &CorpusSummary::unreadable, "How many files could not be opened.")
        .def_property_readonly("passed_over", passedOver,
                               "Folders inside that a scan could not look into, each with the reason.")
        .def_property_readonly("dominant_sample_rate", &CorpusSummary::dominantSampleRate,
                               "The most frequent sample rate (Hz), at which the folder is learned.")
        .def_property_readonly("suggested_clip_seconds", &CorpusSummary::suggestedClipSeconds,
                               "A length that suits nine of ten files, from 0.3 to 4 seconds.")
        .def_property_readonly("fingerprint", &CorpusSummary::fingerprint,
                               "Another one as soon as a file is added, removed, renamed or touched.")
        .def("__len__", [](const CorpusSummary& corpus) { return corpus.files.size(); })
        .def("__repr__", textOf);

    module.def(
        "scan", scan, py::arg("folder"), py::kw_only(), py::arg("progress") = py::none(),
        "Finds the audio files in a folder and the folders inside, and measures each without decoding it.\n\n"
        "progress(done, total) is called after each file, on another thread; what it raises ends the scan "
        "and is "
        "raised here. Raises FileError when folder is none, or what would hide a file: a disk that cannot be "
        "read.");
}

}  // namespace quillmere::python
