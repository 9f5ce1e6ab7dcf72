#pragma once

#include <QString>

// Files and folders that only their owner can read: folders with mode 0700, files with mode 0600. Wider
// permissions are taken back.
namespace PrivateFiles {

// Creates the folder and its missing parents. Of folders that existed before, only `folder` itself has its
// permissions taken back. False when there is no such folder afterwards, or when it is another user's and
// others can enter it.
[[nodiscard]] bool prepareFolder(const QString &folder);
// Creates an empty file if there is none. False when there is no such file afterwards.
[[nodiscard]] bool prepareFile(const QString &path);
// Takes back wider permissions of a file, if it exists.
void restrictFile(const QString &path);
// Whether nothing but a regular file, or a link to one, is at `path`; also when nothing is there. A FIFO or a
// device would make a reader wait, or read without end.
[[nodiscard]] bool isRegularOrMissing(const QString &path);
// Overwrites the file with zeros, then removes it.
void eraseFile(const QString &path);

} // namespace PrivateFiles
