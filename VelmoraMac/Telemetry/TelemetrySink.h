#pragma once

#include "TelemetryEventName.h"

#include <QMap>
#include <QString>

class AppState;

// Where events go. State and controllers know nothing of queues and networks.
class TelemetrySink {
public:
    using Properties = QMap<QString, QString>;

    virtual ~TelemetrySink() = default;
    // Reports `event` with `state` as it is now. `extraProperties` replace others of the same name.
    virtual void track(TelemetryEventName event, const AppState &state,
                       const Properties &extraProperties = {}) = 0;
};
