#include "QuillmereApp/Waveform.h"

#include <QObject>
#include <limits>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

class WaveformTest : public QObject {
    Q_OBJECT

private slots:
    void takesTheLargestMagnitudeOfEachStretch() {
        const std::vector<float> samples{0.1F, -0.5F, 0.25F, 0, -1.0F, 0.125F};
        QCOMPARE(Waveform::peaks(samples, 3), QList<qreal>({0.5, 0.25, 1.0}));
        QCOMPARE(Waveform::peaks(samples, 1), QList<qreal>({1.0}));
    }

    void coversAllSamplesWhenTheyDoNotDivideEvenly() {
        std::vector<float> samples(1000, 0.0F);
        samples.back() = 1;
        const QList<qreal> peaks = Waveform::peaks(samples, 128);
        QCOMPARE(peaks.size(), 128);
        QCOMPARE(peaks.last(), 1.0);
        QCOMPARE(peaks.first(), 0.0);
    }

    void shortSoundsHaveOneValuePerSample() {
        const std::vector<float> samples{0.5F, 0.25F};
        QCOMPARE(Waveform::peaks(samples, 128), QList<qreal>({0.5, 0.25}));
        QCOMPARE(Waveform::peaks(std::span<const float>(), 128), QList<qreal>());
    }

    void staysWithinOne() {
        const std::vector<float> samples{3.0F, std::numeric_limits<float>::quiet_NaN(),
                                         std::numeric_limits<float>::infinity()};
        QCOMPARE(Waveform::peaks(samples, 3), QList<qreal>({1.0, 0.0, 1.0}));
    }

    void readsAFile() {
        TestWorld world;
        const auto file = toPath(world.path("a.wav"));
        AudioIO::write(std::vector<float>{0.5F, -0.25F}, file, 8000, OutputFormat::wav16);
        QCOMPARE(Waveform::peaks(file, 2), QList<qreal>({0.5, 0.25}));
        QVERIFY_THROWS_EXCEPTION(AudioIOError, (void)Waveform::peaks(toPath(world.path("none.wav")), 2));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::WaveformTest)
#include "WaveformTest.moc"
