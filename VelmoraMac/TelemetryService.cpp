#include "TelemetryService.h"

#include "AppState.h"

#include <VelmoraMac/Telemetry/TelemetryProperties.h>

#include <QSet>
#include <QUuid>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr auto installIDKey = u"telemetryInstallID";
constexpr auto firstLaunchTrackedKey = u"telemetryFirstLaunchTracked";
constexpr auto eventQueueKey = u"telemetryEventQueue";

constexpr qsizetype queueLimit = 100;
constexpr qsizetype batchLimit = 20;
constexpr auto delayAfterEvent = 3000ms;
constexpr auto delayAfterSuccess = 500ms;
constexpr auto delayAfterFailure = 30000ms;
constexpr auto requestTimeLimit = 8000ms;

QString newIdentifier()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces); // Lower-case.
}

QDateTime toTheSecond(const QDateTime &moment)
{
    return QDateTime::fromSecsSinceEpoch(moment.toSecsSinceEpoch()).toUTC();
}

bool isSuccess(std::optional<int> status)
{
    return status && *status >= 200 && *status <= 299;
}

} // namespace

TelemetryService::TelemetryService(const Dependencies &dependencies)
    : dependencies_(dependencies)
    , queue_(queueFromJson(dependencies.defaults.data(eventQueueKey).value_or(QByteArray()))
                 .value_or(QList<TelemetryEnvelope>()))
    , flushTimer_(dependencies.scheduler)
    , replies_(dependencies.scheduler)
{
}

QString TelemetryService::installID()
{
    if (const std::optional<QString> known = dependencies_.defaults.string(installIDKey))
        return *known;
    QString created = newIdentifier();
    dependencies_.defaults.setString(installIDKey, created);
    return created;
}

void TelemetryService::trackFirstLaunchIfNeeded(const AppState &state)
{
    if (dependencies_.defaults.boolean(firstLaunchTrackedKey).value_or(false))
        return;
    track(TelemetryEventName::appFirstLaunch, state);
    dependencies_.defaults.setBoolean(firstLaunchTrackedKey, true);
}

void TelemetryService::track(TelemetryEventName event, const AppState &state,
                             const Properties &extraProperties)
{
    if (!state.telemetryEnabled() || !dependencies_.endpoint)
        return;
    Properties properties = programProperties(dependencies_.bundle);
    properties.insert(state.telemetryProperties());
    properties.insert(extraProperties);
    queue_.append(
        {newIdentifier(), wireName(event), installID(), toTheSecond(dependencies_.clock.now()), properties});
    trimQueue();
    saveQueue();
    scheduleFlush(delayAfterEvent);
}

void TelemetryService::trimQueue()
{
    if (queue_.size() > queueLimit)
        queue_.remove(0, queue_.size() - queueLimit);
}

void TelemetryService::saveQueue()
{
    dependencies_.defaults.setPieces(eventQueueKey, queueToPieces(queue_));
}

void TelemetryService::scheduleFlush(std::chrono::milliseconds delay)
{
    flushTimer_.startOver();
    flushTimer_.after(delay, [this] { flush(); });
}

void TelemetryService::flush()
{
    if (isFlushing_ || queue_.isEmpty() || !dependencies_.endpoint)
        return;
    isFlushing_ = true;
    const TelemetryBatch batch{queue_.first(std::min(queue_.size(), batchLimit))};
    dependencies_.https.postJson(*dependencies_.endpoint, batch.toJson(), requestTimeLimit,
                                 replies_.guarded([this, sent = batch.events](std::optional<int> status) {
                                     handleFlushResponse(sent, status);
                                 }));
}

void TelemetryService::handleFlushResponse(const QList<TelemetryEnvelope> &sent, std::optional<int> status)
{
    isFlushing_ = false;
    if (!isSuccess(status)) {
        scheduleFlush(delayAfterFailure);
        return;
    }
    QSet<QString> delivered;
    for (const TelemetryEnvelope &envelope : sent)
        delivered.insert(envelope.id);
    queue_.removeIf([&](const TelemetryEnvelope &envelope) { return delivered.contains(envelope.id); });
    saveQueue();
    if (!queue_.isEmpty())
        scheduleFlush(delayAfterSuccess);
}
