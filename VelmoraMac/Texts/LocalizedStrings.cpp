#include "LocalizedStrings.h"

#include <QLocale>

using namespace Qt::StringLiterals;

namespace {
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): set once, at the start
const SystemLanguage *systemLanguage = nullptr;
} // namespace

void LocalizedStrings::setSystemLanguage(const SystemLanguage *source)
{
    systemLanguage = source;
}

AppLanguage LocalizedStrings::defaultLanguage(const QString &languageCode)
{
    return languageCode == "de"_L1 ? AppLanguage::german : AppLanguage::english;
}

AppLanguage LocalizedStrings::systemDefault()
{
    return defaultLanguage(systemLanguage ? systemLanguage->code() : QString());
}

QString LocalizedStrings::choose(const QString &english, const QString &german, AppLanguage language)
{
    const AppLanguage chosen = language == AppLanguage::system ? systemDefault() : language;
    return chosen == AppLanguage::german ? german : english;
}

QString LocalizedStrings::removedCount(double count, AppLanguage language)
{
    return QString::number(qRound64(count)) + choose(u" removed"_s, u" entfernt"_s, language);
}

QString LocalizedStrings::languageName(AppLanguage named, AppLanguage language)
{
    switch (named) {
    case AppLanguage::system:
        break;
    case AppLanguage::english:
        return choose(u"English"_s, u"Englisch"_s, language);
    case AppLanguage::german:
        return choose(u"German"_s, u"Deutsch"_s, language);
    }
    return choose(u"System"_s, u"System"_s, language);
}

QString LocalizedStrings::beginningNote(double wholeBytes, AppLanguage language)
{
    if (wholeBytes <= 0)
        return {};
    const QLocale locale(choose(u"en"_s, u"de"_s, language));
    const QString size =
        locale.formattedDataSize(static_cast<qint64>(wholeBytes), 1, QLocale::DataSizeSIFormat);
    return choose(u" (beginning of %1)"_s, u" (Anfang von %1)"_s, language).arg(size);
}
