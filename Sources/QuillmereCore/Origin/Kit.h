#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Origin/Recipe.h"

// Sets of close variations of chosen sounds, for samplers. Any thread.
namespace quillmere::Kit {

// How many sounds an instrument has, and how near to the chosen one.
struct Size {
    std::int64_t count = 4;   // of each layer, the chosen sound among them; at least 1
    std::int64_t layers = 1;  // of velocity; at least 1
    double closeness = 0.8;   // 0 to 1 (Likeness::around)

    [[nodiscard]] std::int64_t sounds() const { return count * layers; }
};

// Hydrogen has no room for more in one instrument.
inline constexpr std::int64_t mostSounds = 16;

// What is to be rendered for one instrument: the chosen sound itself as its recipe makes it, then variations
// around it with its parameters. number: of the instrument in the kit, from 0; the same kit draws the same
// variations whatever the others are.
[[nodiscard]] std::vector<VariationPlan> plans(const SampleGenerator& generator, const Recipe& recipe,
                                               Size size, std::uint64_t seed, std::int64_t number);

// How the sounds of one instrument come together.
struct Arrangement {
    std::vector<SoundFit> fits;      // of each sound, in the order given
    std::vector<std::size_t> order;  // the sounds layer by layer, the softest first; in a layer as given
};
// Every sound gets the length of the first one and its level, the root mean square over that length; where a
// peak would go beyond -0.1 dBFS, all of them are as much softer. The layers follow the levels that the
// sounds had before. sounds: at least one, all with samples; silent ones keep their level.
[[nodiscard]] Arrangement arrange(std::span<const std::vector<float>> sounds, std::int64_t layers);

// A finished kit, for the files that tell a sampler of it.
struct Instrument {
    std::string name;
    std::vector<std::vector<std::string>> layers;  // names of files in the kit's folder, the softest first
};
struct Description {
    std::string name;                     // of its folder, too: Hydrogen finds the sounds by it
    std::vector<Instrument> instruments;  // at least one; on the keys from lowestKey up
    double longestSeconds = 1;            // of all sounds
};
inline constexpr int lowestKey = 36;  // C2, where drums begin
inline constexpr std::size_t mostInstruments = 92;

// The first and the last velocity (1 to 127) of a layer.
struct Velocities {
    int low, high;
};
[[nodiscard]] Velocities velocities(std::size_t layer, std::size_t layers);

// An SFZ file: a group per layer, whose regions take turns.
[[nodiscard]] std::string sfz(const Description& kit);
// Hydrogen's drumkit.xml: an instrument each, whose sounds of a velocity take turns.
[[nodiscard]] std::string hydrogen(const Description& kit);

// A name of a file that every sampler takes: letters and digits of ASCII, "-", "_" and "."; "_" for the rest.
[[nodiscard]] std::string plainName(std::string_view text);

}  // namespace quillmere::Kit
