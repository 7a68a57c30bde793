#include "QuillmereCLI/RecipeOptions.h"

#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Origin/JournalPreference.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Paths.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {

namespace {

// A preference that cannot be read may well be that there be no journal.
bool isJournalOn(Console& console) {
    try {
        return JournalPreference::isOn();
    } catch (const FileError& error) {
        console.note(
            tr("Note: the journal stays as it is, because it cannot be told whether it is wanted. {0}.",
               printable(Language::text(error.message()))));
        return false;
    }
}

}  // namespace

void RecipeOptions::addTo(CLI::App& app) {
    app.add_flag("--no-journal", noJournal_,
                 tr("Note nowhere how the files were made: 'recipe' and 'verify' will not know them"));
    app.add_flag("--embed-recipe", embedded_, tr("Put its recipe into each file, behind the sound"));
    addPath(app, "--recipes", document_, tr("Append the recipes to this file"))->type_name("FILE.jsonl");
}

RecipeCarriers RecipeOptions::carriers(Console& console) const {
    RecipeCarriers carriers;
    if (!noJournal_ && isJournalOn(console)) carriers.journal = Journal::place();
    carriers.embedded = embedded_;
    if (!document_.empty()) carriers.document = Paths::plain(document_);
    return carriers;
}

RecipeBase recipeBase(network::ChosenDevice& device, const ModelMetadata& model) {
    const network::ComputeDevice& computer = device.device();
    const bool isProcessor = computer.type == network::ComputeDevice::Type::processor;
    return {.device = isProcessor ? deviceProcessor : computer.name(),
            .corpusName = model.corpusName,
            .fingerprint = model.fingerprint,
            .aesthetics = {}};
}

void noteJournalProblem(const RecipeKeeper& keeper, Console& console) {
    noteJournalProblem(keeper.journalProblem(), console);
}

void noteJournalProblem(const std::optional<Message>& problem, Console& console) {
    if (problem) {
        console.note(tr("Note: how the files were made could not be noted everywhere. {0}.",
                        printable(Language::text(*problem))));
    }
}

std::optional<Journal> ownJournal() {
    std::optional<std::filesystem::path> place = Journal::place();
    if (!place) return std::nullopt;
    return Journal(std::move(*place));
}

std::vector<KnownFile> lookUp(const std::vector<std::filesystem::path>& files, const CancelFlag& cancel) {
    const std::optional<Journal> journal = ownJournal();
    return quillmere::lookUp(files, journal ? &*journal : nullptr, cancel.token());
}

std::string blendText(const Recipe& recipe) {
    std::vector<std::string> texts;
    for (const SampleOrigin::Source& source : recipe.sources) {
        const std::string name =
            source.name.empty() ? tr("sample {0}", source.clip + 1) : printable(source.name);
        texts.push_back(tr("{0} % {1}", Text::fixed(100.0 * static_cast<double>(source.weight), 0), name));
    }
    return texts.empty() ? tr("of nothing") : enumeration(texts);
}

CLI::Option* addFiles(CLI::App& app, const std::string& name, std::vector<std::filesystem::path>& target,
                      const std::string& help) {
    const auto store = [name, &target](const std::vector<std::string>& texts) {
        target.clear();
        for (const std::string& text : texts) {
            if (text.empty()) throwUsageError(name, tr("must not be empty"));
            target.emplace_back(text);
        }
    };
    constexpr int any = -1;
    return app.add_option_function<std::vector<std::string>>(name, store, help)
        ->type_name("FILE")
        ->expected(any);
}

}  // namespace quillmere::cli
