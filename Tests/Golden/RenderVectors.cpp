#include <stdexcept>

#include "Golden/GoldenAreas.h"
#include "Golden/GoldenModel.h"
#include "QuillmereCore/DSP/MelFilterBank.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Generate/Rendering.h"
#include "Support/Processor.h"

namespace quillmere::golden {
namespace {

using Image = std::vector<float>;

int integer(const Case& vector, const char* field) {
    return vector.input.at(field).get<int>();
}

double real(const Case& vector, const char* field) {
    return vector.input.at(field).get<double>();
}

// An operation that changes "imageDB".
template <typename Change>
Outputs changedImage(const Case& vector, Change change) {
    Image dB = floats(vector.input.at("imageDB"));
    change(dB);
    Outputs out;
    out.array("imageDB", dB);
    return out;
}

Outputs decibels(const Case& vector) {
    Outputs out;
    out.array("imageDB", Rendering::toDecibels(floats(vector.input.at("image"))));
    return out;
}

Outputs contrast(const Case& vector) {
    return changedImage(vector, [&](Image& dB) { Rendering::applyContrast(dB, real(vector, "contrast")); });
}

Outputs kernel(const Case& vector) {
    Outputs out;
    out.array("taps", Rendering::kernel(vector.input.at("sigma").get<float>()));
    return out;
}

Outputs blur(const Case& vector) {
    return changedImage(vector, [&](Image& dB) {
        dB = Rendering::blur(dB, integer(vector, "rows"), integer(vector, "cols"),
                             vector.input.at("sigmaRows").get<float>(),
                             vector.input.at("sigmaCols").get<float>());
    });
}

Outputs smear(const Case& vector) {
    return changedImage(vector, [&](Image& dB) {
        Rendering::applySmear(dB, integer(vector, "rows"), integer(vector, "cols"), integer(vector, "hop"),
                              real(vector, "smear"));
    });
}

Outputs grit(const Case& vector) {
    return changedImage(vector, [&](Image& dB) { Rendering::applyGrit(dB, real(vector, "grit")); });
}

Outputs roughness(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    Outputs out = changedImage(
        vector, [&](Image& dB) { Rendering::applyRoughness(dB, real(vector, "roughness"), rng); });
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs tilt(const Case& vector) {
    const MelFilterBank bank(integer(vector, "sampleRate"), integer(vector, "nFFT"),
                             integer(vector, "nMels"));
    return changedImage(vector, [&](Image& dB) {
        Rendering::applyTilt(dB, integer(vector, "cols"), bank.centers(), real(vector, "tilt"));
    });
}

Outputs timeStretch(const Case& vector) {
    return changedImage(vector, [&](Image& dB) {
        dB = Rendering::timeStretch(dB, integer(vector, "rows"), integer(vector, "cols"),
                                    integer(vector, "newFrames"));
    });
}

Outputs stretchedFrames(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    Outputs out;
    out.value("frames", Rendering::stretchedFrames(integer(vector, "frames"), real(vector, "stretch"),
                                                   real(vector, "stretchJitter"), rng));
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs warpFrequency(const Case& vector) {
    Outputs out;
    out.array("magnitude",
              Rendering::warpFrequency(floats(vector.input.at("magnitude")), integer(vector, "frames"),
                                       integer(vector, "bins"), real(vector, "ratio")));
    return out;
}

// What a chain on a decoded image starts from.
struct Chain {
    explicit Chain(const Case& vector)
        : config(modelConfig(vector.input.at("config"))),
          image(floats(vector.input.at("image"))),
          parameters(aesthetics(vector.input.at("aesthetics"))),
          rng(seededGenerator(vector.input)),
          extractor(config),
          stft(extractor.makeSTFT()) {}

    ModelConfig config;
    Image image;
    Aesthetics parameters;
    SeededRNG rng;
    FeatureExtractor extractor;
    STFT stft;
};

Outputs shape(const Case& vector) {
    Chain chain(vector);
    const Rendering::ShapedImage shaped =
        Rendering::shape(chain.image, chain.parameters, chain.extractor, chain.rng);
    Outputs out;
    out.value("frames", shaped.frames);
    out.array("imageDB", shaped.dB);
    out.value("stateAfter", stateText(chain.rng));
    return out;
}

Outputs magnitude(const Case& vector) {
    Chain chain(vector);
    const Rendering::ShapedImage shaped =
        Rendering::shape(chain.image, chain.parameters, chain.extractor, chain.rng);
    Outputs out;
    out.value("frames", shaped.frames);
    out.array("magnitude",
              Rendering::magnitude(shaped, chain.parameters, chain.extractor, chain.stft, chain.rng));
    out.value("stateAfter", stateText(chain.rng));
    return out;
}

void addSamples(std::span<const float> samples, double sampleRate, Outputs& out) {
    out.value("count", samples.size());
    out.array("samples", samples);
    out.value("seconds", static_cast<double>(samples.size()) / sampleRate);
}

Outputs waveform(const Case& vector) {
    Chain chain(vector);
    Outputs out;
    addSamples(Rendering::waveform(chain.image, chain.parameters, chain.extractor, chain.stft, chain.rng),
               static_cast<double>(chain.config.sampleRate), out);
    out.value("stateAfter", stateText(chain.rng));
    return out;
}

Outputs render(const Case& vector) {
    Chain chain(vector);
    const std::vector<float> origin(static_cast<std::size_t>(chain.config.latentDim));
    const SampleGenerator generator(blankModel(chain.config, {origin}), testing::processor());
    Outputs out;
    addSamples(generator.render(chain.image, chain.parameters, chain.rng, chain.stft), generator.sampleRate(),
               out);
    out.value("stateAfter", stateText(chain.rng));
    return out;
}

// The audition, and the generator state after the same variation taken step by step.
Outputs audition(const Case& vector) {
    const Aesthetics parameters = aesthetics(vector.input.at("aesthetics"));
    ModelBundle bundle;
    bundle.config = modelConfig(vector.input.at("config"));
    bundle.weights = VAEArchitecture::initialWeights(bundle.config, word(vector.input.at("weightsSeed")));
    bundle.latents =
        splitRows(floats(vector.input.at("latents")), vector.input.at("count").get<std::size_t>());
    SampleGenerator generator(bundle, testing::processor());
    const std::vector<float> samples = generator.audition(parameters, word(vector.input.at("seed")));

    SeededRNG rng = seededGenerator(vector.input);
    const std::vector<std::vector<float>> latents{generator.sampleLatent(rng, parameters)};
    VAEInference inference(bundle.config, bundle.weights, testing::processor());
    const Image image = inference.decode(latents).at(0);
    STFT stft = FeatureExtractor(bundle.config).makeSTFT();
    if (generator.render(image, parameters, rng, stft) != samples) {
        throw std::runtime_error("the audition differs from its steps");
    }
    Outputs out;
    addSamples(samples, generator.sampleRate(), out);
    out.value("stateAfter", stateText(rng));
    return out;
}

}  // namespace

Area renderArea() {
    return {"render",
            {{"Render",
              {{"decibels", decibels},
               {"contrast", contrast},
               {"kernel", kernel},
               {"blur", blur},
               {"smear", smear},
               {"grit", grit},
               {"roughness", roughness},
               {"tilt", tilt},
               {"timeStretch", timeStretch},
               {"stretchedFrames", stretchedFrames},
               {"warpFrequency", warpFrequency},
               {"shape", shape},
               {"magnitude", magnitude},
               {"waveform", waveform},
               {"render", render},
               {"audition", audition}}}}};
}

}  // namespace quillmere::golden
