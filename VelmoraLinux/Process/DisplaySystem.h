#pragma once

#include <QByteArray>

// X11 or Wayland: what the toolkit is to draw its windows with.
namespace DisplaySystem {

// Chooses before there is an application: X11, in a Wayland session by XWayland, when a server really
// answers, because only there a program can place its panels; else Wayland. A choice of the user's
// (QT_QPA_PLATFORM, -platform) stays. False, with a sentence on stderr, when there is nothing to draw on.
[[nodiscard]] bool choose(int argc, char **argv);

// Where this process shows its windows, such as "display :0".
[[nodiscard]] QByteArray description();

} // namespace DisplaySystem
