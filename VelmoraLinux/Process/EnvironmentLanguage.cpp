#include "EnvironmentLanguage.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

// The language of "de_AT.UTF-8@euro"; none of "C", "C.UTF-8" and "POSIX".
QString languageOf(const QString &locale)
{
    const auto endsLanguage = [](QChar c) { return c == u'_' || c == u'.' || c == u'@'; };
    const auto end = std::find_if(locale.cbegin(), locale.cend(), endsLanguage);
    const QString language = locale.left(end - locale.cbegin());
    const bool isNone = language == "C"_L1 || language == "POSIX"_L1;
    return isNone ? QString() : language.toLower();
}

} // namespace

EnvironmentLanguage::EnvironmentLanguage(QStringList offered)
    : offered_(std::move(offered))
{
}

QString EnvironmentLanguage::code() const
{
    QString language;
    for (const char *variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        if (!qEnvironmentVariableIsEmpty(variable)) {
            language = languageOf(qEnvironmentVariable(variable));
            break;
        }
    }
    if (language.isEmpty() || qEnvironmentVariableIsEmpty("LANGUAGE"))
        return language;
    const QStringList preferred = qEnvironmentVariable("LANGUAGE").split(u':', Qt::SkipEmptyParts);
    for (const QString &locale : preferred) {
        QString candidate = languageOf(locale);
        if (candidate.isEmpty() || offered_.contains(candidate))
            return candidate;
    }
    return preferred.isEmpty() ? language : languageOf(preferred.constFirst());
}
