#pragma once

#include <QString>

#include <optional>

// The names of the icon's drawings in the icon theme, which some desktops fill with the colour of their panel.
namespace StatusIconName {

// The drawing that comes nearest to `opacity`, from 0 to 1, of the program `identifier`.
[[nodiscard]] QString of(const QString &identifier, double opacity);

// Whether a desktop with these names, as in XDG_CURRENT_DESKTOP, colours such drawings. The others show them as
// they are, which is black on any panel.
[[nodiscard]] bool areColouredBy(const QString &desktopNames);

// The folder of icon themes that belongs to a program in `programFolder`; nothing when its drawings are not there.
[[nodiscard]] std::optional<QString> folder(const QString &programFolder, const QString &identifier);

} // namespace StatusIconName
