#pragma once

#include <VelmoraMac/Telemetry/TelemetrySink.h>

#include <QList>
#include <QStringList>

// Keeps every event and sends nothing.
class RecordingTelemetrySink final : public TelemetrySink {
public:
    struct Event {
        TelemetryEventName name;
        Properties extraProperties;
    };

    void track(TelemetryEventName event, const AppState &, const Properties &extraProperties) override
    {
        events.append({event, extraProperties});
    }

    [[nodiscard]] QStringList names() const
    {
        QStringList names;
        for (const Event &event : events)
            names.append(wireName(event.name));
        return names;
    }

    QList<Event> events;
};
