#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <system_error>
#include <utility>

#include "QuillmereCLI/Commands.h"
#include "QuillmereCLI/Generating.h"
#include "QuillmereCLI/KnownModels.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/RecipeOptions.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Generate/SoundFile.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Origin/Kit.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Paths.h"
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
        addFiles(app, "FILE", files, "Sounds that were made here, one for each key")
            ->type_name("...")
            ->required();
        addPath(app, "--output", output, "Folder in which the kit's own folder is made")
            ->type_name("DIR")
            ->required();
        const auto storeName = [this](const std::string& text) {
            if (Kit::plainName(text).find_first_not_of("._") == std::string::npos)
                throwUsageError("--name", "must have a letter or a digit");
            name = text;
        };
        app.add_option_function<std::string>("--name", storeName, "What the kit is called")
            ->type_name("NAME")
            ->default_str(name);
        addWholeNumber(app, "--count", count, {1, Kit::mostSounds},
                       "Sounds that take turns on each key, the chosen one among them")
            ->default_str(std::to_string(count));
        addReal(app, "--close", closeness, {0, 1}, "How close to the chosen one: 1 at it, 0 far and wide")
            ->default_str("0.8");
        addWholeNumber(app, "--layers", layers, {1, Kit::mostSounds},
                       "Layers of velocity, each with so many sounds, the softest at the bottom")
            ->default_str(std::to_string(layers));
        addSeed(app, seed, "The same number gives the same kit")->default_str("a fresh one");
        recipes.addTo(app);
        compute.addTo(app);
        models.addTo(app);
        addJSON(app, json);
    }

    void check() const {
        if (size().sounds() > Kit::mostSounds)
            throwUsageError("--layers", "times --count must be " + std::to_string(Kit::mostSounds) +
                                            " at most: an instrument has no room for more");
        if (files.size() > Kit::mostInstruments)
            throwUsageError("FILE", "may be given " + std::to_string(Kit::mostInstruments) +
                                        " times: there are no more keys");
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
        throw Failure("The files have " + std::to_string(chosen.size()) + " sounds; a kit has keys for " +
                      std::to_string(Kit::mostInstruments) + ".");
    return chosen;
}

// A new folder, or one that is empty.
void requireNewFolder(const fs::path& folder) {
    std::error_code error;
    const bool isThere = fs::exists(folder, error);
    if (error) throw FileError(folder, error);
    if (isThere && !fs::is_empty(folder, error))
        throw FileError(folder, error ? error : std::make_error_code(std::errc::file_exists));
    requireWritableFolder(folder);
}

// A kit while it is made.
class KitMaking {
public:
    KitMaking(const KitOptions& options, network::ChosenDevice& device, GeneratingReport& report,
              Console& console, std::uint64_t seed)
        : options_(options),
          folder_(Paths::plain(options.output) / Kit::plainName(options.name)),
          device_(device),
          report_(report),
          console_(console),
          carriers_(options.recipes.carriers(console)),
          seed_(seed) {}

    [[nodiscard]] const fs::path& folder() const { return folder_; }
    [[nodiscard]] const Kit::Description& description() const { return kit_; }
    [[nodiscard]] const std::vector<GeneratedSample>& files() const { return files_; }

    void addInstrument(const Chosen& chosen, SampleGenerator& generator, const CancelFlag& cancel) {
        const auto number = static_cast<std::int64_t>(kit_.instruments.size());
        std::vector<VariationPlan> plans =
            Kit::plans(generator, chosen.order.recipe, options_.size(), seed_, number);
        std::vector<AuditionedSample> sounds = generator.remake(plans, cancel.token());
        std::vector<std::vector<float>> samples;
        samples.reserve(sounds.size());
        for (AuditionedSample& sound : sounds)
            samples.push_back(std::move(sound.samples));
        if (samples.front().empty()) throw Failure(Text::utf8(chosen.order.source) + " is empty");
        const Kit::Arrangement arrangement = Kit::arrange(samples, options_.layers);
        Kit::Instrument instrument{.name = chosen.order.source.stem().string(), .layers = {}};
        for (std::size_t place = 0; place < arrangement.order.size(); ++place) {
            const std::size_t sound = arrangement.order[place];
            const auto layer = std::min<std::size_t>(place / static_cast<std::size_t>(options_.count),
                                                     static_cast<std::size_t>(options_.layers) - 1);
            instrument.layers.resize(std::max(instrument.layers.size(), layer + 1));
            std::vector<std::string>& names = instrument.layers[layer];
            names.push_back(fileName(instrument.name, layer, names.size()));
            sounds[sound].origin.fit = arrangement.fits[sound];
            Finishing::fit(samples[sound], arrangement.fits[sound].samples, arrangement.fits[sound].gain,
                           generator.sampleRate());
            write(chosen, sounds[sound].origin, samples[sound], sound == 0, generator, names.back());
        }
        kit_.longestSeconds = std::max(kit_.longestSeconds,
                                       static_cast<double>(samples.front().size()) / generator.sampleRate());
        kit_.instruments.push_back(std::move(instrument));
    }

    // What tells a sampler of the sounds; last, when they are all there.
    void finish() {
        kit_.name = Kit::plainName(options_.name);
        writeText(folder_ / (kit_.name + ".sfz"), Kit::sfz(kit_));
        writeText(folder_ / "drumkit.xml", Kit::hydrogen(kit_));
        if (const std::error_code unsafe = syncFolder(folder_)) throw FileError(folder_, unsafe);
    }

private:
    // "01_kick_2.wav", with layers "01_kick_v1_2.wav".
    [[nodiscard]] std::string fileName(const std::string& instrument, std::size_t layer,
                                       std::size_t turn) const {
        std::string number = std::to_string(kit_.instruments.size() + 1);
        if (number.size() < 2) number.insert(0, 1, '0');
        const std::string velocity = options_.layers > 1 ? "_v" + std::to_string(layer + 1) : "";
        return number + "_" + Kit::plainName(instrument) + velocity + "_" + std::to_string(turn + 1) + ".wav";
    }
    void write(const Chosen& chosen, const SampleOrigin& origin, std::span<const float> samples,
               bool isChosenOne, SampleGenerator& generator, const std::string& name) {
        RecipeBase base = recipeBase(device_, generator.bundle().metadata);
        base.aesthetics = chosen.order.recipe.aesthetics;
        base.format = chosen.order.recipe.format;
        base.lineage = chosen.order.recipe.lineage;
        if (!isChosenOne)
            base.lineage = Lineage{.way = "kit",
                                   .parents = chosen.parents,
                                   .values = {{"closeness", options_.size().closeness}}};
        RecipeKeeper keeper(carriers_, std::move(base));
        files_.push_back(
            SoundFile::writeNew({samples, generator.sampleRate(), chosen.order.recipe.format, origin},
                                folder_ / name, keeper.hooks()));
        if (files_.size() == 1) noteJournalProblem(keeper, console_);
        report_.report(std::ssize(files_));
    }
    static void writeText(const fs::path& file, const std::string& text) {
        if (!writeNewFile(file, std::as_bytes(std::span(text))))
            throw FileError(file, std::make_error_code(std::errc::file_exists));
    }

    const KitOptions& options_;
    fs::path folder_;
    network::ChosenDevice& device_;
    GeneratingReport& report_;
    Console& console_;
    RecipeCarriers carriers_;
    std::uint64_t seed_;
    Kit::Description kit_;
    std::vector<GeneratedSample> files_;
};

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
    KitMaking making(options, compute.device(), report, console, seed);
    requireNewFolder(making.folder());
    report.report(0);
    for (const Chosen& one : chosen) {
        cancel.check();
        making.addInstrument(one, models.of(one.order, cancel), cancel);
    }
    making.finish();
    progress.finish();

    const std::string plain = Kit::plainName(options.name);
    console.print("Wrote " + counted(std::ssize(making.files()), "sound", "sounds") + " on " +
                  counted(std::ssize(chosen), "key", "keys") + " to " + shownPath(making.folder()) + ":");
    console.print("  " + plain + ".sfz  for samplers that read SFZ");
    console.print("  drumkit.xml  for Hydrogen");
    console.print("Seed " + std::to_string(seed) + ".");

    JSON result = makeResult("kit");
    result["seed"] = seed;
    result["output"] = toJSON(making.folder());
    result["sfz"] = toJSON(making.folder() / (plain + ".sfz"));
    result["hydrogen"] = toJSON(making.folder() / "drumkit.xml");
    result["instruments"] = instrumentsJSON(making.description());
    result["files"] = filesJSON(making.files());
    result["seconds"] = progress.timesJSON();
    console.emit(result);
}

}  // namespace

void addKit(CLI::App& app, Invocation& invocation) {
    const auto options = std::make_shared<KitOptions>();
    CLI::App* const command =
        app.add_subcommand("kit", "Make an instrument for samplers out of sounds and close variations");
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
