#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSet>
#include <QTest>
#include <cmath>
#include <limits>
#include <memory>

#include "QuillmereApp/Items/Fonts.h"
#include "QuillmereApp/Items/Icon.h"
#include "QuillmereApp/Items/IconShapes.h"
#include "QuillmereApp/Items/LossChart.h"
#include "QuillmereApp/Items/WaveformItem.h"
#include "QuillmereApp/LossHistory.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere {
namespace {

QImage painted(QQuickPaintedItem& item, QSize size) {
    item.setSize(size);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    item.paint(&painter);
    return image;
}

// Pixels that are at least half covered.
int inked(const QImage& image, QRect where) {
    int count = 0;
    for (int y = where.top(); y <= where.bottom(); ++y) {
        for (int x = where.left(); x <= where.right(); ++x)
            count += qAlpha(image.pixel(x, y)) >= 128 ? 1 : 0;
    }
    return count;
}
int inked(const QImage& image) {
    return inked(image, image.rect());
}

int inkedOf(const QImage& image, QRgb color) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == color ? 1 : 0;
    }
    return count;
}

}  // namespace

class PaintedItemsTest : public QObject {
    Q_OBJECT

private slots:
    // ---- Icons

    void everyIconHasAShapeOfItsOwnWithinTheSquare() {
        QSet<QString> shapes;
        for (const QString& name : IconShapes::names()) {
            const QPainterPath& shape = IconShapes::shape(name);
            QVERIFY2(!shape.isEmpty(), qPrintable(name));
            QVERIFY2(QRectF(0, 0, IconShapes::side, IconShapes::side).contains(shape.boundingRect()),
                     qPrintable(name));
            QString text;
            QDebug(&text) << shape;
            shapes.insert(text);
        }
        QCOMPARE(shapes.size(), IconShapes::names().size());
    }
    void theNamedIconsAreThere_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"exclamationmark.triangle.fill", "checkmark.circle.fill",
                                 "folder.badge.plus", "play.circle", "stop.fill", "arrow.counterclockwise"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void theNamedIconsAreThere() {
        QFETCH(QString, name);
        QVERIFY(IconShapes::names().contains(name));
    }
    void anUnknownIconPaintsNothing() {
        Icon icon;
        icon.setName(QStringLiteral("no such icon"));
        QCOMPARE(inked(painted(icon, {24, 24})), 0);
    }
    void anIconIsPaintedInItsColourAndFillsItsSquare() {
        Icon icon;
        icon.setName(QStringLiteral("stop.fill"));
        icon.setColor(Qt::red);
        const QImage image = painted(icon, {48, 48});
        QCOMPARE(image.pixel(24, 24), qRgb(255, 0, 0));
        QCOMPARE(inked(image, {0, 0, 9, 48}), 0);
    }
    void anIconStaysSquareInAWidePlace() {
        Icon icon;
        icon.setName(QStringLiteral("checkmark.circle.fill"));
        const QImage image = painted(icon, {96, 24});
        QCOMPARE(inked(image, {0, 0, 36, 24}), 0);
        QVERIFY(inked(image, {36, 0, 24, 24}) > 200);
    }

    // ---- Waveform

    void silenceIsTheMiddleLine() {
        WaveformItem waveform;
        const QImage image = painted(waveform, {120, 40});
        QVERIFY(inked(image) >= 120);
        QCOMPARE(inked(image, {0, 0, 120, 18}), 0);
    }
    void aLoudStartIsHighAtTheLeft() {
        WaveformItem waveform;
        QList<qreal> peaks(128, 0.05);
        std::fill(peaks.begin(), peaks.begin() + 64, 1.0);
        waveform.setPeaks(peaks);
        const QImage image = painted(waveform, {120, 40});
        QVERIFY(inked(image, {0, 0, 60, 10}) > 200);
        QCOMPARE(inked(image, {64, 0, 56, 10}), 0);
        // Mirrored about the middle.
        QVERIFY(std::abs(inked(image, {0, 0, 60, 20}) - inked(image, {0, 20, 60, 20})) <= 60);
    }
    void peaksAreGatheredIntoTheLargestOfEachStretch() {
        QCOMPARE(WaveformItem::gathered({0.1, 0.9, 0.2, 0.3}, 2), (QList<qreal>{0.9, 0.3}));
        QCOMPARE(WaveformItem::gathered({0.1, 0.9}, 10), (QList<qreal>{0.1, 0.9}));
        QCOMPARE(WaveformItem::gathered({}, 10), QList<qreal>());
        QCOMPARE(WaveformItem::gathered({0.5}, 0), QList<qreal>());
    }
    void peaksOutOfRangeAreClamped() {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QCOMPARE(WaveformItem::gathered({-1, 7, nan}, 3), (QList<qreal>{0, 1, 0}));
    }

    // ---- Chart

    void anEmptyChartHasAxesOnly() {
        LossHistory history;
        LossChart chart;
        chart.setPoints(&history);
        chart.setLineColor(Qt::red);
        QCOMPARE(inkedOf(painted(chart, {300, 150}), qRgb(255, 0, 0)), 0);
        QCOMPARE(chart.description(), QStringLiteral("No loss yet"));
    }
    void aFallingLossGoesDownToTheRight() {
        LossHistory history;
        LossChart chart;
        chart.setPoints(&history);
        chart.setLineColor(Qt::red);
        chart.setGridColor(Qt::transparent);
        chart.setTextColor(Qt::transparent);
        chart.setSteps(100);
        for (int step = 1; step <= 100; ++step)
            history.add(step, 1.0 / step);
        const QImage image = painted(chart, {300, 150});
        const auto highest = [&](int x) {
            for (int y = 0; y < image.height(); ++y) {
                if (qAlpha(image.pixel(x, y)) > 200) return y;
            }
            return image.height();
        };
        QVERIFY(highest(60) < highest(150));
        QVERIFY(highest(150) <= highest(290));
        QCOMPARE(chart.description(), QStringLiteral("Loss 0.01 at step 100"));
    }
    void theLineEndsWhereTheTrainingIs() {
        LossHistory history;
        LossChart chart;
        chart.setPoints(&history);
        chart.setGridColor(Qt::transparent);
        chart.setTextColor(Qt::transparent);
        chart.setSteps(1000);
        history.add(10, 0.5);
        history.add(500, 0.5);
        const QImage image = painted(chart, {300, 150});
        QVERIFY(inked(image, {40, 0, 120, 150}) > 0);
        QCOMPARE(inked(image, {200, 0, 100, 150}), 0);
    }
    void aSinglePointIsADot() {
        LossHistory history;
        LossChart chart;
        chart.setPoints(&history);
        chart.setGridColor(Qt::transparent);
        chart.setTextColor(Qt::transparent);
        chart.setSteps(100);
        history.add(50, 0.7);
        const int dot = inked(painted(chart, {300, 150}));
        QVERIFY2(dot > 10 && dot < 60, qPrintable(QString::number(dot)));
    }
    void lossThatIsNoNumberIsLeftOut() {
        LossHistory history;
        LossChart chart;
        chart.setPoints(&history);
        history.add(1, std::numeric_limits<double>::quiet_NaN());
        history.add(2, std::numeric_limits<double>::infinity());
        chart.setLineColor(Qt::red);
        QCOMPARE(inkedOf(painted(chart, {300, 150}), qRgb(255, 0, 0)), 0);
    }
    void aChartThatIsTooSmallPaintsNothing() {
        LossHistory history;
        history.add(1, 1);
        LossChart chart;
        chart.setPoints(&history);
        QCOMPARE(inked(painted(chart, {20, 20})), 0);
    }
    void aChartOutlivesItsPoints() {
        LossChart chart;
        auto history = std::make_unique<LossHistory>();
        chart.setPoints(history.get());
        history.reset();
        QCOMPARE(chart.description(), QStringLiteral("No loss yet"));
        painted(chart, {300, 150});
    }
    void axesEndAtRoundNumbers_data() {
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("rounded");
        QTest::newRow("one") << 1.0 << 1.0;
        QTest::newRow("above one") << 1.01 << 2.0;
        QTest::newRow("between two and two and a half") << 2.2 << 2.5;
        QTest::newRow("between two and a half and three") << 0.28 << 0.3;
        QTest::newRow("small") << 0.031 << 0.04;
        QTest::newRow("above four") << 4.2 << 5.0;
        QTest::newRow("above five") << 6.0 << 10.0;
        QTest::newRow("zero") << 0.0 << 1.0;
        QTest::newRow("negative") << -3.0 << 1.0;
        QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << 1.0;
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 1.0;
    }
    void axesEndAtRoundNumbers() {
        QFETCH(double, value);
        QFETCH(double, rounded);
        QVERIFY(qFuzzyCompare(LossChart::roundUp(value), rounded));
    }

    // ---- Fonts

    void figuresAreEquallyWide() {
        const Fonts fonts;
        QVERIFY(Fonts::hasTabularFigures(fonts.figures()));
        QVERIFY(!fonts.text().isEmpty());
    }
};

}  // namespace quillmere

QUILLMERE_APP_TEST(quillmere::PaintedItemsTest)
#include "PaintedItemsTest.moc"
