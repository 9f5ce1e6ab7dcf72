#pragma once

#include <VelmoraPlatform/WallClock.h>

// The system's clock in the system's zone; a changed zone counts from the next call on.
class SystemWallClock final : public WallClock {
public:
    [[nodiscard]] QDateTime now() const override { return QDateTime::currentDateTime(); }
};
