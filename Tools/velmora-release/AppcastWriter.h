#pragma once

#include <VelmoraLinux/Updates/Appcast.h>

#include <QString>

// Puts a new item in front of the others of an update feed and leaves the rest as it is. A missing file
// becomes a new feed. The file is replaced in one step, and only by a feed that the updater itself can read;
// `problem` names file and line of what is wrong otherwise.
[[nodiscard]] bool addToAppcast(const QString &path, const AppcastItem &item, QString &problem);
