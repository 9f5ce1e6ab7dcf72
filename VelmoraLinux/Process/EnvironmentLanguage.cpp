#include "EnvironmentLanguage.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// The language of "de_AT.UTF-8@euro", and the first of "de:en"; none of "C" and "POSIX".
QString languageOf(const QString &locale)
{
    const auto endsLanguage = [](QChar c) { return c == u'_' || c == u'.' || c == u'@' || c == u':'; };
    const auto end = std::find_if(locale.cbegin(), locale.cend(), endsLanguage);
    const QString language = locale.left(end - locale.cbegin());
    const bool isNone = language == "C"_L1 || language == "POSIX"_L1;
    return isNone ? QString() : language.toLower();
}

} // namespace

QString EnvironmentLanguage::code() const
{
    for (const char *variable : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (!qEnvironmentVariableIsEmpty(variable))
            return languageOf(qEnvironmentVariable(variable));
    }
    return {};
}
