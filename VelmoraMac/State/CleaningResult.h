#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <qqmlintegration.h>

// What a cleaning did to a copied text, in the application's text form. A plain value.
//
// The values of removed parameters are not part of it: nothing shows, counts or stores them.
struct CleaningResult {
    Q_GADGET
    QML_VALUE_TYPE(cleaningResult)
    Q_PROPERTY(QString originalText MEMBER originalText)
    Q_PROPERTY(QString cleanedText MEMBER cleanedText)
    Q_PROPERTY(QStringList removedParameterNames MEMBER removedParameterNames)
    Q_PROPERTY(double removedCount READ removedCount)
    Q_PROPERTY(bool didChange READ didChange)

public:
    // Very long texts are only their beginning; see CopiedText for bytes that are not valid UTF-8.
    QString originalText;
    QString cleanedText;
    QStringList removedParameterNames; // In removal order, repeats kept.
    qint64 moreRemoved = 0;            // Removed parameters whose names are not kept, for their number.
    // How many bytes the whole text has when only its beginning is kept; else 0.
    qint64 originalBytes = 0;
    qint64 cleanedBytes = 0;

    [[nodiscard]] qint64 removedCount() const { return removedParameterNames.size() + moreRemoved; }

    [[nodiscard]] bool didChange() const
    {
        return cleanedText != originalText || cleanedBytes != originalBytes;
    }

    bool operator==(const CleaningResult &) const = default;
};

// Keeps the first hundred names, and of a long name its beginning with an ellipsis.
void shortenNames(QStringList &names);
// How many names are worth collecting.
inline constexpr qsizetype mostParameterNames = 100;
