#pragma once

#include <QImage>
#include <QString>

#include <memory>

class QIcon;
class QSvgRenderer;

// The application's named pictures and symbols.
//
// Looking one up never fails. The order: NAME.png in the resource folder, in its folder Images, a picture of
// that name compiled into the program or known to the desktop's icon theme, the symbol "link", and at last an
// empty picture of 32 by 32 points. A file NAME@2x.png beside NAME.png serves larger sizes.
namespace AppAssets {

struct Picture {
    QImage image;
    QString accessibilityDescription; // Only for a symbol in place of a missing picture.
};

// Where the first two places are; empty when there is no bundle. Set by the composition root before any view is made.
void setResourceFolder(const QString &folder);

// The picture `name`, fitted into a square of `pixels` by `pixels`. Zero: as large as it was drawn.
[[nodiscard]] Picture image(const QString &name, int pixels = 0);

// The application's icon for windows, in the sizes that window managers show. Needs a QGuiApplication.
[[nodiscard]] QIcon windowIcon();

// The drawing of the symbol `name`, black; null when there is none.
[[nodiscard]] std::unique_ptr<QSvgRenderer> symbolOutline(const QString &name);

// The symbol `name` in a square of `pixels` by `pixels`, black on transparent; null when there is none.
[[nodiscard]] QImage symbol(const QString &name, int pixels);

} // namespace AppAssets
