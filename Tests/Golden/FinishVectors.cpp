#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Generate/Finishing.h"

namespace quillmere::golden {
namespace {

using Signal = std::vector<float>;

double real(const Case& vector, const char* field) {
    return vector.input.at(field).get<double>();
}

// An operation that changes "signal".
template <typename Change>
Outputs changedSignal(const Case& vector, Change change) {
    Signal x = floats(vector.input.at("signal"));
    change(x);
    Outputs out;
    out.array("samples", x);
    return out;
}

Outputs dcBlock(const Case& vector) {
    return changedSignal(vector, [](Signal& x) { Finishing::blockDC(x); });
}

Outputs trimSilence(const Case& vector) {
    const Signal x = floats(vector.input.at("signal"));
    const int sampleRate = vector.input.at("sampleRate").get<int>();
    const Finishing::SampleRange range = Finishing::audibleRange(x, sampleRate);
    Outputs out;
    out.value("start", range.start);
    out.value("end", range.end);
    out.array("samples", Finishing::trimSilence(x, sampleRate));
    return out;
}

Outputs normalize(const Case& vector) {
    return changedSignal(vector,
                         [&](Signal& x) { Finishing::normalize(x, vector.input.at("peak").get<float>()); });
}

Outputs decay(const Case& vector) {
    return changedSignal(vector, [&](Signal& x) {
        Finishing::applyDecay(x, real(vector, "decay"), real(vector, "sampleRate"));
    });
}

Outputs drive(const Case& vector) {
    return changedSignal(vector, [&](Signal& x) { Finishing::applyDrive(x, real(vector, "drive")); });
}

Outputs decimate(const Case& vector) {
    return changedSignal(vector, [&](Signal& x) { Finishing::decimate(x, real(vector, "decimate")); });
}

Outputs crush(const Case& vector) {
    return changedSignal(vector, [&](Signal& x) { Finishing::crush(x, real(vector, "crushBits")); });
}

Outputs fades(const Case& vector) {
    return changedSignal(vector, [&](Signal& x) { Finishing::applyFades(x, real(vector, "sampleRate")); });
}

Outputs finish(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    Outputs out = changedSignal(vector, [&](Signal& x) {
        Finishing::finish(x, aesthetics(vector.input.at("aesthetics")), real(vector, "sampleRate"), rng);
    });
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs firstFreeIndex(const Case& vector) {
    const auto names = vector.input.at("names").get<std::vector<std::string>>();
    Outputs out;
    out.value("index", Finishing::firstFreeIndex(names, vector.input.at("prefix").get<std::string>()));
    return out;
}

Outputs fileName(const Case& vector) {
    const std::string prefix = Finishing::sanitisedPrefix(vector.input.at("prefix").get<std::string>());
    Outputs out;
    out.value("name", Finishing::fileName(prefix + "_var", vector.input.at("number").get<std::size_t>()));
    return out;
}

}  // namespace

Area finishArea() {
    return {"finish",
            {{"Finish",
              {{"dcBlock", dcBlock},
               {"trimSilence", trimSilence},
               {"normalize", normalize},
               {"decay", decay},
               {"drive", drive},
               {"decimate", decimate},
               {"crush", crush},
               {"fades", fades},
               {"finish", finish},
               {"firstFreeIndex", firstFreeIndex},
               {"fileName", fileName}}}}};
}

}  // namespace quillmere::golden
