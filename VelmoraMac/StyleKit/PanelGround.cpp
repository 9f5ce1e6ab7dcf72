#include "PanelGround.h"

#include "Contrast.h"

#include <algorithm>

namespace {

constexpr int shadeSteps = 17;
constexpr int increasedShadeSteps = 40;
constexpr float shadeStep = 0.02F;
// Where cards stand the glows are seen with at most this part of their opacity.
constexpr float glowPart = 0.6F;

QColor faded(QColor color, float part)
{
    color.setAlphaF(color.alphaF() * part);
    return color;
}

// A translucent colour over another one, as one colour that covers the same.
QColor combined(const QColor &upper, const QColor &lower)
{
    const float u = upper.alphaF();
    const float l = lower.alphaF() * (1 - u);
    if (u + l <= 0)
        return Qt::transparent;
    const auto component = [=](float a, float b) { return (a * u + b * l) / (u + l); };
    return QColor::fromRgbF(component(upper.redF(), lower.redF()), component(upper.greenF(), lower.greenF()),
                            component(upper.blueF(), lower.blueF()), u + l);
}

} // namespace

double PanelGround::smallText(const VelmoraThemePalette &palette)
{
    return palette.increasedContrast ? Contrast::smallTextEnhanced : Contrast::smallText;
}

double PanelGround::largeText(const VelmoraThemePalette &palette)
{
    return palette.increasedContrast ? Contrast::largeTextEnhanced : Contrast::largeText;
}

QColor PanelGround::colorAt(const QColor &gradient, const QColor &scrim)
{
    QColor opaque = gradient;
    opaque.setAlphaF(1);
    return Contrast::over(scrim, opaque);
}

QList<QColor> PanelGround::panel(const VelmoraThemePalette &palette)
{
    QList<QColor> grounds;
    for (const QColor &color : palette.backgroundColors) {
        const QColor plain = colorAt(color, palette.overlayScrim);
        grounds.append(plain);
        for (const QColor &glow : {palette.glowPrimary, palette.glowSecondary})
            grounds.append(Contrast::over(faded(glow, glowPart), plain));
    }
    return grounds;
}

QColor PanelGround::card(const VelmoraThemePalette &palette)
{
    const QList<QColor> grounds = panel(palette);
    const double wanted = smallText(palette);
    const auto carriesTexts = [&](const QColor &fill) {
        return std::all_of(grounds.begin(), grounds.end(), [&](const QColor &ground) {
            const QColor seen = Contrast::over(fill, ground);
            return Contrast::ratio(palette.secondaryText, seen) >= wanted &&
                   Contrast::ratio(palette.successAccent, seen) >= wanted;
        });
    };
    QColor fill = palette.cardFill;
    const int steps = palette.increasedContrast ? increasedShadeSteps : shadeSteps;
    for (int step = 0; step < steps; ++step) {
        const float shade = static_cast<float>(step) * shadeStep;
        fill = combined(palette.cardFill, palette.isLight() ? QColor::fromRgbF(1, 1, 1, shade)
                                                            : QColor::fromRgbF(0, 0, 0, shade));
        if (carriesTexts(fill))
            break;
    }
    return fill;
}

QColor PanelGround::sealShade(const VelmoraThemePalette &palette)
{
    return palette.isLight() ? QColor::fromRgbF(1, 1, 1, 0.7F) : QColor::fromRgbF(0, 0, 0, 0.4F);
}

QList<QColor> PanelGround::behindCards(const VelmoraThemePalette &palette)
{
    QList<QColor> grounds = panel(palette);
    const QColor fill = card(palette);
    for (QColor &ground : grounds)
        ground = Contrast::over(fill, ground);
    return grounds;
}
