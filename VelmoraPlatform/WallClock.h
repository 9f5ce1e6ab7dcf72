#pragma once

#include <QDateTime>

// The date and time on the user's wall, with the zone they live in.
class WallClock {
public:
    virtual ~WallClock() = default;
    // The present moment, in the local time zone as it is now (a zone may change while we run).
    [[nodiscard]] virtual QDateTime now() const = 0;
};
