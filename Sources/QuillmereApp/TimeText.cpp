#include "QuillmereApp/TimeText.h"

#include <cmath>

#include "QuillmereApp/Words.h"

namespace quillmere {
namespace {

QString padded(qint64 number) {
    return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
}

}  // namespace

QString TimeText::duration(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0) return Words::tr("0 s");
    if (seconds < 9.995) return Words::tr("%1 s").arg(seconds, 0, 'f', 2);
    if (seconds < 59.95) return Words::tr("%1 s").arg(seconds, 0, 'f', 1);
    const auto whole = static_cast<qint64>(std::llround(seconds));
    if (whole < 3600) return Words::tr("%1 min %2 s").arg(whole / 60).arg(padded(whole % 60));
    return Words::tr("%1 h %2 min").arg(whole / 3600).arg(padded(whole % 3600 / 60));
}

QString TimeText::left(double seconds) {
    if (!std::isfinite(seconds) || seconds < 0) return {};
    const auto whole = static_cast<qint64>(std::ceil(std::min(seconds, 1e9)));
    if (whole <= 10) return Words::tr("about %1 s left").arg(whole);
    if (whole <= 55) return Words::tr("about %1 s left").arg((whole + 4) / 5 * 5);
    const qint64 minutes = (whole + 59) / 60;
    if (minutes < 60) return Words::tr("about %1 min left").arg(minutes);
    if (minutes % 60 == 0) return Words::tr("about %1 h left").arg(minutes / 60);
    return Words::tr("about %1 h %2 min left").arg(minutes / 60).arg(minutes % 60);
}

QString TimeText::left(const QElapsedTimer& clock, int done, int total) {
    if (done <= 0 || done >= total || !clock.isValid()) return {};
    const double elapsed = static_cast<double>(clock.elapsed()) / 1000;
    return left(elapsed / done * (total - done));
}

}  // namespace quillmere
