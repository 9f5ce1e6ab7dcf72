#pragma once

#include <QString>

// The events that the application reports. See wireName() for the names that are sent.
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
