#pragma once

#include <optional>

// What is checked before the application object exists: the options, and whether there is a desktop.
namespace StartConditions {

// Answers --help and --version, and writes to stderr why the program cannot start. The exit status when the
// process shall end at once; nothing when it shall go on.
[[nodiscard]] std::optional<int> check(int argc, char **argv, const char *version);

// Makes writes to a closed connection or beyond the file size limit fail with an error instead of a signal
// (SIGPIPE, SIGXFSZ) that would end the process.
void ignoreWriteSignals();

} // namespace StartConditions
