#include "QuillmereCore/Origin/ReportCard.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>

#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/Training/ClipReading.h"
#include "QuillmereCore/Model/Training/TrainingLoop.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Origin/SoundPrint.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

using Images = std::vector<std::vector<float>>;
using Report = std::function<void(const ReportProgress&)>;

constexpr double poorFromDB = 8;
constexpr double goodBelowDB = 4;
constexpr std::size_t fewClips = 12;

// Squared difference of two images per value, in network units.
double squaredError(std::span<const float> a, std::span<const float> b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = static_cast<double>(a[i]) - static_cast<double>(b[i]);
        sum += difference * difference;
    }
    return sum / static_cast<double>(a.size());
}

double decibels(double squared) {
    const auto perUnit = static_cast<double>(Level::toDB(1) - Level::toDB(0));
    return perUnit * std::sqrt(squared);
}

// Root mean square of errors in decibels.
double together(std::span<const double> errors) {
    double sum = 0;
    for (const double error : errors)
        sum += error * error;
    return errors.empty() ? 0 : std::sqrt(sum / static_cast<double>(errors.size()));
}

// The errors of what the network makes of its latent vectors, in decibels.
std::vector<double> errorsOf(VAEInference& inference, std::span<const std::vector<float>> latents,
                             std::span<const std::vector<float>> images, const std::stop_token& stop) {
    std::vector<double> errors;
    for (std::size_t first = 0; first < images.size(); first += VAEInference::batch) {
        throwIfCancelled(stop);
        const std::size_t count = std::min<std::size_t>(VAEInference::batch, images.size() - first);
        const Images decoded = inference.decode(latents.subspan(first, count));
        for (std::size_t i = 0; i < count; ++i)
            errors.push_back(decibels(squaredError(decoded[i], images[first + i])));
    }
    return errors;
}

// The files of a model's folder as it learned them.
class LearnedFolder {
public:
    LearnedFolder(const ModelBundle& model, const CorpusSummary& corpus, const Report& progress,
                  const std::stop_token& stop)
        : model_(model), files_(corpus.files), extractor_(model.config) {
        needs_.sampleRate = static_cast<int>(model.config.sampleRate);
        needs_.keptSamples = static_cast<std::size_t>(model.config.clipSamples()) + 1;
        needs_.flatness = false;
        needs_.keptTogether = ModelTrainer::ClipNeeds::ofAnyCorpus;
        needs_ = needs_.sharedBy(WorkerTeam().threads());
        const auto tell = [&](std::int64_t done, std::int64_t total) {
            if (progress) progress({ReportProgress::Part::reading, done, total});
        };
        readings_ = ModelTrainer::readClips(corpus.files, needs_, tell, stop);
        for (std::size_t i = 0; i < readings_.size(); ++i) {
            if (readings_[i].isUsable()) usable_.push_back(i);
        }
        if (usable_.size() != model.latents.size())
            throw Failure("{0} no longer holds what the model has learned.", corpus.directory);
    }

    [[nodiscard]] std::span<const std::size_t> usable() const { return usable_; }
    [[nodiscard]] const std::vector<ModelTrainer::ClipReading>& readings() const { return readings_; }
    [[nodiscard]] const std::string& name(std::size_t position) const {
        return readings_[usable_[position]].clip.name;
    }
    [[nodiscard]] DecodedClip clip(std::size_t position, const std::stop_token& stop) const {
        const std::size_t file = usable_[position];
        return ModelTrainer::clipOf(readings_[file], files_[file], needs_, stop);
    }
    [[nodiscard]] std::vector<float> image(const DecodedClip& clip, STFT& stft) const {
        return ClipPreparation::prepare(clip, model_.config, extractor_, stft).image;
    }
    [[nodiscard]] Images images(const std::stop_token& stop) const {
        Images images(usable_.size());
        parallelFor(images.size(), [&](std::size_t i) {
            throwIfCancelled(stop);
            STFT stft = extractor_.makeSTFT();
            images[i] = image(clip(i, stop), stft);
        });
        return images;
    }
    [[nodiscard]] const FeatureExtractor& extractor() const { return extractor_; }

private:
    const ModelBundle& model_;
    const std::vector<CorpusFile>& files_;
    ModelTrainer::ClipNeeds needs_;
    FeatureExtractor extractor_;
    std::vector<ModelTrainer::ClipReading> readings_;
    std::vector<std::size_t> usable_;  // positions among the readings
};

Message damageText(const AudioIO::Damage& damage) {
    if (damage.isTruncated) return Message("it ends before it should");
    return Message("{0} s in it are lost", Text::fixed(damage.silentSeconds, 2));
}

void addBlemishes(ReportCard& card, const LearnedFolder& folder, const CorpusSummary& corpus,
                  std::int64_t clipSamples) {
    using Kind = ReportCard::Blemish::Kind;
    using Outcome = ModelTrainer::ClipReading::Outcome;
    for (std::size_t i = 0; i < corpus.files.size(); ++i) {
        const ModelTrainer::ClipReading& reading = folder.readings()[i];
        const auto add = [&](Kind kind, Message reason) {
            card.blemishes.push_back({corpus.files[i].relativePath, kind, std::move(reason)});
        };
        if (reading.outcome == Outcome::unreadable) add(Kind::unreadable, reading.reason);
        if (reading.outcome == Outcome::silent) add(Kind::silent, {});
        if (!reading.isUsable()) continue;
        if (std::cmp_greater(reading.length, clipSamples)) add(Kind::cut, {});
        if (reading.damage.any()) add(Kind::damaged, damageText(reading.damage));
    }
}

std::vector<SoundPrint> printsOf(const LearnedFolder& folder, const CorpusSummary& corpus,
                                 const Report& progress, const std::stop_token& stop) {
    const auto total = std::ssize(folder.usable());
    if (progress) progress({ReportProgress::Part::comparing, 0, total});
    const SoundPrinter printer;
    const SoundPrint nothing{std::vector<std::uint8_t>(SoundPrint::bands)};
    std::vector<SoundPrint> prints(folder.usable().size());
    parallelFor(prints.size(), [&](std::size_t i) {
        throwIfCancelled(stop);
        prints[i] = printer.print(corpus.files[folder.usable()[i]]).value_or(nothing);
    });
    return prints;
}

// The most similar other clip of each.
void addNeighbours(ReportCard& card, std::span<const SoundPrint> prints, const Report& progress,
                   const std::stop_token& stop) {
    const SoundIndex index(prints);
    for (std::size_t i = 0; i < prints.size(); ++i) {
        throwIfCancelled(stop);
        card.clips[i].nearest = i;
        for (const auto& [position, distance] : index.nearest(prints[i], 2)) {
            if (position == i) continue;
            card.clips[i].nearest = position;
            card.clips[i].nearestDB = distance;
            break;
        }
        if (progress)
            progress({ReportProgress::Part::comparing, static_cast<std::int64_t>(i + 1), std::ssize(prints)});
    }
}

void sortOut(ReportCard& card) {
    for (std::size_t i = 0; i < card.clips.size(); ++i) {
        const ReportCard::Clip& clip = card.clips[i];
        if (clip.nearest == i) continue;
        if (clip.nearestDB >= farFromDB) card.outliers.push_back(i);
        if (clip.nearestDB >= copyBelowDB) continue;
        // A pair that has found each other is told once.
        const bool isKnown = clip.nearest < i && card.clips[clip.nearest].nearest == i;
        if (!isKnown)
            card.nearDuplicates.push_back(
                {std::min(i, clip.nearest), std::max(i, clip.nearest), clip.nearestDB});
    }
    std::ranges::stable_sort(card.nearDuplicates, {}, &ReportCard::Pair::distanceDB);
    std::ranges::stable_sort(card.outliers, std::ranges::greater(),
                             [&](std::size_t i) { return card.clips[i].nearestDB; });
}

std::vector<std::size_t> byError(const ReportCard& card, std::size_t most) {
    std::vector<std::size_t> order(card.clips.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, std::ranges::greater(),
                             [&](std::size_t i) { return card.clips[i].errorDB; });
    order.resize(std::min(order.size(), most));
    return order;
}

// ---- Clips held back

// Every tenth clip from the sixth on; of a few, every third from the second on.
bool isHeldBack(std::size_t clip, std::size_t clips) {
    return clips >= 20 ? clip % 10 == 5 : clip % 3 == 1;
}

ReportCard::HeldBack holdBack(const ModelBundle& model, Images images,
                              const std::shared_ptr<const TrainingStart>& start, network::Backend& backend,
                              const Report& progress, const std::stop_token& stop) {
    Images learned;
    Images others;
    for (std::size_t i = 0; i < images.size(); ++i)
        (isHeldBack(i, images.size()) ? others : learned).push_back(std::move(images[i]));
    TrainingOptions options;
    options.steps = std::max<std::int64_t>(model.metadata.steps, 1);
    options.latentDim = model.config.latentDim;
    options.start = start;
    const auto tell = [&](const TrainingProgress& training) {
        if (progress) progress({ReportProgress::Part::training, training.step, training.totalSteps});
    };
    const ModelTrainer::TrainedNetwork network =
        ModelTrainer::trainOnImages(model.config, learned, options, tell, stop, backend);
    VAEInference inference(model.config, network.weights, backend);
    return {.clips = others.size(),
            .learnedDB = together(errorsOf(inference, network.latents, learned, stop)),
            .heldBackDB = together(errorsOf(inference, inference.encode(others), others, stop))};
}

// ---- In words

std::string dB(double value) {
    return Text::fixed(value, 1) + " dB";
}

Message adviceToLearnOn() {
    return Message(
        "Learn it longer; if that gains little, the samples are many or very different, and more latent "
        "dimensions or a folder for each kind may help.");
}

Message adviceOnOthers(const ReportCard::HeldBack& heldBack) {
    return Message(
        "Samples that it has not learned come out worse ({0} instead of {1}): it knows these samples rather "
        "than their kind. More samples help.",
        dB(heldBack.heldBackDB), dB(heldBack.learnedDB));
}

void adviseOnFiles(const ReportCard& card, std::vector<Message>& advice) {
    using Kind = ReportCard::Blemish::Kind;
    if (const auto cut = static_cast<std::int64_t>(card.count(Kind::cut)); cut > 0)
        advice.push_back(Message::counted(
            cut,
            "One sample is longer than the {1} s that are learned of each; learn more of each, or cut it up, "
            "if its end matters.",
            "{0} samples are longer than the {1} s that are learned of each; learn more of each, or cut them "
            "up, if their ends matter.",
            Text::fixed(card.clipSeconds, 1)));
    if (const auto pairs = std::ssize(card.nearDuplicates); pairs > 0)
        advice.push_back(Message::counted(
            pairs,
            "One pair of samples is nearly the same; remove one of each, or the model gives it twice the "
            "weight.",
            "{0} pairs of samples are nearly the same; remove one of each, or the model gives it twice the "
            "weight."));
    if (const auto far = std::ssize(card.outliers); far > 0)
        advice.push_back(Message::counted(
            far, "One sample is unlike all others; add more of the kind, or move what does not belong here.",
            "{0} samples are unlike all others; add more of the kind, or move what does not belong here."));
    const auto lost = static_cast<std::int64_t>(card.count(Kind::silent) + card.count(Kind::unreadable));
    if (lost > 0)
        advice.push_back(
            Message::counted(lost, "One file was left out as silent or unreadable; replace or remove them.",
                             "{0} files were left out as silent or unreadable; replace or remove them."));
    if (const auto damaged = static_cast<std::int64_t>(card.count(Kind::damaged)); damaged > 0)
        advice.push_back(
            Message::counted(damaged, "One file is damaged and only learned in part; get a whole copy.",
                             "{0} files are damaged and only learned in part; get a whole copy."));
}

}  // namespace

std::size_t ReportCard::count(Blemish::Kind kind) const {
    return static_cast<std::size_t>(std::ranges::count(blemishes, kind, &Blemish::kind));
}

ReportCard::Grade ReportCard::grade() const {
    if (errorDB < goodBelowDB) return Grade::good;
    return errorDB < poorFromDB ? Grade::fair : Grade::poor;
}

Message ReportCard::verdict() const {
    switch (grade()) {
        case Grade::good:
            return Message("The model has learned its samples well ({0} off on average).", dB(errorDB));
        case Grade::fair:
            return Message("The model has learned its samples in outline ({0} off on average).", dB(errorDB));
        case Grade::poor:
            break;
    }
    return Message("The model has not learned its samples yet ({0} off on average).", dB(errorDB));
}

std::vector<Message> ReportCard::advice() const {
    std::vector<Message> advice;
    if (grade() != Grade::good) advice.push_back(adviceToLearnOn());
    if (heldBack && heldBack->heldBackDB > 2 * heldBack->learnedDB)
        advice.push_back(adviceOnOthers(*heldBack));
    if (clips.size() < fewClips)
        advice.push_back(Message::counted(std::ssize(clips),
                                          "There are {0} samples; a few dozen give it more to blend.",
                                          "There are {0} samples; a few dozen give it more to blend."));
    adviseOnFiles(*this, advice);
    return advice;
}

std::string_view rawValue(ReportCard::Grade grade) {
    switch (grade) {
        case ReportCard::Grade::good:
            return "good";
        case ReportCard::Grade::fair:
            return "fair";
        case ReportCard::Grade::poor:
            break;
    }
    return "poor";
}

std::string_view rawValue(ReportCard::Blemish::Kind kind) {
    switch (kind) {
        case ReportCard::Blemish::Kind::cut:
            return translatable("cut");
        case ReportCard::Blemish::Kind::silent:
            return translatable("silent");
        case ReportCard::Blemish::Kind::unreadable:
            return translatable("unreadable");
        case ReportCard::Blemish::Kind::damaged:
            break;
    }
    return translatable("damaged");
}

ReportCard makeReport(const ModelBundle& model, const CorpusSummary& corpus, network::Backend& backend,
                      const ReportOptions& options, const Report& progress, const std::stop_token& stop) {
    constexpr std::size_t worstClips = 3;
    const LearnedFolder folder(model, corpus, progress, stop);
    ReportCard card{.corpusName = model.metadata.corpusName,
                    .steps = model.metadata.steps,
                    .finalLoss = model.metadata.finalLoss,
                    .finalReconstructionError = model.metadata.finalReconstructionError,
                    .clipSeconds = model.config.clipSeconds(),
                    .clips = {},
                    .worst = {},
                    .nearDuplicates = {},
                    .outliers = {},
                    .blemishes = {},
                    .heldBack = {}};
    Images images = folder.images(stop);
    VAEInference inference(model.config, model.weights, backend);
    const std::vector<double> errors = errorsOf(inference, model.latents, images, stop);
    for (std::size_t i = 0; i < errors.size(); ++i)
        card.clips.push_back({.name = folder.name(i), .errorDB = errors[i]});
    card.errorDB = together(errors);
    card.worst = byError(card, worstClips);
    addNeighbours(card, printsOf(folder, corpus, progress, stop), progress, stop);
    sortOut(card);
    addBlemishes(card, folder, corpus, model.config.clipSamples());
    if (options.holdsBack && images.size() > 1)
        card.heldBack = holdBack(model, std::move(images), options.start, backend, progress, stop);
    return card;
}

std::vector<ReportExample> reportExamples(const ReportCard& card, const ModelBundle& model,
                                          const CorpusSummary& corpus, network::Backend& backend,
                                          std::size_t most, const std::stop_token& stop) {
    const LearnedFolder folder(model, corpus, {}, stop);
    const std::vector<std::size_t> order = byError(card, most);
    SampleGenerator generator(model, backend);
    VAEInference inference(model.config, model.weights, backend);
    std::vector<VariationPlan> plans;
    Images latents;
    for (const std::size_t clip : order) {
        VariationPlan plan;
        plan.origin.latent = model.latents[clip];
        plan.origin.latent.resize(static_cast<std::size_t>(model.config.latentDim));
        plan.origin.state = SeededRNG(clip).s;
        latents.push_back(plan.origin.latent);
        plans.push_back(std::move(plan));
    }
    std::vector<AuditionedSample> learned = generator.remake(plans, stop);
    Images images = inference.decode(latents);
    STFT stft = folder.extractor().makeSTFT();
    std::vector<ReportExample> examples;
    for (std::size_t i = 0; i < order.size(); ++i) {
        const std::size_t clip = order[i];
        const DecodedClip original = folder.clip(clip, stop);
        examples.push_back({.name = card.clips[clip].name,
                            .errorDB = card.clips[clip].errorDB,
                            .original = ClipPreparation::cutAndFade(
                                original.samples, model.config.clipSamples(), model.config.sampleRate),
                            .learned = std::move(learned[i].samples),
                            .originalImage = folder.image(original, stft),
                            .learnedImage = std::move(images[i])});
    }
    return examples;
}

}  // namespace quillmere
