#include "QuillmereApp/EditHistory.h"

#include <QObject>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

Character withPitch(double pitch) {
    Character character;
    character.aesthetics.pitch = pitch;
    return character;
}

}  // namespace

class EditHistoryTest : public QObject {
    Q_OBJECT

private slots:
    void nestedEditsAreOneStep() {
        EditHistory history(withPitch(0));
        history.begin();
        history.change(withPitch(1));
        history.begin();
        history.change(withPitch(2));
        history.end();
        history.change(withPitch(3));
        history.end();
        QVERIFY(history.undo());
        QVERIFY(history.current() == withPitch(0));
        QVERIFY(!history.canUndo());
    }

    void undoInTheMidstOfADragLeavesTheRestOneStep() {
        EditHistory history(withPitch(0));
        history.begin();
        history.change(withPitch(1));
        QVERIFY(history.undo());
        QVERIFY(history.current() == withPitch(0));
        for (const double pitch : {2, 3, 4})
            history.change(withPitch(pitch));
        history.end();
        QVERIFY(history.undo());
        QVERIFY(history.current() == withPitch(0));
        QVERIFY(!history.canUndo());
        QVERIFY(history.redo());
        QVERIFY(history.current() == withPitch(4));
    }

    void undoTakesBackAnOpenEdit() {
        EditHistory history(withPitch(0));
        history.begin();
        history.change(withPitch(1));
        QVERIFY(history.canUndo());
        QVERIFY(history.undo());
        QVERIFY(history.current() == withPitch(0));
        history.end();  // nothing has changed since
        history.change(withPitch(5));
        QVERIFY(history.undo());
        QVERIFY(history.current() == withPitch(0));
    }

    void anEditAfterUndoForgetsTheFuture() {
        EditHistory history(withPitch(0));
        history.change(withPitch(1));
        QVERIFY(history.undo());
        history.change(withPitch(2));
        QVERIFY(!history.redo());
        QVERIFY(history.current() == withPitch(2));
    }

    void unchangedStatesAreNoSteps() {
        EditHistory history(withPitch(0));
        history.change(withPitch(0));
        QVERIFY(!history.canUndo());
        QVERIFY(!history.undo());
        QVERIFY(!history.redo());
    }

    void forgetsTheOldestSteps() {
        EditHistory history(withPitch(0));
        for (int i = 1; i <= 1000; ++i)
            history.change(withPitch(i));
        int steps = 0;
        while (history.undo())
            ++steps;
        QCOMPARE(steps, 500);
        QVERIFY(history.current() == withPitch(500));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::EditHistoryTest)
#include "EditHistoryTest.moc"
