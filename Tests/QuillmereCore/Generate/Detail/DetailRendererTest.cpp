#include "QuillmereCore/Generate/Detail/DetailRenderer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "QuillmereCore/Generate/Rendering.h"
#include "Support/Signals.h"
#include "Support/SmallModel.h"

namespace quillmere::Detail {
namespace {

using Signal = std::vector<float>;
using testing::smallConfig;

constexpr ModelConfig wideConfig{.sampleRate = 44100,
                                 .nFFT = 4096,
                                 .hop = 1024,
                                 .nMels = 384,
                                 .frames = 32,
                                 .latentDim = 4,
                                 .profile = AnalysisProfile::tonal};

// A struck bar with some noise in its attack.
Signal strike(const ModelConfig& config) {
    const auto count = static_cast<std::size_t>(config.clipSamples());
    Signal samples = testing::sine(330, static_cast<double>(config.sampleRate), count);
    const Signal noise = testing::noise(8, count);
    const float decay = 5.0F / static_cast<float>(count);
    for (std::size_t n = 0; n < count; ++n) {
        const auto time = static_cast<float>(n);
        samples[n] =
            0.6F * samples[n] * std::exp(-decay * time) + 0.4F * noise[n] * std::exp(-9 * decay * time);
    }
    return samples;
}

// Everything that a rendering needs, with one source that the image shows.
class Scene {
public:
    explicit Scene(const ModelConfig& sceneConfig = smallConfig) : config(sceneConfig) {
        material.donor = strike(config);
        image = extractor.features(material.donor, stft);
        const AttackFrames attack = AttackFrames::forHop(config.hop);
        material.course.resize(static_cast<std::size_t>(config.nMels) * attack.count());
        addCourse(image, static_cast<std::size_t>(config.frames), attack, 1, material.course);
    }

    Signal render(const Aesthetics& aesthetics, float amount = 1, bool withSources = true) {
        SeededRNG rng(5);
        return renderer.waveform(image, aesthetics, {amount, withSources ? &material : nullptr, nullptr},
                                 stft, rng);
    }

    ModelConfig config;
    FeatureExtractor extractor{config};
    STFT stft = extractor.makeSTFT();
    DetailRenderer renderer{extractor};
    SourceMaterial material;
    Signal image;
};

bool isFinite(const Signal& samples) {
    return std::ranges::all_of(samples, [](float x) { return std::isfinite(x); });
}

double correlation(const Signal& a, const Signal& b, std::size_t count) {
    double ab = 0;
    double aa = 0;
    double bb = 0;
    for (std::size_t i = 0; i < count; ++i) {
        ab += static_cast<double>(a[i]) * static_cast<double>(b[i]);
        aa += static_cast<double>(a[i]) * static_cast<double>(a[i]);
        bb += static_cast<double>(b[i]) * static_cast<double>(b[i]);
    }
    return ab / std::sqrt(aa * bb);
}

TEST(DetailRenderer, DrawsWhatTheUsualRenderingDraws) {
    Scene scene;
    const std::vector<Aesthetics> cases{{.phaseIterations = 0},
                                        {.pitchJitter = 7, .phaseIterations = 0},
                                        {.stretch = 1.5, .stretchJitter = 0.5, .phaseIterations = 0},
                                        {.roughness = 0.4, .phaseIterations = 0}};
    for (const Aesthetics& aesthetics : cases) {
        for (const bool withSources : {true, false}) {
            const SourceMaterial* const sources = withSources ? &scene.material : nullptr;
            SeededRNG usual(6);
            SeededRNG detailed(6);
            const Signal expected =
                Rendering::waveform(scene.image, aesthetics, scene.extractor, scene.stft, usual);
            // Roughness draws for audible values only, and detail changes which are.
            const float amount = aesthetics.roughness > 0 ? 1e-6F : 1.0F;
            const Signal found = scene.renderer.waveform(scene.image, aesthetics, {amount, sources, nullptr},
                                                         scene.stft, detailed);
            EXPECT_EQ(found.size(), expected.size());
            EXPECT_EQ(detailed, usual);
        }
    }
}

TEST(DetailRenderer, GivesTheAttackOfItsSourceBack) {
    Scene scene;
    const Signal detailed = scene.render({});
    EXPECT_GT(correlation(detailed, scene.material.donor, 128), 0.9);
    SeededRNG rng(5);
    const Signal usual = Rendering::waveform(scene.image, {}, scene.extractor, scene.stft, rng);
    EXPECT_GT(correlation(detailed, scene.material.donor, 128),
              correlation(usual, scene.material.donor, 128) + 0.1);
}

TEST(DetailRenderer, KeepsTheLevelsOfTheImage) {
    for (const bool withSources : {true, false}) {
        Scene scene;
        const Signal image = scene.extractor.features(scene.render({}, 1, withSources), scene.stft);
        double error = 0;
        int count = 0;
        for (std::size_t i = 0; i < image.size(); ++i) {
            if (scene.image[i] < 0.2F) continue;  // -40 dB
            error += std::abs(static_cast<double>(image[i] - scene.image[i])) * 50;
            ++count;
        }
        EXPECT_GT(count, 50);
        EXPECT_LT(error / count, 4) << withSources;  // dB
    }
}

TEST(DetailRenderer, CopesWithEveryShape) {
    for (const ModelConfig& config : {smallConfig, wideConfig}) {
        Scene scene(config);
        for (const bool withSources : {true, false}) {
            const auto sizeAfter = [&](const Aesthetics& aesthetics, float amount = 1) {
                const Signal samples = scene.render(aesthetics, amount, withSources);
                EXPECT_TRUE(isFinite(samples));
                EXPECT_GT(std::ranges::max(samples), 1e-3F);
                return static_cast<std::int64_t>(samples.size());
            };
            EXPECT_EQ(sizeAfter({}, 0.5F), config.clipSamples());
            EXPECT_EQ(sizeAfter({.pitch = 24}), config.clipSamples());
            EXPECT_EQ(sizeAfter({.pitch = -24}), config.clipSamples());
            EXPECT_EQ(sizeAfter({.stretch = 8}), 8 * config.clipSamples());
            EXPECT_EQ(sizeAfter({.stretch = 0.01}), 8 * config.hop);
            EXPECT_EQ(sizeAfter({.pitch = 24, .stretch = 0.25}), 8 * config.hop);
        }
    }
}

TEST(DetailRenderer, CopesWithParametersFarBeyondTheSliders) {
    Scene scene;
    for (const double pitch : {-1e6, -200.0, 200.0, 1e6})
        EXPECT_EQ(scene.render({.pitch = pitch}).size(), 2048U) << pitch;
    EXPECT_EQ(scene.render({.tilt = 1e30}).size(), 2048U);
    EXPECT_EQ(scene.render({.contrast = -1e30}).size(), 2048U);
}

TEST(DetailRenderer, ASilentDonorGivesWayToNoise) {
    Scene scene;
    std::ranges::fill(scene.material.donor, 0.0F);
    EXPECT_TRUE(isFinite(scene.render({})));
    EXPECT_GT(std::ranges::max(scene.render({})), 1e-3F);
}

// How far the loudest sample of each hop stands out of it, on average: some 3 for noise, more for pulses.
double crest(std::span<const float> samples, std::size_t hop) {
    double sum = 0;
    const std::size_t hops = samples.size() / hop;
    for (std::size_t i = 0; i < hops; ++i) {
        double power = 0;
        double loudest = 0;
        for (const float x : samples.subspan(i * hop, hop)) {
            power += static_cast<double>(x) * static_cast<double>(x);
            loudest = std::max(loudest, std::abs(static_cast<double>(x)));
        }
        sum += loudest / std::sqrt(power / static_cast<double>(hop));
    }
    return sum / static_cast<double>(hops);
}

TEST(DetailRenderer, WhatOutlastsItsSourcesDoesNotBuzz) {
    Scene scene({.sampleRate = 44100,
                 .nFFT = 1024,
                 .hop = 256,
                 .nMels = 128,
                 .frames = 32,
                 .latentDim = 4,
                 .profile = AnalysisProfile::percussive});
    const std::size_t half = scene.material.donor.size() / 2;
    std::fill(scene.material.donor.begin() + static_cast<std::ptrdiff_t>(half), scene.material.donor.end(),
              0.0F);
    for (std::size_t i = 0; i < scene.image.size(); ++i) {  // the second half hisses
        if (i % 32 >= 16) scene.image[i] = 0.3F;
    }
    const auto hop = static_cast<std::size_t>(scene.config.hop);
    const Signal samples = scene.render({});
    const auto end = std::span(samples).subspan(half + 4 * hop);
    EXPECT_LT(crest(end, hop), 3.25);  // 3.5 with a pulse in each frame
}

TEST(DetailRenderer, ASilentImageIsSilent) {
    Scene scene;
    std::ranges::fill(scene.image, -1.0F);
    std::ranges::fill(scene.material.course, 0.0F);
    EXPECT_LT(std::ranges::max(scene.render({})), 1e-3F);
}

TEST(DetailRenderer, DependsOnItsInputAlone) {
    Scene scene;
    const Signal first = scene.render({.pitch = 3, .stretch = 1.3});
    (void)scene.render({.stretch = 4}, 0.5F);
    (void)scene.render({}, 1, false);
    EXPECT_EQ(scene.render({.pitch = 3, .stretch = 1.3}), first);
    Scene other;
    EXPECT_EQ(other.render({.pitch = 3, .stretch = 1.3}), first);
}

TEST(DetailRenderer, TailsSinkByTheCurve) {
    Scene scene;
    std::array<float, TailCurve::cells> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = TailCurve::middle(i) < -0.1F ? -1.0F : TailCurve::middle(i);
    for (std::size_t i = 0; i < scene.image.size(); ++i) {  // the second half hisses
        if (i % 32 >= 16) scene.image[i] = -0.3F;
    }
    const TailCurve curve(values);
    const auto endOf = [&](const TailCurve* tail) {
        SeededRNG rng(5);
        const Signal samples =
            scene.renderer.waveform(scene.image, {}, {1, &scene.material, tail}, scene.stft, rng);
        double power = 0;
        for (std::size_t n = samples.size() / 4 * 3; n < samples.size(); ++n)
            power += static_cast<double>(samples[n]) * static_cast<double>(samples[n]);
        return power;
    };
    EXPECT_LT(endOf(&curve), 1e-3 * endOf(nullptr));
}

}  // namespace
}  // namespace quillmere::Detail
