#include "QuillmereCLI/Generating.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "QuillmereCLI/Wording.h"

namespace quillmere::cli {
namespace {

// Shorter names first, so that ..._9999.wav precedes ..._10000.wav.
bool nameOrder(const GeneratedSample& a, const GeneratedSample& b) {
    const std::string nameA = a.url.filename().string();
    const std::string nameB = b.url.filename().string();
    return nameA.size() != nameB.size() ? nameA.size() < nameB.size() : nameA < nameB;
}

}  // namespace

void GeneratingReport::report(std::int64_t done) {
    WorkProgress work;
    work.phase = translatable("generating");
    work.message = Message("Generating…");
    work.unit = WorkProgress::Unit::variation;
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

JSON filesJSON(const std::vector<GeneratedSample>& files) {
    JSON list = JSON::array();
    for (const GeneratedSample& file : files) {
        JSON item = JSON::object();
        item["path"] = toJSON(file.url);
        item["seconds"] = file.seconds;
        if (file.origin.detail > 0) item["detail"] = rawValue(file.origin.detailBasis);
        list.push_back(std::move(item));
    }
    return list;
}

std::string wroteText(std::int64_t variations, const std::filesystem::path& folder) {
    return trCounted(variations,
                     "Wrote {0} variation to {1}:", "Wrote {0} variations to {1}:", shownPath(folder));
}

std::string seedText(std::uint64_t seed, bool wasGiven) {
    if (wasGiven) return tr("Seed {0}.", seed);
    return tr("Seed {0}; use --seed {0} to get the same again.", seed);
}

void printFiles(const std::vector<GeneratedSample>& files, Console& console) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(files.size());
    for (const GeneratedSample& file : files)
        rows.push_back({"  " + shownPath(file.url.filename()), duration(file.seconds)});
    for (const std::string& line : table(rows))
        console.print(line);
}

std::vector<GeneratedSample> generateFiles(SampleGenerator& generator, const GenerationRequest& request,
                                           const GenerationHooks& hooks, GeneratingReport& report,
                                           ProgressLine& progress, Console& console,
                                           const CancelFlag& cancel) {
    const std::int64_t before = report.done();
    try {
        std::vector<GeneratedSample> files = generator.generate(
            request, hooks, [&](std::int64_t done, std::int64_t) { report.report(before + done); },
            cancel.token());
        // A cancelled last batch returns what it had written.
        if (static_cast<std::int64_t>(files.size()) < request.count) cancel.check();
        std::sort(files.begin(), files.end(), nameOrder);
        return files;
    } catch (const std::exception&) {
        progress.finish();
        if (report.done() > 0) {
            console.note(trCounted(report.done(), "{0} file was written to {1} before that.",
                                   "{0} files were written to {1} before that.",
                                   shownPath(request.outputDirectory)));
        }
        throw;
    }
}

}  // namespace quillmere::cli
