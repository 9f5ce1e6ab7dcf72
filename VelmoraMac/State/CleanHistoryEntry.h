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
    Q_PROPERTY(double originalBytes MEMBER originalBytes)
    Q_PROPERTY(double cleanedBytes MEMBER cleanedBytes)
    Q_PROPERTY(QString namesText READ namesText)

public:
    QUuid id;
    QString originalText; // The whole copied text, not only its links.
    QString cleanedText;
    qint64 removedCount = 0;
    // In removal order, repeats kept; values are never kept. Fewer than `removedCount` when not all are kept.
    QStringList removedParameterNames;
    double secondsSince2001 = 0; // When it was recorded, counted from 2001-01-01 00:00:00 UTC.
    // How many bytes the whole text has when only its beginning is kept; else 0.
    qint64 originalBytes = 0;
    qint64 cleanedBytes = 0;

    [[nodiscard]] QString idText() const;
    [[nodiscard]] QDateTime cleanedAt() const; // In local time.
    void setCleanedAt(const QDateTime &moment);
    // The names in one line, with an ellipsis when some are not kept.
    [[nodiscard]] QString namesText() const;
    // Texts above `limit` bytes become a beginning of `beginning` bytes, names those that shortenNames() keeps.
    void shorten(std::size_t limit, std::size_t beginning);
    // One JSON object.
    [[nodiscard]] QByteArray toJson() const;
    bool operator==(const CleanHistoryEntry &) const = default;
};

// The entries in a JSON array with one object per entry. Nothing when the text is no such array, or when a single field of a single entry is missing or of the wrong type.
[[nodiscard]] std::optional<QList<CleanHistoryEntry>> historyFromJson(const QByteArray &json);
