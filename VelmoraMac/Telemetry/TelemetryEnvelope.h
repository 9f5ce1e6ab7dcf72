#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

// One recorded event. A plain value.
struct TelemetryEnvelope {
    QString id; // A lower-case UUID of its own: a receiver tells a repeat by it.
    QString name;
    QString installID;
    QDateTime createdAt; // To the second, in UTC.
    QMap<QString, QString> properties;

    bool operator==(const TelemetryEnvelope &) const = default;
};

// The body of one request.
struct TelemetryBatch {
    QList<TelemetryEnvelope> events;

    // {"events": [...]}
    [[nodiscard]] QByteArray toJson() const;
};

// A queue's stored form: a JSON array of envelopes.
[[nodiscard]] QByteArray queueToJson(const QList<TelemetryEnvelope> &queue);
// Nothing when the text is no such array or a single envelope in it is not whole.
[[nodiscard]] std::optional<QList<TelemetryEnvelope>> queueFromJson(const QByteArray &json);
