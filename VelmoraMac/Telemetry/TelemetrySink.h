#pragma once

#include "TelemetryEventName.h"

#include <QMap>
#include <QString>

class AppState;

// Takes events. State and controllers need to know neither queue nor network.
class TelemetrySink {
public:
    using Properties = QMap<QString, QString>;

    virtual ~TelemetrySink() = default;
    // Reports `event` with the current `state`. `extraProperties` replace others of the same name.
    virtual void track(TelemetryEventName event, const AppState &state,
                       const Properties &extraProperties = {}) = 0;
};
