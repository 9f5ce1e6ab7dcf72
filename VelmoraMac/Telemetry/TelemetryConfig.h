#pragma once

#include <VelmoraPlatform/BundleInfo.h>

#include <QString>
#include <QUrl>

#include <optional>

// Whether and to which endpoint events are sent.
namespace TelemetryConfig {

// The host set when this program was built; empty unless a distributor set one, so that a build from
// source reports nothing.
[[nodiscard]] QString builtInHost();

// The endpoint named by the bundle, else the one on `host`. Nothing when that is no HTTPS address: then nothing
// is recorded, resolved or sent.
[[nodiscard]] std::optional<QUrl> endpointURL(const BundleInfo &bundle, const QString &host = builtInHost());

} // namespace TelemetryConfig
