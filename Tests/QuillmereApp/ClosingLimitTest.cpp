// The end of a program whose last work hangs.

#include "QuillmereApp/ClosingLimit.h"

#include <sys/wait.h>
#include <unistd.h>

#include <QTest>
#include <cstdlib>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

using namespace std::chrono_literals;

constexpr int closed = 0;
constexpr int leftByItself = 7;

// The exit status of a program that is closed with this limit while its last work takes as long as stated, -1
// if a signal ended it.
int statusAfter(std::chrono::milliseconds limit, std::chrono::milliseconds work) {
    const pid_t program = ::fork();
    if (program == 0) {
        {
            ClosingLimit closing;
            closing.begin(closed, limit);
            std::this_thread::sleep_for(work);
        }
        std::_Exit(leftByItself);
    }
    int status = 0;
    const pid_t ended = ::waitpid(program, &status, 0);
    return ended == program && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

class ClosingLimitTest : public QObject {
    Q_OBJECT

private slots:
    void endsAProgramWhoseWorkHangs() { QCOMPARE(statusAfter(20ms, 24h), closed); }
    void leavesOthersTheirOwnEnd() { QCOMPARE(statusAfter(24h, 0ms), leftByItself); }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::ClosingLimitTest)
#include "ClosingLimitTest.moc"
