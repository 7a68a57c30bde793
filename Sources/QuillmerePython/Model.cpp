#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/UserFolders.h"
#include "QuillmerePython/Arrays.h"
#include "QuillmerePython/Bindings.h"
#include "QuillmerePython/Interruption.h"

namespace quillmere::python {
namespace py = pybind11;
namespace {

using ModelClass = py::class_<ModelBundle, std::shared_ptr<ModelBundle>>;

py::array latents(const ModelBundle& model) {
    return toArray(model.latents, static_cast<std::size_t>(model.config.latentDim));
}

py::dict weights(const py::object& self) {
    const auto& model = py::cast<const ModelBundle&>(self);
    const std::vector<VAEArchitecture::Param> params = VAEArchitecture::params(model.config);
    py::dict views;
    for (std::size_t i = 0; i < params.size(); ++i) {
        const Shape shape(params[i].shape.begin(), params[i].shape.end());
        views[py::str(params[i].name)] = viewOf(model.weights.at(i), shape, self);
    }
    return views;
}

void store(const ModelBundle& model, const std::filesystem::path& folder) {
    interruptibly([&](const std::stop_token& stop) { ModelStore::replace(model, folder, stop); });
}

std::shared_ptr<ModelBundle> open(const std::filesystem::path& folder) {
    return interruptibly(
        [&](const std::stop_token&) { return std::make_shared<ModelBundle>(ModelStore::open(folder)); });
}

std::filesystem::path modelFolder(const CorpusSummary& corpus,
                                  const std::optional<std::filesystem::path>& root) {
    if (root) return ModelStore::directory(corpus, *root);
    if (!UserFolders::data()) throw py::value_error("there is no home directory: root must be given");
    return ModelStore::directory(corpus);
}

void bindConfig(py::module_& module) {
    py::class_<ModelConfig>(module, "ModelConfig", "The shape of everything that a model touches.")
        .def_readonly("sample_rate", &ModelConfig::sampleRate, "Of its samples, in Hz.")
        .def_readonly("n_fft", &ModelConfig::nFFT, "Samples of an analysed frame.")
        .def_readonly("hop", &ModelConfig::hop, "Samples from one frame to the next.")
        .def_readonly("n_mels", &ModelConfig::nMels, "Height of an image: mel bands, the lowest first.")
        .def_readonly("frames", &ModelConfig::frames, "Width of an image.")
        .def_readonly("latent_dim", &ModelConfig::latentDim, "Numbers of a latent vector.")
        .def_property_readonly(
            "analysis", [](const ModelConfig& config) { return rawValue(config.profile); },
            "'percussive' (fine in time) or 'tonal' (fine in frequency).")
        .def_property_readonly("clip_seconds", &ModelConfig::clipSeconds, "Length of an image.")
        .def(
            "__eq__", [](const ModelConfig& self, const ModelConfig& other) { return self == other; },
            py::is_operator())
        .attr("__hash__") = py::none();
}

void bindMetadata(ModelClass& type) {
    type.def_property_readonly(
            "corpus_name", [](const ModelBundle& model) { return nameOf(model.metadata.corpusName); },
            "Name of the folder that it has learned.")
        .def_property_readonly(
            "fingerprint", [](const ModelBundle& model) { return model.metadata.fingerprint; },
            "Of the folder as it was then (Corpus.fingerprint).")
        .def_property_readonly(
            "trained_at",
            [](const ModelBundle& model) { return ModelStore::isoDate(model.metadata.trainedAt); },
            "When it was learned: ISO 8601, in UTC.")
        .def_property_readonly(
            "steps", [](const ModelBundle& model) { return model.metadata.steps; }, "Steps of its training.")
        .def_property_readonly(
            "final_loss", [](const ModelBundle& model) { return model.metadata.finalLoss; },
            "Smoothed, after the last step.")
        .def_property_readonly(
            "final_reconstruction_error",
            [](const ModelBundle& model) { return model.metadata.finalReconstructionError; },
            "Smoothed, after the last step.")
        .def_property_readonly(
            "clip_names", [](const ModelBundle& model) { return namesOf(model.metadata.clipNames); },
            "The files that it has learned, in the order of the latents.");
}

}  // namespace

void bindModel(py::module_& module) {
    bindConfig(module);
    ModelClass type(
        module, "Model",
        "What was learned of a folder: the weights of a network and a latent vector of each file.");
    type.def_readonly("config", &ModelBundle::config, "The shape of its images and latent vectors.")
        .def_property_readonly("latents", latents,
                               "Latent vectors of the files, [files, latent_dim]; a copy.")
        .def_property_readonly("weights", weights,
                               "The parameters of the network by name, as views that cannot be written to.")
        .def_property_readonly(
            "identity", [](const ModelBundle& model) { return modelIdentity(model); },
            "Text that no other model has. Takes as long as reading all weights once.")
        .def("store", store, py::arg("folder"),
             "Stores the model in place of the one in folder, if any, in one step: whoever reads it sees the "
             "old one or the "
             "new one. Raises FileError, ModelBusyError.");
    bindMetadata(type);

    module.def("open_model", open, py::arg("folder"),
               "The model that is stored in folder. Raises FileError, CorruptModelError, DecodingError.");
    module.def("model_folder", modelFolder, py::arg("corpus"), py::arg("root") = py::none(),
               "Where the programs keep the model of a folder, whether there is one or not.\n\n"
               "root: a folder of models in place of the user's own.");
}

}  // namespace quillmere::python
