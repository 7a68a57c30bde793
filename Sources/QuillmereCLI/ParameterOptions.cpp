#include "QuillmereCLI/ParameterOptions.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <limits>
#include <random>

#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ParameterNames.h"
#include "QuillmereCLI/Wording.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::cli {
namespace {

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    names.reserve(allOutputFormats.size());
    for (const OutputFormat format : allOutputFormats)
        names.emplace_back(rawValue(format));
    return names;
}

std::string readSmallFile(const std::filesystem::path& file) {
    constexpr std::streamsize limit = 1 << 20;  // a real one has about 500 bytes
    std::ifstream stream(file, std::ios::binary);
    if (!stream) throw FileError(file, std::error_code(errno, std::generic_category()));
    std::string text(static_cast<std::size_t>(limit) + 1, '\0');
    errno = 0;
    stream.read(text.data(), limit + 1);
    if (stream.bad() || (errno != 0 && stream.gcount() == 0))
        throw FileError(file, std::error_code(errno != 0 ? errno : EIO, std::generic_category()));
    if (stream.gcount() > limit) throw FileError(file, std::make_error_code(std::errc::file_too_large));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

// The file's values as they are, its numbers may go beyond the ranges of the sliders. Throws Failure for
// those that no generation could work with.
Aesthetics readAesthetics(const std::filesystem::path& file) {
    constexpr double mostIterations = 10'000;  // more would look like a hang
    const std::string text = readSmallFile(file);
    try {
        const Aesthetics aesthetics = decodeAesthetics(text);
        validate(aesthetics);
        if (aesthetics.phaseIterations > mostIterations)
            throw InvalidParameterError("Phase passes (phaseIterations) are too many");
        return aesthetics;
    } catch (const Failure& failure) {
        throw DecodingError("{0}: {1}", file, failure.message());
    }
}

// Stores value within the range of spec, and says so when that changes it.
void setNoted(Aesthetics& aesthetics, const ParameterSpec& spec, double value, Console& console) {
    aesthetics.set(spec, value);
    const double used = spec.value(aesthetics);
    if (used != value) {
        console.note(tr("Note: {0} goes from {1} to {2}; using {3}.", spec.id, spec.format(spec.lower),
                        spec.format(spec.upper), spec.format(used)));
    }
}

}  // namespace

void ParameterOptions::addTo(CLI::App& app, Ranges ranges) {
    const auto storePreset = [this](const std::string& name) {
        preset_ = Preset::named(name);
        if (preset_ == nullptr) {
            throwUsageError("--preset", tr("must be one of {0}, not \"{1}\"", enumeration(presetNames()),
                                           printable(name)));
        }
    };
    CLI::Option* const preset = app.add_option_function<std::string>(
                                       "--preset", storePreset, tr("Character to start from; see 'presets'"))
                                    ->type_name("NAME")
                                    ->default_str("Balanced");
    CLI::Option* const file =
        addPath(app, "--aesthetics", file_, tr("Start from the twenty parameters of a JSON file instead"))
            ->type_name("FILE.json");
    file->excludes(preset);

    const bool takesRanges = ranges == Ranges::taken;
    const auto storeAssignments = [this, takesRanges](const std::vector<std::string>& texts) {
        assignments_.clear();
        ranges_.clear();
        for (const std::string& text : texts) {
            const std::optional<Sweep::Axis> range = takesRanges ? parseRange(text) : std::nullopt;
            if (range) {
                ranges_.push_back(*range);
            } else {
                assignments_.push_back(parseAssignment(text));
            }
        }
    };
    app.add_option_function<std::vector<std::string>>(
           "--set", storeAssignments,
           takesRanges ? tr("Range of a parameter, as pitch=-12:12:7, or one value; may be repeated; see "
                            "'parameters'")
                       : tr("Change one parameter; may be repeated; see 'parameters'"))
        ->type_name(takesRanges ? "ID=FROM:TO:COUNT" : "ID=VALUE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);

    addReal(app, "--detail", detail_, {0, 1},
            tr("How much fine structure and attack to take from the samples themselves"))
        ->default_str("0");
    addSeed(app, seed_, tr("The same number gives the same result"))->default_str(tr("a fresh one"));
    formatOption_ =
        addChoice(app, "--format", format_, formatNames(), tr("Sample format"))->default_str(format_);
}

std::optional<Sweep::Axis> ParameterOptions::parseRange(const std::string& text) {
    constexpr std::int64_t fewest = 2;
    const std::size_t first = text.find(':');
    if (first == std::string::npos) return std::nullopt;
    const std::size_t second = std::min(text.find(':', first + 1), text.size());
    const Assignment from = parseAssignment(text.substr(0, first));
    const auto to = ParameterSpec::parse(text.substr(first + 1, second - first - 1));
    const auto count =
        second < text.size() ? Text::parseInteger(text.substr(second + 1)) : std::optional<std::int64_t>();
    if (!to || !count || *count < fewest || *count > std::numeric_limits<int>::max())
        throwUsageError("--set", tr("must look like pitch=-12:12:7, not \"{0}\"", printable(text)));
    const ParameterSpec& spec = *from.spec;
    for (const double value : {from.value, *to}) {
        if (value < spec.lower || value > spec.upper)
            throwUsageError("--set",
                            tr("{0} goes from {1} to {2}, not to {3}", spec.id, spec.format(spec.lower),
                               spec.format(spec.upper), spec.format(value)));
    }
    return Sweep::Axis{from.spec, from.value, *to, *count};
}

ParameterOptions::Assignment ParameterOptions::parseAssignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throwUsageError("--set", tr("must look like pitch=-3, not \"{0}\"", printable(text)));
    const std::string id = text.substr(0, equals);
    const std::string number = text.substr(equals + 1);
    const ParameterSpec* const spec = Aesthetics::spec(id);
    if (spec == nullptr) {
        throwUsageError("--set", tr("\"{0}\" is no parameter; the parameters are {1}", printable(id),
                                    enumeration(parameterIDs())));
    }
    const auto value = ParameterSpec::parse(number);
    if (!value) throwUsageError("--set", tr("{0} must be a number, not \"{1}\"", id, printable(number)));
    return {spec, *value};
}

Aesthetics ParameterOptions::aesthetics(Console& console) const {
    return changed({}, console);
}

Aesthetics ParameterOptions::changed(const Aesthetics& start, Console& console) const {
    Aesthetics result = start;
    if (preset_ != nullptr) result = preset_->aesthetics;
    if (!file_.empty()) result = readAesthetics(file_);
    for (const Assignment& assignment : assignments_)
        setNoted(result, *assignment.spec, assignment.value, console);
    return result;
}

void ParameterOptions::notePlaceless(const std::string& reason, Console& console) const {
    for (const Assignment& assignment : assignments_) {
        if (assignment.spec->group != ParameterSpec::Group::latent) continue;
        console.note(tr("Note: {0} changes nothing here: {1}", assignment.spec->id, reason));
    }
}

std::uint64_t ParameterOptions::seed() const {
    if (seed_) return *seed_;
    std::random_device device;
    return (static_cast<std::uint64_t>(device()) << 32U) | device();
}

}  // namespace quillmere::cli
