#include "QuillmereCLI/Learning.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Detail/ClipSounds.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {

KnownCorpus findCorpus(const std::filesystem::path& folder, const ModelsOption& models,
                       ProgressLine& progress, const CancelFlag& cancel) {
    WorkProgress work;
    work.phase = translatable("scanning");
    work.message = Message("Scanning {0}…", folder.filename());
    progress.report(work);
    KnownCorpus corpus;
    corpus.summary = Corpus::scan(folder, {}, cancel.token());
    corpus.modelFolder = ModelStore::directory(corpus.summary, models.root());
    corpus.arguments = shellWord(folder);
    if (models.isGiven()) corpus.arguments += " --models " + shellWord(models.root());
    return corpus;
}

ModelBundle learn(const KnownCorpus& corpus, const TrainingOptions& options, network::ChosenDevice& device,
                  ProgressLine& progress, const CancelFlag& cancel) {
    ModelStore::requireRoom(corpus.modelFolder);
    ModelBundle bundle = ModelTrainer::train(
        corpus.summary, options,
        [&](const TrainingProgress& training) { progress.report(workProgress(training)); }, cancel.token(),
        device.backend());
    cancel.check();

    WorkProgress work;
    work.phase = translatable("saving");
    work.message = Message("Saving the model…");
    work.fraction = 1;
    progress.report(work);
    ModelStore::replace(bundle, corpus.modelFolder, cancel.token());
    return bundle;
}

std::uint64_t keepSounds(const KnownCorpus& corpus, const ModelBundle& bundle, ProgressLine& progress,
                         const CancelFlag& cancel) {
    WorkProgress work;
    work.phase = translatable("saving");
    work.message = Message("Saving the sounds…");
    work.fraction = 1;
    progress.report(work);
    const ClipSounds sounds = ClipSounds::inFolder(bundle, corpus.summary);
    const std::string content = sounds.toKeep(bundle, cancel.token());
    ModelStore::replace(bundle, corpus.modelFolder, cancel.token(), ModelStore::storingPatience,
                        ModelStore::Former::replaced, content);
    return content.size();
}

ModelBundle beforeLearning(const KnownCorpus& corpus, const TrainingOptions& options,
                           network::ChosenDevice& device, ProgressLine& progress, const CancelFlag& cancel) {
    return ModelTrainer::beforeLearning(
        corpus.summary, options,
        [&](const TrainingProgress& training) { progress.report(workProgress(training)); }, cancel.token(),
        device.backend());
}

ModelBundle loadModel(const KnownCorpus& corpus, Console& console) {
    const auto noteDamage = [&] {
        console.note(tr(
            "The stored model cannot be used. To learn the folder again: quillmere-cli train {0} --retrain",
            corpus.arguments));
    };
    try {
        return ModelStore::open(corpus.modelFolder);
    } catch (const CorruptModelError&) {
        noteDamage();
        throw;
    } catch (const DecodingError&) {
        noteDamage();
        throw;
    }
}

ModelBundle storedModel(const KnownCorpus& corpus, Console& console) {
    if (!corpus.hasModel())
        throw Failure("{0} has not been learned as it is now. To learn it: quillmere-cli train {1}",
                      corpus.summary.directory, corpus.arguments);
    return loadModel(corpus, console);
}

ModelBundle loadOrLearn(const KnownCorpus& corpus, network::ChosenDevice& device, Console& console,
                        ProgressLine& progress, const CancelFlag& cancel) {
    if (corpus.hasModel()) return loadModel(corpus, console);
    TrainingOptions options;
    options.steps = info(Quality::standard).steps;
    ModelBundle bundle = learn(corpus, options, device, progress, cancel);
    progress.finish();
    console.print(learnedText(bundle));
    return bundle;
}

void requireWritableFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw FileError(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        throw FileError(folder, std::make_error_code(std::errc::not_a_directory));
    if (access(folder.c_str(), W_OK | X_OK) != 0)
        throw FileError(folder, std::error_code(errno, std::generic_category()));
}

std::string startText(const ModelStart& start) {
    if (start.kind == ModelStart::Kind::headStart) return tr("head start {0}", printable(start.name));
    return tr("the model of {0}", printable(start.name));
}

std::string learnedText(const ModelBundle& bundle) {
    const auto clips = static_cast<std::int64_t>(bundle.metadata.clipNames.size());
    const std::string_view analysis = rawValue(bundle.config.profile);
    const std::string seconds = Text::fixed(bundle.config.clipSeconds(), 1);
    if (!bundle.metadata.start)
        return trCounted(clips, "Learned {0} sample ({1} analysis, {2} s per sample).",
                         "Learned {0} samples ({1} analysis, {2} s per sample).", analysis, seconds);
    return trCounted(clips, "Learned {0} sample ({1} analysis, {2} s per sample), onto {3}.",
                     "Learned {0} samples ({1} analysis, {2} s per sample), onto {3}.", analysis, seconds,
                     startText(*bundle.metadata.start));
}

std::string leftOutText(const KnownCorpus& corpus, const ModelBundle& bundle) {
    const auto total = static_cast<std::int64_t>(corpus.summary.files.size());
    const auto used = static_cast<std::int64_t>(bundle.metadata.clipNames.size());
    if (used >= total) return {};
    return trCounted(total - used, "{0} file was left out; 'quillmere-cli scan {1}' says why.",
                     "{0} files were left out; 'quillmere-cli scan {1}' says why.",
                     shellWord(corpus.summary.directory));
}

}  // namespace quillmere::cli
