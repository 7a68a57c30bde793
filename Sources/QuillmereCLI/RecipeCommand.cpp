#include <cmath>
#include <memory>
#include <span>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

constexpr std::size_t labelColumns = 11;

struct RecipeCommandOptions {
    std::vector<std::filesystem::path> files;
    bool json = false;
};

// "the preset Wild", "the preset Balanced with pitch -3.0 st and drive 6.0 dB": the preset with the fewest
// differences, the first of several.
std::string characterText(const Aesthetics& aesthetics) {
    const auto differences = [&](const Preset& preset) {
        std::vector<std::string> texts;
        for (const ParameterSpec& spec : Aesthetics::specs()) {
            const double value = spec.value(aesthetics);
            if (value != spec.value(preset.aesthetics))
                texts.push_back(std::string(spec.id) + " " + spec.format(value));
        }
        return texts;
    };
    const std::span<const Preset> presets = Preset::all();
    const Preset* nearest = &presets.front();
    std::vector<std::string> fewest = differences(*nearest);
    for (const Preset& preset : presets) {
        std::vector<std::string> texts = differences(preset);
        if (texts.size() < fewest.size()) {
            nearest = &preset;
            fewest = std::move(texts);
        }
    }
    if (fewest.empty()) return tr("the preset {0}", nearest->name);
    return tr("the preset {0} with {1}", nearest->name, enumeration(fewest));
}

std::string lineageText(const Lineage& lineage) {
    std::string text = printable(lineage.way);
    for (const auto& [name, value] : lineage.values)
        text += " " + printable(name) + " " + Text::fixed(value, 2);
    if (lineage.parents.empty()) return text;
    return trCounted(std::ssize(lineage.parents), "{1}, from {0} file", "{1}, from {0} files", text);
}

std::string fitText(const SoundFit& fit) {
    const double gain = 20 * std::log10(static_cast<double>(fit.gain));
    return trCounted(static_cast<std::int64_t>(fit.samples), "to {0} sample and by {1} dB",
                     "to {0} samples and by {1} dB", Text::fixed(gain, 1));
}

std::string_view rawValue(KnownFile::Carrier carrier) {
    switch (carrier) {
        case KnownFile::Carrier::chunk:
            return "file";
        case KnownFile::Carrier::journal:
            return "journal";
        case KnownFile::Carrier::document:
            break;
    }
    return "document";
}

bool isByteForByte(const KnownFile& known) {
    return known.entry && known.entry->digests.bytes == known.digests.bytes;
}

std::string knownFromText(const KnownFile& known) {
    if (known.carrier == KnownFile::Carrier::chunk) return tr("the file itself");
    if (known.carrier == KnownFile::Carrier::document) return tr("this document");
    const std::string written = printable(known.entry->written);
    const std::string file = printable(known.entry->file);
    return isByteForByte(known) ? tr("the journal, by its bytes: written {0} as {1}", written, file)
                                : tr("the journal, by its sound: written {0} as {1}", written, file);
}

void print(const KnownFile& known, const Recipe& recipe, Console& console) {
    const auto line = [&](const std::string& name, const std::string& text) {
        console.print("  " + labelled(name, labelColumns, text));
    };
    line(tr("known from"), knownFromText(known));
    const std::string program = printable(recipe.program);
    line(tr("made by"), recipe.device == deviceProcessor
                            ? tr("quillmere {0} on the processor", program)
                            : tr("quillmere {0} on {1}", program, printable(recipe.device)));
    line(tr("model"),
         tr("{0}, {1}", printable(recipe.corpusName), printable(recipe.model.substr(0, 16)) + "…"));
    line(tr("seed"), tr("{0}, variation {1}", recipe.seed, recipe.index + 1));
    line(tr("character"), characterText(recipe.aesthetics));
    line(tr("blend"), blendText(recipe));
    if (recipe.lineage) line(tr("way"), lineageText(*recipe.lineage));
    if (recipe.fit) line(tr("fitted"), fitText(*recipe.fit));
    line(tr("format"), std::string(label(recipe.format)));
}

void print(const KnownFile& known, Console& console) {
    if (known.recipes.empty()) return;
    console.print(shownPath(known.file));
    for (const Recipe& recipe : known.recipes)
        print(known, recipe, console);
    console.print("  " +
                  labelled(tr("again"), labelColumns,
                           "quillmere-cli generate --recipe " + shellWord(known.file) + " --output FOLDER"));
}

JSON toJSON(const KnownFile& known) {
    JSON item = JSON::object();
    item["path"] = cli::toJSON(known.file);
    if (!known.problem.empty()) {
        item["problem"] = known.problem.english();
        return item;
    }
    item["knownFrom"] = rawValue(known.carrier);
    if (known.entry) {
        item["sameBytes"] = isByteForByte(known);
        item["written"] = known.entry->written;
        item["writtenAs"] = known.entry->file;
    }
    JSON recipes = JSON::array();
    for (const Recipe& recipe : known.recipes)
        recipes.push_back(JSON::parse(encodeJSON(recipe)));
    item["recipes"] = std::move(recipes);
    return item;
}

void showRecipes(const RecipeCommandOptions& options, Console& console, const CancelFlag& cancel) {
    const std::vector<KnownFile> files = lookUp(options.files, cancel);
    JSON list = JSON::array();
    std::int64_t problems = 0;
    for (const KnownFile& known : files) {
        print(known, console);
        list.push_back(toJSON(known));
        if (!known.problem.empty()) ++problems;
    }
    JSON result = makeResult("recipe");
    result["files"] = std::move(list);
    console.emit(result);
    if (problems == 0) return;
    if (files.size() == 1) throw Failure(files.front().problem);
    for (const KnownFile& known : files) {
        if (!known.problem.empty()) console.note(printable(Language::text(known.problem)));
    }
    throw Failure(Message::counted(problems, "{0} file has no recipe that can be read.",
                                   "{0} files have no recipe that can be read."));
}

}  // namespace

void addRecipe(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<RecipeCommandOptions>();
    CLI::App* const command = app.add_subcommand("recipe", tr("Tell how a file was made"));
    addFiles(*command, "FILE", options->files, tr("Sounds, or documents of recipes"))
        ->type_name("...")
        ->required();
    addJSON(*command, options->json);
    command->callback([options, &invocation] {
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            showRecipes(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
