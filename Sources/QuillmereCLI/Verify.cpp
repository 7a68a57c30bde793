#include <algorithm>
#include <map>
#include <memory>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ProgressLine.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Origin/Verification.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

struct VerifyOptions {
    std::vector<fs::path> paths;
    ComputeOptions compute{"cpu"};  // whose samples are the reference
    ModelsOption models;
    bool json = false;
};

// The sounds below a folder by their names, hidden ones left out. Throws fs::filesystem_error.
std::vector<fs::path> soundsIn(const fs::path& folder) {
    std::vector<fs::path> files;
    for (auto entry = fs::recursive_directory_iterator(folder); entry != fs::recursive_directory_iterator();
         ++entry) {
        const bool isHidden = entry->path().filename().string().starts_with('.');
        if (isHidden && entry->is_directory()) entry.disable_recursion_pending();
        const std::string extension = Text::lowercase(Text::utf8(entry->path().extension()));
        if (isHidden || extension.empty() || !entry->is_regular_file()) continue;
        if (AudioIO::supportedExtensions().contains(extension.substr(1))) files.push_back(entry->path());
    }
    std::ranges::sort(files);
    return files;
}

struct Selection {
    std::vector<fs::path> files;
    std::vector<bool> isNamed;  // on the command line, and not by its folder
};

Selection select(const std::vector<fs::path>& paths) {
    Selection selection;
    for (const fs::path& path : paths) {
        if (!fs::is_directory(path)) {
            selection.files.push_back(path);
            selection.isNamed.push_back(true);
            continue;
        }
        for (fs::path& file : soundsIn(path)) {
            selection.files.push_back(std::move(file));
            selection.isNamed.push_back(false);
        }
    }
    return selection;
}

// A document has recipes, but no sound to compare with.
void refuseDocument(KnownFile& known) {
    if (!known.problem.empty() || known.carrier != KnownFile::Carrier::document) return;
    known.problem = Message("{0} holds recipes and no sound", known.file);
}

std::string verdictText(const Verification& result) {
    switch (result.verdict) {
        case Verdict::sameBytes:
            return tr("same bytes");
        case Verdict::sameSamples:
            return tr("same samples in another container");
        case Verdict::different:
            return tr("different: {0}", result.reason);
        case Verdict::modelMissing:
        case Verdict::modelChanged:
        case Verdict::unusable:
            return tr("cannot be made again: {0}", result.reason);
        case Verdict::unknown:
            break;
    }
    return tr("nothing is known of it");
}

JSON toJSON(const Verification& result) {
    JSON item = JSON::object();
    item["path"] = cli::toJSON(result.file);
    item["verdict"] = rawValue(result.verdict);
    if (result.firstDifference) item["firstDifference"] = *result.firstDifference;
    if (!result.reason.empty()) item["reason"] = result.reason.english();
    if (result.recipe) item["device"] = result.recipe->device;
    return item;
}

// Whether the result is what the command fails for: sounds that are in a folder and were not made here are
// none of its business.
bool isFailure(const Verification& result, bool isNamed) {
    return !result.isSame() && (isNamed || result.verdict != Verdict::unknown);
}

void report(const std::vector<Verification>& results, const Selection& selection, Console& console) {
    JSON list = JSON::array();
    std::map<Verdict, std::int64_t> counts;
    std::int64_t failures = 0;
    for (std::size_t i = 0; i < results.size(); ++i) {
        console.print(tr("{0}: {1}", shownPath(results[i].file), printable(verdictText(results[i]))));
        list.push_back(toJSON(results[i]));
        ++counts[results[i].verdict];
        if (isFailure(results[i], selection.isNamed[i])) ++failures;
    }
    const std::int64_t same = counts[Verdict::sameBytes] + counts[Verdict::sameSamples];
    console.print(tr("{0}, {1}, {2}.", trCounted(same, "{0} file is as made", "{0} files are as made"),
                     trCounted(failures, "{0} is not", "{0} are not"),
                     trCounted(counts[Verdict::unknown], "{0} file is unknown", "{0} files are unknown")));
    JSON result = makeResult("verify");
    JSON totals = JSON::object();
    for (const auto& [verdict, count] : counts) {
        if (count > 0) totals[std::string(rawValue(verdict))] = count;
    }
    result["counts"] = std::move(totals);
    result["files"] = std::move(list);
    console.emit(result);
    if (failures > 0)
        throw Failure(Message::counted(failures, "{0} file is not what the recipe gives.",
                                       "{0} files are not what the recipe gives."));
}

void verifyFiles(const VerifyOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    const Selection selection = select(options.paths);
    std::vector<KnownFile> known = lookUp(selection.files, cancel);
    std::ranges::for_each(known, refuseDocument);
    ProgressLine progress(console);
    const auto tell = [&](std::size_t done, std::size_t total) {
        WorkProgress work;
        work.phase = translatable("verifying");
        work.message = Message("Verifying…");
        work.unit = WorkProgress::Unit::file;
        work.step = static_cast<std::int64_t>(done);
        work.totalSteps = static_cast<std::int64_t>(total);
        work.fraction = static_cast<double>(done) / static_cast<double>(total);
        progress.report(work);
    };
    const std::vector<Verification> results =
        verify(known, options.models.root(), compute.device().backend(), tell, cancel.token());
    progress.finish();
    report(results, selection, console);
}

}  // namespace

void addVerify(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<VerifyOptions>();
    CLI::App* const command = app.add_subcommand(
        "verify", tr("Make files again and compare; tells whether they are as they were made"));
    addFiles(*command, "FILE", options->paths, tr("Sounds, or folders of them"))
        ->type_name("...")
        ->required();
    options->compute.addTo(*command);
    options->models.addTo(*command);
    addJSON(*command, options->json);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            verifyFiles(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
