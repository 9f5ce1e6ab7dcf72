#pragma once

#include <QString>

// A place that only its owner can look into: folders 0700, files 0600. Rights that have become wider are
// narrowed.
namespace PrivateFiles {

// Makes the folder and those above it; only the folder itself is narrowed when it was there before. False
// when there is no such folder afterwards.
[[nodiscard]] bool prepareFolder(const QString &folder);
// Makes an empty file if there is none. False when there is no such file afterwards.
[[nodiscard]] bool prepareFile(const QString &path);
// Narrows the rights of a file if it is there.
void narrow(const QString &path);

} // namespace PrivateFiles
