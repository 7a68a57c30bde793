#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ProgressLine.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Origin/SoundPrint.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

struct RelativesOptions {
    fs::path file;
    fs::path folder;
    std::int64_t count = 5;
    std::int64_t results = 200;
    ModelsOption models;
    bool json = false;
};

// One sound that the file is compared with.
struct Candidate {
    CorpusFile file;
    std::optional<SoundPrint> print;  // nothing: silent or unreadable
};

struct Relative {
    std::string name;  // of a sample, below its folder; of an earlier result, its path
    double distance = 0;
};

CorpusFile asCorpusFile(const fs::path& file) {
    return {.url = file, .relativePath = file.string()};
}

// Measures the candidates, in parallel; those that cannot be read stay without a print.
void measure(std::vector<Candidate>& candidates, const SoundPrinter& printer, const Message& message,
             ProgressLine& progress, const CancelFlag& cancel) {
    WorkProgress work;
    work.phase = translatable("comparing");
    work.message = message;
    progress.report(work);
    parallelFor(candidates.size(), [&](std::size_t i) {
        throwIfCancelled(cancel.token());
        try {
            candidates[i].print = printer.print(candidates[i].file);
        } catch (const AudioIOError& error) {
            if (error.isSystemTrouble()) throw;
        }
    });
}

std::vector<Relative> nearest(const SoundPrint& sound, const std::vector<Candidate>& candidates,
                              std::int64_t count) {
    std::vector<SoundPrint> prints;
    std::vector<const Candidate*> of;
    for (const Candidate& candidate : candidates) {
        if (!candidate.print) continue;
        prints.push_back(*candidate.print);
        of.push_back(&candidate);
    }
    std::vector<Relative> relatives;
    for (const auto& [position, distance] :
         SoundIndex(prints).nearest(sound, static_cast<std::size_t>(count)))
        relatives.push_back({of[position]->file.relativePath, distance});
    return relatives;
}

bool isSameFile(const fs::path& a, const fs::path& b) {
    std::error_code ignored;  // what is not there is no file
    return fs::equivalent(a, b, ignored);
}

// The folder that was named, or that of the model which made the file.
fs::path corpusOf(const KnownFile& known, const RelativesOptions& options, const CancelFlag& cancel) {
    if (!options.folder.empty()) return ModelStore::corpusPath(options.folder);
    if (!known.problem.empty()) throw Failure("{0}; name a folder to look in with --in", known.problem);
    const Recipe& recipe = known.recipes.front();
    const FoundModel found = findModel(recipe, options.models.root(), cancel.token());
    if (!found.bundle) {
        throw Failure("{0}: {1}; name a folder to look in with --in", known.file,
                      missingModelText(recipe, found, options.models.root()));
    }
    return found.bundle->metadata.corpusPath;
}

std::vector<Candidate> samplesIn(const fs::path& folder, const fs::path& except, const CancelFlag& cancel) {
    std::vector<Candidate> candidates;
    for (CorpusFile& file : Corpus::scan(folder, {}, cancel.token()).files) {
        if (!isSameFile(file.url, except)) candidates.push_back({std::move(file), {}});
    }
    return candidates;
}

// Files that the journal says were made from a folder of that name, as far as they are where it says.
std::vector<Candidate> earlierResults(const std::string& corpusName, const KnownFile& known,
                                      std::int64_t count, const CancelFlag& cancel) {
    std::vector<Candidate> candidates;
    const std::optional<Journal> journal = ownJournal();
    if (!journal || count == 0) return candidates;
    std::set<std::string> names;
    for (const JournalEntry& entry : journal->newest(static_cast<std::size_t>(count), cancel.token())) {
        const bool isItself =
            entry.digests.bytes == known.digests.bytes || isSameFile(entry.file, known.file);
        std::error_code ignored;  // moved or deleted since
        if (isItself || entry.recipe.corpusName != corpusName || !fs::is_regular_file(entry.file, ignored))
            continue;
        if (names.insert(entry.file).second) candidates.push_back({asCorpusFile(entry.file), {}});
    }
    return candidates;
}

std::string verdictText(Kinship kinship, const std::string& name) {
    switch (kinship) {
        case Kinship::copy:
            return tr("Verdict: a copy of {0}.", name);
        case Kinship::close:
            return tr("Verdict: close to {0}.", name);
        case Kinship::fresh:
            return tr("Verdict: new, of the kind of {0}.", name);
        case Kinship::far:
            break;
    }
    return tr("Verdict: far from all of them.");
}

void print(const std::string& title, const std::vector<Relative>& relatives, Console& console) {
    if (relatives.empty()) return;
    console.print(title);
    std::vector<std::vector<std::string>> rows;
    rows.reserve(relatives.size());
    for (const Relative& relative : relatives)
        rows.push_back({"  " + Text::fixed(relative.distance, 1) + " dB", printable(relative.name)});
    for (const std::string& line : table(rows))
        console.print(line);
}

JSON toJSON(const std::vector<Relative>& relatives) {
    JSON list = JSON::array();
    for (const Relative& relative : relatives)
        list.push_back({{"name", relative.name}, {"distance", relative.distance}});
    return list;
}

void findRelatives(const RelativesOptions& options, Console& console, const CancelFlag& cancel) {
    ProgressLine progress(console);
    const KnownFile known = lookUp({options.file}, cancel).front();
    if (known.carrier == KnownFile::Carrier::document && known.problem.empty())
        throw Failure("{0} holds recipes and no sound", known.file);
    const SoundPrinter printer;
    const std::optional<SoundPrint> sound = printer.print(asCorpusFile(options.file));
    if (!sound) throw Failure("{0} is silent", options.file);

    const fs::path folder = corpusOf(known, options, cancel);
    std::vector<Candidate> samples = samplesIn(folder, options.file, cancel);
    measure(samples, printer, Message("Comparing with {0}…", folder.filename()), progress, cancel);
    std::vector<Candidate> results =
        earlierResults(ModelStore::corpusName(folder), known, options.results, cancel);
    measure(results, printer, Message("Comparing with earlier results…"), progress, cancel);
    progress.finish();

    const std::vector<Relative> nearestSamples = nearest(*sound, samples, options.count);
    const std::vector<Relative> nearestResults = nearest(*sound, results, options.count);
    if (nearestSamples.empty()) throw Failure("{0} has no other sound to compare with", folder);
    const Kinship verdict = kinship(nearestSamples.front().distance);
    if (!known.recipes.empty()) console.print(tr("Made of {0}.", blendText(known.recipes.front())));
    print(tr("Nearest samples of {0}:", shownPath(folder)), nearestSamples, console);
    print(tr("Nearest earlier results:"), nearestResults, console);
    console.print(verdictText(verdict, printable(nearestSamples.front().name)));

    JSON result = makeResult("relatives");
    result["path"] = cli::toJSON(options.file);
    result["corpus"] = cli::toJSON(folder);
    result["verdict"] = rawValue(verdict);
    JSON sources = JSON::array();
    if (!known.recipes.empty()) sources = JSON::parse(encodeJSON(known.recipes.front()))["sources"];
    result["sources"] = std::move(sources);
    result["samples"] = toJSON(nearestSamples);
    result["results"] = toJSON(nearestResults);
    console.emit(result);
}

}  // namespace

void addRelatives(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<RelativesOptions>();
    CLI::App* const command =
        app.add_subcommand("relatives", tr("Tell what a sound is made of, and what sounds like it"));
    addPath(*command, "FILE", options->file, tr("A sound, made here or not"))->type_name("")->required();
    addPath(*command, "--in", options->folder, tr("Folder of samples to look in"))
        ->type_name("FOLDER")
        ->default_str(tr("the one it was made from"));
    addWholeNumber(*command, "--count", options->count, {1, 1000}, tr("How many of each kind to show"))
        ->default_str(std::to_string(options->count));
    addWholeNumber(*command, "--results", options->results, {0, 1'000'000},
                   tr("How many of the newest earlier results to look at"))
        ->default_str(std::to_string(options->results));
    options->models.addTo(*command);
    addJSON(*command, options->json);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            findRelatives(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
