#include "Surroundings.h"

#include "Contrast.h"
#include "EngineSingleton.h"
#include "FormColors.h"
#include "PanelGround.h"

#include <algorithm>

namespace {

// What opacity and light, the panel's vignette and a darker glow take away from a ratio.
constexpr double lightLoss = 1.42;
constexpr double vignetteLoss = 1.16;
constexpr double glowLoss = 1.2;
constexpr float litSeal = 0.24F; // The opacity of the glow and of the fill.

} // namespace

Surroundings::Surroundings(QObject *parent)
    : QObject(parent)
{
    show(themePalette());
}

Surroundings *Surroundings::in(QQmlEngine &engine)
{
    return engineSingleton<Surroundings>(engine, "Surroundings");
}

Surroundings *Surroundings::of(const QObject *item)
{
    QQmlEngine *engine = qmlEngine(item);
    return engine != nullptr ? in(*engine) : nullptr;
}

void Surroundings::setDarkAppearance(bool dark)
{
    if (dark == darkAppearance_)
        return;
    darkAppearance_ = dark;
    Q_EMIT darkAppearanceChanged();
    palette_ = {}; // Colours of forms change with the appearance even where the theme's stay.
    show(themePalette());
}

void Surroundings::setReducedMotion(bool reduced)
{
    if (reduced == reducedMotion_)
        return;
    reducedMotion_ = reduced;
    Q_EMIT reducedMotionChanged();
}

void Surroundings::setIncreasedContrast(bool increased)
{
    if (increased == increasedContrast_)
        return;
    increasedContrast_ = increased;
    show(themePalette());
}

VelmoraThemePalette Surroundings::themePalette() const
{
    const VelmoraThemePalette palette = VelmoraThemePalette::of(theme_, SystemColors::of(darkAppearance_));
    return increasedContrast_ ? palette.withIncreasedContrast() : palette;
}

void Surroundings::setBlendsWindows(bool blends)
{
    if (blends == blendsWindows_)
        return;
    blendsWindows_ = blends;
    Q_EMIT blendsWindowsChanged();
}

void Surroundings::setTheme(VelmoraTheme theme)
{
    if (theme == theme_)
        return;
    theme_ = theme;
    show(themePalette());
}

void Surroundings::fadeFrom(const VelmoraThemePalette &palette, double part)
{
    show(part == 1 ? themePalette() : VelmoraThemePalette::mixed(palette, themePalette(), part));
}

void Surroundings::show(const VelmoraThemePalette &palette)
{
    if (palette == palette_)
        return;
    palette_ = palette;
    colors_ = FormColors::of(palette, SystemColors::of(darkAppearance_));
    cardColor_ = PanelGround::card(palette);
    Q_EMIT paletteChanged();
}

QString Surroundings::themeName(VelmoraTheme theme, AppLanguage language)
{
    return VelmoraThemePalette::themeName(theme, language);
}

QColor Surroundings::sealShade(const VelmoraThemePalette &palette)
{
    return PanelGround::sealShade(palette);
}

QColor Surroundings::legible(const QColor &tint, const VelmoraThemePalette &palette)
{
    return Contrast::legible(tint, PanelGround::behindCards(palette), PanelGround::smallText(palette));
}

QColor Surroundings::legibleOnLight(const QColor &tint, const VelmoraThemePalette &palette)
{
    return Contrast::legible(tint, PanelGround::behindCards(palette),
                             PanelGround::smallText(palette) * lightLoss);
}

QColor Surroundings::legibleOnPanel(const QColor &tint, const VelmoraThemePalette &palette)
{
    return Contrast::legible(tint, PanelGround::panel(palette),
                             PanelGround::smallText(palette) * vignetteLoss);
}

QColor Surroundings::legibleInGlow(const QColor &tint, const VelmoraThemePalette &palette)
{
    QColor glow = tint;
    glow.setAlphaF(litSeal);
    QList<QColor> grounds = PanelGround::behindCards(palette);
    for (QColor &ground : grounds) { // Its glow, the shade of the seal, its fill.
        ground = Contrast::over(glow, ground);
        ground = Contrast::over(PanelGround::sealShade(palette), ground);
        ground = Contrast::over(glow, ground);
    }
    return Contrast::legible(tint, grounds, PanelGround::largeText(palette) * glowLoss);
}

QColor Surroundings::legibleLarge(const QColor &tint, const VelmoraThemePalette &palette)
{
    return Contrast::legible(tint, PanelGround::behindCards(palette), PanelGround::largeText(palette));
}

QColor Surroundings::legibleInRow(const QColor &tint, const VelmoraThemePalette &palette)
{
    QList<QColor> grounds = PanelGround::behindCards(palette);
    for (QColor &ground : grounds)
        ground = Contrast::over(palette.linkRowFill, ground);
    return Contrast::legible(tint, grounds, PanelGround::smallText(palette));
}

QColor Surroundings::lit(const QColor &color, double brightness, double saturation)
{
    const double grey = 0.2126 * color.redF() + 0.7152 * color.greenF() + 0.0722 * color.blueF();
    const auto component = [=](double value) {
        return static_cast<float>(std::clamp(grey + (value - grey) * saturation + brightness, 0.0, 1.0));
    };
    const double alpha = color.alpha() < 255 ? std::min(1.0, color.alphaF() + brightness) : 1.0;
    return QColor::fromRgbF(component(color.redF()), component(color.greenF()), component(color.blueF()),
                            static_cast<float>(alpha));
}
