#include "QuillmereCore/Origin/Verification.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "QuillmereCore/Audio/RIFFChunk.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

// The digest of the file that the recipe gives.
std::string remadeDigest(const KnownFile& known, std::span<const float> samples, int sampleRate) {
    const OutputFormat format = known.recipes.front().format;
    std::vector<std::byte> bytes = AudioIO::encode(samples, known.file, sampleRate, format);
    if (!known.chunk.empty() && !RIFFChunk::append(bytes, recipeChunk, known.chunk)) return {};
    return sha256(bytes);
}

void compareSound(Verification& result, std::span<const float> expected, int sampleRate) {
    const AudioIO::MonoAudio audio = AudioIO::readMono(result.file);
    if (audio.sampleRate != sampleRate) {
        result.verdict = Verdict::different;
        result.reason = Message("it has another sample rate");
        return;
    }
    const auto [here, there] = std::ranges::mismatch(audio.samples, expected);
    if (here == audio.samples.end() && there == expected.end()) {
        result.verdict = Verdict::sameSamples;
        return;
    }
    result.verdict = Verdict::different;
    result.firstDifference = static_cast<std::size_t>(here - audio.samples.begin());
    const bool isShorter = here == audio.samples.end();
    const bool isLonger = there == expected.end();
    const std::size_t where = *result.firstDifference;
    const auto count = static_cast<std::int64_t>(where);
    result.reason = isShorter  ? Message::counted(count, "it ends after {0} samples of {1}",
                                                  "it ends after {0} samples of {1}", expected.size())
                    : isLonger ? Message::counted(count, "it goes on after its {0} samples",
                                                  "it goes on after its {0} samples")
                               : Message("the first sample that differs is {0}", where);
    if (result.recipe->device != deviceProcessor)
        result.reason =
            Message("{0}; it was made on another device ({1})", result.reason, result.recipe->device);
}

void compare(Verification& result, const KnownFile& known, std::span<const float> samples, int sampleRate) {
    if (remadeDigest(known, samples, sampleRate) == known.digests.bytes) {
        result.verdict = Verdict::sameBytes;
        return;
    }
    compareSound(result, AudioIO::asWritten(samples, result.recipe->format), sampleRate);
}

// With detail, other sounds to take it from make another file.
void noteOtherBasis(Verification& result, DetailBasis basis) {
    if (result.isSame() || result.recipe->detailBasis == basis) return;
    const bool wasKept = result.recipe->detailBasis == DetailBasis::kept;
    result.reason =
        wasKept ? Message("{0}; the samples that its detail is from are no longer kept with the model",
                          result.reason)
                : Message("{0}; the samples that its detail is from are no longer there as they were",
                          result.reason);
}

void refuse(Verification& result, const Failure& failure) {
    result.verdict = Verdict::unusable;
    result.reason = failure.message();
}

// The samples of each plan, or why there are none.
void remakeEach(SampleGenerator& generator, std::span<const std::size_t> part,
                std::span<const KnownFile> known, std::vector<Verification>& results,
                const std::stop_token& stop) {
    std::vector<VariationPlan> plans;
    for (const std::size_t i : part)
        plans.push_back(known[i].recipes.front().plan());
    std::vector<AuditionedSample> samples;
    try {
        samples = generator.remake(plans, stop);
    } catch (const InvalidParameterError& error) {
        if (part.size() == 1) return refuse(results[part[0]], error);
        // One of them spoils the lot.
        for (std::size_t k = 0; k < part.size(); ++k)
            remakeEach(generator, part.subspan(k, 1), known, results, stop);
        return;
    }
    for (std::size_t k = 0; k < part.size(); ++k) {
        try {
            compare(results[part[k]], known[part[k]], samples[k].samples, generator.sampleRate());
            noteOtherBasis(results[part[k]], samples[k].origin.detailBasis);
        } catch (const Failure& failure) {
            refuse(results[part[k]], failure);
        }
    }
}

// What files are made again with: a model, and sounds for detail.
struct Means {
    std::string model;
    DetailBasis basis = DetailBasis::none;

    bool operator<(const Means& other) const {
        return std::tie(model, basis) < std::tie(other.model, other.basis);
    }
};
Means meansOf(const Recipe& recipe) {
    return {recipe.model, recipe.detail > 0 ? recipe.detailBasis : DetailBasis::none};
}

// Files of the same means.
void verifyGroup(std::span<const std::size_t> group, std::span<const KnownFile> known,
                 std::vector<Verification>& results, const fs::path& root, network::Backend& backend,
                 const std::function<void(std::size_t)>& done, const std::stop_token& stop) {
    const Recipe& recipe = known[group.front()].recipes.front();
    FoundModel found = findModel(recipe, root, stop);
    if (!found.bundle) {
        for (const std::size_t i : group) {
            results[i].verdict = found.hasChanged ? Verdict::modelChanged : Verdict::modelMissing;
            results[i].reason = missingModelText(recipe, found, root);
        }
        return done(group.size());
    }
    std::vector<std::size_t> fitting;
    for (const std::size_t i : group) {
        try {
            requireFit(known[i].recipes.front(), *found.bundle);
            fitting.push_back(i);
        } catch (const RecipeError& error) {
            refuse(results[i], error);
        }
    }
    done(group.size() - fitting.size());
    ClipSounds sounds = recipe.detail > 0 ? learnedSounds(found, recipe.detailBasis, stop) : ClipSounds();
    SampleGenerator generator(std::move(*found.bundle), backend, std::move(sounds));
    constexpr auto batch = static_cast<std::size_t>(SampleGenerator::batch);
    for (std::span<const std::size_t> rest = fitting; !rest.empty();) {
        const auto part = rest.first(std::min(batch, rest.size()));
        remakeEach(generator, part, known, results, stop);
        done(part.size());
        rest = rest.subspan(part.size());
    }
}

}  // namespace

std::string_view rawValue(Verdict verdict) {
    switch (verdict) {
        case Verdict::sameBytes:
            return "sameBytes";
        case Verdict::sameSamples:
            return "sameSamples";
        case Verdict::different:
            return "different";
        case Verdict::modelMissing:
            return "modelMissing";
        case Verdict::modelChanged:
            return "modelChanged";
        case Verdict::unknown:
            return "unknown";
        case Verdict::unusable:
            break;
    }
    return "unusable";
}

std::vector<Verification> verify(std::span<const KnownFile> known, const fs::path& root,
                                 network::Backend& backend, const VerificationProgress& progress,
                                 const std::stop_token& stop) {
    std::vector<Verification> results(known.size());
    std::map<Means, std::vector<std::size_t>> groups;
    std::size_t ended = 0;
    const auto done = [&](std::size_t count) {
        ended += count;
        if (count > 0 && progress) progress(ended, known.size());
    };
    for (std::size_t i = 0; i < known.size(); ++i) {
        results[i].file = known[i].file;
        if (!known[i].problem.empty()) {
            results[i].verdict = known[i].isUnknown ? Verdict::unknown : Verdict::unusable;
            results[i].reason = known[i].problem;
            done(1);
            continue;
        }
        results[i].recipe = known[i].recipes.front();
        groups[meansOf(known[i].recipes.front())].push_back(i);
    }
    for (const auto& [means, group] : groups)
        verifyGroup(group, known, results, root, backend, done, stop);
    return results;
}

}  // namespace quillmere
