// What scripts/bench-sound.py needs of the product beside its programs. MODEL is the folder of a stored
// model.
//
//   quillmere-soundcheck finish MODEL SAMPLES OUTPUT      samples as files that have gone through the
//   finishing quillmere-soundcheck images MODEL SAMPLES FILE        their images, as 32-bit floats one after
//   the other quillmere-soundcheck render MODEL FILE OUTPUT         images as sounds quillmere-soundcheck
//   errors MODEL SAMPLES             how well the model draws them
//
// Each prints one JSON object: names of the samples, bands and frames of an image, or errors.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"
#include "Soundcheck/Soundcheck.h"

namespace quillmere::soundcheck {
namespace {

namespace fs = std::filesystem;

struct Options {
    std::string model;
    std::string input;
    std::string output;
    std::uint64_t seed = 1;
};

void write(const std::vector<float>& samples, const fs::path& file, const ModelConfig& config) {
    AudioIO::write(samples, file, static_cast<int>(config.sampleRate), OutputFormat::wav24);
}

void print(const ModelConfig& config, std::span<const Clip> clips, nlohmann::json object = {}) {
    object["bands"] = config.nMels;
    object["frames"] = config.frames;
    object["names"] = nlohmann::json::array();
    for (const Clip& clip : clips)
        object["names"].push_back(clip.name);
    std::cout << object.dump() << "\n";
}

void finish(const Options& options) {
    const ModelConfig config = ModelStore::open(options.model).config;
    const std::vector<Clip> clips = readClips(options.input, config);
    fs::create_directories(options.output);
    for (std::size_t i = 0; i < clips.size(); ++i)
        write(finished(clips[i].samples, config),
              fs::path(options.output) /
                  (std::to_string(i) + "_" + fs::path(clips[i].name).stem().string() + ".wav"),
              config);
    print(config, clips);
}

void writeImages(const Options& options) {
    const ModelConfig config = ModelStore::open(options.model).config;
    const std::vector<Clip> clips = readClips(options.input, config);
    std::string bytes;
    for (const Clip& clip : clips)
        bytes.append(reinterpret_cast<const char*>(clip.image.data()), clip.image.size() * sizeof(float));
    writeFileAtomically(options.output, std::as_bytes(std::span(bytes)));
    print(config, clips);
}

void render(const Options& options) {
    const ModelConfig config = ModelStore::open(options.model).config;
    std::ifstream stream(options.input, std::ios::binary);
    if (!stream) throw Failure("cannot read " + options.input);
    fs::create_directories(options.output);
    std::vector<float> image(static_cast<std::size_t>(config.nMels * config.frames));
    const auto size = static_cast<std::streamsize>(image.size() * sizeof(float));
    for (std::uint64_t i = 0; stream.read(reinterpret_cast<char*>(image.data()), size); ++i)
        write(rendered(image, config, options.seed + i),
              fs::path(options.output) / (std::to_string(i) + ".wav"), config);
}

void printErrors(const Options& options) {
    const ModelBundle model = ModelStore::open(options.model);
    const std::vector<Clip> clips = readClips(options.input, model.config);
    const auto backend = network::makeCPUBackend();
    print(model.config, clips, {{"errors", errors(model, clips, *backend)}});
}

using Command = void (*)(const Options&);

CLI::App* add(CLI::App& app, Options& options, const std::string& name, const std::string& help,
              Command command) {
    CLI::App* const added = app.add_subcommand(name, help);
    added->add_option("MODEL", options.model)->required();
    added->add_option("INPUT", options.input)->required();
    added->callback([command, &options] { command(options); });
    return added;
}

void addCommands(CLI::App& app, Options& options) {
    app.require_subcommand(1);
    add(app, options, "finish", "Writes a folder's samples as generated files are finished", finish)
        ->add_option("OUTPUT", options.output)
        ->required();
    add(app, options, "images", "Writes the images of a folder's samples", writeImages)
        ->add_option("OUTPUT", options.output)
        ->required();
    CLI::App* const renders = add(app, options, "render", "Writes images as sounds", render);
    renders->add_option("OUTPUT", options.output)->required();
    renders->add_option("--seed", options.seed);
    add(app, options, "errors", "Tells how well a model draws a folder's samples", printErrors);
}

}  // namespace
}  // namespace quillmere::soundcheck

int main(int count, char** arguments) {
    CLI::App app("Samples, images and errors for a measurement of the sound.");
    quillmere::soundcheck::Options options;
    quillmere::soundcheck::addCommands(app, options);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
