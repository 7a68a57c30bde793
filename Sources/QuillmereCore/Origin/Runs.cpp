#include "QuillmereCore/Origin/Runs.h"

#include <algorithm>
#include <list>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <variant>

#include "QuillmereCore/Util/JSONDocument.h"

namespace quillmere {
namespace {

// "key":"text" as the journal's lines have it.
std::string member(std::string_view key, const std::string& text) {
    constexpr int onOneLine = -1;
    const json::DoubleJson value = text;
    return "\"" + std::string(key) +
           "\":" + value.dump(onOneLine, ' ', false, json::DoubleJson::error_handler_t::replace);
}

// All that the files of a run have in common.
using Sameness = std::tuple<std::string, std::uint64_t, std::string, double, OutputFormat, std::string,
                            std::vector<std::string>, std::string, std::string>;

Sameness samenessOf(const JournalEntry& entry) {
    const Recipe& recipe = entry.recipe;
    return {recipe.model,
            recipe.seed,
            encodeJSON(recipe.aesthetics),
            recipe.detail,
            recipe.format,
            recipe.lineage ? recipe.lineage->way : std::string(),
            recipe.lineage ? recipe.lineage->parents : std::vector<std::string>(),
            recipe.device,
            entry.file.substr(0, entry.file.rfind('/') + 1)};
}

// The runs as they come out of the lines.
class Grouping {
public:
    explicit Grouping(const RunsLimits& limits) : limits_(limits) {}

    void take(Journal::Line line) {
        if (auto* const set = std::get_if<JournalSet>(&line)) {
            begin({.run = {.files = {}, .set = std::move(*set)}, .files = {}, .indices = {}, .sameness = {}});
        } else {
            takeFile(std::move(std::get<JournalEntry>(line)));
        }
        forgetOldest();
    }

    [[nodiscard]] std::vector<JournalRun> finish() {
        std::vector<JournalRun> runs;
        for (Open& open : runs_) {
            for (File& file : open.files) {
                // A name that was used again is that of the newer file.
                if (newest_.at(file.entry.file) == file.number)
                    open.run.files.push_back(std::move(file.entry));
            }
            std::ranges::stable_sort(open.run.files, {},
                                     [](const JournalEntry& file) { return file.recipe.index; });
            if (open.run.set || !open.run.files.empty()) runs.push_back(std::move(open.run));
        }
        std::ranges::reverse(runs);
        return runs;
    }

private:
    struct File {
        JournalEntry entry;
        std::size_t number = 0;  // in the order of the lines
    };
    struct Open {
        JournalRun run;           // its files come last
        std::vector<File> files;  // as they were written
        std::set<std::int64_t> indices;
        Sameness sameness;
    };
    using Place = std::list<Open>::iterator;

    Place begin(Open open) { return runs_.insert(runs_.end(), std::move(open)); }

    void takeFile(JournalEntry entry) {
        Sameness sameness = samenessOf(entry);
        const auto known = open_.find(sameness);
        // The same once more is another run.
        const bool goesOn = known != open_.end() && !known->second->indices.contains(entry.recipe.index);
        const Place run =
            goesOn
                ? known->second
                : begin({.run = {.files = {}, .set = {}}, .files = {}, .indices = {}, .sameness = sameness});
        open_.insert_or_assign(std::move(sameness), run);
        run->indices.insert(entry.recipe.index);
        newest_.insert_or_assign(entry.file, ++lines_);
        run->files.push_back({std::move(entry), lines_});
        ++files_;
    }

    void forgetOldest() {
        while (runs_.size() > limits_.runs || (files_ > limits_.files && runs_.size() > 1)) {
            const Place oldest = runs_.begin();
            files_ -= oldest->files.size();
            const auto known = open_.find(oldest->sameness);
            if (known != open_.end() && known->second == oldest) open_.erase(known);
            runs_.erase(oldest);
        }
    }

    const RunsLimits limits_;
    std::list<Open> runs_;  // oldest first
    std::map<Sameness, Place> open_;
    std::map<std::string, std::size_t> newest_;  // by its path: the number of the newest file
    std::size_t lines_ = 0;
    std::size_t files_ = 0;
};

}  // namespace

const std::string& JournalRun::made() const {
    return set ? set->made : std::ranges::min_element(files, {}, &JournalEntry::written)->written;
}

std::vector<JournalRun> runsOf(const RunsCorpus& corpus, const Journal& journal, const RunsLimits& limits,
                               const std::stop_token& stop) {
    const std::string name = member("corpus", corpus.name);
    const std::string fingerprint = member("fingerprint", corpus.fingerprint);
    const std::string model = member("identity", corpus.model);
    Grouping runs(limits);
    journal.read(
        [&](std::string_view line) {
            return line.find(name) != std::string_view::npos ||
                   (!corpus.fingerprint.empty() && line.find(fingerprint) != std::string_view::npos) ||
                   (!corpus.model.empty() && line.find(model) != std::string_view::npos);
        },
        [&](Journal::Line line) { runs.take(std::move(line)); }, stop);
    return runs.finish();
}

}  // namespace quillmere
