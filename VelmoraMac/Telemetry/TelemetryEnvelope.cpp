#include "TelemetryEnvelope.h"

#include <VelmoraMac/State/StoredValue.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

constexpr auto idKey = "id"_L1;
constexpr auto nameKey = "name"_L1;
constexpr auto installIDKey = "install_id"_L1;
constexpr auto createdAtKey = "created_at"_L1;
constexpr auto propertiesKey = "properties"_L1;
constexpr auto eventsKey = "events"_L1;

QJsonObject toJson(const TelemetryEnvelope &envelope)
{
    QJsonObject properties;
    for (auto property = envelope.properties.cbegin(); property != envelope.properties.cend(); ++property)
        properties.insert(property.key(), property.value());
    return {{idKey, envelope.id},
            {nameKey, envelope.name},
            {installIDKey, envelope.installID},
            {createdAtKey, envelope.createdAt.toUTC().toString(Qt::ISODate)},
            {propertiesKey, properties}};
}

QJsonArray toJson(const QList<TelemetryEnvelope> &envelopes)
{
    QJsonArray array;
    for (const TelemetryEnvelope &envelope : envelopes)
        array.append(toJson(envelope));
    return array;
}

bool read(const QJsonValue &value, QString &text)
{
    text = value.toString();
    return value.isString();
}

bool read(const QJsonValue &value, QDateTime &moment)
{
    moment = QDateTime::fromString(value.toString(), Qt::ISODate);
    return moment.isValid() && moment.timeSpec() != Qt::LocalTime; // Without a zone it names no moment.
}

bool read(const QJsonValue &value, QMap<QString, QString> &texts)
{
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!read(member.value(), texts[member.key()]))
            return false;
    }
    return value.isObject();
}

bool read(const QJsonValue &value, TelemetryEnvelope &envelope)
{
    const QJsonObject object = value.toObject();
    return read(object[idKey], envelope.id) && read(object[nameKey], envelope.name) &&
           read(object[installIDKey], envelope.installID) && read(object[createdAtKey], envelope.createdAt) &&
           read(object[propertiesKey], envelope.properties);
}

} // namespace

QByteArray TelemetryBatch::toJson() const
{
    return QJsonDocument(QJsonObject{{eventsKey, ::toJson(events)}}).toJson(QJsonDocument::Compact);
}

QByteArrayList queueToPieces(const QList<TelemetryEnvelope> &queue)
{
    QByteArrayList envelopes;
    for (const TelemetryEnvelope &envelope : queue)
        envelopes.append(QJsonDocument(::toJson(envelope)).toJson(QJsonDocument::Compact));
    return StoredValue::jsonArray(envelopes);
}

std::optional<QList<TelemetryEnvelope>> queueFromJson(const QByteArray &json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isArray())
        return {};
    QList<TelemetryEnvelope> queue;
    const QJsonArray array = document.array();
    for (const QJsonValue value : array) {
        TelemetryEnvelope envelope;
        if (!read(value, envelope))
            return {};
        queue.append(envelope);
    }
    return queue;
}
