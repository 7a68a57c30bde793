#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere::golden {
namespace {

SeededRNG generatorInState(const Json& words) {
    SeededRNG rng(0);
    for (std::size_t i = 0; i < rng.s.size(); ++i) {
        rng.s[i] = word(words.at(i));
    }
    return rng;
}

Outputs seedState(const Case& vector) {
    Outputs out;
    out.value("state", stateText(seededGenerator(vector.input)));
    return out;
}

Outputs next(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    Json words = Json::array();
    for (int i = 0; i < vector.input.at("count").get<int>(); ++i) {
        words.push_back(wordText(rng.next()));
    }
    Outputs out;
    out.value("outputs", words);
    out.value("stateAfter", stateText(rng));
    return out;
}

template <float (SeededRNG::*draw)() noexcept>
Outputs values(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    std::vector<float> drawn(vector.input.at("count").get<std::size_t>());
    for (float& value : drawn) {
        value = (rng.*draw)();
    }
    Outputs out;
    out.array("values", drawn);
    out.value("stateAfter", stateText(rng));
    return out;
}

template <float (SeededRNG::*draw)() noexcept>
Outputs valueFromState(const Case& vector) {
    SeededRNG rng = generatorInState(vector.input.at("state"));
    Outputs out;
    out.value("value", (rng.*draw)());
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs intBelow(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    Json drawn = Json::array();
    for (const Json& bound : vector.input.at("bounds")) {
        drawn.push_back(rng.intBelow(bound.get<std::int64_t>()));
    }
    Outputs out;
    out.value("values", drawn);
    out.value("stateAfter", stateText(rng));
    return out;
}

}  // namespace

Area rngArea() {
    return {"rng",
            {{"RNG",
              {{"seedState", seedState},
               {"next", next},
               {"uniform", values<&SeededRNG::uniform>},
               {"signed", values<&SeededRNG::signedUniform>},
               {"gaussian", values<&SeededRNG::gaussian>},
               {"intBelow", intBelow},
               {"uniformFromState", valueFromState<&SeededRNG::uniform>},
               {"gaussianFromState", valueFromState<&SeededRNG::gaussian>}}}}};
}

}  // namespace quillmere::golden
