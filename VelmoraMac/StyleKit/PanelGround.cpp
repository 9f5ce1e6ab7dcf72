#include "PanelGround.h"

#include "Contrast.h"

#include <algorithm>

QColor PanelGround::material(const VelmoraThemePalette &palette)
{
    return palette.backgroundColors.value(1, Qt::black);
}

QColor PanelGround::colorAt(const QColor &gradient, double down, const QColor &scrim, double cover,
                            const QColor &material)
{
    QColor veil = scrim;
    veil.setAlphaF(static_cast<float>(std::min(1.0, scrim.alphaF() * (1 + 0.6 * down))));
    QColor veiled = gradient;
    veiled.setAlphaF(1);
    veiled = Contrast::over(veil, veiled);
    veiled.setAlphaF(static_cast<float>(cover));
    return Contrast::over(veiled, material);
}

QList<QColor> PanelGround::behindCards(const VelmoraThemePalette &palette)
{
    QList<QColor> grounds;
    const auto count = palette.backgroundColors.size();
    for (qsizetype i = 0; i < count; ++i) {
        const double down = static_cast<double>(i) / static_cast<double>(std::max<qsizetype>(count - 1, 1));
        const QColor panel = colorAt(palette.backgroundColors[i], down, palette.overlayScrim,
                                     palette.materialOpacity, material(palette));
        grounds.append(Contrast::over(palette.cardFill, panel));
    }
    return grounds;
}
