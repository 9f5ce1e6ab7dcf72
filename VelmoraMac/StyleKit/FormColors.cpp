#include "FormColors.h"

#include "Contrast.h"
#include "PanelGround.h"

namespace {

constexpr double rounding = 0.1;  // Of colours, in a ratio.
constexpr float scrimPart = 0.4F; // Forms have no luminous ends to tone down.

QColor at(QColor color, float opacity)
{
    color.setAlphaF(opacity);
    return color;
}

// As light as white text on it allows.
QColor raised(const QColor &card)
{
    constexpr float step = 0.02F;
    float light = 0.28F;
    while (light > step && Contrast::ratio(Qt::white, Contrast::over(at(Qt::white, light), card)) <
                               Contrast::smallText + rounding)
        light -= step;
    return Contrast::over(at(Qt::white, light), card);
}

} // namespace

SystemColors FormColors::of(const VelmoraThemePalette &palette, const SystemColors &system)
{
    const bool isLight = palette.isLight();
    const double smallText = PanelGround::smallText(palette) + rounding;
    const float scrim = palette.increasedContrast ? 1 : scrimPart;
    const QColor window = PanelGround::colorAt(
        palette.backgroundColors.value(1), at(palette.overlayScrim, palette.overlayScrim.alphaF() * scrim));
    const QColor paneFill = at(palette.cardFill, palette.cardFill.alphaF() * 0.4F);
    const QColor card = Contrast::over(palette.cardFill, Contrast::over(paneFill, window));
    const QColor control = Contrast::over(at(palette.primaryText, 0.09F), card);
    const QList<QColor> surfaces{window, card, control, Contrast::over(palette.linkRowFill, card),
                                 Contrast::over(palette.linkRowFill, window)};

    SystemColors colors = system;
    colors.label = palette.primaryText;
    colors.secondaryLabel = Contrast::legible(palette.secondaryText, surfaces, smallText);
    colors.problem = Contrast::legible(system.red, surfaces, smallText);
    colors.accent = Contrast::legible(system.blue, {Qt::white}, smallText);
    colors.focus = Contrast::legible(palette.infoAccent, surfaces, Contrast::graphics);
    colors.removed = Contrast::legible(
        palette.dangerAccent,
        {Contrast::over(palette.linkRowFill, card), Contrast::over(palette.linkRowFill, window)}, smallText);
    colors.separator = palette.cardStroke;
    colors.windowBackground = window;
    colors.textBackground = Contrast::over(palette.linkRowFill, window);
    colors.paneFill = paneFill;
    colors.cardFill = palette.cardFill;
    colors.cardStroke = palette.cardStroke;
    colors.controlFill = at(palette.primaryText, 0.09F);
    colors.controlRaised = isLight ? QColor(Qt::white) : raised(card);
    colors.buttonFill = isLight ? QColor(Qt::white) : at(Qt::white, 0.14F);
    return colors;
}
