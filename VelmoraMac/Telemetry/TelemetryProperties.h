#pragma once

#include "TelemetrySink.h"

#include <VelmoraPlatform/BundleInfo.h>

#include <QString>

class AppState;

// What every event says about the application: settings and coarse counts, never anything the user copied.
[[nodiscard]] TelemetrySink::Properties baseProperties(const AppState &state, const BundleInfo &bundle);

// "manual" while cleaning is paused, else "ask" or "auto".
[[nodiscard]] QString cleaningMode(const AppState &state);

// The leading number of the operating system's version, else of the kernel's ("12" for "12.5"); "0" without
// either.
[[nodiscard]] QString majorVersion(const QString &systemVersion, const QString &kernelVersion);

// Counts folded into coarse ranges, so that no exact number leaves the machine. The two scales differ on
// purpose, and the open-ended labels name the ranges from 101 and from 11 on.
[[nodiscard]] QString cleanedCountBucket(qint64 count);
[[nodiscard]] QString removedParameterCountBucket(qint64 count);
