#pragma once

#include "TelemetrySink.h"

#include <VelmoraPlatform/BundleInfo.h>

#include <QString>

// What every event says about this build and the system it runs on. The state adds what it has to say: see
// AppState::telemetryProperties().
[[nodiscard]] TelemetrySink::Properties programProperties(const BundleInfo &bundle);

// The leading number of the operating system's version, else of the kernel's ("12" for "12.5"); "0" without either.
[[nodiscard]] QString majorVersion(const QString &systemVersion, const QString &kernelVersion);
