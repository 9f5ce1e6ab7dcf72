#pragma once

#include <optional>

// What is settled before there is an application: the options, and whether there is a desktop to work on.
namespace StartConditions {

// Answers --help and --version, and says what stands in the way of a start. The process's exit status when it
// is to end at once; nothing when it is to go on.
[[nodiscard]] std::optional<int> check(int argc, char **argv, const char *version);

// Failed writes to a closed connection or to a full disk are answers to us, not reasons to die.
void ignoreWriteSignals();

} // namespace StartConditions
