#include "QuillmereCore/Origin/Kit.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "QuillmereCore/Origin/Likeness.h"
#include "QuillmereCore/Picture/PictureFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::Kit {
namespace {

constexpr int mostVelocity = 127;
constexpr double highestPeak = 0.98855309;  // -0.1 dBFS

double levelOf(std::span<const float> samples, std::size_t length) {
    double sum = 0;
    for (const float sample : samples.first(std::min(length, samples.size())))
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return std::sqrt(sum / static_cast<double>(length));
}

double peakOf(std::span<const float> samples, std::size_t length) {
    double peak = 0;
    for (const float sample : samples.first(std::min(length, samples.size())))
        peak = std::max(peak, std::abs(static_cast<double>(sample)));
    return peak;
}

// ---- The form of Hydrogen

// An element with text.
std::string element(int depth, std::string_view name, std::string_view content) {
    return std::string(static_cast<std::size_t>(depth), ' ') + "<" + std::string(name) + ">" +
           PictureFile::escaped(content) + "</" + std::string(name) + ">\n";
}

std::string instrumentHead(std::size_t number, const Instrument& instrument, double longestSeconds,
                           bool isInTurn) {
    // In frames of Hydrogen's output, at its highest rate.
    const auto release = static_cast<std::int64_t>(std::ceil(longestSeconds * 192'000));
    std::string text = element(3, "id", std::to_string(number));
    text += element(3, "name", instrument.name);
    for (const auto& [name, value] : {std::pair("volume", "1"),
                                      {"isMuted", "false"},
                                      {"isSoloed", "false"},
                                      {"pan", "0"},
                                      {"pitchOffset", "0"},
                                      {"randomPitchFactor", "0"},
                                      {"gain", "1"},
                                      {"applyVelocity", "true"},
                                      {"filterActive", "false"},
                                      {"filterCutoff", "1"},
                                      {"filterResonance", "0"},
                                      {"Attack", "0"},
                                      {"Decay", "0"},
                                      {"Sustain", "1"}})
        text += element(3, name, value);
    text += element(3, "Release", std::to_string(release));
    text += element(3, "muteGroup", "-1");
    text += element(3, "midiOutChannel", "-1");
    text += element(3, "midiOutNote", std::to_string(lowestKey + static_cast<int>(number)));
    text += element(3, "isStopNote", "false");
    text += element(3, "sampleSelectionAlgo", isInTurn ? "ROUND_ROBIN" : "VELOCITY");
    for (const auto& [name, value] : {std::pair("isHihat", "-1"),
                                      {"lower_cc", "0"},
                                      {"higher_cc", "127"},
                                      {"FX1Level", "0"},
                                      {"FX2Level", "0"},
                                      {"FX3Level", "0"},
                                      {"FX4Level", "0"}})
        text += element(3, name, value);
    return text;
}

std::string layerElement(const std::string& file, std::size_t layer, std::size_t layers) {
    // Hydrogen's velocities go from 0 to 1; each layer begins where the one below ends.
    const auto bound = [&](std::size_t position) {
        return Text::fixed(static_cast<double>(position) / static_cast<double>(layers), 6);
    };
    return "    <layer>\n" + element(5, "filename", file) + element(5, "min", bound(layer)) +
           element(5, "max", bound(layer + 1)) + element(5, "gain", "1") + element(5, "pitch", "0") +
           "    </layer>\n";
}

std::string instrumentElement(std::size_t number, const Instrument& instrument, double longestSeconds) {
    const bool isInTurn = std::ranges::any_of(
        instrument.layers, [](const std::vector<std::string>& files) { return files.size() > 1; });
    std::string text = "  <instrument>\n" + instrumentHead(number, instrument, longestSeconds, isInTurn);
    text += "   <instrumentComponent>\n" + element(4, "component_id", "0") + element(4, "gain", "1");
    for (std::size_t layer = 0; layer < instrument.layers.size(); ++layer) {
        for (const std::string& file : instrument.layers[layer])
            text += layerElement(file, layer, instrument.layers.size());
    }
    return text + "   </instrumentComponent>\n  </instrument>\n";
}

}  // namespace

std::vector<VariationPlan> plans(const SampleGenerator& generator, const Recipe& recipe, Size size,
                                 std::uint64_t seed, std::int64_t number) {
    VariationPlan chosen = recipe.plan();
    chosen.origin.fit.reset();
    std::vector<VariationPlan> all{chosen};
    for (std::int64_t i = 1; i < size.sounds(); ++i) {
        const std::int64_t index = number * mostSounds + i;
        SampleOrigin origin = Likeness::around(generator, std::span(&recipe, 1), size.closeness, seed, index);
        origin.detail = recipe.detail;
        all.push_back({std::move(origin), recipe.aesthetics});
    }
    return all;
}

Arrangement arrange(std::span<const std::vector<float>> sounds, std::int64_t layers) {
    require(!sounds.empty() && layers > 0, "arrange: no sounds");
    const std::size_t length = sounds.front().size();
    require(length > 0, "arrange: a sound without samples");
    const double wanted = levelOf(sounds.front(), length);
    std::vector<double> levels;
    std::vector<double> gains;
    double highest = highestPeak;
    for (const std::vector<float>& sound : sounds) {
        levels.push_back(levelOf(sound, length));
        const bool isSounding = levels.back() > 0 && wanted > 0;
        gains.push_back(isSounding ? wanted / levels.back() : 1);
        highest = std::max(highest, gains.back() * peakOf(sound, length));
    }
    Arrangement arrangement;
    for (const double gain : gains)
        arrangement.fits.push_back({length, static_cast<float>(gain * highestPeak / highest)});
    arrangement.order.resize(sounds.size());
    std::iota(arrangement.order.begin(), arrangement.order.end(), std::size_t{0});
    if (layers == 1) return arrangement;
    std::ranges::stable_sort(arrangement.order, {}, [&](std::size_t i) { return levels[i]; });
    const auto perLayer = static_cast<std::ptrdiff_t>(sounds.size()) / layers;
    for (std::ptrdiff_t layer = 0; layer < layers; ++layer) {
        const auto first = arrangement.order.begin() + layer * perLayer;
        std::sort(first, layer + 1 == layers ? arrangement.order.end() : first + perLayer);
    }
    return arrangement;
}

Velocities velocities(std::size_t layer, std::size_t layers) {
    const auto firstOf = [&](std::size_t one) { return 1 + static_cast<int>(one * mostVelocity / layers); };
    return {firstOf(layer), layer + 1 == layers ? mostVelocity : firstOf(layer + 1) - 1};
}

std::string sfz(const Description& kit) {
    std::string text = "// " + plainName(kit.name) + "\n";
    for (std::size_t i = 0; i < kit.instruments.size(); ++i) {
        const Instrument& instrument = kit.instruments[i];
        text += "\n// " + plainName(instrument.name) + "\n";
        for (std::size_t layer = 0; layer < instrument.layers.size(); ++layer) {
            const auto [low, high] = velocities(layer, instrument.layers.size());
            const std::vector<std::string>& files = instrument.layers[layer];
            text += "<group> key=" + std::to_string(lowestKey + static_cast<int>(i)) +
                    " lovel=" + std::to_string(low) + " hivel=" + std::to_string(high) +
                    " loop_mode=one_shot seq_length=" + std::to_string(files.size()) + "\n";
            for (std::size_t turn = 0; turn < files.size(); ++turn)
                text += "<region> seq_position=" + std::to_string(turn + 1) + " sample=" + files[turn] + "\n";
        }
    }
    return text;
}

std::string hydrogen(const Description& kit) {
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<drumkit_info xmlns=\"http://www.hydrogen-music.org/drumkit\">\n";
    text += element(1, "name", kit.name);
    text += element(1, "author", "");
    text += element(1, "info", "Generated with Quillmere " + programVersion());
    text += element(1, "license", "");
    text += element(1, "image", "");
    text += element(1, "imageLicense", "");
    text += " <componentList>\n  <drumkitComponent>\n" + element(3, "id", "0") + element(3, "name", "Main") +
            element(3, "volume", "1") + "  </drumkitComponent>\n </componentList>\n <instrumentList>\n";
    for (std::size_t i = 0; i < kit.instruments.size(); ++i)
        text += instrumentElement(i, kit.instruments[i], kit.longestSeconds);
    return text + " </instrumentList>\n</drumkit_info>\n";
}

std::string plainName(std::string_view text) {
    std::string name;
    for (const char character : text) {
        const bool isPlain = (character >= 'a' && character <= 'z') ||
                             (character >= 'A' && character <= 'Z') ||
                             (character >= '0' && character <= '9') || character == '-' || character == '_' ||
                             character == '.';
        name += isPlain ? character : '_';
    }
    return name;
}

}  // namespace quillmere::Kit
