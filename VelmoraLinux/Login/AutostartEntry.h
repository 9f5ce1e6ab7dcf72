#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The desktop entry that starts `program`, an absolute path, when the user logs in.
//
// The path is quoted so that every panel and session manager reads it as one word, whatever it contains.
// Nothing for a path that a desktop entry cannot carry: relative, or with a '='.
[[nodiscard]] std::optional<QByteArray> autostartEntry(const QString &program, const QString &icon);
