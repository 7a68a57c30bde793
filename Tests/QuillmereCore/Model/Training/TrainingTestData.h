#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Model/Training/TrainingProgress.h"
#include "QuillmereCore/Util/RNG.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"

// What the tests of training have in common.
namespace quillmere::testing {

// The smallest network there is.
inline const ModelConfig smallest{8000, 256, 64, 32, 32, 4, AnalysisProfile::percussive};

inline std::vector<float> randomImage(std::uint64_t seed, const ModelConfig& config = smallest) {
    SeededRNG rng(seed);
    std::vector<float> image(static_cast<std::size_t>(config.nMels * config.frames));
    for (float& value : image)
        value = rng.uniform() - 0.9F;
    return image;
}

inline std::vector<std::vector<float>> randomImages(std::size_t count) {
    std::vector<std::vector<float>> images;
    for (std::size_t i = 0; i < count; ++i)
        images.push_back(randomImage(100 + i));
    return images;
}

inline TrainingOptions quickOptions(std::int64_t steps = 2) {
    TrainingOptions options;
    options.steps = steps;
    options.batchSize = 2;
    options.latentDim = 4;
    options.clipSeconds = 0.1;
    options.profile = AnalysisProfile::percussive;
    return options;
}

// Collects what a run reports, and asks it to stop once a report satisfies stopAt.
struct Listener {
    std::vector<TrainingProgress> records;
    std::function<bool(const TrainingProgress&)> stopAt;
    std::stop_source stop;

    ModelTrainer::ProgressCallback progress() {
        return [this](const TrainingProgress& record) {
            records.push_back(record);
            if (stopAt && stopAt(record)) stop.request_stop();
        };
    }
    [[nodiscard]] std::vector<std::string> messages() const {
        std::vector<std::string> result;
        for (const TrainingProgress& record : records)
            result.push_back(record.message);
        return result;
    }
    [[nodiscard]] std::vector<TrainingProgress> ofPhase(TrainingProgress::Phase phase) const {
        std::vector<TrainingProgress> result;
        std::ranges::copy_if(records, std::back_inserter(result),
                             [&](const TrainingProgress& record) { return record.phase == phase; });
        return result;
    }
};

// A folder of WAV files at 8 kHz.
class TestCorpus {
public:
    void add(const std::string& name, const std::vector<float>& samples, int sampleRate = 8000) const {
        AudioIO::write(samples, folder_ / name, sampleRate, OutputFormat::wav32float);
    }
    void addNoise(const std::string& name, double seconds, std::uint64_t seed, int sampleRate = 8000) const {
        add(name, noise(seed, static_cast<std::size_t>(seconds * sampleRate), 0.5F), sampleRate);
    }
    void addSine(const std::string& name, double seconds, double hz) const {
        add(name, sine(hz, 8000, static_cast<std::size_t>(seconds * 8000), 0.5));
    }
    void addText(const std::string& name) const { writeText(folder_ / name, "no audio at all"); }

    [[nodiscard]] CorpusSummary scan() const { return Corpus::scan(folder_.path()); }
    [[nodiscard]] const std::filesystem::path& path() const { return folder_.path(); }

private:
    TempFolder folder_;
};

}  // namespace quillmere::testing
