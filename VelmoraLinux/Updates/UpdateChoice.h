#pragma once

#include "Appcast.h"

// What the feed is compared with: the running program and its system.
struct UpdateHost {
    QString version;          // The bundle's "CFBundleVersion".
    QString systemVersion;    // Of the C library, which decides which programs can run.
    QString system;           // "linux"
    QString architecture;     // As printed by `uname -m`.
    QStringList archiveTypes; // MIME types of the archives that can replace this installation.
    QString skippedVersion;   // Empty: none was skipped.
    int rolloutGroup = 0;     // 0 to 6, chosen at random once per computer.
    QDateTime now;
};

enum class CheckKind {
    scheduled, // Respects skipped versions and phased rollouts.
    byUser,    // Ignores both.
};

struct UpdateChoice {
    // The item to offer; nothing when the host is up to date. Its one enclosure is the fitting one, unless
    // the item is informational.
    std::optional<AppcastItem> item;
    bool critical = false;
    bool informational = false;
    bool otherSystemOnly = false; // Something newer exists, but not for this system.
};

// Picks the newest version that fits the host and is newer than it. Never offers an equal or older one.
[[nodiscard]] UpdateChoice chooseUpdate(const Appcast &appcast, const UpdateHost &host, CheckKind kind);
