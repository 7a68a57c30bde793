#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Generating.h"
#include "QuillmereCLI/KnownModels.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Origin/Kit.h"
#include "QuillmereCore/Origin/KitFolder.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

namespace fs = std::filesystem;

struct KitOptions {
    std::vector<fs::path> files;
    fs::path output;
    std::string name = "Kit";
    std::int64_t count = Kit::Size().count;
    std::int64_t layers = Kit::Size().layers;
    std::optional<double> closeness;
    std::optional<std::uint64_t> seed;
    RecipeOptions recipes;
    ComputeOptions compute;
    ModelsOption models;
    bool json = false;

    void addTo(CLI::App& app) {
        addFiles(app, "FILE", files, tr("Sounds that were made here, one for each key"))
            ->type_name("...")
            ->required();
        addPath(app, "--output", output, tr("Folder in which the kit's own folder is made"))
            ->type_name("DIR")
            ->required();
        const auto storeName = [this](const std::string& text) {
            if (Kit::plainName(text).find_first_not_of("._") == std::string::npos)
                throwUsageError("--name", tr("must have a letter or a digit"));
            name = text;
        };
        app.add_option_function<std::string>("--name", storeName, tr("What the kit is called"))
            ->type_name("NAME")
            ->default_str(name);
        addWholeNumber(app, "--count", count, {1, Kit::mostSounds},
                       tr("Sounds that take turns on each key, the chosen one among them"))
            ->default_str(std::to_string(count));
        addReal(app, "--close", closeness, {0, 1}, tr("How close to the chosen one: 1 at it, 0 far and wide"))
            ->default_str("0.8");
        addWholeNumber(app, "--layers", layers, {1, Kit::mostSounds},
                       tr("Layers of velocity, each with so many sounds, the softest at the bottom"))
            ->default_str(std::to_string(layers));
        addSeed(app, seed, tr("The same number gives the same kit"))->default_str(tr("a fresh one"));
        recipes.addTo(app);
        compute.addTo(app);
        models.addTo(app);
        addJSON(app, json);
    }

    void check() const {
        if (size().sounds() > Kit::mostSounds)
            throwUsageError(
                "--layers",
                tr("times --count must be {0} at most: an instrument has no room for more", Kit::mostSounds));
        if (files.size() > Kit::mostInstruments)
            throwUsageError("FILE",
                            tr("may be given {0} times: there are no more keys", Kit::mostInstruments));
    }

    [[nodiscard]] Kit::Size size() const {
        return {.count = count, .layers = layers, .closeness = closeness.value_or(Kit::Size().closeness)};
    }
};

std::uint64_t freshSeed() {
    std::random_device device;
    return (static_cast<std::uint64_t>(device()) << 32U) | device();
}

// A sound of which the kit is to have variations.
struct Chosen {
    RecipeOrder order;
    std::vector<std::string> parents;  // its digest, if it is a file of its own

    [[nodiscard]] KitFolder::Chosen forFolder() const {
        return {.source = order.source, .recipe = order.recipe, .parents = parents};
    }
};

// A file of recipes has one for each.
std::vector<Chosen> chosenSounds(const KitOptions& options, const CancelFlag& cancel) {
    std::vector<Chosen> chosen;
    for (const KnownFile& known : lookUpAll(options.files, cancel)) {
        std::vector<std::string> parents;
        if (!known.digests.bytes.empty()) parents.push_back(known.digests.bytes);
        for (const Recipe& recipe : known.recipes)
            chosen.push_back({{known.file, recipe}, parents});
    }
    if (chosen.size() > Kit::mostInstruments)
        throw Failure(
            Message::counted(std::ssize(chosen), "The files have {0} sounds; a kit has keys for {1}.",
                             "The files have {0} sounds; a kit has keys for {1}.", Kit::mostInstruments));
    return chosen;
}

JSON instrumentsJSON(const Kit::Description& kit) {
    JSON list = JSON::array();
    for (std::size_t i = 0; i < kit.instruments.size(); ++i) {
        JSON layers = JSON::array();
        for (std::size_t layer = 0; layer < kit.instruments[i].layers.size(); ++layer) {
            const auto [low, high] = Kit::velocities(layer, kit.instruments[i].layers.size());
            layers.push_back({{"low", low}, {"high", high}, {"files", kit.instruments[i].layers[layer]}});
        }
        list.push_back({{"name", kit.instruments[i].name},
                        {"key", Kit::lowestKey + static_cast<int>(i)},
                        {"layers", std::move(layers)}});
    }
    return list;
}

void makeKit(const KitOptions& options, Console& console, const CancelFlag& cancel) {
    auto compute = options.compute.begin(GPU::shared().machine(), console);
    const std::vector<Chosen> chosen = chosenSounds(options, cancel);
    KnownModels models(options.models.root(), compute.device());
    for (const Chosen& one : chosen)
        (void)models.of(one.order, cancel);
    const std::uint64_t seed = options.seed ? *options.seed : freshSeed();
    ProgressLine progress(console);
    GeneratingReport report(progress, std::ssize(chosen) * options.size().sounds());
    KitFolder kit({.parent = options.output,
                   .name = options.name,
                   .size = options.size(),
                   .seed = seed,
                   .carriers = options.recipes.carriers(console)},
                  [&](std::size_t files) { report.report(static_cast<std::int64_t>(files)); });
    kit.requireNew();
    requireWritableFolder(kit.folder());
    report.report(0);
    for (const Chosen& one : chosen) {
        cancel.check();
        SampleGenerator& generator = models.of(one.order, cancel);
        const std::string device = recipeBase(compute.device(), generator.bundle().metadata).device;
        kit.addInstrument(one.forFolder(), generator, device, cancel.token());
    }
    kit.finish();
    noteJournalProblem(kit.journalProblem(), console);
    progress.finish();

    const std::string plain = Kit::plainName(options.name);
    console.print(trCounted(std::ssize(kit.files()),
                            "Wrote {0} sound on {1} to {2}:", "Wrote {0} sounds on {1} to {2}:",
                            trCounted(std::ssize(chosen), "{0} key", "{0} keys"), shownPath(kit.folder())));
    console.print("  " + plain + ".sfz  " + tr("for samplers that read SFZ"));
    console.print("  drumkit.xml  " + tr("for Hydrogen"));
    console.print(tr("Seed {0}.", seed));

    JSON result = makeResult("kit");
    result["seed"] = seed;
    result["output"] = toJSON(kit.folder());
    result["sfz"] = toJSON(kit.folder() / (plain + ".sfz"));
    result["hydrogen"] = toJSON(kit.folder() / "drumkit.xml");
    result["instruments"] = instrumentsJSON(kit.description());
    result["files"] = filesJSON(kit.files());
    result["seconds"] = progress.timesJSON();
    console.emit(result);
}

}  // namespace

void addKit(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<KitOptions>();
    CLI::App* const command =
        app.add_subcommand("kit", tr("Make an instrument for samplers out of sounds and close variations"));
    options->addTo(*command);
    command->callback([options, &invocation] {
        options->check();
        invocation.json = options->json;
        invocation.action = [options](Console& console, const CancelFlag& cancel) {
            makeKit(*options, console, cancel);
        };
    });
}

}  // namespace quillmere::cli
