// Levels, and gains that let two sounds be compared.

#include <QObject>
#include <cmath>
#include <vector>

#include "QuillmereApp/LevelMatch.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

std::vector<float> tone(double amplitude) {
    return sine(440, 8000, 4000, amplitude);
}

bool isNear(double value, double expected) {
    return std::abs(value - expected) < 0.005 * std::abs(expected) + 1e-6;
}

}  // namespace

class LevelMatchTest : public QObject {
    Q_OBJECT

private slots:
    void measuresPeakAndLoudness() {
        const auto level = LevelMatch::measure(tone(0.5), 8000);
        QVERIFY(isNear(level.peak, 0.5));
        QVERIFY(isNear(level.loudness, 0.5 / std::sqrt(2.0)));
    }

    void silenceAroundASoundMakesItNoSofter() {
        std::vector<float> samples = tone(0.5);
        samples.insert(samples.begin(), 8000, 0.0F);
        samples.insert(samples.end(), 16000, 0.0F);
        QVERIFY(isNear(LevelMatch::measure(samples, 8000).loudness, 0.5 / std::sqrt(2.0)));
    }

    void silenceHasNoLevel() {
        for (const std::vector<float>& samples : {std::vector<float>(), std::vector<float>(100)}) {
            const auto level = LevelMatch::measure(samples, 8000);
            QCOMPARE(level.peak, 0.0);
            QCOMPARE(level.loudness, 0.0);
            const auto gains = LevelMatch::gains(level, LevelMatch::measure(tone(0.5), 8000));
            QCOMPARE(gains.first, 1.0F);
            QCOMPARE(gains.second, 1.0F);
        }
    }

    void theSecondBecomesAsLoudAsTheFirst() {
        const auto gains =
            LevelMatch::gains(LevelMatch::measure(tone(0.6), 8000), LevelMatch::measure(tone(0.2), 8000));
        QCOMPARE(gains.first, 1.0F);
        QVERIFY(isNear(gains.second, 3));
    }

    void bothBecomeSofterWhereTheSecondWouldExceedFullScale() {
        // As loud as the other it would have a peak of 2.
        const LevelMatch::Level first{.peak = 1, .loudness = 0.5};
        const LevelMatch::Level second{.peak = 0.4, .loudness = 0.1};
        const auto gains = LevelMatch::gains(first, second);
        QVERIFY(isNear(static_cast<double>(gains.second) * second.peak, 1));
        QVERIFY(isNear(static_cast<double>(gains.first) * first.loudness,
                       static_cast<double>(gains.second) * second.loudness));
        QVERIFY(gains.first < 1);
    }

    void decibelsOfPartsOfFullScale() {
        QCOMPARE(LevelMatch::decibels(1), 0.0);
        QVERIFY(isNear(LevelMatch::decibels(0.5), -6.0206));
        QCOMPARE(LevelMatch::decibels(0), -100.0);
        QCOMPARE(LevelMatch::decibels(1e-9), -100.0);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::LevelMatchTest)
#include "LevelMatchTest.moc"
