#include "player/timetext.h"

#include <cmath>

namespace {

QString clock(qint64 seconds, bool withHours)
{
    const QChar zero = QLatin1Char('0');
    if (withHours)
        return QStringLiteral("%1:%2:%3").arg(seconds / 3600).arg(seconds / 60 % 60, 2, 10, zero).arg(seconds % 60, 2, 10, zero);
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, zero);
}

qint64 wholeSeconds(double seconds)
{
    return std::isfinite(seconds) && seconds > 0 ? qint64(std::floor(seconds)) : 0;
}

} // namespace

QString timeText(double position, double length)
{
    const bool known = std::isfinite(length) && length > 0;
    const qint64 place = wholeSeconds(position), total = wholeSeconds(length);
    const bool withHours = std::max(place, total) >= 3600;
    return clock(place, withHours) + QStringLiteral(" / ")
        + (known ? clock(total, withHours) : QStringLiteral("--:--"));
}
