// Teaches the networks of the head start, and tries them on folders of samples.
//
//   quillmere-schooling teach percussive Data/HeadStart
//   quillmere-schooling sounds tonal FOLDER --count 20      to listen to
//   quillmere-schooling try FOLDER --base Data/HeadStart --steps 200

#include <cstdint>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"
#include "Schooling/Lessons.h"
#include "Schooling/Sounds/Sounds.h"
#include "Schooling/Trial.h"

namespace quillmere::schooling {
namespace {

namespace fs = std::filesystem;

// Changes whenever a network of the head start does.
constexpr const char* version = "2";

struct Options {
    std::string analysis;
    std::string folder;
    std::string base;
    std::int64_t count = 20;
    std::uint64_t seed = 1;
    double share = 1;
    std::vector<std::int64_t> steps{2000};
    std::vector<double> learningRates{0.001};
    double clipSeconds = 0;

    [[nodiscard]] AnalysisProfile profile() const {
        const auto profile = analysisProfile(analysis);
        if (!profile || (analysis != "percussive" && analysis != "tonal"))
            throw Failure("The analysis is percussive or tonal.");
        return *profile;
    }
};

void say(const std::string& line) {
    std::cout << line << "\n" << std::flush;
}

void writeSounds(const Options& options) {
    const AnalysisProfile profile = options.profile();
    fs::create_directories(options.folder);
    for (std::int64_t i = 0; i < options.count; ++i) {
        const Samples samples = makeSound(profile, options.seed, static_cast<std::uint64_t>(i));
        AudioIO::write(samples, fs::path(options.folder) / ("sound" + std::to_string(i) + ".wav"), sampleRate,
                       OutputFormat::wav16);
    }
}

void teachNetwork(const Options& options) {
    const AnalysisProfile profile = options.profile();
    const auto backend = network::makeCPUBackend();
    const TaughtNetwork network =
        teach(profile, shortened(lessonsFor(profile), options.share), options.seed, *backend, say);
    const std::string bytes = HeadStart::encode(network, version);
    fs::create_directories(options.folder);
    const fs::path file = HeadStart::file(options.folder, profile);
    writeFileAtomically(file, std::as_bytes(std::span(bytes)));
    say("wrote " + file.string() + ", " + std::to_string(bytes.size()) + " bytes");
}

void tryFolder(const Options& options) {
    const auto backend = network::makeCPUBackend();
    TrainingOptions training;
    if (!options.base.empty())
        training.start = std::make_shared<const TrainingStart>(HeadStart::load(options.base));
    if (!options.analysis.empty()) training.profile = options.profile();
    if (options.clipSeconds > 0) training.clipSeconds = options.clipSeconds;
    training.seed = options.seed;
    const TrialCorpus corpus = readTrialCorpus(options.folder, training);
    say(fs::path(options.folder).filename().string() + ": " + std::string(rawValue(corpus.config.profile)) +
        ", " + std::to_string(corpus.config.frames) + " frames, " + std::to_string(corpus.learned.size()) +
        " learned, " + std::to_string(corpus.unseen.size()) + " unseen");
    for (const std::int64_t steps : options.steps) {
        for (const double rate : options.learningRates) {
            training.steps = steps;
            training.learningRate = static_cast<float>(rate);
            const TrialResult result = runTrial(corpus, training, *backend);
            say("  " + std::string(training.start ? "head start" : "fresh") + ", " + std::to_string(steps) +
                " steps at " + Text::fixed(rate, 5) + ": learned " + Text::fixed(result.learned, 5) +
                ", unseen " + Text::fixed(result.unseen, 5) + ", " + Text::fixed(result.seconds, 1) + " s");
        }
    }
}

void addCommands(CLI::App& app, Options& options) {
    app.require_subcommand(1);
    app.add_option("--seed", options.seed, "Another series of sounds, or another run");

    CLI::App* const sounds = app.add_subcommand("sounds", "Writes sounds by rule");
    sounds->add_option("ANALYSIS", options.analysis)->required();
    sounds->add_option("FOLDER", options.folder)->required();
    sounds->add_option("--count", options.count);
    sounds->callback([&] { writeSounds(options); });

    CLI::App* const teach = app.add_subcommand("teach", "Teaches the network of an analysis");
    teach->add_option("ANALYSIS", options.analysis)->required();
    teach->add_option("FOLDER", options.folder)->required();
    teach->add_option("--share", options.share, "Of all sounds and steps, for a trial");
    teach->callback([&] { teachNetwork(options); });

    CLI::App* const trial = app.add_subcommand("try", "Learns two thirds of a folder and tells the errors");
    trial->add_option("FOLDER", options.folder)->required();
    trial->add_option("--base", options.base, "Folder of a head start; without it random weights");
    trial->add_option("--analysis", options.analysis);
    trial->add_option("--clip-seconds", options.clipSeconds);
    trial->add_option("--steps", options.steps);
    trial->add_option("--learning-rate", options.learningRates);
    trial->callback([&] { tryFolder(options); });
}

}  // namespace
}  // namespace quillmere::schooling

int main(int count, char** arguments) {
    CLI::App app("Teaches the networks of the head start, and tries them.");
    quillmere::schooling::Options options;
    quillmere::schooling::addCommands(app, options);
    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
