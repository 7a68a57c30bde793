#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

#include "Golden/GoldenAreas.h"
#include "QuillmereCore/DSP/BandMaps.h"
#include "QuillmereCore/DSP/PhaseIntegration.h"
#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Generate/Detail/Attack.h"
#include "QuillmereCore/Generate/Detail/Donor.h"
#include "QuillmereCore/Generate/Detail/FineStructure.h"
#include "QuillmereCore/Generate/Detail/TailCurve.h"

namespace quillmere::golden {
namespace {

using PhaseIntegration::Phase;

constexpr double smallestPerTurn = 4294967296.0;

std::size_t size(const Json& input, const char* field) {
    return input.at(field).get<std::size_t>();
}

float single(const Json& input, const char* field) {
    return input.at(field).get<float>();
}

Outputs attack(const Case& vector) {
    const Json& input = vector.input;
    const auto frames = Detail::AttackFrames::forHop(input.at("hop").get<std::int64_t>());
    std::vector<float> course(size(input, "bands") * frames.count());
    for (const Json& source : input.at("sources"))
        Detail::addCourse(floats(source.at("image")), frames.count(), frames, single(source, "weight"),
                          course);
    std::vector<float> image = floats(input.at("image"));
    Detail::applyAttack(image, size(input, "frames"), frames, course, single(input, "amount"));
    Outputs out;
    out.array("image", image);
    return out;
}

Detail::TailCurve curveOf(const Json& input) {
    const std::vector<float> decoded = floats(input.at("decoded"));
    const std::vector<float> real = floats(input.at("real"));
    std::vector<Detail::TailCurve::Levels> levels;
    for (std::size_t i = 0; i < decoded.size(); ++i)
        levels.push_back({decoded[i], real.at(i)});
    return Detail::TailCurve(levels);
}

Outputs tailCurve(const Case& vector) {
    Outputs out;
    out.array("curve", curveOf(vector.input).values());
    return out;
}

Outputs tail(const Case& vector) {
    std::vector<float> image = floats(vector.input.at("image"));
    curveOf(vector.input).apply(image, size(vector.input, "cols"), single(vector.input, "amount"));
    Outputs out;
    out.array("image", image);
    return out;
}

Outputs donor(const Case& vector) {
    std::vector<float> mix(size(vector.input, "length"));
    for (const Json& source : vector.input.at("sources"))
        Detail::addScaled(floats(source.at("samples")), single(source, "weight"), mix);
    const auto ratio = vector.input.at("ratio").get<double>();
    if (ratio != 1) mix = Detail::readFaster(mix, ratio);
    Outputs out;
    out.array("samples", mix);
    return out;
}

Outputs donorCentres(const Case& vector) {
    SeededRNG rng(vector.input.at("seed").get<std::uint64_t>());
    Outputs out;
    out.value("centres",
              Detail::donorCentres(vector.input.at("frames").get<int>(), vector.input.at("hop").get<int>(),
                                   vector.input.at("length").get<double>(), rng));
    return out;
}

MelFilterBank bankOf(const Json& input) {
    const Json& bank = input.at("bank");
    return {bank.at("sampleRate").get<int>(), bank.at("nFFT").get<int>(), bank.at("nMels").get<int>()};
}

Outputs fineStructure(const Case& vector) {
    const Json& input = vector.input;
    BandMaps maps(bankOf(input));
    STFT stft(input.at("bank").at("nFFT").get<int>(), 1);
    const auto centres = input.at("centres").get<std::vector<long long>>();
    std::vector<float> magnitudes = floats(input.at("magnitude"));
    std::vector<float> re(magnitudes.size());
    std::vector<float> im(magnitudes.size());
    stft.forwardAt(floats(input.at("donor")), centres, re, im);
    for (std::size_t t = 0; t < centres.size(); ++t) {
        for (const std::size_t edge : {t * maps.bins(), (t + 1) * maps.bins() - 1})
            re[edge] = im[edge] = 0;
    }
    std::vector<float> spectrum(magnitudes.size());
    Detail::magnitudes(re, im, spectrum);
    std::vector<float> levels(centres.size() * maps.bands());
    maps.forward(spectrum, levels);
    std::vector<float> envelope(magnitudes.size());
    maps.inverse(levels, envelope);
    std::vector<float> bandTrust(levels.size());
    Detail::trustOf(levels, *std::max_element(levels.begin(), levels.end()), bandTrust);
    std::vector<float> trust(magnitudes.size());
    maps.inverse(bandTrust, trust);
    Detail::applyFineStructure(magnitudes, spectrum, envelope, trust, single(input, "amount"));
    Outputs out;
    out.array("trust", trust);
    out.array("magnitude", magnitudes);
    return out;
}

Outputs refine(const Case& vector) {
    BandMaps maps(bankOf(vector.input));
    std::vector<float> magnitudes = floats(vector.input.at("magnitude"));
    maps.refine(magnitudes, floats(vector.input.at("levels")), vector.input.at("rounds").get<int>());
    Outputs out;
    out.array("magnitude", magnitudes);
    return out;
}

Outputs phases(const Case& vector) {
    const Json& input = vector.input;
    const PhaseIntegration::Shape shape{input.at("frames").get<int>(), input.at("nFFT").get<int>(),
                                        input.at("hop").get<int>()};
    const std::vector<float> magnitudes = floats(input.at("magnitude"));
    std::vector<Phase> phases;
    for (const float turns : floats(input.at("starts")))
        phases.push_back(static_cast<Phase>(static_cast<double>(turns) * smallestPerTurn));
    std::vector<std::uint8_t> known(size(input, "knownFrames") *
                                    (static_cast<std::size_t>(shape.nFFT) / 2 + 1));
    for (std::size_t i = 0; i < known.size(); i += size(input, "knownEvery"))
        known[i] = 1;
    PhaseIntegration::integrate(magnitudes, shape, known, phases);
    std::vector<double> cosine;
    std::vector<double> sine;
    for (const Phase phase : phases) {
        const double radians = 2 * std::numbers::pi * static_cast<double>(phase) / smallestPerTurn;
        cosine.push_back(std::cos(radians));
        sine.push_back(std::sin(radians));
    }
    Outputs out;
    out.array("cosine", cosine);
    out.array("sine", sine);
    return out;
}

}  // namespace

Area detailArea() {
    return {"detail",
            {{"Detail",
              {{"attack", attack},
               {"tailCurve", tailCurve},
               {"tail", tail},
               {"donor", donor},
               {"donorCentres", donorCentres},
               {"fineStructure", fineStructure},
               {"refine", refine},
               {"phases", phases}}}}};
}

}  // namespace quillmere::golden
