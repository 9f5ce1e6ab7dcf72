#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The desktop entry that starts `program`, an absolute path, at login.
//
// The path is quoted as the Desktop Entry Specification (freedesktop.org) asks, so that it is read as one
// argument whatever it contains. Nothing for a path that a desktop entry cannot hold: a relative one, or one
// with a '='.
[[nodiscard]] std::optional<QByteArray> autostartEntry(const QString &program, const QString &icon);
