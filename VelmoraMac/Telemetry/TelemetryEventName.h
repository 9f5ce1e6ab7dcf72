#pragma once

#include <QString>

// Everything the application may report. What is sent is the wire name, see wireName().
enum class TelemetryEventName {
    appFirstLaunch,
    appOpened,
    appQuit,
    menuPopoverOpened,
    settingsOpened,
    cleaningEnabled,
    cleaningDisabled,
    linkCleaned,
    cleaningUndoUsed, // Nothing sends it; its wire name is reserved.
    ignoredDomainAdded,
    ignoredDomainRemoved,
    themeChanged,
    languageChanged,
};

[[nodiscard]] QString wireName(TelemetryEventName event);
