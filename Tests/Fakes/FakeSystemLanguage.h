#pragma once

#include <VelmoraPlatform/SystemLanguage.h>

// A desktop whose language the test chooses.
class FakeSystemLanguage final : public SystemLanguage {
public:
    [[nodiscard]] QString code() const override { return languageCode; }

    QString languageCode = QStringLiteral("en");
};
