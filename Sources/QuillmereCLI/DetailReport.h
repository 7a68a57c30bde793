#pragma once

#include <cstddef>
#include <span>

#include "QuillmereCLI/Console.h"
#include "QuillmereCLI/Learning.h"
#include "QuillmereCore/Generate/Generator.h"

// What the commands that generate say of --detail.
namespace quillmere::cli {

// The sounds of a corpus's model, if so much detail needs any. Throws FileError.
[[nodiscard]] ClipSounds soundsFor(double detail, const ModelBundle& bundle, const KnownCorpus& corpus);

// What the fine structure of a number of variations is from.
class DetailReport {
public:
    // sounds: of the generator.
    DetailReport(double amount, const ClipSounds& sounds) : amount_(amount), origin_(sounds.origin()) {}

    void count(const SampleOrigin& origin);

    // A line for people, and notes where noise had to stand in for sources or samples came out as good as
    // copies of learned ones. Nothing without detail.
    void print(Console& console) const;
    // The member "detail" of a result event. Nothing without detail.
    void addTo(JSON& result) const;

private:
    double amount_;
    ClipSounds::Origin origin_;
    std::int64_t variations_ = 0;
    std::int64_t withNoise_ = 0;
    std::int64_t nearCopies_ = 0;
};

}  // namespace quillmere::cli
