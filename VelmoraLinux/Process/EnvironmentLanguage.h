#pragma once

#include <VelmoraPlatform/SystemLanguage.h>

#include <QStringList>

// The language of the locale variables, as gettext reads them: LC_ALL, LC_MESSAGES or LANG, the first that is
// set, names the locale. Unless that is C or POSIX, LANGUAGE is a list of languages in the order of preference.
class EnvironmentLanguage final : public SystemLanguage {
public:
    // `offered`: the languages that the application has. Of a list, the first of them counts.
    explicit EnvironmentLanguage(QStringList offered);

    [[nodiscard]] QString code() const override;

private:
    QStringList offered_;
};
