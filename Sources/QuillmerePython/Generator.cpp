#include "QuillmereCore/Generate/Generator.h"

#include <pybind11/stl.h>
#include <pybind11/stl/filesystem.h>

#include <mutex>

#include "QuillmereCore/Model/VAE.h"
#include "QuillmerePython/Arrays.h"
#include "QuillmerePython/Bindings.h"
#include "QuillmerePython/Compute.h"
#include "QuillmerePython/Formats.h"
#include "QuillmerePython/Interruption.h"

namespace quillmere::python {
namespace py = pybind11;
namespace {

using Path = std::filesystem::path;

ClipSounds soundsOf(const ModelBundle& model, const CorpusSummary* corpus,
                    const std::optional<Path>& modelFolder) {
    ClipSounds sounds;
    if (corpus != nullptr) sounds = ClipSounds::inFolder(model, *corpus);
    if (sounds.origin() == ClipSounds::Origin::none && modelFolder)
        sounds = ClipSounds::keptWith(model, *modelFolder);
    return sounds;
}

// A SampleGenerator that any number of Python threads may use: one call waits for the other.
class Generator {
public:
    Generator(const ModelBundle& model, const std::string& device, const CorpusSummary* corpus,
              const std::optional<Path>& modelFolder)
        : compute_(device),
          extractor_(model.config),
          generator_(model, compute_.backend(), soundsOf(model, corpus, modelFolder)) {}

    [[nodiscard]] const ModelConfig& config() const { return generator_.bundle().config; }
    // Immutable.
    [[nodiscard]] const SampleGenerator& generator() const { return generator_; }

    [[nodiscard]] std::vector<GeneratedSample> generate(const GenerationRequest& request,
                                                        const CountProgress& report,
                                                        const std::stop_token& stop) {
        const std::lock_guard one(mutex_);
        return generator_.generate(request, report, stop);
    }
    [[nodiscard]] AuditionedSample audition(const AuditionRequest& request, const std::stop_token& stop) {
        const std::lock_guard one(mutex_);
        return generator_.audition(request, stop);
    }
    [[nodiscard]] std::vector<std::vector<float>> encode(std::span<const std::vector<float>> images) {
        const std::lock_guard one(mutex_);
        return network().encode(images);
    }
    [[nodiscard]] std::vector<std::vector<float>> decode(std::span<const std::vector<float>> latents) {
        const std::lock_guard one(mutex_);
        return network().decode(latents);
    }
    // Both any thread.
    [[nodiscard]] std::vector<float> features(std::span<const float> samples) const {
        STFT stft = extractor_.makeSTFT();
        return extractor_.features(samples, stft);
    }
    [[nodiscard]] std::vector<float> render(std::span<const float> image, const Aesthetics& aesthetics,
                                            std::uint64_t seed) const {
        SeededRNG rng(seed);
        STFT stft = extractor_.makeSTFT();
        return generator_.render(image, aesthetics, rng, stft);
    }

private:
    // The generator keeps its own to itself. Compiled when somebody encodes or decodes.
    [[nodiscard]] VAEInference& network() {
        if (!network_) network_.emplace(config(), generator_.bundle().weights, compute_.backend());
        return *network_;
    }

    Compute compute_;
    FeatureExtractor extractor_;
    SampleGenerator generator_;
    std::mutex mutex_;  // what follows, and the calls of the generator
    std::optional<VAEInference> network_;
};

std::array<py::ssize_t, 2> imageShape(const ModelConfig& config) {
    return {config.nMels, config.frames};
}

std::unique_ptr<Generator> make(const ModelBundle& model, const std::string& device,
                                const CorpusSummary* corpus, const std::optional<Path>& modelFolder) {
    return interruptibly([&](const std::stop_token&) {
        return std::make_unique<Generator>(model, device, corpus, modelFolder);
    });
}

std::vector<GeneratedSample> generate(Generator& self, const Path& output, std::int64_t count,
                                      const Aesthetics& aesthetics, std::uint64_t seed, double detail,
                                      const std::string& format, const std::optional<std::string>& prefix,
                                      std::optional<std::int64_t> first, const py::object& progress) {
    if (first && *first < 0) throw py::value_error("first must be at least 0");
    const GenerationRequest request{.count = count,
                                    .outputDirectory = output,
                                    .aesthetics = aesthetics,
                                    .seed = seed,
                                    .format = formatNamed(format),
                                    .namePrefix = prefix,
                                    .detail = detail,
                                    .first = first};
    const CountProgress report = listener<std::int64_t, std::int64_t>(progress);
    return interruptibly([&](const std::stop_token& stop) { return self.generate(request, report, stop); });
}

py::array audition(Generator& self, const Aesthetics& aesthetics, std::uint64_t seed, double detail) {
    const AuditionRequest request{.aesthetics = aesthetics, .seed = seed, .detail = detail};
    AuditionedSample sample =
        interruptibly([&](const std::stop_token& stop) { return self.audition(request, stop); });
    return toArray(std::move(sample.samples));
}

py::array features(const Generator& self, const FloatArray& samples) {
    constexpr std::array<py::ssize_t, 1> mono{-1};
    requireShape(samples, mono, "samples");
    const std::span<const float> values = valuesOf(samples);
    std::vector<float> image = interruptibly([&](const std::stop_token&) { return self.features(values); });
    const auto shape = imageShape(self.config());
    return toArray(std::move(image), {shape.begin(), shape.end()});
}

py::array render(const Generator& self, const FloatArray& image, const Aesthetics& aesthetics,
                 std::uint64_t seed) {
    requireShape(image, imageShape(self.config()), "image");
    const std::span<const float> values = valuesOf(image);
    return toArray(
        interruptibly([&](const std::stop_token&) { return self.render(values, aesthetics, seed); }));
}

py::array encode(Generator& self, const FloatArray& images) {
    const ModelConfig& config = self.config();
    const std::array<py::ssize_t, 3> shape{-1, config.nMels, config.frames};
    requireShape(images, shape, "images");
    const std::vector<std::vector<float>> rows = rowsOf(images);
    const auto latents = interruptibly([&](const std::stop_token&) { return self.encode(rows); });
    return toArray(latents, static_cast<std::size_t>(config.latentDim));
}

py::array decode(Generator& self, const FloatArray& latents) {
    const ModelConfig& config = self.config();
    const std::array<py::ssize_t, 2> shape{-1, config.latentDim};
    requireShape(latents, shape, "latents");
    const std::vector<std::vector<float>> rows = rowsOf(latents);
    const auto images = interruptibly([&](const std::stop_token&) { return self.decode(rows); });
    const py::array flat = toArray(images, static_cast<std::size_t>(config.nMels * config.frames));
    return flat.attr("reshape")(images.size(), config.nMels, config.frames);
}

py::array draw(const Generator& self, const Aesthetics& aesthetics, std::uint64_t seed) {
    return toArray(self.generator().draw(aesthetics, 0, seed).latent);
}

void bindSource(py::module_& module) {
    using Source = SampleOrigin::Source;
    py::class_<Source>(module, "Source", "A learned file that a sample is a blend of.")
        .def_readonly("clip", &Source::clip, "Its position in the latents of the model.")
        .def_property_readonly(
            "name", [](const Source& source) { return nameOf(source.name); }, "Its name below the folder.")
        .def_readonly("weight", &Source::weight, "Its share; the shares of a blend sum to 1.");
}

void bindSample(py::module_& module) {
    bindSource(module);
    py::class_<GeneratedSample>(module, "Sample", "A file that was written.")
        .def_property_readonly(
            "path", [](const GeneratedSample& sample) { return sample.url; }, "Where it is.")
        .def_readonly("seconds", &GeneratedSample::seconds, "Its length, in seconds.")
        .def_property_readonly(
            "index", [](const GeneratedSample& sample) { return sample.origin.index; },
            "Which one of its job, from 0.")
        .def_property_readonly(
            "seed", [](const GeneratedSample& sample) { return sample.origin.seed; },
            "Its own: Generator.audition gives the same samples for it.")
        .def_property_readonly(
            "latent",
            [](const py::object& self) {
                const auto& sample = py::cast<const GeneratedSample&>(self);
                const auto count = static_cast<py::ssize_t>(sample.origin.latent.size());
                return viewOf(sample.origin.latent, {count}, self);
            },
            "The latent vector that was decoded. A view that cannot be written to.")
        .def_property_readonly(
            "sources", [](const GeneratedSample& sample) { return sample.origin.sources; },
            "What it was blended from, before drift, mutation and extrapolation.")
        .def_property_readonly(
            "detail_basis", [](const GeneratedSample& sample) { return rawValue(sample.origin.detailBasis); },
            "What its fine structure is from: 'none', 'sources', 'kept' or 'noise'.")
        .def("__repr__", [](const GeneratedSample& sample) {
            return "<Sample " + py::cast<std::string>(py::repr(py::cast(sample.url.filename().native()))) +
                   ">";
        });
}

constexpr const char* generatorText =
    "Turns a model into new samples.\n\n"
    "device: as that of train. For detail the sounds of the learned files are read from the folder of "
    "corpus, if it is as "
    "it was, else from model_folder, if they were kept there; without either, noise stands in. Raises "
    "DeviceError.\n\n"
    "Any number of threads may use one; its calls wait for one another.";

constexpr const char* generateText =
    "Writes count new samples to the folder output, which is made if it is missing, as PREFIX_var_0001.wav "
    "and so on; no "
    "file is replaced. Returns a Sample for each, in the order in which they were finished.\n\n"
    "seed: the same one brings the same samples. detail: from 0 to 1, how much fine structure is taken from "
    "the learned "
    "files. format: 'wav16', 'wav24' or 'wav32float'. prefix: None for the name of the folder that was "
    "learned. first: "
    "index of the first one, for a job that is a part of a larger one.\n"
    "progress(done, total) is called after each file, on another thread; what it raises ends the job and is "
    "raised here. "
    "Files that are written stay, also after Ctrl-C. Recipes are not kept.\n\n"
    "Raises FileError, InvalidParameterError, AudioError.";

void bindNumbers(py::class_<Generator>& type) {
    const Aesthetics usual;
    type.def("features", features, py::arg("samples"),
             "Mono samples at the model's rate as an image [n_mels, frames], as the network sees them: -1 is "
             "silence, 1 is "
             "full level. What is missing counts as silence, what is too long is left out. Training brings "
             "each file to "
             "full level first and begins at its onset.")
        .def("encode", encode, py::arg("images"),
             "Images [n, n_mels, frames] to their latent vectors [n, latent_dim].")
        .def("decode", decode, py::arg("latents"),
             "Latent vectors [n, latent_dim] to images [n, n_mels, frames].")
        .def("render", render, py::arg("image"), py::kw_only(), py::arg("aesthetics") = usual,
             py::arg("seed") = 1, "An image [n_mels, frames] to finished mono samples.")
        .def("draw", draw, py::kw_only(), py::arg("aesthetics") = usual, py::arg("seed") = 1,
             "The latent vector of the sample with that seed of its own, [latent_dim].");
}

}  // namespace

void bindGenerator(py::module_& module) {
    bindSample(module);
    const Aesthetics usual;
    py::class_<Generator> type(module, "Generator", generatorText);
    type.def(py::init(&make), py::arg("model"), py::kw_only(), py::arg("device") = "auto",
             py::arg("corpus") = py::none(), py::arg("model_folder") = py::none())
        .def_property_readonly("config", &Generator::config, py::return_value_policy::copy,
                               "The shape of its images and latent vectors.")
        .def_property_readonly(
            "sample_rate", [](const Generator& self) { return self.generator().sampleRate(); },
            "Of all samples, in Hz.")
        .def("generate", generate, py::arg("output"), py::kw_only(), py::arg("count") = 10,
             py::arg("aesthetics") = usual, py::arg("seed") = 1, py::arg("detail") = 0.0,
             py::arg("format") = rawValue(OutputFormat::wav24), py::arg("prefix") = py::none(),
             py::arg("first") = py::none(), py::arg("progress") = py::none(), generateText)
        .def("audition", audition, py::kw_only(), py::arg("aesthetics") = usual, py::arg("seed") = 1,
             py::arg("detail") = 0.0,
             "One new sample as an array, not written: that of the first file of a job with the same seed.");
    bindNumbers(type);
}

}  // namespace quillmere::python
