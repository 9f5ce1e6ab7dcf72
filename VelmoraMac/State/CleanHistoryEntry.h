#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>
#include <qqmlintegration.h>

#include <optional>

// One recorded cleaning. A plain value.
struct CleanHistoryEntry {
    Q_GADGET
    QML_VALUE_TYPE(cleanHistoryEntry)
    Q_PROPERTY(QString id READ idText)
    Q_PROPERTY(QString originalText MEMBER originalText)
    Q_PROPERTY(QString cleanedText MEMBER cleanedText)
    Q_PROPERTY(double removedCount MEMBER removedCount)
    Q_PROPERTY(QStringList removedParameterNames MEMBER removedParameterNames)
    Q_PROPERTY(QDateTime cleanedAt READ cleanedAt)

public:
    QUuid id;
    QString originalText; // The whole copied text, not only its links.
    QString cleanedText;
    qint64 removedCount = 0;
    QStringList removedParameterNames; // In removal order, repeats kept; values are never kept.
    double secondsSince2001 = 0;       // When it was recorded, counted from 2001-01-01 00:00:00 UTC.

    [[nodiscard]] QString idText() const;
    [[nodiscard]] QDateTime cleanedAt() const; // In local time.
    void setCleanedAt(const QDateTime &moment);
    bool operator==(const CleanHistoryEntry &) const = default;
};

// The stored form of a history: a JSON array with one object per entry.
[[nodiscard]] QByteArray historyToJson(const QList<CleanHistoryEntry> &entries);
// Nothing when the text is no such array, or when a single field of a single entry is missing or of the wrong type.
[[nodiscard]] std::optional<QList<CleanHistoryEntry>> historyFromJson(const QByteArray &json);
