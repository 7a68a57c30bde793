#include "QuillmereCore/Generate/Detail/ClipSounds.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Training/ClipReading.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/JSONDocument.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere {
namespace {

// A name as a stored model has it: without the bytes that are no UTF-8.
std::string storedName(const std::string& name) {
    return json::Json(name).dump(-1, ' ', false, json::Json::error_handler_t::replace);
}

}  // namespace

ClipSounds ClipSounds::inFolder(const ModelBundle& model, const CorpusSummary& corpus) {
    ClipSounds sounds;
    if (model.metadata.fingerprint != corpus.fingerprint()) return sounds;
    std::map<std::string, std::optional<CorpusFile>> byName;
    for (const CorpusFile& file : corpus.files) {
        const auto [entry, isNew] = byName.emplace(storedName(file.relativePath), file);
        if (!isNew) entry->second.reset();  // which of the two it is cannot be told
    }
    sounds.origin_ = Origin::folder;
    sounds.config_ = model.config;
    for (const std::string& name : model.metadata.clipNames) {
        const auto found = byName.find(storedName(name));
        sounds.files_.push_back(found == byName.end() ? std::nullopt : found->second);
    }
    return sounds;
}

ClipSounds ClipSounds::keptWith(const ModelBundle& model, const std::filesystem::path& modelFolder) {
    ClipSounds sounds;
    sounds.kept_ = KeptSounds::open(model, modelFolder);
    if (sounds.kept_) sounds.origin_ = Origin::model;
    return sounds;
}

ClipSounds ClipSounds::find(const ModelBundle& model, const CorpusSummary& corpus,
                            const std::filesystem::path& modelFolder) {
    ClipSounds sounds = inFolder(model, corpus);
    return sounds.origin() == Origin::none ? keptWith(model, modelFolder) : sounds;
}

std::optional<std::vector<float>> ClipSounds::read(std::size_t clip, const std::stop_token& stop) const {
    throwIfCancelled(stop);
    if (kept_) return kept_->read(clip);
    if (clip >= files_.size() || !files_[clip]) return std::nullopt;
    ModelTrainer::ClipNeeds needs;
    needs.sampleRate = static_cast<int>(config_.sampleRate);
    // One more than is used tells that the clip is cut.
    needs.keptSamples = static_cast<std::size_t>(config_.clipSamples()) + 1;
    needs.flatness = false;
    const ModelTrainer::ClipReading reading = ModelTrainer::readClip(*files_[clip], needs, stop);
    if (!reading.isUsable()) return std::nullopt;
    return ClipPreparation::cutAndFade(reading.clip.samples, config_.clipSamples(), config_.sampleRate);
}

std::string ClipSounds::toKeep(const ModelBundle& model, const std::stop_token& stop) const {
    std::vector<std::vector<std::int16_t>> clips(model.latents.size());
    parallelFor(clips.size(), [&](std::size_t clip) {
        if (const auto samples = read(clip, stop)) clips[clip] = KeptSounds::quantise(*samples);
    });
    return KeptSounds::encode(model, clips);
}

std::uint64_t ClipSounds::mostToKeep(const CorpusSummary& corpus, const TrainingOptions& options) {
    const int rate = corpus.dominantSampleRate();
    const auto longest = static_cast<double>(ModelTrainer::needsOf(options, rate).keptSamples);
    double samples = 0;
    for (const double seconds : corpus.durations)
        samples += std::min(std::ceil(seconds * rate), longest);
    return KeptSounds::size(corpus.files.size(), static_cast<std::uint64_t>(samples));
}

std::string_view rawValue(ClipSounds::Origin origin) {
    switch (origin) {
        case ClipSounds::Origin::none:
            return "none";
        case ClipSounds::Origin::folder:
            return "folder";
        case ClipSounds::Origin::model:
            return "model";
    }
    fatal("unknown origin of sounds");
}

}  // namespace quillmere
