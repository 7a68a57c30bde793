// The end of a program whose last work hangs.

#include "QuillmereApp/ClosingLimit.h"

#include <QTest>
#include <chrono>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "QuillmereApp/Support/TestWorld.h"
#include "Support/Program.h"

namespace quillmere::testing {
namespace {

using namespace std::chrono_literals;

constexpr const char* closeArgument = "close";  // LIMIT WORK, in milliseconds
constexpr int closed = 0;
constexpr int leftByItself = 7;

// A program that is closed while its last work goes on. A process of its own from its beginning: a copy of
// this one, made beside the threads of Qt Test, could not be relied on.
int closeWithin(std::chrono::milliseconds limit, std::chrono::milliseconds work) {
    ClosingLimit closing;
    closing.begin(closed, limit);
    std::this_thread::sleep_for(work);
    return leftByItself;
}

// Its exit status, 128 plus the signal's number if a signal ended it.
int statusAfter(std::chrono::milliseconds limit, std::chrono::milliseconds work) {
    const std::vector<std::string> arguments{"/proc/self/exe", closeArgument, std::to_string(limit.count()),
                                             std::to_string(work.count())};
    return Program(arguments).finish().exitCode;
}

}  // namespace

class ClosingLimitTest : public QObject {
    Q_OBJECT

private slots:
    void endsAProgramWhoseWorkHangs() { QCOMPARE(statusAfter(20ms, 24h), closed); }
    void leavesOthersTheirOwnEnd() { QCOMPARE(statusAfter(24h, 0ms), leftByItself); }
};

int runClosingLimitTest(int argc, char** argv) {
    if (argc != 4 || std::string_view(argv[1]) != closeArgument) return runTest<ClosingLimitTest>(argc, argv);
    return closeWithin(std::chrono::milliseconds(std::stoll(argv[2])),
                       std::chrono::milliseconds(std::stoll(argv[3])));
}

}  // namespace quillmere::testing

int main(int argc, char** argv) {
    return quillmere::testing::runClosingLimitTest(argc, argv);
}
#include "ClosingLimitTest.moc"
