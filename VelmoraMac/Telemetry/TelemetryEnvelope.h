#pragma once

#include <QByteArrayList>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

// One recorded event. A plain value.
struct TelemetryEnvelope {
    QString id; // A lower-case UUID: receivers recognise repeated events by it.
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

// A queue's stored form: a JSON array of envelopes; an envelope is a piece.
[[nodiscard]] QByteArrayList queueToPieces(const QList<TelemetryEnvelope> &queue);
// Nothing when the text is no such array or an envelope in it is incomplete.
[[nodiscard]] std::optional<QList<TelemetryEnvelope>> queueFromJson(const QByteArray &json);
