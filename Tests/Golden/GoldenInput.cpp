#include "Golden/GoldenInput.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <numbers>
#include <stdexcept>
#include <string_view>

#include "QuillmereCore/DSP/STFT.h"

namespace quillmere::golden {
namespace {

double number(const Json& spec, const char* field) {
    return spec.at(field).get<double>();
}

double number(const Json& spec, const char* field, double byDefault) {
    return spec.contains(field) ? number(spec, field) : byDefault;
}

std::size_t size(const Json& spec, const char* field) {
    return spec.at(field).get<std::size_t>();
}

// Values value(n) for n below spec's "count", each evaluated in double and rounded once.
template <typename Value>
std::vector<float> series(const Json& spec, Value value) {
    std::vector<float> result(size(spec, "count"));
    for (std::size_t n = 0; n < result.size(); ++n) {
        result[n] = static_cast<float>(value(static_cast<double>(n)));
    }
    return result;
}

std::vector<float> listed(const Json& numbers) {
    std::vector<float> result;
    for (const Json& entry : numbers) {
        result.push_back(static_cast<float>(entry.get<double>()));
    }
    return result;
}

std::vector<float> signedNoise(const Json& spec) {
    SeededRNG rng = seededGenerator(spec);
    const double scale = number(spec, "scale", 1), offset = number(spec, "offset", 0);
    return series(spec, [&](double) { return scale * rng.signedUniform() + offset; });
}

std::vector<float> uniformNoise(const Json& spec) {
    SeededRNG rng = seededGenerator(spec);
    const double low = number(spec, "low"), high = number(spec, "high");
    return series(spec, [&](double) { return low + (high - low) * rng.uniform(); });
}

std::vector<float> gaussianNoise(const Json& spec) {
    SeededRNG rng = seededGenerator(spec);
    const double scale = number(spec, "scale", 1);
    return series(spec, [&](double) { return scale * rng.gaussian(); });
}

std::vector<float> speckle(const Json& spec) {
    SeededRNG rng = seededGenerator(spec);
    const auto share = static_cast<float>(number(spec, "share"));
    return series(spec, [&](double) {
        const float u = rng.uniform();
        return u < share ? -1.0 : 2.0 * u - 1.0;
    });
}

std::vector<float> sine(const Json& spec) {
    const double amplitude = number(spec, "amplitude"), phase = number(spec, "phase", 0);
    const double hz = number(spec, "hz"), rate = number(spec, "rate");
    return series(
        spec, [=](double n) { return amplitude * std::sin(2.0 * std::numbers::pi * hz * n / rate + phase); });
}

std::vector<float> impulse(const Json& spec) {
    std::vector<float> result(size(spec, "count"));
    result.at(size(spec, "at")) = static_cast<float>(number(spec, "amplitude"));
    return result;
}

std::vector<float> ramp(const Json& spec) {
    const double from = number(spec, "from"), step = number(spec, "step");
    return series(spec, [=](double n) { return from + step * n; });
}

std::vector<float> burst(const Json& spec) {
    SeededRNG rng = seededGenerator(spec);
    const double amplitude = number(spec, "amplitude"), decay = number(spec, "decay");
    return series(spec, [&](double n) { return amplitude * std::exp(-n / decay) * rng.signedUniform(); });
}

std::vector<float> pattern(const Json& spec) {
    const double base = number(spec, "base"), depth = number(spec, "depth"), noise = number(spec, "noise");
    const double decayCols = number(spec, "decayCols"), rowPeriod = number(spec, "rowPeriod");
    const std::size_t rows = size(spec, "rows"), cols = size(spec, "cols");
    SeededRNG rng = seededGenerator(spec);
    std::vector<float> result;
    result.reserve(rows * cols);
    for (std::size_t r = 0; r < rows; ++r) {
        const double ripple =
            0.5 + 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(r) / rowPeriod);
        for (std::size_t c = 0; c < cols; ++c) {
            const double decayed = depth * std::exp(-static_cast<double>(c) / decayCols);
            const double grain = noise == 0 ? 0.0 : noise * rng.signedUniform();
            result.push_back(static_cast<float>(base + decayed * ripple + grain));
        }
    }
    return result;
}

std::vector<float> concatenation(const Json& spec) {
    return joinRows(floatArrays(spec.at("parts")));
}

std::vector<float> mix(const Json& spec) {
    const std::vector<std::vector<float>> parts = floatArrays(spec.at("parts"));
    std::vector<double> sum(parts.at(0).size());
    for (const std::vector<float>& part : parts) {
        if (part.size() != sum.size()) throw std::invalid_argument("mix: parts of different lengths");
        std::transform(sum.begin(), sum.end(), part.begin(), sum.begin(), std::plus<double>());
    }
    return std::vector<float>(sum.begin(), sum.end());
}

std::vector<float> stftMagnitude(const Json& spec) {
    STFT stft(spec.at("nFFT").get<int>(), spec.at("hop").get<int>());
    const std::vector<float> signal = floats(spec.at("signal"));
    const STFT::Spectrum spectrum = stft.forward(signal, spec.at("frames").get<int>());
    std::vector<float> result(spectrum.re.size());
    for (std::size_t i = 0; i < result.size(); ++i) {
        const double re = spectrum.re[i], im = spectrum.im[i];
        result[i] = static_cast<float>(std::sqrt(re * re + im * im));
    }
    return result;
}

struct Kind {
    std::string_view name;
    std::string_view fields;  // required and optional ones, separated by blanks
    std::vector<float> (*make)(const Json& spec);
};

constexpr auto kinds = std::to_array<Kind>({
    {"values", "values", [](const Json& spec) { return listed(spec.at("values")); }},
    {"zeros", "count", [](const Json& spec) { return series(spec, [](double) { return 0.0; }); }},
    {"constant", "value count",
     [](const Json& spec) { return series(spec, [&](double) { return number(spec, "value"); }); }},
    {"signed", "seed count scale offset", signedNoise},
    {"uniform", "seed count low high", uniformNoise},
    {"gaussian", "seed count scale", gaussianNoise},
    {"speckle", "seed count share", speckle},
    {"sine", "amplitude hz rate phase count", sine},
    {"impulse", "at amplitude count", impulse},
    {"ramp", "from step count", ramp},
    {"burst", "seed count decay amplitude", burst},
    {"pattern", "rows cols base depth decayCols rowPeriod noise seed", pattern},
    {"concat", "parts", concatenation},
    {"mix", "parts", mix},
    {"stftMagnitude", "nFFT hop frames signal", stftMagnitude},
});

bool hasWord(std::string_view words, std::string_view wanted) {
    const std::string padded = " " + std::string(words) + " ";
    return padded.find(" " + std::string(wanted) + " ") != std::string::npos;
}

}  // namespace

std::vector<float> floats(const Json& spec) {
    if (spec.is_array()) return listed(spec);
    const std::string name = spec.at("kind").get<std::string>();
    const auto* const kind =
        std::find_if(kinds.begin(), kinds.end(), [&](const Kind& k) { return k.name == name; });
    if (kind == kinds.end()) throw std::invalid_argument("unknown input kind " + name);
    for (const auto& field : spec.items()) {
        if (field.key() != "kind" && !hasWord(kind->fields, field.key())) {
            throw std::invalid_argument("input kind " + name + ": unknown field " + field.key());
        }
    }
    return kind->make(spec);
}

std::vector<std::vector<float>> floatArrays(const Json& specs) {
    std::vector<std::vector<float>> result;
    for (const Json& spec : specs) {
        result.push_back(floats(spec));
    }
    return result;
}

std::vector<std::vector<float>> splitRows(std::span<const float> flat, std::size_t rows) {
    if (rows == 0 ? !flat.empty() : flat.size() % rows != 0) {
        throw std::invalid_argument(std::to_string(flat.size()) + " values are not " + std::to_string(rows) +
                                    " rows");
    }
    std::vector<std::vector<float>> result;
    for (std::size_t r = 0; r < rows; ++r) {
        const std::span<const float> row = flat.subspan(r * (flat.size() / rows), flat.size() / rows);
        result.emplace_back(row.begin(), row.end());
    }
    return result;
}

std::vector<float> joinRows(std::span<const std::vector<float>> rows) {
    std::vector<float> result;
    for (const std::vector<float>& row : rows) {
        result.insert(result.end(), row.begin(), row.end());
    }
    return result;
}

std::uint64_t word(const Json& value) {
    if (value.is_number_integer()) return value.get<std::uint64_t>();
    const std::string text = value.get<std::string>();
    std::size_t used = 0;
    const std::uint64_t result = std::stoull(text, &used, 16);
    if (!text.starts_with("0x") || used != text.size())
        throw std::invalid_argument("no 64-bit word: " + text);
    return result;
}

std::string wordText(std::uint64_t word) {
    std::string digits(16, '0');
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, word >>= 4) {
        *digit = "0123456789abcdef"[word & 15];
    }
    return "0x" + digits;
}

SeededRNG seededGenerator(const Json& input) {
    return SeededRNG(word(input.at("seed")));
}

Json stateText(const SeededRNG& rng) {
    Json words = Json::array();
    for (const std::uint64_t state : rng.s) {
        words.push_back(wordText(state));
    }
    return words;
}

AnalysisProfile profile(const Json& rawValue) {
    const auto found = analysisProfile(rawValue.get<std::string>());
    if (!found) throw std::invalid_argument("unknown profile " + rawValue.get<std::string>());
    return *found;
}

ModelConfig modelConfig(const Json& config) {
    const auto integer = [&](const char* field) { return config.at(field).get<std::int64_t>(); };
    return {.sampleRate = integer("sampleRate"),
            .nFFT = integer("nFFT"),
            .hop = integer("hop"),
            .nMels = integer("nMels"),
            .frames = integer("frames"),
            .latentDim = integer("latentDim"),
            .profile = profile(config.at("profile"))};
}

Aesthetics aesthetics(const Json& changes) {
    Aesthetics result;
    const std::span<const ParameterSpec> specs = Aesthetics::specs();
    for (const auto& change : changes.items()) {
        const auto spec = std::find_if(specs.begin(), specs.end(),
                                       [&](const ParameterSpec& s) { return s.field == change.key(); });
        if (spec == specs.end()) throw std::invalid_argument("unknown parameter " + change.key());
        result.*(spec->keyPath) = change.value().get<double>();
    }
    return result;
}

}  // namespace quillmere::golden
