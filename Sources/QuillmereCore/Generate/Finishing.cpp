#include "QuillmereCore/Generate/Finishing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <system_error>

#include "QuillmereCore/Util/Text.h"

namespace quillmere::Finishing {
namespace {

constexpr float workingPeak = 0.95F;
constexpr float silence = 1.0e-9F;

constexpr std::size_t blockSize = 128;
constexpr std::size_t leadIn = 32;
constexpr float audibleShare = 0.0018F;

std::vector<float> blockLevels(std::span<const float> x) {
    std::vector<float> levels(x.size() / blockSize);
    for (std::size_t block = 0; block < levels.size(); ++block) {
        float sum = 0;
        for (const float value : x.subspan(block * blockSize, blockSize))
            sum += value * value;
        levels[block] = std::sqrt(sum / static_cast<float>(blockSize));
    }
    return levels;
}

// The largest value; 0 when there is none above it (NaN counts as none).
float largest(std::span<const float> values) {
    float found = 0;
    for (const float value : values) {
        if (value > found) found = value;
    }
    return found;
}

// The largest |x|; NaN counts as none. In lanes, so that the compiler can use vectors.
float peakOf(std::span<const float> x) {
    constexpr std::size_t lanes = 16;
    std::array<float, lanes> peaks{};
    std::size_t n = 0;
    for (; n + lanes <= x.size(); n += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane)
            peaks[lane] = std::max(peaks[lane], std::abs(x[n + lane]));
    }
    for (; n < x.size(); ++n)
        peaks[0] = std::max(peaks[0], std::abs(x[n]));
    return std::ranges::max(peaks);
}

float amplitude(double dB) {
    return static_cast<float>(std::pow(10.0, dB / 20.0));
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    const std::filesystem::directory_iterator end;
    while (!error && entry != end) {
        names.push_back(Text::utf8(entry->path().filename()));
        entry.increment(error);
    }
    return names;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr std::size_t fewestDigits = 4;  // of the number in a name

// 0 for a name without a number.
std::size_t numberOf(std::string_view name, std::string_view start) {
    if (!name.starts_with(start)) return 0;
    const std::string_view rest = name.substr(start.size());
    const auto end = std::ranges::find_if_not(rest, isDigit);
    const auto number = Text::parseInteger(rest.substr(0, static_cast<std::size_t>(end - rest.begin())));
    return static_cast<std::size_t>(number.value_or(0));
}

}  // namespace

void blockDC(std::span<float> x) {
    float previousIn = 0;
    float previousOut = 0;
    for (float& value : x) {
        const float in = value;
        value = 0.995F * previousOut + in - previousIn;
        previousIn = in;
        previousOut = value;
    }
}

SampleRange audibleRange(std::span<const float> x, int sampleRate) {
    const SampleRange everything{0, x.size()};
    if (x.size() < 3 * blockSize) return everything;
    const std::vector<float> levels = blockLevels(x);
    const float loudest = largest(levels);
    if (!(loudest > silence)) return {0, blockSize};

    const auto sounds = [threshold = loudest * audibleShare](float level) { return level > threshold; };
    const auto first = std::find_if(levels.begin(), levels.end(), sounds);
    const auto afterLast = std::find_if(levels.rbegin(), levels.rend(), sounds).base();
    if (first == levels.end()) return everything;  // levels that overflowed to infinity
    const std::size_t onset = static_cast<std::size_t>(first - levels.begin()) * blockSize;
    const std::size_t offset = static_cast<std::size_t>(afterLast - levels.begin()) * blockSize;
    const auto tail = static_cast<std::size_t>(std::max(sampleRate, 0) / 100);
    return {onset - std::min(onset, leadIn), std::min(offset + tail, x.size())};
}

std::vector<float> trimSilence(std::vector<float> x, int sampleRate) {
    const SampleRange range = audibleRange(x, sampleRate);
    x.erase(x.begin() + static_cast<std::ptrdiff_t>(range.end), x.end());
    x.erase(x.begin(), x.begin() + static_cast<std::ptrdiff_t>(range.start));
    return x;
}

void normalize(std::span<float> x, float peak) {
    const float loudest = peakOf(x);
    if (!(loudest > silence)) return;
    const float gain = peak / loudest;
    for (float& value : x)
        value *= gain;
}

void applyDecay(std::span<float> x, double milliseconds, double sampleRate) {
    if (!(milliseconds > 0)) return;
    const auto tau = static_cast<float>(milliseconds / 1000.0 * sampleRate);
    // The factor of sample 0 is 1; a tau that vanishes in single precision would make it NaN.
    for (std::size_t n = 1; n < x.size(); ++n)
        x[n] *= std::exp(-static_cast<float>(n) / tau);
}

void applyDrive(std::span<float> x, double dB) {
    if (!(dB > 0)) return;
    const float gain = amplitude(dB);
    for (float& value : x)
        value = std::tanh(value * gain);
    normalize(x, workingPeak);
}

void decimate(std::span<float> x, double factor) {
    const double rounded = std::round(factor);
    if (!(rounded >= 2)) return;
    const double longest = std::max(static_cast<double>(x.size()), 2.0);
    const auto step = static_cast<std::size_t>(std::min(rounded, longest));
    for (std::size_t start = 0; start < x.size(); start += step) {
        const auto block = x.subspan(start, std::min(step, x.size() - start));
        std::ranges::fill(block, block.front());
    }
}

void crush(std::span<float> x, double bits) {
    if (!(bits < 23.5)) return;
    const auto steps = static_cast<float>(std::max(std::exp2(std::round(bits) - 1.0) - 1.0, 1.0));
    for (float& value : x)
        value = std::round(value * steps) / steps;
}

void applyFades(std::span<float> x, double sampleRate) {
    const std::size_t longest = x.size() / 4;
    const auto fadeIn = std::min(longest, static_cast<std::size_t>(0.001 * sampleRate));
    const auto fadeOut = std::min(longest, static_cast<std::size_t>(0.02 * sampleRate));
    for (std::size_t n = 0; n < fadeIn; ++n)
        x[n] *= static_cast<float>(n) / static_cast<float>(fadeIn);
    for (std::size_t i = 0; i < fadeOut; ++i)
        x[x.size() - 1 - i] *= static_cast<float>(i) / static_cast<float>(fadeOut);
}

void finish(std::vector<float>& x, const Aesthetics& aesthetics, double sampleRate, SeededRNG& rng) {
    blockDC(x);
    x = trimSilence(std::move(x), static_cast<int>(sampleRate));
    // Drawn even when reversal is off, so that the parameter does not change anything drawn later.
    const float u = rng.uniform();
    if (static_cast<float>(aesthetics.reverseChance) > u) std::ranges::reverse(x);
    applyDecay(x, aesthetics.decay, sampleRate);
    normalize(x, workingPeak);
    applyDrive(x, aesthetics.drive);
    decimate(x, aesthetics.decimate);
    crush(x, aesthetics.crushBits);
    applyFades(x, sampleRate);
    normalize(x, amplitude(aesthetics.normalize));
}

void fit(std::vector<float>& x, std::size_t length, float gain, double sampleRate) {
    constexpr double fadeSeconds = 0.005;
    const bool isCut = x.size() > length;
    x.resize(length);
    for (float& sample : x)
        sample *= gain;
    if (!isCut) return;
    const auto wanted = static_cast<std::size_t>(fadeSeconds * sampleRate);
    const std::size_t count = std::min(wanted, length / 4);
    for (std::size_t i = 0; i < count; ++i)
        x[length - 1 - i] *= static_cast<float>(i) / static_cast<float>(count);
}

std::string sanitisedPrefix(std::string_view prefix) {
    // All ASCII, so no byte of a longer UTF-8 character is ever taken for one of them.
    constexpr std::string_view refused("/\\:*?\"<>| \0", 11);
    std::string text(prefix);
    std::ranges::replace_if(
        text, [&](char c) { return refused.find(c) != std::string_view::npos; }, '_');
    return text;
}

std::string fileName(std::string_view prefix, std::size_t number) {
    const std::string digits = std::to_string(number);
    const std::string zeros(digits.size() < fewestDigits ? fewestDigits - digits.size() : 0, '0');
    return std::string(prefix) + "_" + zeros + digits + ".wav";
}

bool isVariationName(std::string_view name) {
    constexpr std::string_view suffix = ".wav";
    if (!name.ends_with(suffix)) return false;
    name.remove_suffix(suffix.size());
    const auto digits = std::ranges::find_if_not(name.rbegin(), name.rend(), isDigit) - name.rbegin();
    name.remove_suffix(static_cast<std::size_t>(digits));
    return static_cast<std::size_t>(digits) >= fewestDigits &&
           name.ends_with(std::string(variationMark) + "_");
}

std::size_t firstFreeIndex(std::span<const std::string> names, std::string_view prefix) {
    const std::string start = std::string(prefix) + "_";
    std::size_t last = 0;
    for (const std::string& name : names)
        last = std::max(last, numberOf(name, start));
    return last + 1;
}

std::size_t firstFreeIndex(const std::filesystem::path& folder, std::string_view prefix) {
    return firstFreeIndex(namesIn(folder), prefix);
}

}  // namespace quillmere::Finishing
