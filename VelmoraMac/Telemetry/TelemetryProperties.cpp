#include "TelemetryProperties.h"

#include <VelmoraMac/AppState.h>

#include <QSysInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QString leadingNumber(const QString &text)
{
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    return QString(text.cbegin(), std::find_if_not(text.cbegin(), text.cend(), isDigit) - text.cbegin());
}

} // namespace

TelemetrySink::Properties baseProperties(const AppState &state, const BundleInfo &bundle)
{
    return {
        {u"app_version"_s, bundle.value(u"CFBundleShortVersionString").toString(u"0.1.9"_s)},
        {u"build_number"_s, bundle.value(u"CFBundleVersion").toString(u"10"_s)},
        {u"macos_major_version"_s, majorVersion(QSysInfo::productVersion(), QSysInfo::kernelVersion())},
        {u"architecture"_s, u"arm64"_s}, // A fixed value: receivers know no other.
        {u"app_language"_s, rawValue(state.language())},
        {u"cleaning_mode"_s, cleaningMode(state)},
        {u"theme"_s, rawValue(state.appTheme())},
        {u"cleaned_count_bucket"_s, cleanedCountBucket(state.totalCleaned())},
    };
}

QString cleaningMode(const AppState &state)
{
    if (!state.autoCleanEnabled())
        return u"manual"_s;
    return state.askBeforeCleaningEnabled() ? u"ask"_s : u"auto"_s;
}

QString majorVersion(const QString &systemVersion, const QString &kernelVersion)
{
    for (const QString &version : {systemVersion, kernelVersion}) {
        if (QString number = leadingNumber(version); !number.isEmpty())
            return number;
    }
    return u"0"_s;
}

QString cleanedCountBucket(qint64 count)
{
    if (count <= 0)
        return u"0"_s;
    if (count <= 5)
        return u"1-5"_s;
    if (count <= 25)
        return u"6-25"_s;
    if (count <= 100)
        return u"26-100"_s;
    return u"100+"_s;
}

QString removedParameterCountBucket(qint64 count)
{
    if (count <= 0)
        return u"0"_s;
    if (count <= 2)
        return u"1-2"_s;
    if (count <= 5)
        return u"3-5"_s;
    if (count <= 10)
        return u"6-10"_s;
    return u"10+"_s;
}
