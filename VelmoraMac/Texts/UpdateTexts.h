#pragma once

#include <VelmoraMac/State/AppTypes.h>
#include <VelmoraPlatform/UpdateUserDriver.h>

#include <QString>

// The words of the update window for one step. A button without a title is not there.
struct UpdateTexts {
    QString headline;
    QString message;
    QString accept;
    QString dismiss;
    QString skip;
};

[[nodiscard]] UpdateTexts updateTexts(const UpdateReport &report, AppLanguage language);
