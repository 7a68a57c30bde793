#include <cmath>
#include <memory>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

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
    const Preset* nearest = nullptr;
    std::vector<std::string> fewest;
    for (const Preset& preset : Preset::all()) {
        std::vector<std::string> texts = differences(preset);
        if (nearest == nullptr || texts.size() < fewest.size()) {
            nearest = &preset;
            fewest = std::move(texts);
        }
    }
    const std::string name = "the preset " + std::string(nearest->name);
    return fewest.empty() ? name : name + " with " + enumeration(fewest);
}

std::string lineageText(const Lineage& lineage) {
    std::string text = printable(lineage.way);
    for (const auto& [name, value] : lineage.values)
        text += " " + printable(name) + " " + Text::fixed(value, 2);
    if (!lineage.parents.empty()) text += ", from " + counted(std::ssize(lineage.parents), "file", "files");
    return text;
}

std::string fitText(const SoundFit& fit) {
    const double gain = 20 * std::log10(static_cast<double>(fit.gain));
    return "to " + counted(static_cast<std::int64_t>(fit.samples), "sample", "samples") + " and by " +
           Text::fixed(gain, 1) + " dB";
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
    if (known.carrier == KnownFile::Carrier::chunk) return "the file itself";
    if (known.carrier == KnownFile::Carrier::document) return "this document";
    return std::string("the journal, by its ") + (isByteForByte(known) ? "bytes" : "sound") + ": written " +
           printable(known.entry->written) + " as " + printable(known.entry->file);
}

void print(const KnownFile& known, const Recipe& recipe, Console& console) {
    const auto line = [&](std::string_view name, const std::string& text) {
        console.print("  " + padded(name, 10) + " " + text);
    };
    line("known from", knownFromText(known));
    line("made by", "quillmere " + printable(recipe.program) + " on " +
                        (recipe.device == deviceProcessor ? "the processor" : printable(recipe.device)));
    line("model", printable(recipe.corpusName) + ", " + printable(recipe.model.substr(0, 16)) + "…");
    line("seed", std::to_string(recipe.seed) + ", variation " + std::to_string(recipe.index + 1));
    line("character", characterText(recipe.aesthetics));
    line("blend", blendText(recipe));
    if (recipe.lineage) line("way", lineageText(*recipe.lineage));
    if (recipe.fit) line("fitted", fitText(*recipe.fit));
    line("format", std::string(label(recipe.format)));
}

void print(const KnownFile& known, Console& console) {
    if (known.recipes.empty()) return;
    console.print(shownPath(known.file));
    for (const Recipe& recipe : known.recipes)
        print(known, recipe, console);
    console.print("  again      quillmere-cli generate --recipe " + shellWord(known.file) +
                  " --output FOLDER");
}

JSON toJSON(const KnownFile& known) {
    JSON item = JSON::object();
    item["path"] = cli::toJSON(known.file);
    if (!known.problem.empty()) {
        item["problem"] = known.problem;
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
        if (!known.problem.empty()) console.note(printable(known.problem));
    }
    throw Failure(counted(problems, "file has", "files have") + " no recipe that can be read.");
}

}  // namespace

void addRecipe(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<RecipeCommandOptions>();
    CLI::App* const command = app.add_subcommand("recipe", "Tell how a file was made");
    addFiles(*command, "FILE", options->files, "Sounds, or documents of recipes")
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
