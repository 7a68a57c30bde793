#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/DetailReport.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ParameterOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Util/Paths.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

struct GenerateOptions {
    CorpusOption corpus;
    std::filesystem::path output;
    std::int64_t count = 10;
    ParameterOptions parameters;
    std::string prefix;
    ComputeOptions compute;
    ModelsOption models;
    bool json = false;

    void addTo(CLI::App& app) {
        corpus.addTo(app);
        addPath(app, "--output", output, "Folder for the new files")->type_name("DIR")->required();
        addWholeNumber(app, "--count", count, {1, 1'000'000}, "How many variations")
            ->default_str(std::to_string(count));
        parameters.addTo(app);
        const auto storePrefix = [this](const std::string& text) {
            if (text.empty()) throwUsageError("--prefix", "must not be empty");
            prefix = text;
        };
        app.add_option_function<std::string>("--prefix", storePrefix, "How the names of the files begin")
            ->type_name("NAME")
            ->default_str("the folder's name");
        compute.addTo(app);
        models.addTo(app);
        addJSON(app, json);
    }
};

// Shorter names first, so that ..._9999.wav precedes ..._10000.wav.
bool nameOrder(const GeneratedSample& a, const GeneratedSample& b) {
    const std::string nameA = a.url.filename().string();
    const std::string nameB = b.url.filename().string();
    return nameA.size() != nameB.size() ? nameA.size() < nameB.size() : nameA < nameB;
}

class GeneratingReport {
public:
    GeneratingReport(ProgressLine& progress, std::int64_t count) : progress_(progress), count_(count) {}

    void report(std::int64_t done) {
        WorkProgress work;
        work.phase = "generating";
        work.message = "Generating…";
        work.unit = "variation";
        work.step = done;
        work.totalSteps = count_;
        work.fraction = static_cast<double>(done) / static_cast<double>(count_);
        if (done > 0) {
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
            work.secondsRemaining =
                elapsed.count() * static_cast<double>(count_ - done) / static_cast<double>(done);
        }
        progress_.report(work);
        done_ = done;
    }
    [[nodiscard]] std::int64_t done() const { return done_; }

private:
    ProgressLine& progress_;
    std::int64_t count_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::int64_t done_ = 0;
};

std::vector<GeneratedSample> generateFiles(SampleGenerator& generator, const GenerationRequest& request,
                                           Console& console, ProgressLine& progress,
                                           const CancelFlag& cancel) {
    GeneratingReport report(progress, request.count);
    report.report(0);
    try {
        std::vector<GeneratedSample> files = generator.generate(
            request, [&](std::int64_t done, std::int64_t) { report.report(done); }, cancel.token());
        // A cancelled last batch returns what it had written.
        if (static_cast<std::int64_t>(files.size()) < request.count) cancel.check();
        std::sort(files.begin(), files.end(), nameOrder);
        return files;
    } catch (const std::exception&) {
        progress.finish();
        if (report.done() > 0) {
            console.note(counted(report.done(), "file was", "files were") + " written to " +
                         shownPath(request.outputDirectory) + " before that.");
        }
        throw;
    }
}

JSON resultJSON(const GenerationRequest& request, const std::vector<GeneratedSample>& files,
                const ProgressLine& progress) {
    JSON result = makeResult("generate");
    result["seed"] = request.seed;
    result["output"] = toJSON(request.outputDirectory);
    result["format"] = rawValue(request.format);
    result["aesthetics"] = toJSON(request.aesthetics);
    JSON list = JSON::array();
    for (const GeneratedSample& file : files) {
        JSON item = JSON::object();
        item["path"] = toJSON(file.url);
        item["seconds"] = file.seconds;
        if (request.detail > 0) item["detail"] = DetailReport::word(file.origin.detailBasis);
        list.push_back(std::move(item));
    }
    result["files"] = std::move(list);
    result["seconds"] = progress.timesJSON();
    return result;
}

void printResult(const GenerationRequest& request, const std::vector<GeneratedSample>& files,
                 bool seedWasGiven, const ProgressLine& progress, Console& console) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(files.size());
    for (const GeneratedSample& file : files)
        rows.push_back({"  " + shownPath(file.url.filename()), duration(file.seconds)});
    console.print("Wrote " + counted(request.count, "variation", "variations") + " to " +
                  shownPath(request.outputDirectory) + ":");
    for (const std::string& line : table(rows))
        console.print(line);
    const std::string seed = std::to_string(request.seed);
    console.print("Seed " + seed + (seedWasGiven ? "." : "; use --seed " + seed + " to get the same again."));
    console.print("Took " + duration(progress.totalSeconds()) + " (" + progress.timesText() + ").");
}

void generate(const GenerateOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    GenerationRequest request;
    request.count = options.count;
    request.outputDirectory = Paths::plain(options.output);
    request.aesthetics = options.parameters.aesthetics(console);
    request.detail = options.parameters.detail();
    request.seed = options.parameters.seed();
    request.format = options.parameters.format();
    if (!options.prefix.empty()) request.namePrefix = options.prefix;

    ProgressLine progress(console);
    const KnownCorpus corpus = findCorpus(options.corpus.folder(), options.models, progress, cancel);
    requireWritableFolder(request.outputDirectory);
    ModelBundle bundle = loadOrLearn(corpus, compute.device(), console, progress, cancel);
    const ClipSounds sounds = soundsFor(request.detail, bundle, corpus);
    SampleGenerator generator(std::move(bundle), compute.device().backend(), sounds);
    const auto files = generateFiles(generator, request, console, progress, cancel);
    progress.finish();
    DetailReport detail(request.detail, sounds);
    for (const GeneratedSample& file : files)
        detail.count(file.origin);
    printResult(request, files, options.parameters.seedWasGiven(), progress, console);
    detail.print(console);
    JSON result = resultJSON(request, files, progress);
    detail.addTo(result);
    console.emit(result);
}

}  // namespace

void addGenerate(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<GenerateOptions>();
    CLI::App* const command =
        app.add_subcommand("generate", "Write new samples; learns the folder first if need be");
    options->addTo(*command);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            generate(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
