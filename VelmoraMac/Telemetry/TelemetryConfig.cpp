#include "TelemetryConfig.h"

using namespace Qt::StringLiterals;

namespace {

QUrl configuredURL(const BundleInfo &bundle, const QString &host)
{
    QUrl bundled(bundle.value(u"VelmoraTelemetryEndpoint").toString());
    if (bundled.isValid() || host.isEmpty())
        return bundled;
    return QUrl(u"https://"_s + host + u"/functions/v1/telemetry-events"_s);
}

} // namespace

QString TelemetryConfig::builtInHost()
{
    return u"" VELMORA_TELEMETRY_HOST ""_s;
}

std::optional<QUrl> TelemetryConfig::endpointURL(const BundleInfo &bundle, const QString &host)
{
    const QUrl url = configuredURL(bundle, host);
    if (url.scheme() != "https"_L1 || url.host().isEmpty())
        return {};
    return url;
}
