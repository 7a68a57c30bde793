#include "QuillmereCore/Origin/KitFolder.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Generate/SoundFile.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Paths.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

void writeText(const fs::path& file, const std::string& text) {
    if (!writeNewFile(file, std::as_bytes(std::span(text))))
        throw FileError(file, std::make_error_code(std::errc::file_exists));
}

// The chosen sound keeps its own; the others are made from it.
std::optional<Lineage> lineageOf(const KitFolder::Chosen& chosen, bool isChosenOne, double closeness) {
    if (isChosenOne) return chosen.recipe.lineage;
    return Lineage{.way = "kit", .parents = chosen.parents, .values = {{"closeness", closeness}}};
}

}  // namespace

KitFolder::KitFolder(Order order, Progress progress)
    : order_(std::move(order)),
      progress_(std::move(progress)),
      folder_(Paths::plain(order_.parent) / Kit::plainName(order_.name)) {
    kit_.name = Kit::plainName(order_.name);
}

void KitFolder::requireNew() const {
    std::error_code error;
    const bool isThere = fs::exists(folder_, error);
    if (error) throw FileError(folder_, error);
    if (isThere && !fs::is_empty(folder_, error))
        throw FileError(folder_, error ? error : std::make_error_code(std::errc::file_exists));
}

void KitFolder::addInstrument(const Chosen& chosen, SampleGenerator& generator, const std::string& device,
                              const std::stop_token& stop) {
    const auto number = static_cast<std::int64_t>(kit_.instruments.size());
    std::vector<AuditionedSample> sounds =
        generator.remake(Kit::plans(generator, chosen.recipe, order_.size, order_.seed, number), stop);
    std::vector<std::vector<float>> samples;
    samples.reserve(sounds.size());
    for (AuditionedSample& sound : sounds)
        samples.push_back(std::move(sound.samples));
    if (samples.front().empty()) throw Failure("{0} is empty", chosen.source);
    const Kit::Arrangement arrangement = Kit::arrange(samples, order_.size.layers);
    Kit::Instrument instrument{.name = chosen.source.stem().string(), .layers = {}};
    for (std::size_t place = 0; place < arrangement.order.size(); ++place) {
        const std::size_t sound = arrangement.order[place];
        const auto layer = std::min<std::size_t>(place / static_cast<std::size_t>(order_.size.count),
                                                 static_cast<std::size_t>(order_.size.layers) - 1);
        instrument.layers.resize(std::max(instrument.layers.size(), layer + 1));
        std::vector<std::string>& names = instrument.layers[layer];
        names.push_back(fileName(instrument.name, layer, names.size()));
        sounds[sound].origin.fit = arrangement.fits[sound];
        Finishing::fit(samples[sound], arrangement.fits[sound].samples, arrangement.fits[sound].gain,
                       generator.sampleRate());
        RecipeBase base = baseOf(chosen.recipe);
        base.device = device;
        base.program.clear();
        base.corpusName = generator.bundle().metadata.corpusName;
        base.fingerprint = generator.bundle().metadata.fingerprint;
        base.lineage = lineageOf(chosen, sound == 0, order_.size.closeness);
        write(samples[sound], sounds[sound].origin, generator.sampleRate(), std::move(base), names.back());
    }
    kit_.longestSeconds =
        std::max(kit_.longestSeconds, static_cast<double>(samples.front().size()) / generator.sampleRate());
    kit_.instruments.push_back(std::move(instrument));
}

void KitFolder::finish() {
    writeText(folder_ / (kit_.name + ".sfz"), Kit::sfz(kit_));
    writeText(folder_ / "drumkit.xml", Kit::hydrogen(kit_));
    if (const std::error_code unsafe = syncFolder(folder_)) throw FileError(folder_, unsafe);
}

// "01_kick_2.wav", with layers "01_kick_v1_2.wav".
std::string KitFolder::fileName(const std::string& instrument, std::size_t layer, std::size_t turn) const {
    std::string number = std::to_string(kit_.instruments.size() + 1);
    if (number.size() < 2) number.insert(0, 1, '0');
    const std::string velocity = order_.size.layers > 1 ? "_v" + std::to_string(layer + 1) : "";
    return number + "_" + Kit::plainName(instrument) + velocity + "_" + std::to_string(turn + 1) + ".wav";
}

void KitFolder::write(std::span<const float> samples, const SampleOrigin& origin, int sampleRate,
                      RecipeBase base, const std::string& name) {
    const OutputFormat format = base.format;
    RecipeKeeper keeper(order_.carriers, std::move(base));
    if (files_.empty()) SoundFile::prepareFolder(folder_);
    files_.push_back(
        SoundFile::writeNew({samples, sampleRate, format, origin}, folder_ / name, keeper.hooks()));
    if (!problem_) problem_ = keeper.journalProblem();
    if (progress_) progress_(files_.size());
}

}  // namespace quillmere
