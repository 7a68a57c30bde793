#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>

#include "QuillmereCLI/Console.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Generate/Sweep.h"

namespace quillmere::cli {

// How a generation or an audition sounds: --preset NAME or --aesthetics FILE.json as the start, then each
// --set ID=VALUE in the order given; and --detail, --seed, --format.
class ParameterOptions {
public:
    // Whether --set takes ID=FROM:TO:COUNT as well.
    enum class Ranges { refused, taken };
    void addTo(CLI::App& app, Ranges ranges = Ranges::refused);

    // The parameters to use. Each --set value is moved into its parameter's range, with a note when that
    // changes it; those of the file of --aesthetics may lie beyond. Throws Failure about that file.
    [[nodiscard]] Aesthetics aesthetics(Console& console) const;

    // The same with other parameters to start from, where neither --preset nor --aesthetics is given.
    [[nodiscard]] Aesthetics changed(const Aesthetics& start, Console& console) const;
    // Those of --set, in the order given; their parameters are left out elsewhere.
    [[nodiscard]] std::span<const Sweep::Axis> ranges() const { return ranges_; }
    // Notes each --set of a parameter that only decides which latent vector is drawn: where that is decided
    // already, it changes nothing. reason: the rest of the sentence.
    void notePlaceless(const std::string& reason, Console& console) const;

    // 0 ... 1; 0 if none is given.
    [[nodiscard]] double detail() const { return detail_.value_or(0); }
    [[nodiscard]] bool detailWasGiven() const { return detail_.has_value(); }

    // The seed given, or a fresh one.
    [[nodiscard]] std::uint64_t seed() const;
    [[nodiscard]] bool seedWasGiven() const { return seed_.has_value(); }

    [[nodiscard]] OutputFormat format() const { return *outputFormat(format_); }
    [[nodiscard]] bool formatWasGiven() const { return formatOption_ != nullptr && !formatOption_->empty(); }

private:
    struct Assignment {
        const ParameterSpec* spec;
        double value;
    };
    static Assignment parseAssignment(const std::string& text);
    // Nothing for text that has no colon.
    static std::optional<Sweep::Axis> parseRange(const std::string& text);

    const Preset* preset_ = nullptr;
    std::filesystem::path file_;
    std::vector<Assignment> assignments_;
    std::vector<Sweep::Axis> ranges_;
    std::optional<double> detail_;
    std::optional<std::uint64_t> seed_;
    std::string format_{rawValue(OutputFormat::wav24)};
    const CLI::Option* formatOption_ = nullptr;
};

}  // namespace quillmere::cli
