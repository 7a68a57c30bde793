// How long the map of a corpus takes to be painted, at rest and at each step of a pan: with 20,000 samples
// and 5,000 results on a large window it should take less than a frame of 16 ms.

#include <benchmark/benchmark.h>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <cstdint>
#include <memory>
#include <vector>

#include "QuillmereApp/Items/PointMapItem.h"
#include "Support/Processor.h"
#include "Support/SmallModel.h"

namespace {

using namespace quillmere;

constexpr int results = 5000;
constexpr QSize size(1600, 900);

// A map of so many samples with results on it, in a window of that many pixels per unit.
struct Shown {
    Shown(int clips, double ratio) : image(size * ratio, QImage::Format_RGB32) {
        ModelBundle bundle = testing::smallModel();
        bundle.latents = testing::randomLatents(static_cast<std::size_t>(clips), 4, 3);
        generator = std::make_shared<const SampleGenerator>(std::move(bundle), testing::processor());
        map.setCorpus(nullptr);
        map.setResults(samples());
        map.setShown(true);
        while (!map.isReady())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        item.setSize(size);
        item.setMap(&map);
        image.setDevicePixelRatio(ratio);
    }

    [[nodiscard]] std::vector<GeneratedSample> samples() const {
        std::vector<GeneratedSample> made(results);
        const auto latents = testing::randomLatents(results, 4, 4);
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i].origin.model = generator->identity();
            made[i].origin.latent = latents[i];
        }
        return made;
    }

    void paint() {
        QPainter painter(&image);
        item.paint(&painter);
    }

    Environment environment;
    std::shared_ptr<const SampleGenerator> generator;
    MapController map{environment, {.model = [this] { return generator; }, .audition = {}}};
    PointMapItem item;
    QImage image;
};

void paintStepOfAPan(benchmark::State& state) {
    Shown shown(static_cast<int>(state.range(0)), static_cast<double>(state.range(1)));
    shown.item.zoomAt({800, 450}, 2);
    double by = 1;
    for (auto _ : state) {
        shown.item.pan({by, by});
        shown.paint();
        by = -by;
    }
}
BENCHMARK(paintStepOfAPan)
    ->ArgNames({"samples", "ratio"})
    ->Args({1000, 1})
    ->Args({20000, 1})
    ->Args({20000, 2})
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
