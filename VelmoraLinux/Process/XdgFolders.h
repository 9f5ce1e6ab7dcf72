#pragma once

#include <QString>

// The user's base folders as the desktop lays them down: $XDG_..._HOME when it holds an absolute path (a
// relative one is to be ignored), else the usual place below the home folder. Nothing is created here.
namespace XdgFolders {

[[nodiscard]] QString dataHome();
[[nodiscard]] QString configHome();
[[nodiscard]] QString cacheHome();
// For sockets and other things that end with the session; empty when the session has no such folder.
[[nodiscard]] QString runtimeFolder();

} // namespace XdgFolders
