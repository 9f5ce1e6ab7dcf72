#pragma once

#include "Replacement.h"

#include <QByteArray>

#include <sys/types.h>

#include <chrono>

// Brings the old version back when the new one ends before its services and its icon are there.
//
// This can only be known after the old process has ended, because both cannot own the bus name, the clipboard
// and the settings. So a copy of the old process stays behind, without its connections, windows and threads.
// It lets the new process go on when the old one has ended, and waits for its report. Without one it
// exchanges the versions again and starts the old one. Until the report the old version's files are the watch's;
// from then on they are the new version's, which removes them.
namespace HandoverWatch {

// The variable that is set when the old version was started again.
constexpr const char *failedVariable = "VELMORA_UPDATE_FAILED";
// What the new process reports.
constexpr const char *standing = "standing\n";
// How long it may take, from the end of the old process on.
constexpr std::chrono::seconds longestStart(60);

// `socket` is the connection to `successor`, which has reported that it can run; it is taken over. False when
// the watch could not be started; then nothing has changed.
[[nodiscard]] bool start(int socket, pid_t successor, const Exchange &exchange, const QByteArray &launcher,
                         std::chrono::milliseconds patience = longestStart);

} // namespace HandoverWatch
