#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

struct ParameterSpec;

// The twenty parameters of a generation. Counts are kept as floating point, too, and rounded half away from
// zero where they are used.
struct Aesthetics {
    double sources = 2.0;        // corpus latents blended per variation
    double drift = 0.4;          // walk along the corpus's own directions of variation
    double mutation = 0.0;       // noise in directions no corpus sample uses
    double extrapolation = 0.0;  // push away from (or, negative, towards) the corpus average
    double pitch = 0.0;          // semitones
    double pitchJitter = 0.0;    // +- semitones per variation
    double stretch = 1.0;        // duration multiplier
    double stretchJitter = 0.0;  // +- octaves per variation
    double tilt = 0.0;           // dB per octave
    double contrast = 1.0;       // exponent on spectral levels
    double smear = 0.0;          // blur in time and frequency
    double grit = 0.0;           // level quantisation
    double roughness = 0.0;      // level noise
    double phaseIterations = 48.0;
    double decay = 0.0;          // ms, 0: off
    double drive = 0.0;          // dB
    double crushBits = 24.0;     // 24: off
    double decimate = 1.0;       // 1: off
    double reverseChance = 0.0;  // probability
    double normalize = -1.0;     // peak, dBFS

    // One spec per member, in member order.
    [[nodiscard]] static std::span<const ParameterSpec> specs();
    // The spec with exactly that identifier, or null.
    [[nodiscard]] static const ParameterSpec* spec(std::string_view id);
    // Clamps value into the spec's range and stores it; NaN passes.
    void set(const ParameterSpec& spec, double value);

    friend bool operator==(const Aesthetics&, const Aesthetics&) = default;
};

// What a user interface needs to know of one parameter.
struct ParameterSpec {
    enum class Group { latent, spectral, signal, output };

    std::string_view id;
    std::string_view title;
    std::string_view help;  // one sentence or two
    Group group;
    double lower, upper;  // both inclusive
    double step;
    std::string_view unit;  // may be empty
    bool logarithmic;       // a slider maps its position logarithmically
    double Aesthetics::*keyPath;
    std::string_view field;  // name of the member and JSON key

    [[nodiscard]] double value(const Aesthetics& aesthetics) const { return aesthetics.*keyPath; }
    // Display text: the decimals, then the unit.
    [[nodiscard]] std::string format(double value) const;
    // By step: none for 1 and more, one for 0.1 and more, else two.
    [[nodiscard]] int decimals() const;
    // The nearest multiple of the step within the range, as the decimal fraction that a person would write.
    [[nodiscard]] double snapped(double value) const;
    // A finite decimal number, with or without a sign; nothing for any other text.
    [[nodiscard]] static std::optional<double> parse(std::string_view text);
};

inline constexpr std::array<ParameterSpec::Group, 4> allParameterGroups{
    ParameterSpec::Group::latent, ParameterSpec::Group::spectral, ParameterSpec::Group::signal,
    ParameterSpec::Group::output};
[[nodiscard]] std::string_view rawValue(ParameterSpec::Group group);  // the display title
[[nodiscard]] std::optional<ParameterSpec::Group> parameterGroup(std::string_view rawValue);

// A named set of all twenty values.
struct Preset {
    std::string_view name;
    std::string_view blurb;
    Aesthetics aesthetics;

    [[nodiscard]] std::string_view id() const { return name; }
    [[nodiscard]] static std::span<const Preset> all();
    // The first preset of that name, letter case ignored, or null.
    [[nodiscard]] static const Preset* named(std::string_view name);
};

// One JSON object with the twenty member names as keys, in field order. Decoding requires every key to hold a
// number (else DecodingError, which names the key but no file), clamps nothing and ignores other keys.
// Encoding throws InvalidParameterError for a value that JSON cannot hold (NaN and infinities).
[[nodiscard]] std::string encodeJSON(const Aesthetics& aesthetics);
[[nodiscard]] Aesthetics decodeAesthetics(std::string_view text);

// A preset in a file of its own: the same object with a "version", at present 1. A later version may have
// more keys, but none with another meaning, so decoding takes any: a key that is missing has its default, one
// that nobody knows is ignored. A file without a version is older than they are and must have the twenty keys
// of its time. Everything else as above.
[[nodiscard]] std::string encodePreset(const Aesthetics& aesthetics);
[[nodiscard]] Aesthetics decodePreset(std::string_view text);

// A parameter has a value that no generation can work with. what() names the parameter.
class InvalidParameterError : public Failure {
public:
    using Failure::Failure;
};

// Throws InvalidParameterError for values that would stop the program further on: NaN and infinities, counts
// (sources, phaseIterations, decimate, crushBits) that fit no integer, a stretch that is no finite factor.
// Everything else passes, however far out of its range. For parameters of foreign origin; what
// Aesthetics::set stored passes unless it is NaN.
void validate(const Aesthetics& aesthetics);

// Every value brought into the range of its parameter. Throws as validate.
[[nodiscard]] Aesthetics inRange(const Aesthetics& aesthetics);

}  // namespace quillmere
