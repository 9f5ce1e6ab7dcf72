#pragma once

#include <VelmoraPlatform/WallClock.h>

// The system's clock in the system's time zone; a changed zone takes effect at the next call.
class SystemWallClock final : public WallClock {
public:
    [[nodiscard]] QDateTime now() const override { return QDateTime::currentDateTime(); }
};
