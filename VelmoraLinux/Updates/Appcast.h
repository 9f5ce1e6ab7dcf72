#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// One archive that an appcast item offers.
struct AppcastEnclosure {
    QUrl url;
    qint64 length = 0;    // Bytes; items without a positive length are not offered.
    QString type;         // MIME type, which distinguishes an AppImage from a tarball.
    QString signature;    // Ed25519 over the whole archive, base64.
    QString system;       // Empty: any system.
    QString architecture; // As printed by `uname -m`; empty: any processor.

    bool operator==(const AppcastEnclosure &) const = default;
};

// One version in the update feed.
struct AppcastItem {
    QString version;      // What is compared.
    QString shownVersion; // What users read.
    QString notes;        // Plain text.
    QString channel;      // Items with a channel are for testers only.
    QString minimumSystem;
    QString maximumSystem;
    QString criticalBelow;           // With `critical`: only for versions below; empty for all.
    QString ignoreSkippedBelow;      // A version skipped below this one is offered again.
    QString informationalBelow;      // With `informational`: only for versions below; empty for all.
    QList<QString> informationalFor; // With `informational`: only for these versions; empty for all.
    QUrl page;
    QDateTime published;
    qint64 phasedInterval = 0; // Phased rollout: seconds between the seven groups of users; 0: all at once.
    bool critical = false;
    bool informational = false;
    QList<AppcastEnclosure> enclosures;

    bool operator==(const AppcastItem &) const = default;
};

using Appcast = QList<AppcastItem>;
