#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Model/Corpus.h"

namespace quillmere::golden {
namespace {

CorpusFile corpusFile(const std::string& relativePath) {
    return {.url = std::filesystem::path("/corpus") / relativePath, .relativePath = relativePath};
}

CorpusSummary withDurations(const Case& vector) {
    CorpusSummary summary;
    summary.durations = vector.input.at("durations").get<std::vector<double>>();
    return summary;
}

Outputs fingerprint(const Case& vector) {
    CorpusSummary summary;
    for (const Json& entry : vector.input.at("files")) {
        CorpusFile file = corpusFile(entry.at(0).get<std::string>());
        file.size = entry.at(1).get<std::int64_t>();
        file.modified = static_cast<std::int64_t>(entry.at(2).get<double>());
        summary.files.push_back(file);
    }
    Outputs out;
    out.value("fingerprint", summary.fingerprint());
    return out;
}

Outputs naturalSort(const Case& vector) {
    std::vector<CorpusFile> files;
    for (const Json& name : vector.input.at("names")) {
        files.push_back(corpusFile(name.get<std::string>()));
    }
    Corpus::sortNaturally(files);
    Json order = Json::array();
    for (const CorpusFile& file : files) {
        order.push_back(file.relativePath);
    }
    Outputs out;
    out.value("order", order);
    return out;
}

Outputs suggestedClipSeconds(const Case& vector) {
    Outputs out;
    out.value("seconds", withDurations(vector).suggestedClipSeconds());
    return out;
}

Outputs totalSeconds(const Case& vector) {
    Outputs out;
    out.value("seconds", Corpus::totalSeconds(withDurations(vector).durations));
    return out;
}

Outputs dominantSampleRate(const Case& vector) {
    CorpusSummary summary;
    for (const Json& entry : vector.input.at("rates")) {
        summary.sampleRates[entry.at(0).get<int>()] = entry.at(1).get<int>();
    }
    Outputs out;
    out.value("rate", summary.dominantSampleRate());
    return out;
}

Outputs supported(const Case& vector) {
    Json accepted = Json::array();
    for (const Json& name : vector.input.at("names")) {
        accepted.push_back(Corpus::isSupported(name.get<std::string>()));
    }
    Outputs out;
    out.value("accepted", accepted);
    return out;
}

}  // namespace

Area corpusArea() {
    return {"corpus",
            {{"Corpus",
              {{"fingerprint", fingerprint},
               {"naturalSort", naturalSort},
               {"suggestedClipSeconds", suggestedClipSeconds},
               {"totalSeconds", totalSeconds},
               {"dominantSampleRate", dominantSampleRate},
               {"supported", supported}}}}};
}

}  // namespace quillmere::golden
