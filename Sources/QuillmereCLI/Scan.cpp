#include <algorithm>
#include <iterator>
#include <memory>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Model/CorpusReport.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

struct ScanOptions {
    CorpusOption corpus;
    ModelsOption models;
    bool json = false;
};

std::string sampleRatesText(const CorpusSummary& summary) {
    std::vector<std::string> rates;
    for (const auto& [rate, count] : summary.sampleRates)
        rates.push_back(trCounted(count, "{1} Hz ({0} file)", "{1} Hz ({0} files)", rate));
    return enumeration(rates);
}

std::string_view useName(FileFate::Use use) {
    switch (use) {
        case FileFate::Use::whole:
            return "whole";
        case FileFate::Use::cut:
            return "cut";
        case FileFate::Use::silent:
            return "silent";
        case FileFate::Use::unreadable:
            return "unreadable";
    }
    fatal("unknown use of a file");
}

// A file that is longer by less than the last digit shown is not said to be cut at its own length.
std::string cutText(double clipSeconds, double fileSeconds) {
    const std::string clip = duration(clipSeconds);
    const std::string file = duration(fileSeconds);
    return clip == file ? tr("cut at {0}", clip) : tr("cut at {0} of {1}", clip, file);
}

std::string fateText(const FileFate& fate, double clipSeconds) {
    std::vector<std::string> parts;
    switch (fate.use) {
        case FileFate::Use::whole:
            break;
        case FileFate::Use::cut:
            parts.push_back(cutText(clipSeconds, fate.seconds));
            break;
        case FileFate::Use::silent:
            parts.emplace_back(tr("left out: silent"));
            break;
        case FileFate::Use::unreadable:
            parts.push_back(tr("left out: {0}", printable(Language::text(fate.reason))));
            break;
    }
    if (fate.damage.isTruncated) parts.emplace_back(tr("ends before it should"));
    if (fate.damage.silentSeconds > 0) {
        parts.push_back(tr("damaged: {0} ms of silence for lost sound",
                           Text::fixed(1000 * fate.damage.silentSeconds, 0)));
    }
    if (fate.duplicateOf) parts.push_back(tr("the same file as {0}", printable(*fate.duplicateOf)));
    return enumeration(parts);
}

bool isUsable(const FileFate& fate) {
    return fate.use == FileFate::Use::whole || fate.use == FileFate::Use::cut;
}

std::vector<FileFate> notUsedAsTheyAre(const CorpusReport& report) {
    std::vector<FileFate> fates;
    std::copy_if(report.files.begin(), report.files.end(), std::back_inserter(fates),
                 [](const FileFate& fate) { return !fate.isUsedAsItIs(); });
    return fates;
}

std::string countText(const CorpusSummary& summary) {
    const std::string length = duration(summary.totalSeconds);
    if (summary.unreadable == 0) return tr("{0}, {1} in all", summary.fileCount(), length);
    return tr("{0}, {1} in all, {2}", summary.fileCount(), length,
              trCounted(summary.unreadable, "{0} unreadable", "{0} unreadable"));
}

void print(const KnownCorpus& corpus, const CorpusReport& report, Console& console) {
    const CorpusSummary& summary = corpus.summary;
    const auto row = [&](const std::string& label, const std::string& text) {
        constexpr std::size_t labelColumns = 13;
        console.print("  " + labelled(label, labelColumns, text));
    };
    console.print(shownPath(summary.directory));
    row(tr("samples"), countText(summary));
    row(tr("sample rate"),
        summary.sampleRates.size() > 1
            ? tr("{0} Hz; found: {1}", summary.dominantSampleRate(), sampleRatesText(summary))
            : tr("{0} Hz", summary.dominantSampleRate()));
    row(tr("clip length"), tr("{0} suggested", duration(summary.suggestedClipSeconds())));
    if (report.clipSeconds > 0)
        row(tr("training"),
            tr("{0} analysis, {1} per sample", rawValue(report.profile), duration(report.clipSeconds)));
    row(tr("fingerprint"), summary.fingerprint());
    row(tr("model"), corpus.hasModel() ? tr("stored in {0}", shownPath(corpus.modelFolder))
                                       : tr("none yet; it would be {0}", shownPath(corpus.modelFolder)));

    std::vector<std::vector<std::string>> rows;
    for (const FileFate& fate : notUsedAsTheyAre(report))
        rows.push_back({"  " + printable(fate.name), fateText(fate, report.clipSeconds)});
    if (!rows.empty()) console.print(tr("Not used as they are:"));
    for (const std::string& line : table(rows))
        console.print(line);
    if (!summary.passedOver.empty()) console.print(tr("Not looked into:"));
    for (const PassedOver& folder : summary.passedOver)
        console.print("  " + tr("{0}: {1}", printable(folder.folder), folder.reason));
}

JSON toJSON(const FileFate& fate) {
    JSON item = JSON::object();
    item["path"] = fate.name;
    item["use"] = useName(fate.use);
    if (fate.use == FileFate::Use::unreadable) item["reason"] = fate.reason.english();
    item["seconds"] = fate.seconds;
    if (fate.damage.isTruncated) item["truncated"] = true;
    if (fate.damage.silentSeconds > 0) item["silentSeconds"] = fate.damage.silentSeconds;
    if (fate.duplicateOf) item["duplicateOf"] = *fate.duplicateOf;
    return item;
}

JSON resultJSON(const KnownCorpus& corpus, const CorpusReport& report) {
    const CorpusSummary& summary = corpus.summary;
    JSON rates = JSON::object();
    for (const auto& [rate, count] : summary.sampleRates)
        rates[std::to_string(rate)] = count;
    JSON files = JSON::array();
    for (const FileFate& fate : notUsedAsTheyAre(report))
        files.push_back(toJSON(fate));
    JSON passedOver = JSON::array();
    for (const PassedOver& folder : summary.passedOver)
        passedOver.push_back(JSON{{"folder", folder.folder}, {"reason", folder.reason.english()}});
    JSON result = makeResult("scan");
    result["corpus"] = cli::toJSON(summary.directory);
    result["fileCount"] = summary.fileCount();
    result["unreadable"] = summary.unreadable;
    result["totalSeconds"] = summary.totalSeconds;
    result["sampleRates"] = std::move(rates);
    result["dominantSampleRate"] = summary.dominantSampleRate();
    result["suggestedClipSeconds"] = summary.suggestedClipSeconds();
    result["analysis"] = rawValue(report.profile);
    result["clipSeconds"] = report.clipSeconds;
    result["fingerprint"] = summary.fingerprint();
    result["modelFolder"] = cli::toJSON(corpus.modelFolder);
    result["modelStored"] = corpus.hasModel();
    result["files"] = std::move(files);
    result["passedOver"] = std::move(passedOver);
    return result;
}

CorpusReport inspect(const KnownCorpus& corpus, ProgressLine& progress, const CancelFlag& cancel) {
    WorkProgress work;
    work.phase = translatable("inspecting");
    work.message =
        Message::counted(corpus.summary.fileCount(), "Decoding {0} sample…", "Decoding {0} samples…");
    progress.report(work);
    return Corpus::inspect(corpus.summary, cancel.token());
}

void scan(const ScanOptions& options, Console& console, const CancelFlag& cancel) {
    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    const CorpusReport report = inspect(corpus, progress, cancel);
    progress.finish();
    console.emit(resultJSON(corpus, report));
    if (corpus.summary.files.empty()) throw Failure("No audio files found in this folder.");
    print(corpus, report, console);
    if (std::none_of(report.files.begin(), report.files.end(), isUsable))
        throw TrainingError(TrainingError::Kind::noUsableAudio);
}

}  // namespace

void addScan(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<ScanOptions>();
    CLI::App* const command =
        app.add_subcommand("scan", tr("Look at a folder of samples without learning it"));
    options->corpus.addTo(*command);
    options->models.addTo(*command);
    addJSON(*command, options->json);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            scan(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
