#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Training/Augmentation.h"
#include "QuillmereCore/Model/Training/BatchSource.h"
#include "QuillmereCore/Model/Training/Schedule.h"
#include "QuillmereCore/Model/Training/TrainingLoop.h"
#include "QuillmereCore/Model/Training/TrainingProgress.h"
#include "Support/Processor.h"

namespace quillmere::golden {
namespace {

Outputs schedule(const Case& vector) {
    const ModelTrainer::Schedule result = ModelTrainer::schedule(
        vector.input.at("t").get<std::int64_t>(), vector.input.at("T").get<std::int64_t>(),
        vector.input.at("learningRate").get<float>(), vector.input.at("klWeight").get<float>());
    Outputs out;
    out.value("learningRate", result.learningRate);
    out.value("klWeight", result.klWeight);
    out.value("warm", result.warm);
    out.value("decay", result.decay);
    out.value("bias", result.bias);
    return out;
}

Outputs deckOrder(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    ModelTrainer::Deck deck(vector.input.at("clips").get<std::size_t>());
    Json indices = Json::array();
    for (int i = 0; i < vector.input.at("draws").get<int>(); ++i) {
        indices.push_back(deck.draw(rng));
    }
    Outputs out;
    out.value("indices", indices);
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs boundedInteger(const Case& vector) {
    SeededRNG rng = seededGenerator(vector.input);
    const std::uint64_t bound = word(vector.input.at("bound"));
    Json values = Json::array();
    for (int i = 0; i < vector.input.at("count").get<int>(); ++i) {
        values.push_back(wordText(ModelTrainer::boundedInteger(rng, bound)));
    }
    Outputs out;
    out.value("values", values);
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs maxShift(const Case& vector) {
    ModelConfig config;
    config.sampleRate = vector.input.at("sampleRate").get<std::int64_t>();
    config.hop = vector.input.at("hop").get<std::int64_t>();
    Outputs out;
    out.value("maxShift", ModelTrainer::maxShift(config));
    return out;
}

Outputs augment(const Case& vector) {
    const ModelConfig config = modelConfig(vector.input.at("config"));
    SeededRNG rng = seededGenerator(vector.input);
    SeededRNG drawing = rng;
    const ModelTrainer::Augmentation drawn = ModelTrainer::drawAugmentation(config, drawing);
    Outputs out;
    out.array("image", ModelTrainer::augment(floats(vector.input.at("image")), config, rng));
    out.value("shift", drawn.shift);
    out.value("melShift", drawn.melShift);
    out.value("gain", drawn.gain);
    out.value("stateAfter", stateText(rng));
    return out;
}

Outputs batches(const Case& vector) {
    const ModelConfig config = modelConfig(vector.input.at("config"));
    const std::vector<std::vector<float>> images = floatArrays(vector.input.at("images"));
    const auto batchSize = vector.input.at("batchSize").get<std::int64_t>();
    ModelTrainer::BatchSource source(config, images, batchSize, word(vector.input.at("seed")));
    std::vector<float> x(static_cast<std::size_t>(batchSize * config.nMels * config.frames));
    std::vector<float> eps(static_cast<std::size_t>(batchSize * config.latentDim));
    Outputs out;
    Json indices = Json::array();
    for (int step = 1; step <= vector.input.at("steps").get<int>(); ++step) {
        source.next(x, eps);
        out.array("x" + std::to_string(step), x);
        out.array("eps" + std::to_string(step), eps);
        indices.push_back(std::vector<std::size_t>(source.indices().begin(), source.indices().end()));
    }
    out.value("indices", indices);
    out.value("stateAfter", stateText(source.rng()));
    return out;
}

Outputs train(const Case& vector) {
    const ModelConfig config = modelConfig(vector.input.at("config"));
    TrainingOptions options;
    options.steps = vector.input.at("steps").get<std::int64_t>();
    options.batchSize = vector.input.at("batchSize").get<std::int64_t>();
    options.learningRate = vector.input.at("learningRate").get<float>();
    options.klWeight = vector.input.at("klWeight").get<float>();
    options.latentDim = config.latentDim;
    options.profile = config.profile;
    options.seed = word(vector.input.at("seed"));
    std::vector<float> loss, mse, kl;
    const ModelTrainer::TrainedNetwork trained = ModelTrainer::trainOnImages(
        config, floatArrays(vector.input.at("images")), options, [](const TrainingProgress&) {}, {},
        testing::processor(),
        [&](const network::StepResult& result) {
            loss.push_back(result.loss);
            mse.push_back(result.mse);
            kl.push_back(result.kl);
        });
    Outputs out;
    out.array("loss", loss);
    out.array("mse", mse);
    out.array("kl", kl);
    out.value("finalLoss", trained.finalLoss);
    out.value("finalReconstructionError", trained.finalReconstructionError);
    out.array("latents", joinRows(trained.latents));
    return out;
}

Outputs clipSeconds(const Case& vector) {
    Outputs out;
    out.value("seconds", ClipPreparation::suggestClipSeconds(
                             vector.input.at("activeSeconds").get<std::vector<double>>()));
    return out;
}

Outputs resolvedProfile(const Case& vector) {
    Outputs out;
    out.value("profile", rawValue(ClipPreparation::resolveProfile(
                             vector.input.at("activeSeconds").get<std::vector<double>>(),
                             vector.input.at("flatness").get<std::vector<double>>())));
    return out;
}

Outputs smoothing(const Case& vector) {
    ModelTrainer::Smoothing smoothing;
    std::vector<float> smoothed;
    for (const float value : floats(vector.input.at("values"))) {
        smoothed.push_back(smoothing.add(value));
    }
    Outputs out;
    out.array("smoothed", smoothed);
    return out;
}

Outputs reports(const Case& vector) {
    const auto steps = vector.input.at("steps").get<std::int64_t>();
    Json reported = Json::array();
    std::vector<double> fractions;
    for (std::int64_t t = 1; t <= steps; ++t) {
        if (!ModelTrainer::isReported(t, steps)) continue;
        reported.push_back(t);
        fractions.push_back(ModelTrainer::trainingFraction(t, steps));
    }
    Outputs out;
    out.value("reported", reported);
    out.array("fractions", fractions);
    return out;
}

Outputs analysingMessage(const Case& vector) {
    Outputs out;
    const TrainingProgress report = ModelTrainer::analysisStarted(
        profile(vector.input.at("profile")), vector.input.at("clipSeconds").get<double>());
    out.value("text", report.message);
    return out;
}

Outputs defaults(const Case& /*vector*/) {
    const TrainingOptions options;
    Outputs out;
    out.value("steps", options.steps);
    out.value("batchSize", options.batchSize);
    out.value("learningRate", options.learningRate);
    out.value("klWeight", options.klWeight);
    out.value("latentDim", options.latentDim);
    out.value("clipSeconds", options.clipSeconds ? Json(*options.clipSeconds) : Json());
    out.value("profile", rawValue(options.profile));
    out.value("seed", options.seed);
    return out;
}

}  // namespace

Area trainerArea() {
    return {"trainer",
            {{"Trainer",
              {{"schedule", schedule},
               {"deckOrder", deckOrder},
               {"boundedInteger", boundedInteger},
               {"maxShift", maxShift},
               {"augment", augment},
               {"batches", batches},
               {"train", train},
               {"clipSeconds", clipSeconds},
               {"profile", resolvedProfile},
               {"smoothing", smoothing},
               {"reports", reports},
               {"analysingMessage", analysingMessage},
               {"defaults", defaults}}}}};
}

}  // namespace quillmere::golden
