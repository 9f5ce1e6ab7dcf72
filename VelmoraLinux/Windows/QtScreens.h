#pragma once

#include <VelmoraPlatform/Screens.h>

// The screens that Qt reports.
class QtScreens : public Screens {
public:
    [[nodiscard]] QRect mainWorkArea() const override;
    [[nodiscard]] QRect workAreaAt(QPoint point) const override;
};
