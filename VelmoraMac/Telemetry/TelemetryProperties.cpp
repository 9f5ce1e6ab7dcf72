#include "TelemetryProperties.h"

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

TelemetrySink::Properties programProperties(const BundleInfo &bundle)
{
    return {
        {u"app_version"_s, bundle.value(u"CFBundleShortVersionString").toString(u"0.1.9"_s)},
        {u"build_number"_s, bundle.value(u"CFBundleVersion").toString(u"10"_s)},
        {u"macos_major_version"_s, majorVersion(QSysInfo::productVersion(), QSysInfo::kernelVersion())},
        {u"architecture"_s, u"arm64"_s}, // A fixed value: receivers know no other.
    };
}

QString majorVersion(const QString &systemVersion, const QString &kernelVersion)
{
    for (const QString &version : {systemVersion, kernelVersion}) {
        if (QString number = leadingNumber(version); !number.isEmpty())
            return number;
    }
    return u"0"_s;
}
