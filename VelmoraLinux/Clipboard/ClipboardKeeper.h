#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <string>

// A small process that keeps a text on a Wayland clipboard when the program that put it there ends: the
// program itself, started with an option of its own.
namespace ClipboardKeeper {

// Starts `program` as a keeper of `text`, detached from us. False when that cannot be done. `display` as for
// WaylandConnection::open.
[[nodiscard]] bool start(const QString &program, const std::string &text, const QByteArray &display);

// In the process that was started: serves the text until somebody else takes the clipboard, or the session
// ends. The process's exit status; nothing when it was not started for this. SIGPIPE has to be ignored.
[[nodiscard]] std::optional<int> run(int argc, char **argv);

} // namespace ClipboardKeeper
