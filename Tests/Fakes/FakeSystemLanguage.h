#pragma once

#include <VelmoraPlatform/SystemLanguage.h>

using namespace Qt::StringLiterals;

// A desktop whose language the test chooses.
class FakeSystemLanguage final : public SystemLanguage {
public:
    [[nodiscard]] QString code() const override { return languageCode; }

    QString languageCode = u"en"_s;
};
