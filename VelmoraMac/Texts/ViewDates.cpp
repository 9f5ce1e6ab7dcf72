#include "ViewDates.h"

#include "LocalizedStrings.h"

#include <QLocale>

using namespace Qt::StringLiterals;

QString ViewDates::mediumDateShortTime(const QDateTime &moment, Velmora::AppLanguage language)
{
    const AppLanguage spoken = language == AppLanguage::system ? LocalizedStrings::systemDefault() : language;
    const QString format =
        LocalizedStrings::choose(u"MMM d, yyyy, h:mm AP"_s, u"dd.MM.yyyy, HH:mm"_s, spoken);
    const QLocale locale(spoken == AppLanguage::german ? QLocale::German : QLocale::English);
    return locale.toString(moment, format);
}
