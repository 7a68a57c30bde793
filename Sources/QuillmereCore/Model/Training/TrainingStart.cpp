#include "QuillmereCore/Model/Training/TrainingStart.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ranges>
#include <span>
#include <string_view>
#include <utility>

#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

constexpr std::int64_t framesPerColumn = 32;
constexpr float silence = -1.0F;

// Whether two configurations have images of the same kind, whatever their width.
bool haveSameImages(const ModelConfig& a, const ModelConfig& b) {
    return a.nFFT == b.nFFT && a.hop == b.hop && a.nMels == b.nMels;
}

std::size_t indexOf(const ModelConfig& config, std::string_view name) {
    const auto params = VAEArchitecture::params(config);
    const auto found = std::ranges::find(params, name, &VAEArchitecture::Param::name);
    require(found != params.end(), "the network has no such parameter");
    return static_cast<std::size_t>(found - params.begin());
}

// The dense layers' side that looks at the image: [lines][columns] positions, each with `inner` numbers,
// once per `outer`. A line is a channel at one height.
struct Positions {
    std::size_t outer, lines, columns, inner;

    [[nodiscard]] std::size_t at(std::size_t o, std::size_t line, std::size_t column) const {
        return ((o * lines + line) * columns + column) * inner;
    }
};

// values with another number of columns: those that are gone are left out, those that are new are the last
// column again, times share.
std::vector<float> withColumns(std::span<const float> values, const Positions& from, std::size_t columns,
                               float share) {
    Positions to = from;
    to.columns = columns;
    std::vector<float> result(to.outer * to.lines * to.columns * to.inner);
    for (std::size_t o = 0; o < to.outer; ++o) {
        for (std::size_t line = 0; line < to.lines; ++line) {
            for (std::size_t column = 0; column < columns; ++column) {
                const float* const source =
                    values.data() + from.at(o, line, std::min(column, from.columns - 1));
                const float factor = column < from.columns ? 1.0F : share;
                std::ranges::transform(std::span(source, from.inner),
                                       result.begin() + static_cast<std::ptrdiff_t>(to.at(o, line, column)),
                                       [factor](float value) { return factor * value; });
            }
        }
    }
    return result;
}

// What a head ("mu" or "lv") gives for silence.
std::vector<float> silentValue(const TaughtNetwork& network, const std::string& head,
                               network::Backend& backend) {
    const ModelConfig& config = network.config;
    std::vector<std::vector<float>> weights = network.weights;
    // The encoder only tells its means, so the head in question takes their place.
    weights[indexOf(config, "mu.w")] = network.weights[indexOf(config, head + ".w")];
    weights[indexOf(config, "mu.b")] = network.weights[indexOf(config, head + ".b")];
    VAEInference inference(config, weights, backend);
    const auto pixels = static_cast<std::size_t>(config.nMels * config.frames);
    return inference.encode({{std::vector<float>(pixels, silence)}}).front();
}

class WidthChange {
public:
    WidthChange(const TaughtNetwork& network, std::int64_t frames, network::Backend& backend)
        : network_(network),
          backend_(backend),
          lines_(static_cast<std::size_t>(192 * (network.config.nMels / 32))),
          latentDim_(static_cast<std::size_t>(network.config.latentDim)),
          columns_(static_cast<std::size_t>(network.config.frames / framesPerColumn)),
          newColumns_(static_cast<std::size_t>(frames / framesPerColumn)) {
        result_ = network;
        result_.config.frames = frames;
    }

    [[nodiscard]] TaughtNetwork make() {
        change("mu.w", {1, lines_, columns_, latentDim_}, 0);
        change("lv.w", {1, lines_, columns_, latentDim_}, 0);
        change("dec.fc.w", {latentDim_, lines_, columns_, 1}, 1);
        change("dec.fc.b", {1, lines_, columns_, 1}, 1);
        keepSilence("mu");
        keepSilence("lv");
        return std::move(result_);
    }

private:
    void change(std::string_view name, const Positions& positions, float share) {
        const std::size_t index = indexOf(network_.config, name);
        result_.weights[index] = withColumns(network_.weights[index], positions, newColumns_, share);
    }

    // A silent image keeps its place among the latent vectors, and with it what the columns that are gone
    // gave for silence and what the convolutions make of the new edge.
    void keepSilence(const std::string& head) {
        const std::vector<float> before = silentValue(network_, head, backend_);
        const std::vector<float> now = silentValue(result_, head, backend_);
        std::vector<float>& bias = result_.weights[indexOf(network_.config, head + ".b")];
        for (std::size_t i = 0; i < bias.size(); ++i)
            bias[i] += before[i] - now[i];
    }

    const TaughtNetwork& network_;
    network::Backend& backend_;
    std::size_t lines_;
    std::size_t latentDim_;
    std::size_t columns_;
    std::size_t newColumns_;
    TaughtNetwork result_;
};

}  // namespace

TrainingStart::TrainingStart(ModelStart origin, std::vector<TaughtNetwork> networks)
    : origin_(std::move(origin)), networks_(std::move(networks)) {
    require(!networks_.empty(), "a training cannot start from no network");
}

TrainingStart::TrainingStart(const ModelBundle& model)
    : TrainingStart({.kind = ModelStart::Kind::model,
                     .name = model.metadata.corpusName,
                     .identity = modelIdentity(model)},
                    {{model.config, model.weights}}) {}

const TaughtNetwork* TrainingStart::networkFor(const ModelConfig& config) const {
    const auto found = std::ranges::find_if(networks_, [&](const TaughtNetwork& network) {
        return haveSameImages(network.config, config) && network.config.latentDim == config.latentDim;
    });
    return found == networks_.end() ? nullptr : &*found;
}

std::optional<Message> TrainingStart::problemWith(const ModelConfig& config) const {
    if (networkFor(config) != nullptr) return std::nullopt;
    const auto sameImages = std::ranges::find_if(
        networks_, [&](const TaughtNetwork& network) { return haveSameImages(network.config, config); });
    if (sameImages != networks_.end()) {
        return Message("What the training is to start from has latent vectors of {0} numbers, not of {1}.",
                       sameImages->config.latentDim, config.latentDim);
    }
    return Message(
        "What the training is to start from was learned with the {0} analysis, not with the {1} one.",
        word(networks_.front().config.profile), word(config.profile));
}

std::vector<std::vector<float>> TrainingStart::weightsFor(const ModelConfig& config,
                                                          network::Backend& backend) const {
    const TaughtNetwork* const network = networkFor(config);
    require(network != nullptr, "a training starts from a network that does not fit");
    if (network->config.frames == config.frames) return network->weights;
    return ofWidth(*network, config.frames, backend).weights;
}

TaughtNetwork ofWidth(const TaughtNetwork& network, std::int64_t frames, network::Backend& backend) {
    require(frames > 0 && frames % framesPerColumn == 0, "an image's width is a multiple of 32");
    return WidthChange(network, frames, backend).make();
}

}  // namespace quillmere
