// Learns a folder of samples and writes new ones: learn-and-generate FOLDER OUTPUT [STEPS]

#include <cstdlib>
#include <exception>
#include <iostream>

#include <QuillmereCore/Generate/Generator.h>
#include <QuillmereCore/Model/Corpus.h>
#include <QuillmereCore/Model/Trainer.h>
#include <QuillmereCore/Network/Device/GPU.h>

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: learn-and-generate FOLDER OUTPUT [STEPS]\n";
        return 2;
    }
    try {
        const quillmere::CorpusSummary corpus = quillmere::Corpus::scan(argv[1]);

        quillmere::TrainingOptions options;
        options.steps = argc > 3 ? std::max(1L, std::atol(argv[3])) : 800;
        const auto progress = [](const quillmere::TrainingProgress& report) {
            std::cout << static_cast<int>(100 * report.fraction) << " % " << report.message << "\n";
        };
        quillmere::network::Backend& backend = quillmere::GPU::shared().graphDevice();
        const std::stop_token never;
        quillmere::ModelBundle model =
            quillmere::ModelTrainer::train(corpus, options, progress, never, backend);

        quillmere::SampleGenerator generator(std::move(model), backend);
        quillmere::GenerationRequest request;
        request.count = 4;
        request.outputDirectory = argv[2];
        request.seed = 7;
        for (const quillmere::GeneratedSample& file : generator.generate(request, {}, never))
            std::cout << file.url.string() << ", " << file.seconds << " s\n";
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << "\n";  // a sentence for people
        return 1;
    }
}
