#pragma once

#include <VelmoraMac/Telemetry/TelemetrySink.h>

#include <QList>
#include <QStringList>

#include <functional>

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
        heard();
    }

    [[nodiscard]] QStringList names() const
    {
        QStringList names;
        for (const Event &event : events)
            names.append(wireName(event.name));
        return names;
    }

    QList<Event> events;
    std::function<void()> heard = [] {}; // Runs with each event.
};
