#pragma once

#include <VelmoraMac/Telemetry/TelemetryEnvelope.h>
#include <VelmoraMac/Telemetry/TelemetrySink.h>
#include <VelmoraPlatform/BundleInfo.h>
#include <VelmoraPlatform/DefaultsStore.h>
#include <VelmoraPlatform/DelayedSteps.h>
#include <VelmoraPlatform/HttpsClient.h>
#include <VelmoraPlatform/Scheduler.h>
#include <VelmoraPlatform/WallClock.h>

#include <QList>
#include <QString>
#include <QUrl>

#include <chrono>
#include <optional>

// Keeps usage events in a small stored queue and sends them in batches. Main thread only.
//
// Nothing is recorded while the user's setting is off or there is no endpoint. Failures are retried without a
// message; events leave the queue only when a request with them succeeded, so a killed process loses none.
class TelemetryService final : public TelemetrySink {
public:
    // All outlive the service. `endpoint` stays the same for the process.
    struct Dependencies {
        DefaultsStore &defaults;
        HttpsClient &https;
        Scheduler &scheduler;
        const WallClock &clock;
        const BundleInfo &bundle;
        std::optional<QUrl> endpoint;
    };

    explicit TelemetryService(const Dependencies &dependencies);

    void track(TelemetryEventName event, const AppState &state,
               const Properties &extraProperties = {}) override;
    // Once per installation. An installation that starts with the setting off never reports its first launch.
    void trackFirstLaunchIfNeeded(const AppState &state);
    // Sends what is queued after `delay`, in place of any send planned before.
    void scheduleFlush(std::chrono::milliseconds delay);
    // The identifier of this installation, made on first use.
    [[nodiscard]] QString installID();

    [[nodiscard]] const QList<TelemetryEnvelope> &queue() const { return queue_; }

private:
    void flush();
    void handleFlushResponse(const QList<TelemetryEnvelope> &sent, std::optional<int> status);
    void trimQueue();
    void saveQueue();

    Dependencies dependencies_;
    QList<TelemetryEnvelope> queue_; // Oldest first.
    DelayedSteps flushTimer_;
    DelayedSteps replies_; // Never starts over: only the end of the service cancels a reply.
    bool isFlushing_ = false;
};
