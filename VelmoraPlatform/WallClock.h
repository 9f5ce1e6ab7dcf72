#pragma once

#include <QDateTime>

// The user's date and time, in the local time zone.
class WallClock {
public:
    virtual ~WallClock() = default;
    // The current time in the current local time zone (which may change while the program runs).
    [[nodiscard]] virtual QDateTime now() const = 0;
};
