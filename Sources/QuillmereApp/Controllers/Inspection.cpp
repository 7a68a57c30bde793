#include "QuillmereApp/Controllers/Inspection.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <span>
#include <utility>

#include "QuillmereApp/PixelImage.h"
#include "QuillmereApp/Waveform.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Picture/SoundPictures.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere::Inspection {
namespace {

constexpr int peakCount = 1200;
constexpr std::size_t pictureColumns = 600;

QImage pictureOf(const PlayableSound& sound) {
    const double shortest = 0.05;  // seconds; below that there is nothing to see
    const double seconds = std::max(shortest, sound.seconds());
    return imageOf(
        SoundPictures::MelPainter(sound.sampleRate, seconds, pictureColumns).paint(*sound.samples));
}

void forEach(std::size_t count, CorpusPrints::Pace pace, const std::function<void(std::size_t i)>& act) {
    if (pace == CorpusPrints::Pace::quick) {
        parallelFor(count, act);
        return;
    }
    for (std::size_t i = 0; i < count; ++i)
        act(i);
}

std::optional<SoundPrint> makePrint(const PlayableSound& sound) {
    const auto trimmed = ClipPreparation::trimAndNormalise(
        AudioIO::resample(*sound.samples, sound.sampleRate, SoundPrint::sampleRate), SoundPrint::sampleRate);
    return trimmed ? std::optional(SoundPrinter().print(*trimmed)) : std::nullopt;
}

// Null for a silent or an unreadable one.
std::shared_ptr<const SoundPrint> printOf(const SoundPrinter& printer, const CorpusFile& file) {
    try {
        if (auto print = printer.print(file)) return std::make_shared<const SoundPrint>(*std::move(print));
    } catch (const AudioIOError& error) {
        if (error.isSystemTrouble()) throw;
    }
    return nullptr;
}

}  // namespace

PlayableSound read(const std::filesystem::path& file) {
    AudioIO::MonoAudio audio = AudioIO::readMono(file);
    return {.samples = std::make_shared<const std::vector<float>>(std::move(audio.samples)),
            .sampleRate = audio.sampleRate};
}

Facts factsOf(const PlayableSound& sound) {
    const FlushDenormals flush;
    return {.sound = sound,
            .level = LevelMatch::measure(*sound.samples, sound.sampleRate),
            .peaks = Waveform::peaks(*sound.samples, peakCount),
            .picture = pictureOf(sound),
            .print = makePrint(sound)};
}

std::shared_ptr<const SoundPrint> printOf(const PlayableSound& sound) {
    const FlushDenormals flush;
    std::optional<SoundPrint> print = makePrint(sound);
    return print ? std::make_shared<const SoundPrint>(*std::move(print)) : nullptr;
}

double brightness(const SoundPrint& print) {
    double sum = 0;
    double weighted = 0;
    for (std::size_t i = 0; i < print.levels.size(); ++i) {
        const double decibels = SoundPrint::stepDB * (static_cast<double>(print.levels[i]) - SoundPrint::top);
        const double power = std::pow(10, decibels / 10);
        sum += power;
        weighted += power * static_cast<double>(i % SoundPrint::bands);
    }
    return weighted / sum / (SoundPrint::bands - 1);
}

std::optional<std::shared_ptr<const SoundPrint>> MeasuredFiles::of(std::size_t file) const {
    const MutexLock lock(mutex_);
    const auto found = prints_.find(file);
    return found == prints_.end() ? std::nullopt : std::optional(found->second);
}

void MeasuredFiles::add(std::size_t file, std::shared_ptr<const SoundPrint> print) {
    const MutexLock lock(mutex_);
    prints_.insert_or_assign(file, std::move(print));
}

CorpusPrints::CorpusPrints(std::shared_ptr<const CorpusSummary> corpus,
                           const std::function<void(std::int64_t done)>& progress,
                           const std::stop_token& stop, Pace pace,
                           const std::shared_ptr<MeasuredFiles>& known)
    : corpus_(std::move(corpus)) {
    const SoundPrinter printer;
    std::vector<std::shared_ptr<const SoundPrint>> measured(corpus_->files.size());
    std::atomic<std::int64_t> done = 0;
    forEach(measured.size(), pace, [&](std::size_t i) {
        throwIfCancelled(stop);
        const auto before = known->of(i);
        measured[i] = before ? *before : printOf(printer, corpus_->files[i]);
        if (!before) known->add(i, measured[i]);
        progress(++done);
    });
    std::vector<SoundPrint> prints;
    for (std::size_t i = 0; i < measured.size(); ++i) {
        if (!measured[i]) continue;
        files_.push_back(i);
        prints.push_back(*measured[i]);
    }
    index_.emplace(prints);
}

std::vector<CorpusPrints::Neighbour> CorpusPrints::nearest(const SoundPrint& print, std::size_t count) const {
    std::vector<Neighbour> neighbours;
    for (const auto& [position, distance] : index_->nearest(print, count))
        neighbours.push_back({corpus_->files[files_[position]].relativePath, distance});
    return neighbours;
}

}  // namespace quillmere::Inspection
