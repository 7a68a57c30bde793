#include "QuillmereApp/TimeText.h"

#include <QObject>
#include <limits>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

class TimeTextTest : public QObject {
    Q_OBJECT

private slots:
    void durations_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("nothing") << 0.0 << "0.00 s";
        QTest::newRow("short") << 0.824 << "0.82 s";
        QTest::newRow("below ten") << 9.994 << "9.99 s";
        QTest::newRow("ten") << 9.996 << "10.0 s";
        QTest::newRow("below a minute") << 59.94 << "59.9 s";
        QTest::newRow("a minute") << 59.96 << "1 min 00 s";
        QTest::newRow("minutes") << 245.4 << "4 min 05 s";
        QTest::newRow("below an hour") << 3599.4 << "59 min 59 s";
        QTest::newRow("hours") << 3725.0 << "1 h 02 min";
        QTest::newRow("negative") << -1.0 << "0 s";
        QTest::newRow("NaN") << std::numeric_limits<double>::quiet_NaN() << "0 s";
    }
    void durations() {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(TimeText::duration(seconds), text);
    }

    void timesLeft_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << 0.0 << "about 0 s left";
        QTest::newRow("seconds") << 3.2 << "about 4 s left";
        QTest::newRow("fives") << 31.0 << "about 35 s left";
        QTest::newRow("nearly a minute") << 56.0 << "about 1 min left";
        QTest::newRow("minutes") << 121.0 << "about 3 min left";
        QTest::newRow("an hour") << 3600.0 << "about 1 h left";
        QTest::newRow("hours") << 4790.0 << "about 1 h 20 min left";
        QTest::newRow("negative") << -1.0 << "";
        QTest::newRow("NaN") << std::numeric_limits<double>::quiet_NaN() << "";
        QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << "";
    }
    void timesLeft() {
        QFETCH(double, seconds);
        QFETCH(QString, text);
        QCOMPARE(TimeText::left(seconds), text);
    }

    void whatIsLeftIsNotKnownBeforeTheFirstPieceAndAfterTheLast() {
        QElapsedTimer clock;
        QCOMPARE(TimeText::left(clock, 1, 2), QString());  // not started
        clock.start();
        QCOMPARE(TimeText::left(clock, 0, 2), QString());
        QCOMPARE(TimeText::left(clock, 2, 2), QString());
        QVERIFY(!TimeText::left(clock, 1, 2).isEmpty());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::TimeTextTest)
#include "TimeTextTest.moc"
