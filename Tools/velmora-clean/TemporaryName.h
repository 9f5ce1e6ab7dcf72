#pragma once

#include <string>

// The name of the one temporary file, which is removed when a signal ends the program.
namespace temporaryName {

// Makes a file of a new name in the folder, open for writing, readable by nobody else. Below zero if that
// fails; errno says why.
int create(const std::string &folder);

// Of the file that `create` made.
const char *get();

// The file has another name now, or was removed.
void forget();

} // namespace temporaryName
