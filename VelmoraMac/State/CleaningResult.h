#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>
#include <qqmlintegration.h>

#include <string>

// What a cleaning did to a copied text, in the application's text form. A plain value.
//
// The values of removed parameters are not part of it: nothing shows, counts or stores them.
struct CleaningResult {
    Q_GADGET
    QML_VALUE_TYPE(cleaningResult)
    Q_PROPERTY(QString originalText MEMBER originalText)
    Q_PROPERTY(QString cleanedText MEMBER cleanedText)
    Q_PROPERTY(QStringList removedParameterNames MEMBER removedParameterNames)
    Q_PROPERTY(int removedCount READ removedCount)
    Q_PROPERTY(bool didChange READ didChange)

public:
    QString originalText;
    QString cleanedText;
    QStringList removedParameterNames; // In removal order, repeats kept.
    // The cleaned text as it goes back to the clipboard: bytes that are not valid UTF-8 stay what they are.
    std::string cleanedBytes = {};

    [[nodiscard]] int removedCount() const { return static_cast<int>(removedParameterNames.size()); }

    [[nodiscard]] bool didChange() const { return cleanedText != originalText; }

    bool operator==(const CleaningResult &) const = default;
};
