#pragma once

#include <QDateTime>
#include <QTimeZone>

// A moment in UTC, in words that each version of Qt knows.
inline QDateTime utcTime(QDate date, QTime time)
{
    return QDateTime(date, time, QTimeZone::utc()).toUTC();
}
