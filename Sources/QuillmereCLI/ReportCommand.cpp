#include <memory>
#include <span>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/StartOption.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Origin/ReportPage.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Paths.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

struct ReportCommandOptions {
    CorpusOption corpus;
    std::filesystem::path page;
    std::int64_t examples = 12;
    bool holdsBack = false;
    ComputeOptions compute;
    ModelsOption models;
    bool json = false;

    void addTo(CLI::App& app) {
        corpus.addTo(app);
        addPath(app, "--html", page, tr("Write it as a page with pictures and players, too"))
            ->type_name("FILE.html");
        addWholeNumber(app, "--examples", examples, {0, 1000}, tr("Samples to show on the page, worst first"))
            ->default_str(std::to_string(examples));
        app.add_flag(
            "--hold-back", holdsBack,
            tr("Train a model without one in ten of the samples and tell how it copes with these; takes as "
               "long as training"));
        compute.addTo(app);
        models.addTo(app);
        addJSON(app, json);
    }
};

WorkProgress workProgress(const ReportProgress& report) {
    WorkProgress work;
    switch (report.part) {
        case ReportProgress::Part::reading:
            work.phase = translatable("analysing");
            work.message = Message("Reading the samples…");
            work.unit = WorkProgress::Unit::file;
            break;
        case ReportProgress::Part::comparing:
            work.phase = translatable("comparing");
            work.message = Message("Comparing the samples…");
            work.unit = WorkProgress::Unit::sample;
            break;
        case ReportProgress::Part::training:
            work.phase = translatable("training");
            work.message = Message("Training without some of them…");
            work.unit = WorkProgress::Unit::step;
            break;
    }
    work.step = report.done;
    work.totalSteps = report.total;
    work.fraction =
        report.total > 0 ? static_cast<double>(report.done) / static_cast<double>(report.total) : 0;
    return work;
}

std::string dB(double value) {
    return Text::fixed(value, 1) + " dB";
}

void printTable(const std::string& title, const std::vector<std::vector<std::string>>& rows,
                Console& console) {
    if (rows.empty()) return;
    console.print(title);
    for (const std::string& line : table(rows))
        console.print(line);
}

void print(const ReportCard& card, Console& console) {
    console.print(Language::text(card.verdict()));
    for (const Message& sentence : card.advice())
        console.print("- " + Language::text(sentence));
    if (card.grade() != ReportCard::Grade::good || card.count(ReportCard::Blemish::Kind::cut) > 0)
        console.print(tr("Options of 'train' for this: --continue, --latent-dim, --clip-seconds."));
    console.print(trCounted(card.steps, "Training: {0} step, loss {1}, reconstruction error {2}.",
                            "Training: {0} steps, loss {1}, reconstruction error {2}.",
                            Text::fixed(static_cast<double>(card.finalLoss), 5),
                            Text::fixed(static_cast<double>(card.finalReconstructionError), 5)));
    if (card.heldBack) {
        console.print(trCounted(static_cast<std::int64_t>(card.heldBack->clips),
                                "Held back: {0} sample, {1} off; those learned meanwhile {2}.",
                                "Held back: {0} samples, {1} off; those learned meanwhile {2}.",
                                dB(card.heldBack->heldBackDB), dB(card.heldBack->learnedDB)));
    }
    std::vector<std::vector<std::string>> worst;
    for (const std::size_t clip : card.worst)
        worst.push_back({"  " + dB(card.clips[clip].errorDB), printable(card.clips[clip].name)});
    printTable(tr("Farthest off:"), worst, console);
    std::vector<std::vector<std::string>> pairs;
    for (const ReportCard::Pair& pair : card.nearDuplicates)
        pairs.push_back({"  " + dB(pair.distanceDB), tr("{0} and {1}", printable(card.clips[pair.first].name),
                                                        printable(card.clips[pair.second].name))});
    printTable(tr("Near-duplicates:"), pairs, console);
    std::vector<std::vector<std::string>> outliers;
    for (const std::size_t clip : card.outliers)
        outliers.push_back({"  " + dB(card.clips[clip].nearestDB), printable(card.clips[clip].name)});
    printTable(tr("Unlike all others:"), outliers, console);
    std::vector<std::vector<std::string>> blemishes;
    for (const ReportCard::Blemish& blemish : card.blemishes)
        blemishes.push_back({"  " + trTable(rawValue(blemish.kind)), printable(blemish.name)});
    printTable(tr("Files that were not learned as they are:"), blemishes, console);
}

JSON namesJSON(const ReportCard& card, std::span<const std::size_t> clips) {
    JSON list = JSON::array();
    for (const std::size_t clip : clips)
        list.push_back(card.clips[clip].name);
    return list;
}

JSON clipsJSON(const ReportCard& card) {
    JSON list = JSON::array();
    for (std::size_t i = 0; i < card.clips.size(); ++i) {
        const ReportCard::Clip& clip = card.clips[i];
        JSON item = {{"name", clip.name}, {"error", clip.errorDB}};
        if (clip.nearest != i) {
            item["nearest"] = card.clips[clip.nearest].name;
            item["distance"] = clip.nearestDB;
        }
        list.push_back(std::move(item));
    }
    return list;
}

JSON resultJSON(const ReportCard& card, const KnownCorpus& corpus) {
    JSON result = makeResult("report");
    result["corpus"] = toJSON(corpus.summary.directory);
    result["grade"] = rawValue(card.grade());
    result["verdict"] = card.verdict().english();
    result["advice"] = JSON::array();
    for (const Message& sentence : card.advice())
        result["advice"].push_back(sentence.english());
    result["steps"] = card.steps;
    result["finalLoss"] = card.finalLoss;
    result["finalReconstructionError"] = card.finalReconstructionError;
    result["error"] = card.errorDB;
    result["clips"] = clipsJSON(card);
    result["worst"] = namesJSON(card, card.worst);
    JSON pairs = JSON::array();
    for (const ReportCard::Pair& pair : card.nearDuplicates)
        pairs.push_back({{"first", card.clips[pair.first].name},
                         {"second", card.clips[pair.second].name},
                         {"distance", pair.distanceDB}});
    result["nearDuplicates"] = std::move(pairs);
    result["outliers"] = namesJSON(card, card.outliers);
    JSON blemishes = JSON::array();
    for (const ReportCard::Blemish& blemish : card.blemishes)
        blemishes.push_back(
            {{"name", blemish.name}, {"kind", rawValue(blemish.kind)}, {"reason", blemish.reason.english()}});
    result["files"] = std::move(blemishes);
    if (card.heldBack) {
        result["heldBack"] = {{"clips", card.heldBack->clips},
                              {"learnedError", card.heldBack->learnedDB},
                              {"error", card.heldBack->heldBackDB}};
    }
    return result;
}

void report(const ReportCommandOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    const ModelBundle bundle = storedModel(corpus, console);
    ReportOptions reportOptions{.holdsBack = options.holdsBack};
    if (options.holdsBack && bundle.metadata.start)
        reportOptions.start = openAgain(*bundle.metadata.start, options.models.root());
    const ReportCard card = makeReport(
        bundle, corpus.summary, compute.device().backend(), reportOptions,
        [&](const ReportProgress& work) { progress.report(workProgress(work)); }, cancel.token());
    JSON result = resultJSON(card, corpus);
    if (!options.page.empty()) {
        const std::filesystem::path page = Paths::plain(options.page);
        const std::vector<ReportExample> examples =
            reportExamples(card, bundle, corpus.summary, compute.device().backend(),
                           static_cast<std::size_t>(options.examples), cancel.token());
        const std::string text = reportPage(card, examples, bundle.config);
        writeFileAtomically(page, std::as_bytes(std::span(text)));
        result["page"] = toJSON(page);
    }
    progress.finish();
    print(card, console);
    if (!options.page.empty()) console.print(tr("The page is {0}.", shownPath(Paths::plain(options.page))));
    result["seconds"] = progress.timesJSON();
    console.emit(result);
}

}  // namespace

void addReport(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<ReportCommandOptions>();
    CLI::App* const command =
        app.add_subcommand("report", tr("Tell how well a folder was learned, and what would help"));
    options->addTo(*command);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            report(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
