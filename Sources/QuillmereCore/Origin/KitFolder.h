#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Origin/Kit.h"
#include "QuillmereCore/Origin/Recipe.h"
#include "QuillmereCore/Origin/RecipeKeeper.h"

namespace quillmere {

// A kit while it is made: its folder, with the sounds of each instrument and what tells samplers of them. One
// thread at a time.
class KitFolder {
public:
    struct Order {
        std::filesystem::path parent;  // of the kit's folder
        std::string name;              // of the kit, with a letter or a digit (Kit::plainName)
        Kit::Size size{};
        std::uint64_t seed = 0;     // the same number gives the same kit
        RecipeCarriers carriers{};  // of the recipes of its files
    };
    // A sound of which the kit is to have variations.
    struct Chosen {
        std::filesystem::path source;        // that the instrument is named after
        Recipe recipe;                       // fits the generator's model (requireFit)
        std::vector<std::string> parents{};  // its digest, if it is a file of its own
    };
    using Progress = std::function<void(std::size_t files)>;  // that have been written

    explicit KitFolder(Order order, Progress progress = {});

    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    [[nodiscard]] const Kit::Description& description() const { return kit_; }
    [[nodiscard]] const std::vector<GeneratedSample>& files() const { return files_; }
    // As RecipeKeeper::journalProblem, of all files so far.
    [[nodiscard]] const std::optional<Message>& journalProblem() const { return problem_; }

    // Throws FileError unless the folder is missing or empty.
    void requireNew() const;
    // Renders and writes the sounds of one more instrument; device: as recipes have it. Throws as
    // SampleGenerator::generate, and Failure where the sound is empty.
    void addInstrument(const Chosen& chosen, SampleGenerator& generator, const std::string& device,
                       const std::stop_token& stop);
    // Writes what tells a sampler of the sounds; last, when they are all there. Throws FileError.
    void finish();

private:
    [[nodiscard]] std::string fileName(const std::string& instrument, std::size_t layer,
                                       std::size_t turn) const;
    void write(std::span<const float> samples, const SampleOrigin& origin, int sampleRate, RecipeBase base,
               const std::string& name);

    const Order order_;
    const Progress progress_;
    const std::filesystem::path folder_;
    Kit::Description kit_;
    std::vector<GeneratedSample> files_;
    std::optional<Message> problem_;
};

}  // namespace quillmere
