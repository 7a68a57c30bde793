#pragma once

#include <QElapsedTimer>
#include <QString>

// Lengths of time as the window shows them.
namespace quillmere::TimeText {

// "0.82 s", "12.4 s", "4 min 05 s", "1 h 02 min".
[[nodiscard]] QString duration(double seconds);

// "about 5 s left", "about 40 s left", "about 3 min left", "about 1 h 20 min left": rounded up so coarsely
// that it does not flicker. Empty for NaN, infinity and negative values.
[[nodiscard]] QString left(double seconds);
// What is left of work that goes on as it went: done of total pieces since clock was started. Empty before
// the first is done and when all are.
[[nodiscard]] QString left(const QElapsedTimer& clock, int done, int total);

}  // namespace quillmere::TimeText
