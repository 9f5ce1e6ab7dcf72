#pragma once

#include <QString>

// The user's base directories of the XDG Base Directory Specification: $XDG_..._HOME when it is an absolute
// path (XDG ignores relative ones), otherwise the default below the home folder. Nothing is
// created.
namespace XdgFolders {

[[nodiscard]] QString dataHome();
[[nodiscard]] QString configHome();
[[nodiscard]] QString cacheHome();

} // namespace XdgFolders
