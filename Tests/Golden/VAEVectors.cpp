#include <memory>

#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Model/VAE.h"
#include "Support/ReferenceBackend.h"
#ifdef QUILLMERE_VULKAN
#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"
#endif

namespace quillmere::golden {
namespace {

using Weights = std::vector<std::vector<float>>;

// The model that a case is about.
struct Model {
    explicit Model(const Json& input)
        : config(modelConfig(input.at("config"))),
          params(VAEArchitecture::params(config)),
          weights(VAEArchitecture::initialWeights(config, word(input.at("weightsSeed")))) {
        if (!input.contains("override")) return;
        for (const auto& entry : input.at("override").items()) {
            weights.at(indexOf(entry.key())) = floats(entry.value());
        }
    }

    [[nodiscard]] std::size_t indexOf(const std::string& name) const {
        for (std::size_t i = 0; i < params.size(); ++i) {
            if (params[i].name == name) return i;
        }
        throw std::invalid_argument("unknown parameter " + name);
    }

    [[nodiscard]] std::size_t imageSize() const {
        return static_cast<std::size_t>(config.nMels * config.frames);
    }
    [[nodiscard]] std::size_t latentDim() const { return static_cast<std::size_t>(config.latentDim); }

    ModelConfig config;
    std::vector<VAEArchitecture::Param> params;
    Weights weights;
};

// values, which must have the given number of entries.
std::vector<float> sized(std::vector<float> values, std::size_t count) {
    if (values.size() != count) {
        throw std::invalid_argument(std::to_string(values.size()) + " values instead of " +
                                    std::to_string(count));
    }
    return values;
}

// The operations on one backend.
class Network {
public:
    explicit Network(network::Backend& backend) : backend_(backend) {}

    [[nodiscard]] Outputs encode(const Case& vector) const {
        const Model model(vector.input);
        Outputs out;
        addEncoded(*compile(vector, model, network::Purpose::inference), vector, model,
                   vector.input.at("images"), out);
        return out;
    }

    [[nodiscard]] Outputs decode(const Case& vector) const {
        const Model model(vector.input);
        const std::vector<float> z =
            sized(floats(vector.input.at("latents")), batch(vector) * model.latentDim());
        std::vector<float> images(batch(vector) * model.imageSize());
        compile(vector, model, network::Purpose::inference)->decode(z, images);
        Outputs out;
        out.array("images", images);
        return out;
    }

    [[nodiscard]] Outputs encodeMany(const Case& vector) const {
        const Model model(vector.input);
        VAEInference inference(model.config, model.weights, backend_);
        const Weights images = splitRows(floats(vector.input.at("images")), count(vector));
        Outputs out;
        out.array("mu", joinRows(inference.encode(images)));
        return out;
    }

    [[nodiscard]] Outputs decodeMany(const Case& vector) const {
        const Model model(vector.input);
        VAEInference inference(model.config, model.weights, backend_);
        const Weights latents = splitRows(floats(vector.input.at("latents")), count(vector));
        Outputs out;
        out.array("images", joinRows(inference.decode(latents)));
        return out;
    }

    [[nodiscard]] Outputs steps(const Case& vector) const {
        const Model model(vector.input);
        const std::unique_ptr<network::Executor> executor =
            compile(vector, model, network::Purpose::training);
        std::vector<network::StepResult> results;
        for (std::size_t i = 0; i < vector.input.at("x").size(); ++i) {
            results.push_back(step(*executor, vector, model, vector.input.at("x").at(i),
                                   vector.input.at("eps").at(i),
                                   vector.input.at("learningRates").at(i).get<float>(),
                                   vector.input.at("klWeights").at(i).get<float>()));
        }
        Outputs out;
        addScalars(results, out);
        addChanges(model, executor->weights(), out);
        return out;
    }

    // One step; x is given as "x" or as "images".
    [[nodiscard]] Outputs losses(const Case& vector) const {
        const Model model(vector.input);
        const Json& x = vector.input.contains("x") ? vector.input.at("x") : vector.input.at("images");
        const std::unique_ptr<network::Executor> executor =
            compile(vector, model, network::Purpose::training);
        Outputs out;
        addEncoded(*executor, vector, model, x, out);
        const network::StepResult result =
            step(*executor, vector, model, x, vector.input.at("eps"),
                 vector.input.value("learningRate", 0.0F), vector.input.at("klWeight").get<float>());
        out.value("loss", result.loss);
        out.value("mse", result.mse);
        out.value("kl", result.kl);
        out.array("lvBiasAfter", executor->weights().at(model.indexOf("lv.b")));
        return out;
    }

private:
    static std::size_t batch(const Case& vector) { return vector.input.at("batch").get<std::size_t>(); }
    static std::size_t count(const Case& vector) { return vector.input.at("count").get<std::size_t>(); }

    [[nodiscard]] std::unique_ptr<network::Executor> compile(const Case& vector, const Model& model,
                                                             network::Purpose purpose) const {
        const VAEGraphBuilder builder{.config = model.config, .batch = static_cast<int>(batch(vector))};
        std::unique_ptr<network::Executor> executor = backend_.compile(builder.build(), purpose);
        executor->setWeights(model.weights);
        return executor;
    }

    static void addEncoded(network::Executor& executor, const Case& vector, const Model& model,
                           const Json& images, Outputs& out) {
        const std::vector<float> x = sized(floats(images), batch(vector) * model.imageSize());
        std::vector<float> mu(batch(vector) * model.latentDim()), logVar(mu.size());
        executor.encode(x, mu, logVar);
        out.array("mu", mu);
        out.array("logVar", logVar);
    }

    static network::StepResult step(network::Executor& executor, const Case& vector, const Model& model,
                                    const Json& x, const Json& eps, float learningRate, float klWeight) {
        return executor.step(sized(floats(x), batch(vector) * model.imageSize()),
                             sized(floats(eps), batch(vector) * model.latentDim()), learningRate, klWeight);
    }

    static void addScalars(std::span<const network::StepResult> results, Outputs& out) {
        std::vector<float> loss, mse, kl;
        for (const network::StepResult& result : results) {
            loss.push_back(result.loss);
            mse.push_back(result.mse);
            kl.push_back(result.kl);
        }
        out.array("loss", loss);
        out.array("mse", mse);
        out.array("kl", kl);
    }

    static void addChanges(const Model& model, const Weights& after, Outputs& out) {
        for (std::size_t p = 0; p < model.params.size(); ++p) {
            std::vector<double> change(after.at(p).begin(), after.at(p).end());
            for (std::size_t i = 0; i < change.size(); ++i) {
                change[i] -= model.weights[p].at(i);
            }
            out.array("change." + model.params[p].name, change);
        }
    }

    network::Backend& backend_;
};

Suite suiteOn(std::string name, std::unique_ptr<network::Backend> (*makeBackend)()) {
    const auto on = [makeBackend](Outputs (Network::*operation)(const Case&) const) -> Operation {
        return [makeBackend, operation](const Case& vector) {
            const std::unique_ptr<network::Backend> backend = makeBackend();
            return (Network(*backend).*operation)(vector);
        };
    };
    return {std::move(name),
            {{"encode", on(&Network::encode)},
             {"decode", on(&Network::decode)},
             {"encodeMany", on(&Network::encodeMany)},
             {"decodeMany", on(&Network::decodeMany)},
             {"steps", on(&Network::steps)},
             {"losses", on(&Network::losses)},
             {"clamp", on(&Network::losses)}}};
}

#ifdef QUILLMERE_VULKAN
// The software driver's device, which ctest makes the only one.
std::unique_ptr<network::Backend> makeSoftwareBackend() {
    for (const network::ComputeDevice& device : network::vulkan::devices()) {
        if (device.type == network::ComputeDevice::Type::software)
            return network::vulkan::makeBackend(device);
    }
    throw network::DeviceError("There is no software device; run this test through ctest.");
}
#endif

}  // namespace

Area vaeArea() {
    Area area{"vae",
              {suiteOn("VAEOnCPU", network::makeCPUBackend),
               suiteOn("VAEOnReference", testing::makeReferenceBackend)}};
#ifdef QUILLMERE_VULKAN
    area.suites.push_back(suiteOn("VAEOnVulkan", makeSoftwareBackend));
#endif
    return area;
}

}  // namespace quillmere::golden
