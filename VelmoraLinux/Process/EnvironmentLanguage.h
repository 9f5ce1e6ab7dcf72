#pragma once

#include <VelmoraPlatform/SystemLanguage.h>

// The language of the locale variables: the first that is set of LANGUAGE, LC_ALL, LC_MESSAGES and LANG.
class EnvironmentLanguage final : public SystemLanguage {
public:
    [[nodiscard]] QString code() const override;
};
