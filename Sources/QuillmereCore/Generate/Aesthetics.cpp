#include "QuillmereCore/Generate/Aesthetics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "QuillmereCore/Util/JSONDocument.h"
#include "QuillmereCore/Util/Message.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

using Group = ParameterSpec::Group;

constexpr std::array<ParameterSpec, 20> parameterTable{{
    {.id = "sources",
     .title = translatable("Sources blended"),
     .help = translatable("How many corpus samples are mixed together in each variation."),
     .group = Group::latent,
     .lower = 1,
     .upper = 8,
     .step = 1,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::sources,
     .field = "sources"},
    {.id = "drift",
     .title = translatable("Drift"),
     .help = translatable(
         "Random wandering along the ways your samples already differ. 0 stays on the originals; high "
         "values invent new in-between samples."),
     .group = Group::latent,
     .lower = 0,
     .upper = 4,
     .step = 0.05,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::drift,
     .field = "drift"},
    {.id = "mutation",
     .title = translatable("Mutation"),
     .help = translatable(
         "Noise in directions no corpus sample uses. This is where unfamiliar timbres and artefacts come "
         "from."),
     .group = Group::latent,
     .lower = 0,
     .upper = 4,
     .step = 0.05,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::mutation,
     .field = "mutation"},
    {.id = "extrapolation",
     .title = translatable("Push beyond"),
     .help = translatable(
         "Exaggerates what makes each result different from the corpus average (negative pulls toward "
         "the average)."),
     .group = Group::latent,
     .lower = -0.9,
     .upper = 4,
     .step = 0.05,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::extrapolation,
     .field = "extrapolation"},
    {.id = "pitch",
     .title = translatable("Pitch"),
     .help = translatable(
         "Shift the whole spectrum. Formants move with it, so extremes sound like tiny or giant versions."),
     .group = Group::spectral,
     .lower = -36,
     .upper = 36,
     .step = 0.5,
     .unit = "st",
     .logarithmic = false,
     .keyPath = &Aesthetics::pitch,
     .field = "pitch"},
    {.id = "pitch-jitter",
     .title = translatable("Pitch jitter"),
     .help = translatable("Each variation gets a random pitch offset within ± this amount."),
     .group = Group::spectral,
     .lower = 0,
     .upper = 24,
     .step = 0.5,
     .unit = "st",
     .logarithmic = false,
     .keyPath = &Aesthetics::pitchJitter,
     .field = "pitchJitter"},
    {.id = "stretch",
     .title = translatable("Time stretch"),
     .help = translatable("Duration multiplier, independent of pitch."),
     .group = Group::spectral,
     .lower = 0.1,
     .upper = 8,
     .step = 0.05,
     .unit = "×",
     .logarithmic = true,
     .keyPath = &Aesthetics::stretch,
     .field = "stretch"},
    {.id = "stretch-jitter",
     .title = translatable("Stretch jitter"),
     .help = translatable("Each variation gets a random stretch within ± this many octaves (1 octave = 2×)."),
     .group = Group::spectral,
     .lower = 0,
     .upper = 3,
     .step = 0.05,
     .unit = "oct",
     .logarithmic = false,
     .keyPath = &Aesthetics::stretchJitter,
     .field = "stretchJitter"},
    {.id = "tilt",
     .title = translatable("Brightness tilt"),
     .help = translatable("Boost highs and cut lows (positive) or the reverse, in dB per octave."),
     .group = Group::spectral,
     .lower = -24,
     .upper = 24,
     .step = 0.5,
     .unit = "dB/oct",
     .logarithmic = false,
     .keyPath = &Aesthetics::tilt,
     .field = "tilt"},
    {.id = "contrast",
     .title = translatable("Contrast"),
     .help = translatable(
         "Above 1 deepens the valleys and gates quiet detail; below 1 fills them in with noise."),
     .group = Group::spectral,
     .lower = 0.25,
     .upper = 4,
     .step = 0.05,
     .unit = "",
     .logarithmic = true,
     .keyPath = &Aesthetics::contrast,
     .field = "contrast"},
    {.id = "smear",
     .title = translatable("Smear"),
     .help = translatable("Blurs the spectrogram in time and frequency: washes, halos, loss of definition."),
     .group = Group::spectral,
     .lower = 0,
     .upper = 2,
     .step = 0.02,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::smear,
     .field = "smear"},
    {.id = "grit",
     .title = translatable("Grit"),
     .help =
         translatable("Quantises spectral levels into coarse steps for a blocky, codec-damaged character."),
     .group = Group::spectral,
     .lower = 0,
     .upper = 1,
     .step = 0.02,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::grit,
     .field = "grit"},
    {.id = "roughness",
     .title = translatable("Roughness"),
     .help = translatable("Random per-bin level noise: fizz, sandpaper, hiss."),
     .group = Group::spectral,
     .lower = 0,
     .upper = 3,
     .step = 0.05,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::roughness,
     .field = "roughness"},
    {.id = "phase-iterations",
     .title = translatable("Phase passes"),
     .help = translatable(
         "Griffin–Lim iterations that reconstruct phase. Very low = buzzy, robotic, smeared transients. "
         "High = cleaner."),
     .group = Group::signal,
     .lower = 0,
     .upper = 300,
     .step = 1,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::phaseIterations,
     .field = "phaseIterations"},
    {.id = "decay",
     .title = translatable("Extra decay"),
     .help = translatable("Multiplies by an exponential fade with this time constant. 0 = off."),
     .group = Group::signal,
     .lower = 0,
     .upper = 2000,
     .step = 5,
     .unit = "ms",
     .logarithmic = false,
     .keyPath = &Aesthetics::decay,
     .field = "decay"},
    {.id = "drive",
     .title = translatable("Drive"),
     .help = translatable("Tanh saturation."),
     .group = Group::signal,
     .lower = 0,
     .upper = 48,
     .step = 0.5,
     .unit = "dB",
     .logarithmic = false,
     .keyPath = &Aesthetics::drive,
     .field = "drive"},
    {.id = "crush-bits",
     .title = translatable("Bit depth"),
     .help = translatable("Quantise the waveform. 24 = off."),
     .group = Group::signal,
     .lower = 2,
     .upper = 24,
     .step = 1,
     .unit = "bit",
     .logarithmic = false,
     .keyPath = &Aesthetics::crushBits,
     .field = "crushBits"},
    {.id = "decimate",
     .title = translatable("Sample-rate crush"),
     .help = translatable("Hold every Nth sample (aliasing included). 1 = off."),
     .group = Group::signal,
     .lower = 1,
     .upper = 64,
     .step = 1,
     .unit = "×",
     .logarithmic = true,
     .keyPath = &Aesthetics::decimate,
     .field = "decimate"},
    {.id = "reverse-chance",
     .title = translatable("Reverse chance"),
     .help = translatable("Probability that a variation plays backwards."),
     .group = Group::signal,
     .lower = 0,
     .upper = 1,
     .step = 0.05,
     .unit = "",
     .logarithmic = false,
     .keyPath = &Aesthetics::reverseChance,
     .field = "reverseChance"},
    {.id = "normalize",
     .title = translatable("Peak level"),
     .help = translatable("Every output is peak-normalised to this level."),
     .group = Group::output,
     .lower = -24,
     .upper = 0,
     .step = 0.5,
     .unit = "dBFS",
     .logarithmic = false,
     .keyPath = &Aesthetics::normalize,
     .field = "normalize"},
}};

// Members that a preset leaves out keep their defaults.
constexpr std::array<Preset, 8> presetTable{{
    {.name = "Faithful",
     .blurb = translatable("Close relatives of the originals."),
     .aesthetics = {.sources = 1, .drift = 0.15, .phaseIterations = 80}},
    {.name = "Balanced", .blurb = translatable("Blends of neighbours; plausible but new."), .aesthetics = {}},
    {.name = "Explore",
     .blurb = translatable("Clearly new samples that keep the family resemblance."),
     .aesthetics = {.sources = 3,
                    .drift = 1.0,
                    .mutation = 0.25,
                    .extrapolation = 0.3,
                    .pitchJitter = 2,
                    .stretchJitter = 0.15,
                    .roughness = 0.2}},
    {.name = "Wild",
     .blurb = translatable("Far from home, but still musical."),
     .aesthetics = {.sources = 4,
                    .drift = 1.6,
                    .mutation = 0.6,
                    .extrapolation = 0.8,
                    .pitchJitter = 5,
                    .stretchJitter = 0.4,
                    .contrast = 1.4,
                    .smear = 0.25,
                    .grit = 0.2,
                    .roughness = 0.5,
                    .phaseIterations = 24,
                    .drive = 8}},
    {.name = "Extreme",
     .blurb = translatable("Everything cranked. Expect destruction."),
     .aesthetics = {.sources = 6,
                    .drift = 3.0,
                    .mutation = 1.5,
                    .extrapolation = 2.0,
                    .pitchJitter = 14,
                    .stretchJitter = 1.0,
                    .contrast = 2.0,
                    .smear = 0.5,
                    .grit = 0.5,
                    .roughness = 1.5,
                    .phaseIterations = 6,
                    .drive = 24,
                    .crushBits = 8,
                    .decimate = 4,
                    .reverseChance = 0.3}},
    {.name = "Lo-fi",
     .blurb = translatable("Crushed, saturated, dusty."),
     .aesthetics = {.drift = 0.3,
                    .tilt = -3,
                    .grit = 0.3,
                    .roughness = 0.4,
                    .drive = 12,
                    .crushBits = 8,
                    .decimate = 3}},
    {.name = "Ghostly",
     .blurb = translatable("Long, blurred, washed-out echoes of the corpus."),
     .aesthetics = {.sources = 4,
                    .drift = 0.8,
                    .stretch = 2.5,
                    .stretchJitter = 0.3,
                    .tilt = 2,
                    .contrast = 0.7,
                    .smear = 0.9,
                    .phaseIterations = 150}},
    {.name = "Robotic",
     .blurb = translatable("Few phase passes: buzzy, metallic, hard-edged."),
     .aesthetics = {.drift = 0.5, .contrast = 1.6, .grit = 0.6, .phaseIterations = 3}},
}};

Message nameForReader(const ParameterSpec& spec) {
    return Message("{0} ({1})", Message::fromTable(spec.title), spec.field);
}

void requireFinite(const ParameterSpec& spec, double value) {
    if (!std::isfinite(value))
        throw InvalidParameterError("{0} must be a finite number", nameForReader(spec));
}

bool isCount(const ParameterSpec& spec) {
    return spec.keyPath == &Aesthetics::sources || spec.keyPath == &Aesthetics::phaseIterations ||
           spec.keyPath == &Aesthetics::decimate || spec.keyPath == &Aesthetics::crushBits;
}

// The parameters that there were before presets had versions.
constexpr std::size_t firstParameters = 20;
constexpr std::int64_t presetVersion = 1;
constexpr const char* versionKey = "version";

nlohmann::ordered_json valuesOf(const Aesthetics& aesthetics) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (const ParameterSpec& spec : parameterTable) {
        requireFinite(spec, spec.value(aesthetics));
        object[std::string(spec.field)] = spec.value(aesthetics);
    }
    return object;
}

// The first parameters up to required must be there; the others have their defaults when they are not.
Aesthetics decode(const json::DoubleJson& object, std::size_t required) {
    Aesthetics aesthetics;
    for (std::size_t i = 0; i < parameterTable.size(); ++i) {
        const ParameterSpec& spec = parameterTable[i];
        if (i >= required && !object.contains(std::string(spec.field))) continue;
        aesthetics.*spec.keyPath = json::numberMember(object, spec.field);
    }
    return aesthetics;
}

}  // namespace

std::span<const ParameterSpec> Aesthetics::specs() {
    return parameterTable;
}

const ParameterSpec* Aesthetics::spec(std::string_view id) {
    const auto* found = std::ranges::find(parameterTable, id, &ParameterSpec::id);
    return found == parameterTable.end() ? nullptr : &*found;
}

void Aesthetics::set(const ParameterSpec& spec, double value) {
    const double atLeastLower = value <= spec.lower ? spec.lower : value;
    this->*spec.keyPath = atLeastLower > spec.upper ? spec.upper : atLeastLower;
}

std::string ParameterSpec::format(double value) const {
    std::string text = Text::fixed(value, decimals());
    if (!unit.empty()) text.append(" ").append(unit);
    return text;
}

int ParameterSpec::decimals() const {
    if (step >= 1) return 0;
    return step >= 0.1 ? 1 : 2;
}

double ParameterSpec::snapped(double value) const {
    // Dividing by the whole number of steps in one gives the double nearest to the decimal fraction;
    // multiplying by a step such as 0.05 does not.
    const double stepsPerUnit = std::round(1 / step);
    const double multiple = std::round(value / step);
    const double nearest = step < 1 ? multiple / stepsPerUnit : multiple * step;
    return std::clamp(nearest, lower, upper);
}

std::optional<double> ParameterSpec::parse(std::string_view text) {
    const bool hasPlus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    const std::optional<double> value = Text::parseDouble(text.substr(hasPlus ? 1 : 0));
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::string_view rawValue(ParameterSpec::Group group) {
    switch (group) {
        case Group::latent:
            return translatable("Departure from the corpus");
        case Group::spectral:
            return translatable("Spectral shaping");
        case Group::signal:
            return translatable("Signal & degradation");
        case Group::output:
            return translatable("Output");
    }
    fatal("no such parameter group");
}

std::optional<ParameterSpec::Group> parameterGroup(std::string_view text) {
    for (const Group group : allParameterGroups) {
        if (rawValue(group) == text) return group;
    }
    return std::nullopt;
}

std::span<const Preset> Preset::all() {
    return presetTable;
}

const Preset* Preset::named(std::string_view name) {
    const std::string wanted = Text::lowercase(name);
    const auto* found = std::ranges::find(presetTable, wanted,
                                          [](const Preset& preset) { return Text::lowercase(preset.name); });
    return found == presetTable.end() ? nullptr : &*found;
}

std::string encodeJSON(const Aesthetics& aesthetics) {
    return valuesOf(aesthetics).dump(2);
}

Aesthetics decodeAesthetics(std::string_view text) {
    return decode(json::parseObject<json::DoubleJson>(text), parameterTable.size());
}

std::string encodePreset(const Aesthetics& aesthetics) {
    nlohmann::ordered_json object{{versionKey, presetVersion}};
    object.update(valuesOf(aesthetics));
    return object.dump(2) + "\n";
}

Aesthetics decodePreset(std::string_view text) {
    const auto object = json::parseObject<json::DoubleJson>(text);
    if (!object.contains(versionKey)) return decode(object, firstParameters);
    if (json::integerMember(object, versionKey) < 1)
        throw DecodingError("{0} must be a positive integer", json::quoted(versionKey));
    return decode(object, 0);
}

void validate(const Aesthetics& aesthetics) {
    constexpr double countLimit = 0x1p63;
    for (const ParameterSpec& spec : parameterTable) {
        const double value = spec.value(aesthetics);
        requireFinite(spec, value);
        if (isCount(spec) && std::abs(value) >= countLimit)
            throw InvalidParameterError("{0} is too large", nameForReader(spec));
    }
    // Leaves room for the factor that a frame count adds; below it no product overflows to infinity.
    constexpr double stretchLimit = 1.0e280;
    const double longest = std::exp2(std::abs(aesthetics.stretchJitter)) * std::abs(aesthetics.stretch);
    if (!(longest <= stretchLimit))
        throw InvalidParameterError(
            "Time stretch (stretch) and stretch jitter (stretchJitter) are too large");
}

Aesthetics inRange(const Aesthetics& aesthetics) {
    validate(aesthetics);
    Aesthetics inside;
    for (const ParameterSpec& spec : parameterTable)
        inside.set(spec, spec.value(aesthetics));
    return inside;
}

}  // namespace quillmere
