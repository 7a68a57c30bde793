#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// How clips are analysed: fine in time, fine in frequency, or whichever suits the corpus.
enum class AnalysisProfile { automatic, percussive, tonal };

inline constexpr std::array<AnalysisProfile, 3> allAnalysisProfiles{
    AnalysisProfile::automatic, AnalysisProfile::percussive, AnalysisProfile::tonal};

[[nodiscard]] std::string_view rawValue(AnalysisProfile profile);  // "auto", "percussive", "tonal"
[[nodiscard]] Message word(AnalysisProfile profile);               // the same for people, within a sentence
[[nodiscard]] std::string_view label(AnalysisProfile profile);
[[nodiscard]] std::optional<AnalysisProfile> analysisProfile(std::string_view rawValue);

// The shape of everything a model touches.
struct ModelConfig {
    std::int64_t sampleRate = 44100;  // Hz
    std::int64_t nFFT = 1024;
    std::int64_t hop = 256;    // samples
    std::int64_t nMels = 96;   // image height, a multiple of 32
    std::int64_t frames = 32;  // image width, a multiple of 32
    std::int64_t latentDim = 64;
    AnalysisProfile profile = AnalysisProfile::automatic;

    // nFFT, hop and nMels from the profile; frames from the clip length. The profile is stored unchanged.
    static ModelConfig forSeconds(std::int64_t sampleRate, double seconds, AnalysisProfile profile,
                                  std::int64_t latentDim);

    // ceil(seconds * sampleRate / hop) rounded up to a multiple of 32, at least 32. A count that is not
    // finite or does not fit stops the program.
    static std::int64_t framesForSeconds(double seconds, std::int64_t sampleRate, std::int64_t hop);

    // The longest clip that problemWith lets pass, if nothing but its length stands against it.
    static double longestSeconds(std::int64_t sampleRate, AnalysisProfile profile);

    [[nodiscard]] std::int64_t clipSamples() const;  // frames * hop
    [[nodiscard]] double clipSeconds() const;

    friend bool operator==(const ModelConfig&, const ModelConfig&) = default;
};

// Why no model can have this configuration, or nothing: sizes that the transforms or the network cannot have,
// or that would need gigabytes (an image of more than 2^20 pixels, about a minute of audio at 44.1 kHz; more
// than 2^28 weights). For configurations from files and users; everything else in the library takes a
// configuration that passes, and may stop the program for one that does not.
[[nodiscard]] std::optional<Message> problemWith(const ModelConfig& config);

// One JSON object with exactly the seven keys, "profile" by its raw value. Decoding requires every key and
// throws DecodingError.
[[nodiscard]] std::string encodeJSON(const ModelConfig& config);
[[nodiscard]] ModelConfig decodeModelConfig(std::string_view json);

}  // namespace quillmere
