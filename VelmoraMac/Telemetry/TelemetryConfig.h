#pragma once

#include <VelmoraPlatform/BundleInfo.h>

#include <QString>
#include <QUrl>

#include <optional>

// Where events go, and whether they go anywhere.
namespace TelemetryConfig {

// The host set when this program was built; empty unless a distributor chose one, so that a build from source
// never reports.
[[nodiscard]] QString builtInHost();

// The endpoint named by the bundle, else the one on `host`. Nothing when that is no HTTPS address: nothing
// may then be recorded, looked up or sent.
[[nodiscard]] std::optional<QUrl> endpointURL(const BundleInfo &bundle, const QString &host = builtInHost());

} // namespace TelemetryConfig
