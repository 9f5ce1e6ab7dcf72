#pragma once

#include <VelmoraPlatform/ApplicationInstance.h>

#include <optional>

// What is checked before the application object exists: the options, and whether there is a desktop.
namespace StartConditions {

// Answers --help and --version, and writes to stderr why the program cannot start. The exit status when the
// process shall end at once; nothing when it shall go on.
[[nodiscard]] std::optional<int> check(int argc, char **argv, const char *version);

// The action that the options ask for; nothing for an ordinary start.
[[nodiscard]] std::optional<ApplicationInstance::Action> requestedAction(int argc, char **argv);

// Makes writes to a closed connection or beyond the file size limit fail with an error instead of a signal
// (SIGPIPE, SIGXFSZ) that would end the process.
void ignoreWriteSignals();

// Keeps copied text out of core dumps. The soft limit is set to 0, which file dumps and systemd-coredump
// respect; for other handlers, which the kernel runs regardless of the limit, the dump contains no memory
// (coredump_filter). PR_SET_DUMPABLE would also forbid both, but it hides /proc/PID from the desktop portals,
// which identify their callers by it, and from debuggers: those can still attach.
void forbidCoreDumps();

} // namespace StartConditions
