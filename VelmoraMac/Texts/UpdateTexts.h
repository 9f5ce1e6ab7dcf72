#pragma once

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QString>

// The texts of the update window for one step. A button without a title is hidden.
struct UpdateTexts {
    QString headline;
    QString message;
    QString accept;
    QString dismiss;
    QString skip;
};

[[nodiscard]] UpdateTexts updateTexts(const UpdateReport &report, AppLanguage language);
